// Members of the library's objects as functions of script objects.
#include "host/script/late_bound/members.h"

#include <zrkey/zrkey.hpp>

#include <algorithm>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/script/context.h"
#include "host/script/late_bound/bound_object.h"
#include "host/script/late_bound/values.h"
#include "host/script/script_text.h"
#include "host/script/script_values.h"
#include "host/system/module_search.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

// Keys that a script cannot spell.
constexpr const char* kMemberKey = DUK_HIDDEN_SYMBOL("member");
constexpr const char* kMembersKey = DUK_HIDDEN_SYMBOL("members");

std::string textAt(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(script, index, &size);
    return text ? std::string(text, size) : std::string();
}

/// Looks a member up. A name that contains a NUL is unknown: the library would look up the part
/// before it.
HRESULT findMember(ScriptContext& context, IDispatch& object, const std::string& name, DISPID& id) {
    if (name.find('\0') != std::string::npos) {
        return E_FAIL;
    }
    const zrkey::Text wide = fromScriptText(name);
    LPOLESTR names[] = {wide.get()};
    return callLibrary(context, [&] { return object.GetIDsOfNames(IID_NULL, names, 1, 0, &id); });
}

duk_ret_t throwResult(duk_context* script, const std::string& member, HRESULT result) {
    const std::string message = member + " failed: " + zrkey::Result(result).text();
    duk_push_error_object_raw(script, DUK_ERR_ERROR, nullptr, 0, "%s", message.c_str());
    duk_push_number(script, static_cast<std::uint32_t>(result));
    duk_put_prop_string(script, -2, "hresult");
    return duk_throw(script);
}

/// The arguments of a call, erased on destruction.
class CallArguments {
public:
    CallArguments() = default;
    ~CallArguments() { std::for_each(m_values.begin(), m_values.end(), eraseArgument); }
    CallArguments(const CallArguments&) = delete;
    CallArguments& operator=(const CallArguments&) = delete;

    void add(zrkey::Variant value) { m_values.push_back(std::move(value)); }
    /// The values, borrowed.
    std::vector<VARIANT> borrow() const { return {m_values.begin(), m_values.end()}; }

private:
    std::vector<zrkey::Variant> m_values;
};

/// Converts the arguments of a call, after charging the script for them.
void readArguments(duk_context* script, const std::string& member, duk_idx_t count,
                   ScriptCharge& charge, CallArguments& arguments) {
    for (duk_idx_t i = 0; i < count; ++i) {
        if (!charge.add(argumentSize(script, i))) {
            throwError(script, DUK_ERR_ERROR, "alloc failed");
        }
    }
    for (duk_idx_t i = 0; i < count; ++i) {
        std::optional<zrkey::Variant> argument = readArgument(script, i);
        if (!argument) {
            throwError(script, DUK_ERR_TYPE_ERROR,
                       member + ": argument " + std::to_string(i + 1) +
                           " has a type that cannot be passed");
        }
        arguments.add(std::move(*argument));
    }
}

/// The modules that a script loads find their dependencies as those of the other commands do.
void prepareLoad(duk_context* script, const std::string& member) {
    if (member == "Load" && duk_is_string(script, 0)) {
        // The library takes every path relative to the current directory.
        searchBesideModule("./" + textAt(script, 0));
    }
}

/// Calls a member of an object. The first argument comes first, not last as is usual for rgvarg.
HRESULT invoke(ScriptContext& context, IDispatch& object, const std::string& member,
               const CallArguments& arguments, zrkey::Variant& value) {
    DISPID id = 0;
    const HRESULT found = findMember(context, object, member, id);
    if (FAILED(found)) {
        return found;
    }
    std::vector<VARIANT> borrowed = arguments.borrow();
    DISPPARAMS params = {borrowed.data(), nullptr, static_cast<UINT>(borrowed.size()), 0};
    return callLibrary(context, [&] {
        return object.Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, value.receive(), nullptr,
                             nullptr);
    });
}

