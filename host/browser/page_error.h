// Why a request of a page failed, as the page reads it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <exception>
#include <initializer_list>
#include <optional>
#include <string>

#include <nlohmann/json.hpp>

namespace zr::host {

/// The codes of docs/web-protocol.md.
namespace page_code {

inline constexpr const char* kUnsupported = "unsupported";
inline constexpr const char* kNotAllowed = "not-allowed";
inline constexpr const char* kNoModule = "no-module";
inline constexpr const char* kSettings = "settings";
inline constexpr const char* kTooMany = "too-many";
inline constexpr const char* kTooLarge = "too-large";
inline constexpr const char* kUnknownMember = "unknown-member";
inline constexpr const char* kArguments = "arguments";
inline constexpr const char* kClosed = "closed";
inline constexpr const char* kRefused = "refused";
inline constexpr const char* kWrongPin = "wrong-pin";
inline constexpr const char* kPinLocked = "pin-locked";
inline constexpr const char* kNotLoggedIn = "not-logged-in";
inline constexpr const char* kTokenRemoved = "token-removed";
inline constexpr const char* kCancelled = "cancelled";
inline constexpr const char* kWait = "wait";
inline constexpr const char* kNoActivation = "no-activation";
inline constexpr const char* kBusy = "busy";
inline constexpr const char* kNoPrompt = "no-prompt";
inline constexpr const char* kAborted = "aborted";
inline constexpr const char* kDeadline = "deadline";
inline constexpr const char* kOutOfMemory = "out-of-memory";
inline constexpr const char* kInternal = "internal";

}  // namespace page_code

class PageError : public std::exception {
public:
    /// @param code     one of page_code.
    /// @param message  a sentence for developers, without paths of this machine.
    PageError(const char* code, std::string message)
        : m_code(code), m_message(std::move(message)) {}

    /// An argument of a request is at fault.
    /// @param index    from 0.
    /// @param problem  "is not base64url".
    static PageError wrongArgument(std::size_t index, const std::string& problem);

    const char* code() const { return m_code; }
    bool isOneOf(std::initializer_list<const char*> codes) const;
    const char* what() const noexcept override { return m_message.c_str(); }
    PageError& withResult(std::uint32_t result);
    PageError& withArgument(std::size_t index);
    /// The value of the key "error".
    /// @param member  that was called; empty: none.
    nlohmann::json json(const std::string& member) const;

private:
    const char* m_code;
    std::string m_message;
    std::optional<std::uint32_t> m_result;
    std::optional<std::size_t> m_argument;
};

/// The error that the exception being handled stands for. Call it in a catch block. What a page must
/// not read, such as paths, is written to standard error.
PageError currentPageError();

}  // namespace zr::host
