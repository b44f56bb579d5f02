// The calls of one object's members, for both ways of binding. Late-bound calls are answered from the
// table of the object model, not from the type library.
#pragma once

#include <zrkey/zrkey.hpp>

#include <span>

#include "host/objects/object.h"

namespace zr::automation {

class MemberCalls {
public:
    explicit MemberCalls(host::ObjectRef object) : m_object(std::move(object)) {}
    /// Releases the object.
    ~MemberCalls();
    MemberCalls(const MemberCalls&) = delete;
    MemberCalls& operator=(const MemberCalls&) = delete;

    const host::ObjectRef& object() const { return m_object; }

    // As IDispatch has them.
    HRESULT getIds(REFIID riid, LPOLESTR* names, UINT count, DISPID* ids) const noexcept;
    HRESULT invoke(DISPID id, REFIID riid, WORD flags, DISPPARAMS* arguments, VARIANT* result,
                   EXCEPINFO* info, UINT* position) noexcept;

    /// An early-bound call. A failure leaves an error object for the thread, a success none.
    /// @param iid        of the interface that is called.
    /// @param member     of the table.
    /// @param arguments  in reverse order.
    /// @param result     receives what the caller has to clear; VT_EMPTY after a failure.
    HRESULT callEarly(REFIID iid, const char* member, std::span<VARIANT> arguments,
                      VARIANT& result) noexcept;

    /// The collection's _NewEnum, early-bound.
    /// @param result  receives a reference; null after a failure. May be null, which is refused.
    HRESULT enumerateEarly(REFIID iid, IUnknown** result) noexcept;

    /// Refuses an early-bound call without a place for its result.
    HRESULT refuseResult(REFIID iid, const char* member) const noexcept;

private:
    /// @param name  becomes that of the member.
    void callById(DISPID id, WORD flags, const DISPPARAMS& arguments, VARIANT* result,
                  const char*& name);
    void call(const host::Member& member, const DISPPARAMS& arguments, VARIANT* result);
    void callItem(const host::Member& member, const DISPPARAMS& arguments, VARIANT* result);

    host::ObjectRef m_object;
};

}  // namespace zr::automation
