// Text that is wiped when it goes: a PIN, and the BSTR made of it for a call.
#include "secret.h"

#include <new>

#include "text.h"

namespace zr::host {

void wipe(void* memory, std::size_t size) {
    volatile auto* bytes = static_cast<volatile unsigned char*>(memory);
    for (std::size_t i = 0; i < size; ++i) {
        bytes[i] = 0;
    }
}

Secret::Secret(Secret&& other) noexcept {
    take(other);
}

Secret& Secret::operator=(Secret&& other) noexcept {
    if (this != &other) {
        take(other);
    }
    return *this;
}

Secret::~Secret() {
    wipe(m_bytes.data(), m_bytes.size());
}

bool Secret::append(char byte) {
    if (m_size == kCapacity) {
        return false;
    }
    m_bytes[m_size++] = byte;
    return true;
}

void Secret::take(Secret& other) {
    m_bytes = other.m_bytes;
    m_size = other.m_size;
    wipe(other.m_bytes.data(), other.m_bytes.size());
    other.m_size = 0;
}

SecretText::SecretText(const Secret& secret) {
    // Has its final size from the start, so that no other copy is left behind.
    OleString wide = toUtf16(secret.view());
    m_text = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    wipe(wide.data(), wide.size() * sizeof(OLECHAR));
    if (m_text == nullptr) {
        throw std::bad_alloc();
    }
}

SecretText::~SecretText() {
    wipe(m_text, SysStringByteLen(m_text));
    SysFreeString(m_text);
}

}  // namespace zr::host
