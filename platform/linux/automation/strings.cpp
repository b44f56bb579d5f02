// BSTR: UTF-16 text behind its length in bytes, terminated after the last byte.
#include <zrkey/automation.h>

#include <limits>
#include <string>

#include "allocator.h"

namespace {

// The four bytes before the text hold its length; the others keep it aligned.
constexpr std::size_t kPrefixSize = 8;
constexpr UINT kMaxBytes = std::numeric_limits<UINT>::max() - 16;

BSTR allocateBytes(const void* bytes, UINT length) {
    if (length > kMaxBytes) {
        return nullptr;
    }
    // An odd length leaves half a unit, which needs a whole terminator behind it all the same.
    const std::size_t size = length + length % sizeof(OLECHAR);
    auto* block = static_cast<char*>(zr::allocate(kPrefixSize + size + sizeof(OLECHAR)));
    if (block == nullptr) {
        return nullptr;
    }
    char* text = block + kPrefixSize;
    std::memcpy(text - sizeof length, &length, sizeof length);
    if (bytes != nullptr) {
        std::memcpy(text, bytes, length);
    }
    return reinterpret_cast<BSTR>(text);
}

}  // namespace

extern "C" {

BSTR SysAllocString(const OLECHAR* text) {
    if (text == nullptr) {
        return nullptr;
    }
    const std::size_t length = std::char_traits<OLECHAR>::length(text);
    if (length > kMaxBytes / sizeof(OLECHAR)) {
        return nullptr;
    }
    return SysAllocStringLen(text, static_cast<UINT>(length));
}

BSTR SysAllocStringLen(const OLECHAR* text, UINT length) {
    if (length > kMaxBytes / sizeof(OLECHAR)) {
        return nullptr;
    }
    return allocateBytes(text, length * static_cast<UINT>(sizeof(OLECHAR)));
}

BSTR SysAllocStringByteLen(const char* bytes, UINT length) {
    return allocateBytes(bytes, length);
}

void SysFreeString(BSTR text) {
    if (text != nullptr) {
        zr::release(reinterpret_cast<char*>(text) - kPrefixSize);
    }
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR text) {
    UINT length = 0;
    if (text != nullptr) {
        std::memcpy(&length, reinterpret_cast<const char*>(text) - sizeof length, sizeof length);
    }
    return length;
}

}  // extern "C"
