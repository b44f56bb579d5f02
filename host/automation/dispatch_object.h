// An Automation object: an object of the model behind a dual interface.
//
// Late-bound calls go to the table of the object model. An early-bound call is one line in the class
// of the interface:
//
//     STDMETHODIMP VerifyPIN(BSTR pin, LONG type, VARIANT_BOOL* result) override {
//         return call("VerifyPIN", result, pin, type);
//     }
#pragma once

#include <windows.h>

#include <oaidl.h>
#include <ocidl.h>

#include <algorithm>
#include <array>

#include "host/automation/client_objects.h"
#include "host/automation/early_values.h"
#include "host/automation/member_calls.h"
#include "host/automation/object_base.h"
#include "host/automation/type_information.h"

namespace zr::automation {

/// @tparam Interface  of the header that widl makes.
/// @tparam CoClass    the same.
template <class Interface, class CoClass>
class DispatchObject : public Interface, public IProvideClassInfo, public ISupportErrorInfo {
public:
    explicit DispatchObject(host::ObjectRef object)
        : m_calls(std::move(object)), m_registration(identity(), m_calls.object(), m_base) {
        m_base.makeMarshaler(identity());
    }
    DispatchObject(const DispatchObject&) = delete;
    DispatchObject& operator=(const DispatchObject&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (iid == IID_IMarshal) {
            return m_base.getMarshal(result);
        }
        *result = find(iid);
        if (!*result) {
            return E_NOINTERFACE;
        }
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return m_base.addReference(); }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = m_base.dropReference();
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP GetTypeInfoCount(UINT* count) override {
        if (!count) {
            return E_POINTER;
        }
        *count = 1;
        return S_OK;
    }
    STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        return index == 0 ? getTypeInformation(__uuidof(Interface), result) : DISP_E_BADINDEX;
    }
    STDMETHODIMP GetIDsOfNames(REFIID riid, LPOLESTR* names, UINT count, LCID,
                               DISPID* ids) override {
        return m_calls.getIds(riid, names, count, ids);
    }
    STDMETHODIMP Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* arguments,
                        VARIANT* result, EXCEPINFO* info, UINT* position) override {
        // The last reference may be released during the call.
        const zrkey::ComRef<IUnknown> self = hold();
        return m_calls.invoke(id, riid, flags, arguments, result, info, position);
    }

    STDMETHODIMP GetClassInfo(ITypeInfo** result) override {
        return result ? getTypeInformation(__uuidof(CoClass), result) : E_POINTER;
    }
    STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
        return iid == __uuidof(Interface) ? S_OK : S_FALSE;
    }

protected:
    virtual ~DispatchObject() = default;

    /// Calls a member of the table.
    /// @param arguments  borrowed, in the order of the parameters that are used.
    template <class Result, class... Arguments>
    HRESULT call(const char* member, Result* result, Arguments... arguments) noexcept {
        if (!result) {
            return m_calls.refuseResult(__uuidof(Interface), member);
        }
        *result = {};
        std::array<VARIANT, sizeof...(Arguments)> reversed = {toArgument(arguments)...};
        std::reverse(reversed.begin(), reversed.end());
        const zrkey::ComRef<IUnknown> self = hold();
        VARIANT value;
        const HRESULT called = m_calls.callEarly(__uuidof(Interface), member, reversed, value);
        giveResult(value, result);
        return called;
    }
    /// Calls a member that has neither arguments nor a result.
    HRESULT call(const char* member) noexcept {
        VARIANT nothing = {};
        return call(member, &nothing);
    }

    /// The collection's _NewEnum.
    HRESULT callEnumerator(IUnknown** result) noexcept {
        const zrkey::ComRef<IUnknown> self = hold();
        return m_calls.enumerateEarly(__uuidof(Interface), result);
    }

private:
    IDispatch* identity() noexcept { return static_cast<Interface*>(this); }

    zrkey::ComRef<IUnknown> hold() noexcept {
        AddRef();
        zrkey::ComRef<IUnknown> self;
        self.reset(identity());
        return self;
    }

    /// @return null when there is no such interface.
    void* find(REFIID iid) noexcept {
        if (iid == IID_IUnknown || iid == IID_IDispatch || iid == __uuidof(Interface)) {
            return static_cast<Interface*>(this);
        }
        if (iid == IID_IProvideClassInfo) {
            return static_cast<IProvideClassInfo*>(this);
        }
        return iid == IID_ISupportErrorInfo ? static_cast<ISupportErrorInfo*>(this) : nullptr;
    }

    ObjectBase m_base;
    MemberCalls m_calls;
    Registration m_registration;
};

}  // namespace zr::automation
