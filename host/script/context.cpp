// The state of a running script: the console, the limits, the objects that the script holds.
#include "host/script/context.h"

#include <utility>

namespace zr::host {

std::uint32_t ObjectRegistry::newNumber() {
    do {
        ++m_lastNumber;
    } while (m_objects.count(m_lastNumber) != 0);
    return m_lastNumber;
}

void ObjectRegistry::add(std::uint32_t number, zrkey::ComRef<IDispatch> object) {
    m_objects.emplace(number, std::move(object));
}

zrkey::ComRef<IDispatch> ObjectRegistry::find(std::uint32_t number) const {
    const auto found = m_objects.find(number);
    return found != m_objects.end() ? found->second : zrkey::ComRef<IDispatch>();
}

zrkey::ComRef<IDispatch> ObjectRegistry::remove(std::uint32_t number) {
    const auto node = m_objects.extract(number);
    return node ? std::move(node.mapped()) : zrkey::ComRef<IDispatch>();
}

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
