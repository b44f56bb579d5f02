// The global provider of scripts, with the module that the command line or the environment names.
#include "host/script/provider.h"

#include <string>
#include <utility>

#include "host/objects/provider_object.h"
#include "host/output/failure.h"
#include "host/script/context.h"
#include "host/script/late_bound/bound_object.h"
#include "host/script/script_objects.h"

namespace zr::host {
namespace {

/// Makes the value on top of the stack the global provider, as if the script had declared it.
void defineProvider(duk_context* script) {
    duk_push_global_object(script);
    duk_push_string(script, "provider");
    duk_dup(script, -3);
    duk_def_prop(script, -3,
                 DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_SET_ENUMERABLE | DUK_DEFPROP_FORCE);
    duk_pop(script);
}

/// Loads the module, unless that is done.
/// @return why it cannot be loaded; empty when it is.
std::string loadModule(ScriptContext& context) {
    try {
        if (!context.module) {
            const LibraryCall mark(context.libraryCalls);
            context.module = std::make_shared<LoadedModule>(context.moduleOptions);
        }
    } catch (const Failure& failure) {
        std::string text = "cannot ";
        return text.append(failure.asked)
            .append(": ")
            .append(failure.cause)
            .append("; ")
            .append(failure.advice);
    } catch (const Interrupted&) {
        // The caller stops the script.
    }
    return {};
}

/// Pushes the provider of a loaded module.
void pushModule(duk_context* script, const LoadedModule& module) {
    ITokenProvider& provider = module.provider();
    provider.AddRef();
    if (contextOf(script).isLateBound) {
        zrkey::ComRef<IDispatch> object;
        object.reset(&provider);
        pushLateBound(script, std::move(object));
    } else {
        zrkey::ComRef<ITokenProvider> object;
        object.reset(&provider);
        std::shared_ptr<ModuleCalls> calls;
        callLibrary(contextOf(script), [&] {
            calls = std::make_shared<ModuleCalls>(module.path());
            return S_OK;
        });
        pushObject(script, std::make_shared<ProviderObject>(std::move(object), std::move(calls)));
    }
}

/// The getter: replaces itself by the provider.
duk_ret_t getProvider(duk_context* script) {
    ScriptContext& context = contextOf(script);
    stopInTime(script);
    const std::string problem = loadModule(context);
    stopInTime(script);
    if (!problem.empty()) {
        return throwError(script, DUK_ERR_ERROR, problem);
    }
    context.console.drainDiagnostics();
    pushModule(script, *context.module);
    defineProvider(script);
    return 1;
}

/// The setter: a script may have a provider of its own under this name.
duk_ret_t replaceProvider(duk_context* script) {
    defineProvider(script);
    return 0;
}

}  // namespace

void addProvider(duk_context* script) {
    duk_push_global_object(script);
    duk_push_string(script, "provider");
    duk_push_c_function(script, getProvider, 0);
    duk_push_c_function(script, replaceProvider, 1);
    duk_def_prop(script, -4,
                 DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_SET_ENUMERABLE);
    duk_pop(script);
}

}  // namespace zr::host
