// A PIN, and the BSTR made of it for a call; both are erased on destruction, and kept off the disk
// until then.
#pragma once

#include <zrkey/automation.h>

#include <array>
#include <cstddef>
#include <string_view>

#include "host/system/secret_memory.h"

namespace zr::host {

/// A PIN in UTF-8, at most as long as the library accepts. Moves and does not copy.
class Pin {
public:
    static constexpr std::size_t kCapacity = 127;

    Pin() = default;
    Pin(Pin&& other) noexcept;
    Pin& operator=(Pin&& other) noexcept;
    ~Pin();
    Pin(const Pin&) = delete;
    Pin& operator=(const Pin&) = delete;

    /// @return false, with nothing changed, when the PIN is full.
    bool append(char byte);
    std::string_view view() const { return {m_bytes.data(), m_size}; }

private:
    void take(Pin& other);

    std::array<char, kCapacity> m_bytes = {};
    std::size_t m_size = 0;
    SecretMemory m_protection{m_bytes.data(), m_bytes.size()};
};

/// A PIN as a BSTR for a call.
class PinText {
public:
    /// @param pin  valid UTF-8.
    explicit PinText(const Pin& pin);
    ~PinText();
    PinText(const PinText&) = delete;
    PinText& operator=(const PinText&) = delete;

    BSTR get() const { return m_text; }

private:
    BSTR m_text;
    SecretMemory m_protection;
};

}  // namespace zr::host
