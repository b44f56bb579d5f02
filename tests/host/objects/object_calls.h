// Calls of members by name, as front ends make them.
#pragma once

#include <vector>

#include "host/objects/provider_object.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {

inline host::Value call(const host::ObjectRef& object, const char* name,
                        const std::vector<host::Value>& arguments = {}) {
    return host::callMember(*object, *host::findMember(object->objectClass(), name), arguments);
}

/// Calls a member that returns an object.
inline host::ObjectRef open(const host::ObjectRef& object, const char* name,
                            const std::vector<host::Value>& arguments = {}) {
    return std::get<host::ObjectRef>(call(object, name, arguments));
}

inline host::Value text(const std::string& value) {
    return host::toWideText(value);
}

/// Calls a member that fails.
/// @return what its error says.
inline std::string problemOf(const host::ObjectRef& object, const char* name,
                             const std::vector<host::Value>& arguments = {}) {
    try {
        call(object, name, arguments);
    } catch (const host::CallError& error) {
        return error.what();
    }
    return "no failure";
}

inline std::shared_ptr<host::ProviderObject> makeProviderObject() {
    std::shared_ptr<host::ProviderObject> provider;
    EXPECT_EQ(S_OK, host::ProviderObject::create(provider));
    return provider;
}

/// Those of the calls whose names begin with one of these.
inline Lines callsOf(Recording& module, const Lines& functions) {
    Lines calls = module.takeCalls();
    std::erase_if(calls, [&](const std::string& line) {
        return std::none_of(functions.begin(), functions.end(), [&](const std::string& function) {
            return line.starts_with(function + "(");
        });
    });
    return calls;
}

}  // namespace zr::test
