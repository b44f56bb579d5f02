// Text that is wiped when it goes: a PIN, and the BSTR made of it for a call.
#pragma once

#include <zrkey/automation.h>

#include <array>
#include <cstddef>
#include <string_view>

namespace zr::host {

/// Overwrites memory in a way that the compiler keeps.
void wipe(void* memory, std::size_t size);

/// A PIN in UTF-8, of the length that the library takes at most.
class Secret {
public:
    static constexpr std::size_t kCapacity = 127;

    Secret() = default;
    Secret(Secret&& other) noexcept;
    Secret& operator=(Secret&& other) noexcept;
    ~Secret();
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;

    /// @return false when it is full; it is left as it was.
    bool append(char byte);
    std::string_view view() const { return {m_bytes.data(), m_size}; }

private:
    void take(Secret& other);

    std::array<char, kCapacity> m_bytes = {};
    std::size_t m_size = 0;
};

/// A secret as a string for a call.
class SecretText {
public:
    explicit SecretText(const Secret& secret);
    ~SecretText();
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;

    BSTR get() const { return m_text; }

private:
    BSTR m_text;
};

}  // namespace zr::host
