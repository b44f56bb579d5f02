// Objects of the library as script objects.
#include "script_object.h"

#include "script_values.h"
#include "text.h"

namespace zr::host {
namespace {

// Keys that a script cannot spell: they mark what belongs to the command.
constexpr const char* kNumberKey = DUK_HIDDEN_SYMBOL("number");
constexpr const char* kMemberKey = DUK_HIDDEN_SYMBOL("member");
constexpr const char* kHandlerKey = DUK_HIDDEN_SYMBOL("handler");
constexpr const char* kMembersKey = DUK_HIDDEN_SYMBOL("members");

std::string textAt(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_get_lstring(script, index, &size);
    return text != nullptr ? std::string(text, size) : std::string();
}

/// Looks a member up. A name with a NUL inside would be cut there and found as another.
HRESULT findMember(ScriptContext& context, IDispatch& object, const std::string& name, DISPID& id) {
    OleString wide = toUtf16(name);
    if (wide.find(OLECHAR{}) != OleString::npos) {
        return E_FAIL;
    }
    LPOLESTR names[] = {wide.data()};
    const LibraryCall call(context.libraryCalls);
    const HRESULT result = object.GetIDsOfNames(IID_NULL, names, 1, 0, &id);
    context.console.drainDiagnostics();
    return result;
}

duk_ret_t throwResult(duk_context* script, const std::string& member, HRESULT result) {
    const std::string message = member + " failed: " + resultText(result);
    duk_push_error_object_raw(script, DUK_ERR_ERROR, nullptr, 0, "%s", message.c_str());
    duk_push_number(script, static_cast<std::uint32_t>(result));
    duk_put_prop_string(script, -2, "hresult");
    return duk_throw(script);
}

/// A member of a wrapped object, called with that object as "this".
duk_ret_t callMember(duk_context* script) {
    const duk_idx_t count = duk_get_top(script);
    ScriptContext& context = contextOf(script);
    duk_push_current_function(script);
    duk_get_prop_string(script, -1, kMemberKey);
    const std::string member = textAt(script, -1);
    duk_push_this(script);
    const ComRef<IDispatch> object = objectAt(script, -1);
    stopInTime(script);
    if (!object) {
        return throwError(script, DUK_ERR_TYPE_ERROR,
                          member + " called on what is no token object");
    }

    ScriptCharge charge(context.use);
    for (duk_idx_t i = 0; i < count; ++i) {
        if (!charge.add(argumentSize(script, i))) {
            return throwError(script, DUK_ERR_ERROR, "alloc failed");
        }
    }
    VariantList arguments(static_cast<std::size_t>(count));
    for (duk_idx_t i = 0; i < count; ++i) {
        if (!readArgument(script, i, arguments[static_cast<std::size_t>(i)])) {
            return throwError(script, DUK_ERR_TYPE_ERROR,
                              member + ": argument " + std::to_string(i + 1) +
                                  " is of a kind that cannot be passed");
        }
    }
    DISPID id = 0;
    HRESULT result = findMember(context, *object.get(), member, id);
    if (FAILED(result)) {
        return throwResult(script, member, result);
    }
    // The first argument comes first, not last as is usual for rgvarg.
    DISPPARAMS params = {arguments.data(), nullptr, static_cast<UINT>(count), 0};
    VariantList value(1);
    {
        const LibraryCall call(context.libraryCalls);
        result = object->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, value.data(), nullptr,
                                nullptr);
        context.console.drainDiagnostics();
    }
    if (FAILED(result)) {
        return throwResult(script, member, result);
    }
    if (!pushResult(script, value[0])) {
        return throwError(
            script, DUK_ERR_TYPE_ERROR,
            member + " gave a result of the unknown type " + std::to_string(value[0].vt));
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
    const ComRef<IDispatch> object = objectAt(script, target);
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

/// Finalizer of the object behind a proxy. A script may call it too: the object is dead then.
duk_ret_t releaseObject(duk_context* script) {
    ScriptContext& context = contextOf(script);
    if (duk_is_object(script, 0) && duk_get_prop_string(script, 0, kNumberKey)) {
        const auto found = context.objects.find(duk_get_uint(script, -1));
        if (found != context.objects.end()) {
            const LibraryCall call(context.libraryCalls);
            context.objects.erase(found);
            context.console.drainDiagnostics();
        }
    }
    return 0;
}

HRESULT createProviderFor(ScriptContext& context, ComRef<ITokenProvider>& provider) {
    const LibraryCall call(context.libraryCalls);
    const HRESULT result = createProvider(provider);
    context.console.drainDiagnostics();
    return result;
}

duk_ret_t makeProvider(duk_context* script) {
    if (!duk_is_constructor_call(script)) {
        return throwError(script, DUK_ERR_TYPE_ERROR, "TokenProvider is made with new");
    }
    stopInTime(script);
    ComRef<ITokenProvider> provider;
    const HRESULT result = createProviderFor(contextOf(script), provider);
    if (FAILED(result)) {
        return throwResult(script, "TokenProvider", result);
    }
    ComRef<IDispatch> object;
    object.reset(provider.release());
    pushObject(script, std::move(object));
    return 1;
}

}  // namespace

ScriptContext& contextOf(duk_context* script) {
    duk_memory_functions functions;
    duk_get_memory_functions(script, &functions);
    return *static_cast<ScriptContext*>(functions.udata);
}

void addObjectSupport(duk_context* script) {
    duk_push_heap_stash(script);
    duk_push_bare_object(script);
    duk_push_c_function(script, getProperty, 3);
    duk_put_prop_string(script, -2, "get");
    duk_push_c_function(script, hasProperty, 2);
    duk_put_prop_string(script, -2, "has");
    duk_put_prop_string(script, -2, kHandlerKey);
    duk_push_bare_object(script);
    duk_put_prop_string(script, -2, kMembersKey);
    duk_pop(script);
    duk_push_c_function(script, makeProvider, 0);
    duk_put_global_string(script, "TokenProvider");
}

void pushObject(duk_context* script, ComRef<IDispatch> object) {
    ScriptContext& context = contextOf(script);
    do {
        ++context.lastNumber;
    } while (context.objects.count(context.lastNumber) != 0);
    const std::uint32_t number = context.lastNumber;
    duk_require_stack(script, 4);
    duk_push_object(script);
    duk_push_uint(script, number);
    duk_put_prop_string(script, -2, kNumberKey);
    duk_push_c_function(script, releaseObject, 2);
    duk_set_finalizer(script, -2);
    duk_push_heap_stash(script);
    duk_get_prop_string(script, -1, kHandlerKey);
    duk_remove(script, -2);
    duk_push_proxy(script, 0);
    context.objects.emplace(number, std::move(object));
}

ComRef<IDispatch> objectAt(duk_context* script, duk_idx_t index) {
    ComRef<IDispatch> object;
    if (duk_is_object(script, index)) {
        duk_get_prop_string(script, index, kNumberKey);
        const ScriptContext& context = contextOf(script);
        const auto found = context.objects.find(duk_get_uint(script, -1));
        if (found != context.objects.end()) {
            object = found->second;
        }
        duk_pop(script);
    }
    return object;
}

void stopInTime(duk_context* script) {
    if (contextOf(script).use.isTimeUp()) {
        throwError(script, DUK_ERR_RANGE_ERROR, kTimeoutMessage);
    }
}

duk_ret_t throwError(duk_context* script, duk_errcode_t kind, const std::string& message) {
    duk_push_error_object_raw(script, kind, nullptr, 0, "%s", message.c_str());
    return duk_throw(script);
}

}  // namespace zr::host
