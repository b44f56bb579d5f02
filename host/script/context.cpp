// The state of a running script: the console, the limits, the objects that the script holds.
#include "host/script/context.h"

namespace zr::host {

ScriptContext& contextOf(duk_context* script) {
    duk_memory_functions functions;
    duk_get_memory_functions(script, &functions);
    return *static_cast<ScriptContext*>(functions.udata);
}

void stopInTime(duk_context* script) {
    if (contextOf(script).mustStop()) {
        throwError(script, DUK_ERR_RANGE_ERROR, kTimeoutMessage);
    }
}

duk_ret_t throwError(duk_context* script, duk_errcode_t kind, const std::string& message) {
    duk_push_error_object_raw(script, kind, nullptr, 0, "%s", message.c_str());
    return duk_throw(script);
}

}  // namespace zr::host
