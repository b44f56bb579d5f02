// Conversions between UTF-8 and UTF-16, over the services of the platform.
#include "runtime/string_convert.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <new>

#include "platform/kernel.h"
#include "runtime/diagnostics.h"

namespace {

/// Calls SysAllocString of the automation platform that the process has loaded. The function is
/// looked up for each string.
BSTR allocateThroughPlatform(const OLECHAR* text) {
    const HMODULE platform = LoadLibraryA("OleAut32.dll");
    if (!platform) {
        return nullptr;
    }
    using SysAllocStringFunction = BSTR(STDAPICALLTYPE*)(const OLECHAR*);
    const auto allocate = reinterpret_cast<SysAllocStringFunction>(
        reinterpret_cast<void*>(GetProcAddress(platform, "SysAllocString")));
    const BSTR result = allocate ? allocate(text) : nullptr;
    FreeLibrary(platform);
    return result;
}

BSTR allocateString(const char* utf8, const char* functionName) {
    // Text has no more units in UTF-16 than bytes in UTF-8, so one conversion is enough. One more unit,
    // for a terminator: Wine loses it after a sequence that is cut short.
    const std::size_t most = utf8 ? std::strlen(utf8) + 1 : 1;
    OLECHAR few[128];
    const bool isShort = most < std::size(few);
    const std::unique_ptr<OLECHAR[]> many(isShort ? nullptr : new (std::nothrow) OLECHAR[most + 1]);
    OLECHAR* const text = isShort ? few : many.get();
    if (!text) {
        return nullptr;
    }
    text[0] = 0;  // an empty text stays as it is
    const int units = ZConvUTF8ToUnicode(
        utf8, text, static_cast<unsigned int>(std::min<std::size_t>(most, INT_MAX)));
    if (units == 0) {
        zr::consoleErrorFormat("Error: %s() return %d\n", functionName, 0);
        return nullptr;
    }
    text[units] = 0;
    return allocateThroughPlatform(text);
}

BSTR allocateStringLen(const char* utf8, unsigned int len, BSTR (*allocate)(const char*)) {
    if (!utf8) {
        return nullptr;
    }
    if (std::memchr(utf8, 0, len)) {
        return allocate(utf8);
    }
    const std::unique_ptr<char[]> copy(new (std::nothrow) char[static_cast<std::size_t>(len) + 1]);
    if (!copy) {
        return nullptr;
    }
    std::memcpy(copy.get(), utf8, len);
    copy[len] = 0;
    return allocate(copy.get());
}

}  // namespace

int ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen) {
    if (!utf8 || !*utf8) {
        return 1;
    }
    return MultiByteToWideChar(CP_UTF8, 0, utf8, -1, out, static_cast<int>(outLen));
}

int ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen) {
    if (!w) {
        return 0;
    }
    return WideCharToMultiByte(CP_UTF8, 0, w, -1, out, static_cast<int>(outLen), nullptr, nullptr);
}

BSTR ZSysAllocUTF8String(const char* utf8) {
    return allocateString(utf8, "ZConvUTF8ToUnicode");
}

BSTR ZSysAllocUTF8StringLen(const char* utf8, unsigned int len) {
    return allocateStringLen(utf8, len, ZSysAllocUTF8String);
}

int ZSysStringGetStreamSize(BSTR s) {
    return s ? static_cast<int>(SysStringByteLen(s) + 6) : 4;
}

int ZBstrToUtf8(BSTR s, char* out, unsigned int outSize) {
    const int needed = ZConvUnicodeToUTF8(s, nullptr, 0);
    if (needed == 0 || !out || static_cast<unsigned int>(needed) > outSize) {
        return needed;
    }
    std::memset(out, 0, outSize);
    return ZConvUnicodeToUTF8(s, out, static_cast<unsigned int>(needed)) == 0 ? 0 : needed;
}

std::size_t strlen_unicode(const OLECHAR* text) {
    std::size_t length = 0;
    while (text[length]) {
        ++length;
    }
    return length;
}

std::size_t strlen_utf8(const char* text) {
    // Volatile: the compiler must not assume that the loop ends.
    const volatile char* at = text;
    std::size_t count = 0;
    while (*at) {
        const auto lead = static_cast<unsigned char>(*at);
        if (lead >= 0x80 && lead < 0xC0) {
            ++at;
            continue;
        }
        ++count;
        switch (lead >> 4) {
            case 0xC:
                at += 2;
                break;
            case 0xD:  // counted without advancing
                break;
            case 0xE:
                at += 3;
                break;
            case 0xF:
                at += 4;
                break;
            default:
                ++at;
        }
    }
    return count;
}

int _ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen) {
    return ZConvUTF8ToUnicode(utf8, out, outLen);
}

int _ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen) {
    return ZConvUnicodeToUTF8(w, out, outLen);
}

BSTR _ZSysAllocUTF8String(const char* utf8) {
    zr::consoleOutFormat("_ZSysAllocUTF8String call...[%s]\n", utf8 ? utf8 : "(null)");
    return allocateString(utf8, "_ZConvUTF8ToUnicode");
}

BSTR _ZSysAllocUTF8StringLen(const char* utf8, unsigned int len) {
    return allocateStringLen(utf8, len, _ZSysAllocUTF8String);
}

int _ZSysStringGetStreamSize(BSTR s) {
    return ZSysStringGetStreamSize(s);
}

int _ZBstrToUtf8(BSTR s, char* out, unsigned int outSize) {
    return ZBstrToUtf8(s, out, outSize);
}

std::size_t _strlen_unicode(const OLECHAR* text) {
    return strlen_unicode(text);
}

std::size_t _strlen_utf8(const char* text) {
    return strlen_utf8(text);
}
