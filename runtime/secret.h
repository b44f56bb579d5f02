// Text that must not stay in memory: UTF-8 copies that are wiped when they are destroyed.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>
#include <cstring>

#include "runtime/string_convert.h"

namespace zr {

/// Fills memory; the compiler cannot optimise this away.
inline void secureFill(void* memory, int value, std::size_t size) {
    std::memset(memory, value, size);
    // For the compiler, this reads the memory.
    __asm__ __volatile__("" : : "r"(memory) : "memory");
}

/// Zeroes memory; the compiler cannot optimise this away.
inline void wipe(void* memory, std::size_t size) {
    secureFill(memory, 0, size);
}

/// A string as UTF-8 in a buffer of Size bytes, which the destructor wipes.
template <std::size_t Size>
class SecretText {
public:
    /// @param text  null reads as empty.
    explicit SecretText(BSTR text) {
        const int size = ZBstrToUtf8(text, m_text, Size);
        m_fits = !text || (size > 0 && size <= static_cast<int>(Size));
    }
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText() { wipe(m_text, Size); }

    /// Whether the text could be converted and fits the buffer with its terminator. Otherwise the
    /// buffer holds an empty text.
    bool fits() const { return m_fits; }
    const char* c_str() const { return m_text; }
    /// The length in bytes without the terminator.
    std::size_t length() const { return std::strlen(m_text); }

private:
    char m_text[Size] = {};
    bool m_fits;
};

}  // namespace zr
