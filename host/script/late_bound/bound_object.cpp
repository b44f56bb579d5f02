// Objects of the library as script objects.
#include "host/script/late_bound/bound_object.h"

#include <utility>

#include "host/script/context.h"

namespace zr::host {
namespace {

// Keys that a script cannot spell.
constexpr const char* kNumberKey = DUK_HIDDEN_SYMBOL("number");
constexpr const char* kHandlerKey = DUK_HIDDEN_SYMBOL("handler");

/// Finalizer of the object behind a proxy. A script may call it too; the proxy is dead afterwards.
duk_ret_t releaseObject(duk_context* script) {
    ScriptContext& context = contextOf(script);
    if (duk_is_object(script, 0) && duk_get_prop_string(script, 0, kNumberKey)) {
        if (zrkey::ComRef<IDispatch> object =
                context.lateBoundObjects.remove(duk_get_uint(script, -1))) {
            if (context.endProcess && context.use.isOverdue()) {
                // The engine cannot be stopped while it releases many objects.
                context.endProcess();
            }
            callLibrary(context, [&] {
                object.reset();
                return S_OK;
            });
        }
    }
    return 0;
}

}  // namespace

void setObjectHandler(duk_context* script) {
    duk_push_heap_stash(script);
    duk_insert(script, -2);
    duk_put_prop_string(script, -2, kHandlerKey);
    duk_pop(script);
}

void pushLateBound(duk_context* script, zrkey::ComRef<IDispatch> object) {
    ScriptContext& context = contextOf(script);
    const std::uint32_t number = context.lateBoundObjects.newNumber();
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
    context.lateBoundObjects.add(number, std::move(object));
}

zrkey::ComRef<IDispatch> lateBoundAt(duk_context* script, duk_idx_t index) {
    if (!duk_is_object(script, index)) {
        return {};
    }
    duk_get_prop_string(script, index, kNumberKey);
    const std::uint32_t number = duk_get_uint(script, -1);
    duk_pop(script);
    return contextOf(script).lateBoundObjects.find(number);
}

}  // namespace zr::host
