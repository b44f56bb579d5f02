// A PIN, and the BSTR made of it for a call; both are erased on destruction.
#include "host/token/pin.h"

#include <utf8cpp/utf8.h>

#include <new>

#include "host/system/system.h"

namespace zr::host {

Pin::Pin(Pin&& other) noexcept {
    take(other);
}

Pin& Pin::operator=(Pin&& other) noexcept {
    if (this != &other) {
        take(other);
    }
    return *this;
}

Pin::~Pin() {
    secureErase(m_bytes.data(), m_bytes.size());
}

bool Pin::append(char byte) {
    if (m_size == kCapacity) {
        return false;
    }
    m_bytes[m_size++] = byte;
    return true;
}

void Pin::take(Pin& other) {
    m_bytes = other.m_bytes;
    m_size = other.m_size;
    secureErase(other.m_bytes.data(), other.m_bytes.size());
    other.m_size = 0;
}

namespace {

/// Throws std::bad_alloc when there is no memory.
BSTR makeText(const Pin& pin) {
    // UTF-16 never needs more units than UTF-8 needs bytes.
    std::array<OLECHAR, Pin::kCapacity> units = {};
    const SecretMemory protection(units.data(), sizeof units);
    const std::string_view bytes = pin.view();
    const auto end = utf8::utf8to16(bytes.begin(), bytes.end(), units.begin());
    const BSTR text = SysAllocStringLen(units.data(), static_cast<UINT>(end - units.begin()));
    secureErase(units.data(), sizeof units);
    if (!text) {
        throw std::bad_alloc();
    }
    return text;
}

}  // namespace

PinText::PinText(const Pin& pin)
    : m_text(makeText(pin)), m_protection(m_text, SysStringByteLen(m_text)) {}

PinText::~PinText() {
    secureErase(m_text, SysStringByteLen(m_text));
    SysFreeString(m_text);
}

}  // namespace zr::host
