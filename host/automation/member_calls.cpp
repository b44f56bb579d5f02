// The calls of one object's members, for both ways of binding.
#include "host/automation/member_calls.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>
#include <string>

#include "host/automation/argument_places.h"
#include "host/automation/call_failure.h"
#include "host/automation/enumerator.h"
#include "host/automation/server_state.h"
#include "host/automation/variants.h"
#include "host/objects/automation_members.h"
#include "host/objects/collection_object.h"

namespace zr::automation {
namespace {

using host::AutomationMember;
using host::Kind;
using host::Member;
using host::ObjectClass;
using host::Value;

constexpr WORD kCallFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr WORD kPutFlags = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;
constexpr const char* kEnumeration = "_NewEnum";

/// Values that are destroyed under the lock: one may be the last reference to an object.
class LockedValues {
public:
    LockedValues() = default;
    ~LockedValues() {
        const std::lock_guard lock(libraryLock());
        m_values.clear();
    }
    LockedValues(const LockedValues&) = delete;
    LockedValues& operator=(const LockedValues&) = delete;

    std::vector<Value>& get() { return m_values; }

private:
    std::vector<Value> m_values;
};

std::string narrow(const OLECHAR* name) {
    // A letter beyond ASCII is in no name.
    std::string text;
    for (; *name; ++name) {
        text.push_back(*name < 0x80 ? static_cast<char>(*name) : '?');
    }
    return text;
}

/// @return null when there is none.
const AutomationMember* findMember(ObjectClass objectClass, const std::string& name) {
    const std::vector<AutomationMember>& members = host::automationMembers(objectClass);
    const auto found = std::ranges::find_if(
        members, [&](const AutomationMember& member) { return isSameName(member.name, name); });
    return found == members.end() ? nullptr : &*found;
}

const AutomationMember* findMember(ObjectClass objectClass, DISPID id) {
    const std::vector<AutomationMember>& members = host::automationMembers(objectClass);
    const auto found = std::ranges::find(members, id, &AutomationMember::number);
    return found == members.end() ? nullptr : &*found;
}

bool isCall(WORD flags) {
    return (flags & kCallFlags) && !(flags & kPutFlags);
}

/// A member can be called, and read as a property when it only reads: debuggers and inspectors read
/// every property that they find.
bool mayCall(const AutomationMember& member, WORD flags) {
    return isCall(flags) && ((flags & DISPATCH_METHOD) || member.isReadable);
}

/// "provider.tokens(0)": an argument of a list that a member returns is one of the list's Item.
bool isItemCall(const Member& member, const DISPPARAMS& arguments) {
    return member.resultClass == ObjectClass::kCollection && member.parameters.empty() &&
           arguments.cArgs == 1 && arguments.cNamedArgs == 0 && !isNotGiven(arguments.rgvarg[0]);
}

bool isValid(const DISPPARAMS* arguments) {
    return arguments && (arguments->rgvarg || arguments->cArgs == 0) &&
           (arguments->rgdispidNamedArgs || arguments->cNamedArgs == 0) &&
           arguments->cNamedArgs <= arguments->cArgs;
}

std::vector<host::ObjectRef> itemsOf(const host::Object& list) {
    const std::lock_guard lock(libraryLock());
    if (list.isClosed()) {
        throw host::CallError::closed(kEnumeration);
    }
    return static_cast<const host::CollectionObject&>(list).items();
}

void storeEnumerator(const host::Object& list, const DISPPARAMS& arguments, VARIANT* result) {
    if (arguments.cArgs > 0) {
        throw WrongArgument{DISP_E_BADPARAMCOUNT, std::nullopt, {}};
    }
    zrkey::ComRef<IUnknown> made = makeEnumerator(itemsOf(list));
    if (result) {
        result->vt = VT_UNKNOWN;
        result->punkVal = made.release();
    }
}

/// Runs a call that may throw anything.
/// @param report  is called while the exception is handled, and returns the result.
template <class Call, class Report>
HRESULT guarded(Call call, Report report) noexcept {
    try {
        try {
            call();
            return S_OK;
        } catch (...) {
            return report();
        }
    } catch (...) {
        return E_OUTOFMEMORY;
    }
}

}  // namespace

MemberCalls::~MemberCalls() {
    const std::lock_guard lock(libraryLock());
    m_object.reset();
}

HRESULT MemberCalls::getIds(REFIID riid, LPOLESTR* names, UINT count, DISPID* ids) const noexcept {
    if (riid != IID_NULL) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (!names || !ids || count == 0) {
        return E_INVALIDARG;
    }
    std::fill_n(ids, count, DISPID_UNKNOWN);
    try {
        const ObjectClass objectClass = m_object->objectClass();
        const std::string name = names[0] ? narrow(names[0]) : std::string();
        if (objectClass == ObjectClass::kCollection && isSameName(name, kEnumeration)) {
            ids[0] = DISPID_NEWENUM;
        } else if (const AutomationMember* member = findMember(objectClass, name)) {
            ids[0] = member->number;
            for (UINT i = 1; i < count; ++i) {
                ids[i] =
                    names[i] ? idOfParameter(*member->member, narrow(names[i])) : DISPID_UNKNOWN;
            }
        }
    } catch (...) {
        return E_OUTOFMEMORY;
    }
    return std::find(ids, ids + count, DISPID_UNKNOWN) == ids + count ? S_OK : DISP_E_UNKNOWNNAME;
}

HRESULT MemberCalls::invoke(DISPID id, REFIID riid, WORD flags, DISPPARAMS* arguments,
                            VARIANT* result, EXCEPINFO* info, UINT* position) noexcept {
    if (result) {
        VariantInit(result);
    }
    if (riid != IID_NULL) {
        return DISP_E_UNKNOWNINTERFACE;
    }
    if (!isValid(arguments)) {
        return E_INVALIDARG;
    }
    const char* name = kEnumeration;
    return guarded(
        [&] { callById(id, flags, *arguments, result, name); },
        [&] { return report(currentFailure(name), m_object->objectClass(), info, position); });
}

void MemberCalls::callById(DISPID id, WORD flags, const DISPPARAMS& arguments, VARIANT* result,
                           const char*& name) {
    const bool isList = m_object->objectClass() == ObjectClass::kCollection;
    if (isList && id == DISPID_NEWENUM && isCall(flags)) {
        storeEnumerator(*m_object, arguments, result);
        return;
    }
    const AutomationMember* const found = findMember(m_object->objectClass(), id);
    if (!found || !mayCall(*found, flags)) {
        throw WrongArgument{DISP_E_MEMBERNOTFOUND, std::nullopt, {}};
    }
    name = found->member->name;
    call(*found->member, arguments, result);
}

HRESULT MemberCalls::callEarly(REFIID iid, const char* member, std::span<VARIANT> arguments,
                               VARIANT& result) noexcept {
    VariantInit(&result);
    SetErrorInfo(0, nullptr);
    const ObjectClass objectClass = m_object->objectClass();
    return guarded(
        [&] {
            DISPPARAMS params = {};
            params.rgvarg = arguments.data();
            params.cArgs = static_cast<UINT>(arguments.size());
            const Member* const row = host::findMember(objectClass, member);
            if (!row) {
                // An interface that is older than the table; the tests find it.
                throw WrongArgument{DISP_E_MEMBERNOTFOUND, std::nullopt, {}};
            }
            call(*row, params, &result);
        },
        [&] { return reportEarly(currentFailure(member), objectClass, iid); });
}

HRESULT MemberCalls::enumerateEarly(REFIID iid, IUnknown** result) noexcept {
    if (!result) {
        return refuseResult(iid, kEnumeration);
    }
    *result = nullptr;
    SetErrorInfo(0, nullptr);
    return guarded(
        [&] { *result = makeEnumerator(itemsOf(*m_object)).release(); },
        [&] { return reportEarly(currentFailure(kEnumeration), m_object->objectClass(), iid); });
}

HRESULT MemberCalls::refuseResult(REFIID iid, const char* member) const noexcept {
    SetErrorInfo(0, nullptr);
    return guarded(
        [] {
            throw WrongArgument{E_POINTER, std::nullopt, "the result is a null pointer"};
        },
        [&] { return reportEarly(currentFailure(member), m_object->objectClass(), iid); });
}

void MemberCalls::call(const Member& member, const DISPPARAMS& arguments, VARIANT* result) {
    if (isItemCall(member, arguments)) {
        callItem(member, arguments, result);
        return;
    }
    LockedValues values;
    readArguments(member, arguments, values.get());
    LockedValues returned;
    {
        const std::lock_guard lock(libraryLock());
        returned.get().push_back(host::callMember(*m_object, member, values.get()));
    }
    if (result) {
        store(returned.get().front(), member.result == Kind::kObject, *result);
    }
}

void MemberCalls::callItem(const Member& member, const DISPPARAMS& arguments, VARIANT* result) {
    const Member& item = *host::findMember(ObjectClass::kCollection, "Item");
    LockedValues index;
    readArguments(item, arguments, index.get());
    LockedValues returned;
    {
        const std::lock_guard lock(libraryLock());
        returned.get().push_back(host::callMember(*m_object, member, {}));
        const host::ObjectRef list = std::get<host::ObjectRef>(returned.get().front());
        returned.get().push_back(host::callMember(*list, item, index.get()));
    }
    if (result) {
        store(returned.get().back(), true, *result);
    }
}

}  // namespace zr::automation