/// A member, called with a script object as "this".
duk_ret_t callMember(duk_context* script) {
    const duk_idx_t count = duk_get_top(script);
    ScriptContext& context = contextOf(script);
    duk_push_current_function(script);
    duk_get_prop_string(script, -1, kMemberKey);
    const std::string member = textAt(script, -1);
    duk_push_this(script);
    const zrkey::ComRef<IDispatch> object = lateBoundAt(script, -1);
    stopInTime(script);
    if (!object) {
        return throwError(script, DUK_ERR_TYPE_ERROR, member + " was not called on a token object");
    }
    ScriptCharge charge(context.use);
    CallArguments arguments;
    readArguments(script, member, count, charge, arguments);
    prepareLoad(script, member);
    zrkey::Variant value;
    const HRESULT result = invoke(context, *object.get(), member, arguments, value);
    if (FAILED(result)) {
        return throwResult(script, member, result);
    }
    if (!pushResult(script, value)) {
        return throwError(
            script, DUK_ERR_TYPE_ERROR,
            member + " returned a result of the unknown type " + std::to_string(value.type()));
    }
    return 1;
}

/// Pushes the function for a member; there is one for each name, shared by all objects.
void pushMember(duk_context* script, const std::string& name) {
    duk_push_heap_stash(script);
    duk_get_prop_string(script, -1, kMembersKey);
    if (!duk_get_prop_lstring(script, -1, name.data(), name.size())) {
        duk_pop(script);
        duk_push_c_function(script, callMember, DUK_VARARGS);
        duk_push_lstring(script, name.data(), name.size());
        duk_put_prop_string(script, -2, kMemberKey);
        duk_push_string(script, "name");
        duk_push_lstring(script, name.data(), name.size());
        duk_def_prop(script, -3, DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_FORCE);
        duk_dup_top(script);
        duk_put_prop_lstring(script, -3, name.data(), name.size());
    }
}

bool isMember(duk_context* script, duk_idx_t target, duk_idx_t key) {
    if (!duk_is_string(script, key) || duk_is_symbol(script, key)) {
        return false;
    }
    stopInTime(script);
    const zrkey::ComRef<IDispatch> object = lateBoundAt(script, target);
    DISPID id = 0;
    return object &&
           SUCCEEDED(findMember(contextOf(script), *object.get(), textAt(script, key), id));
}

/// Proxy trap: (target, key, receiver).
duk_ret_t getProperty(duk_context* script) {
    if (isMember(script, 0, 1)) {
        pushMember(script, textAt(script, 1));
    } else {
        duk_dup(script, 1);
        duk_get_prop(script, 0);
    }
    return 1;
}

/// Proxy trap: (target, key).
duk_ret_t hasProperty(duk_context* script) {
    if (isMember(script, 0, 1)) {
        duk_push_true(script);
    } else {
        duk_dup(script, 1);
        duk_push_boolean(script, duk_has_prop(script, 0));
    }
    return 1;
}

duk_ret_t makeProvider(duk_context* script) {
    if (!duk_is_constructor_call(script)) {
        return throwError(script, DUK_ERR_TYPE_ERROR, "TokenProvider must be called with new");
    }
    stopInTime(script);
    if (!contextOf(script).interruptions) {
        contextOf(script).interruptions.emplace();
    }
    zrkey::ComRef<ITokenProvider> provider;
    const HRESULT result =
        callLibrary(contextOf(script), [&] { return zrkey::createProvider(provider); });
    if (FAILED(result)) {
        return throwResult(script, "TokenProvider", result);
    }
    zrkey::ComRef<IDispatch> object;
    object.reset(provider.release());
    pushLateBound(script, std::move(object));
    return 1;
}

}  // namespace

void addLateBoundObjects(duk_context* script) {
    duk_push_bare_object(script);
    duk_push_c_function(script, getProperty, 3);
    duk_put_prop_string(script, -2, "get");
    duk_push_c_function(script, hasProperty, 2);
    duk_put_prop_string(script, -2, "has");
    setObjectHandler(script);
    duk_push_heap_stash(script);
    duk_push_bare_object(script);
    duk_put_prop_string(script, -2, kMembersKey);
    duk_pop(script);
    duk_push_c_function(script, makeProvider, 0);
    duk_put_global_string(script, "TokenProvider");
}

}  // namespace zr::host
