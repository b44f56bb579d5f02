// Why a call of a member failed, for every front end.
#pragma once

#include <zrkey/zrkey.hpp>

#include <cstddef>
#include <exception>
#include <string>

namespace zr::host {

class CallError : public std::exception {
public:
    enum class Kind {
        kRefused,   ///< the library, the module or the token refused
        kCount,     ///< too few or too many arguments
        kArgument,  ///< one argument has a wrong type or value
        kClosed     ///< the object was closed
    };
    /// What is wrong with an argument.
    enum class Fault {
        kType,   ///< another type, or a number that is not whole
        kRange,  ///< too large for the calls of the library
        kValue   ///< the type is right, the value is not
    };

    /// @param member  "VerifyPIN".
    /// @param cause   why, when more is known than the result; may be empty.
    static CallError refused(std::string member, HRESULT result, const std::string& cause = {});
    /// @param takes  "takes 1 or 2 arguments".
    static CallError wrongCount(std::string member, const std::string& takes);
    /// @param index    of the argument, from 0.
    /// @param problem  "is not a number".
    static CallError wrongArgument(std::string member, std::size_t index, Fault fault,
                                   const std::string& problem);
    static CallError closed(std::string member);

    Kind kind() const { return m_kind; }
    const std::string& member() const { return m_member; }
    /// The library's result; E_INVALIDARG for wrong arguments, E_UNEXPECTED for a closed object.
    zrkey::Result result() const { return m_result; }
    /// Of the argument at fault, from 0; for kArgument.
    std::size_t argument() const { return m_argument; }
    /// For kArgument.
    Fault fault() const { return m_fault; }
    /// "VerifyPIN failed: E_FAIL (0x80004005)", "VerifyPIN: argument 1 is not a text".
    const char* what() const noexcept override { return m_text.c_str(); }

private:
    CallError(Kind kind, std::string member, HRESULT result, std::string text)
        : m_kind(kind), m_member(std::move(member)), m_result(result), m_text(std::move(text)) {}

    Kind m_kind;
    std::string m_member;
    zrkey::Result m_result;
    std::size_t m_argument = 0;
    Fault m_fault = Fault::kType;
    std::string m_text;
};

}  // namespace zr::host
