// The arguments of one call, checked, and the ways in which a member reads them and fails.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/objects/object.h"

namespace zr::host {

class Arguments {
public:
    /// Checks number and types. Throws a CallError. Below, an index is that of a parameter among
    /// those that are used.
    /// @param values  borrowed. Kind::kNothing at the end stands for an argument that was left out.
    Arguments(const Member& member, const std::vector<Value>& values);

    /// The name of the member.
    const char* member() const { return m_member.name; }
    /// Whether an optional argument was given.
    bool has(std::size_t index) const { return index < m_values.size(); }
    LONG integer(std::size_t index, LONG missing = 0) const;
    const WideText& text(std::size_t index) const;
    std::string_view bytes(std::size_t index) const;
    /// The bytes for a call of the library. Not erased: they are data, not a PIN.
    zrkey::ByteArray byteArray(std::size_t index) const;
    /// An object of the class that the parameter states.
    template <class T>
    T& object(std::size_t index) const {
        return static_cast<T&>(*std::get<ObjectRef>(value(index)));
    }
    const Value& value(std::size_t index) const { return *m_values[index]; }

    /// Throws a CallError when a member does not take this number of arguments.
    /// @param given  without those that are left out at the end.
    static void checkCount(const Member& member, std::size_t given);

    /// Throws a CallError when the library's result is a failure.
    void require(HRESULT result) const;
    /// The failure of an argument of the right type that has a wrong value.
    CallError wrong(std::size_t index, const std::string& problem) const;
    CallError refused(HRESULT result, const std::string& cause = {}) const;
    CallError closed() const;

private:
    void check(const Parameter& parameter) const;
    CallError faulty(std::size_t index, CallError::Fault fault, const std::string& problem) const;

    const Member& m_member;
    std::vector<const Value*> m_values;    ///< of the parameters that are used
    std::vector<std::size_t> m_positions;  ///< of the same, among those that were given
};

/// Calls a function of a class for any object.
template <auto kFunction>
struct Entry;
template <class T, Value (*kFunction)(T&, const Arguments&)>
struct Entry<kFunction> {
    static Value call(Object& object, const Arguments& arguments) {
        return kFunction(static_cast<T&>(object), arguments);
    }
};

/// One call of the library, of the same name.
/// @tparam kFunction  takes the object of its class and the arguments.
template <auto kFunction>
Member libraryCall(const char* name, std::vector<Parameter> parameters, Kind result,
                   const char* help) {
    return {name, std::move(parameters), result, MemberOrigin::kLibrary,
            help, Entry<kFunction>::call};
}
/// Made of calls of the library.
template <auto kFunction>
Member composedCall(const char* name, std::vector<Parameter> parameters, Kind result,
                    const char* help) {
    return {name, std::move(parameters), result, MemberOrigin::kComposed,
            help, Entry<kFunction>::call};
}
/// Calls the PKCS #11 module.
template <auto kFunction>
Member extensionCall(const char* name, std::vector<Parameter> parameters, Kind result,
                     const char* help) {
    return {name, std::move(parameters), result, MemberOrigin::kExtension,
            help, Entry<kFunction>::call};
}

/// The bytes that an operation handed out. Throws std::bad_alloc when there are none: when out of
/// memory, the library returns S_OK and leaves its result untouched.
Value bytesOf(const zrkey::ByteArray& result);
/// A text that an operation returned; empty when it returned none.
Value textOf(const zrkey::Text& text);

}  // namespace zr::host
