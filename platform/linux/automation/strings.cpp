// BSTR: terminated UTF-16 text after its length in bytes.
#include <zrkey/automation.h>

#include <limits>
#include <string>

#include "platform/linux/automation/allocator.h"

namespace {

// The last four bytes of the prefix hold the length; the others align the text.
constexpr std::size_t kPrefixSize = 8;
constexpr UINT kMaxBytes = std::numeric_limits<UINT>::max() - 16;

BSTR allocateBytes(const void* bytes, UINT length) {
    if (length > kMaxBytes) {
        return nullptr;
    }
    // Text of odd length ends in half a unit; the terminator follows a whole unit.
    const std::size_t size = length + length % sizeof(OLECHAR);
    auto* block = static_cast<char*>(zr::allocate(kPrefixSize + size + sizeof(OLECHAR)));
    if (!block) {
        return nullptr;
    }
    char* text = block + kPrefixSize;
    std::memcpy(text - sizeof length, &length, sizeof length);
    if (bytes) {
        std::memcpy(text, bytes, length);
    }
    return reinterpret_cast<BSTR>(text);
}

}  // namespace

extern "C" {

BSTR SysAllocString(const OLECHAR* text) {
    if (!text) {
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
    if (text) {
        zr::release(reinterpret_cast<char*>(text) - kPrefixSize);
    }
}

UINT SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(OLECHAR));
}

UINT SysStringByteLen(BSTR text) {
    UINT length = 0;
    if (text) {
        std::memcpy(&length, reinterpret_cast<const char*>(text) - sizeof length, sizeof length);
    }
    return length;
}

}  // extern "C"
