// Conversion between UTF-8 and UTF-16, with the results of Windows for invalid input and small
// buffers.
#include "platform/linux/kernel.h"

#include <utf8.h>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <string>
#include <type_traits>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Counts the units of a conversion that has no target.
template <class Unit>
class Counter {
public:
    std::size_t room() const { return SIZE_MAX; }
    void put(Unit) { ++m_count; }
    template <class From>
    void putAscii(const From*, std::size_t length) {
        m_count += length;
    }
    void putSequence(char32_t, std::size_t length) { m_count += length; }
    int result() const { return m_count > INT_MAX ? 0 : static_cast<int>(m_count); }

private:
    std::size_t m_count = 0;
};

/// Writes the units of a conversion. The caller looks at the room first.
template <class Unit>
class Buffer {
public:
    Buffer(Unit* target, int size) : m_target(target), m_next(target), m_end(target + size) {}

    std::size_t room() const { return static_cast<std::size_t>(m_end - m_next); }
    void put(Unit unit) { *m_next++ = unit; }
    template <class From>
    void putAscii(const From* text, std::size_t length) {
        m_next = std::transform(text, text + length, m_next,
                                [](From character) { return static_cast<Unit>(character); });
    }
    void putSequence(char32_t codePoint, std::size_t) {
        m_next = utf8::unchecked::append(codePoint, m_next);
    }
    int result() const { return static_cast<int>(m_next - m_target); }

private:
    Unit* m_target;
    Unit* m_next;
    Unit* m_end;
};

std::size_t sequenceLength(unsigned char lead) {
    if (lead >= 0xC2 && lead <= 0xDF) {
        return 2;
    }
    if (lead >= 0xE0 && lead <= 0xEF) {
        return 3;
    }
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 1;
}

bool isContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

// The end of the invalid sequence at start, which one replacement character stands for. A sequence
// whose lead byte needs more bytes than are left extends to the end. Any other sequence ends
// before the first byte that is no continuation, or after a second byte that makes the value
// invalid.
const char* skipInvalid(const char* start, const char* end) {
    const std::size_t length = sequenceLength(static_cast<unsigned char>(*start));
    if (length > static_cast<std::size_t>(end - start)) {
        return end;
    }
    const char* next = start + 1;
    if (length > 1 && isContinuation(*next)) {
        ++next;
        const auto lead = static_cast<unsigned char>(start[0]);
        const auto second = static_cast<unsigned char>(start[1]);
        const bool valid = !(lead == 0xF0 && second < 0x90) && !(lead == 0xF4 && second >= 0x90);
        if (valid && length == 4 && isContinuation(*next)) {
            ++next;
        }
    }
    return next;
}

// Reads the sequence at source and advances behind it. Returns false and reads nothing when it is
// not valid.
bool readSequence(const char** source, const char* end, char32_t* codePoint) {
    static constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(**source);
    const std::size_t length = sequenceLength(lead);
    if (length == 1 || length > static_cast<std::size_t>(end - *source)) {
        return false;
    }
    char32_t value = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const char byte = (*source)[i];
        if (!isContinuation(byte)) {
            return false;
        }
        value = value << 6 | (static_cast<unsigned char>(byte) & 0x3Fu);
    }
    if (value < kSmallest[length] || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
        return false;
    }
    *source += length;
    *codePoint = value;
    return true;
}

template <class Unit>
bool isAscii(Unit unit) {
    return static_cast<std::make_unsigned_t<Unit>>(unit) < 0x80;
}

// The number of ASCII characters at the start of a text. They are looked at in words of eight
// bytes.
template <class Unit>
std::size_t asciiLength(const Unit* text, const Unit* end) {
    constexpr std::uint64_t kNotAscii = sizeof(Unit) == 1 ? 0x8080808080808080 : 0xFF80FF80FF80FF80;
    constexpr std::size_t kUnitsInWord = sizeof kNotAscii / sizeof(Unit);
    const Unit* next = text;
    while (static_cast<std::size_t>(end - next) >= kUnitsInWord) {
        std::uint64_t word;
        std::memcpy(&word, next, sizeof word);
        if ((word & kNotAscii) != 0) {
            break;
        }
        next += kUnitsInWord;
    }
    return static_cast<std::size_t>(std::find_if_not(next, end, isAscii<Unit>) - text);
}

// Converts ASCII characters, which are one unit in both encodings. Returns false when the target is
// too small.
template <class From, class Output>
bool putAscii(const From** source, const From* end, Output* output) {
    const std::size_t length = asciiLength(*source, end);
    const std::size_t taken = std::min(length, output->room());
    output->putAscii(*source, taken);
    *source += taken;
    return taken == length;
}

// Returns false when the target is too small. As on Windows, a surrogate pair at the end of the
// input is cut when there is room for one unit.
template <class Output>
bool putUtf16(char32_t codePoint, bool last, Output* output) {
    if (output->room() == 0) {
        return false;
    }
    if (codePoint <= 0xFFFF) {
        output->put(static_cast<WCHAR>(codePoint));
        return true;
    }
    output->put(static_cast<WCHAR>(0xD7C0 + (codePoint >> 10)));
    if (output->room() == 0) {
        return last;
    }
    output->put(static_cast<WCHAR>(0xDC00 + (codePoint & 0x3FF)));
    return true;
}

char32_t nextCodePoint(LPCWCH* source, LPCWCH end, bool* invalid) {
    const char32_t unit = *(*source)++;
    if (unit < 0xD800 || unit > 0xDFFF) {
        return unit;
    }
    if (unit < 0xDC00 && *source != end && **source >= 0xDC00 && **source <= 0xDFFF) {
        return ((unit - 0xD7C0) << 10) + (*(*source)++ & 0x3FFu);
    }
    *invalid = true;
    return kReplacement;
}

std::size_t utf8Length(char32_t codePoint) {
    if (codePoint < 0x800) {
        return codePoint < 0x80 ? 1 : 2;
    }
    return codePoint < 0x10000 ? 3 : 4;
}

template <class Unit>
std::size_t sourceLength(const Unit* source, int length) {
    return length < 0 ? std::char_traits<Unit>::length(source) + 1
                      : static_cast<std::size_t>(length);
}

template <class Output>
int toUtf16(const char* source, const char* end, bool isStrict, Output output) {
    // The terminator is converted separately: terminated input gives terminated output, even after
    // an incomplete sequence.
    const bool isTerminated = end[-1] == '\0';
    const char* const textEnd = isTerminated ? end - 1 : end;
    bool invalid = false;
    while (putAscii(&source, textEnd, &output) && source != textEnd) {
        do {
            char32_t codePoint = kReplacement;
            if (!readSequence(&source, textEnd, &codePoint)) {
                invalid = true;
                source = std::min(skipInvalid(source, end), textEnd);
            }
            if (!putUtf16(codePoint, source == end, &output)) {
                return 0;
            }
        } while (source != textEnd && !isAscii(*source));
    }
    if (source != textEnd || (isTerminated && !putUtf16(U'\0', false, &output))) {
        return 0;
    }
    return invalid && isStrict ? 0 : output.result();
}

template <class Output>
int toUtf8(LPCWCH source, LPCWCH end, bool isStrict, Output output) {
    bool invalid = false;
    while (putAscii(&source, end, &output) && source != end) {
        do {
            const char32_t codePoint = nextCodePoint(&source, end, &invalid);
            const std::size_t length = utf8Length(codePoint);
            if (length > output.room()) {
                return 0;
            }
            output.putSequence(codePoint, length);
        } while (source != end && !isAscii(*source));
    }
    return source != end || (invalid && isStrict) ? 0 : output.result();
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int length, WCHAR* target,
                        int size) {
    if (codePage != CP_UTF8 || (flags & ~MB_ERR_INVALID_CHARS) != 0 || !source || length == 0 ||
        size < 0 || (size > 0 && !target)) {
        return 0;
    }
    const char* const end = source + sourceLength(source, length);
    const bool isStrict = flags != 0;
    return size == 0 ? toUtf16(source, end, isStrict, Counter<WCHAR>())
                     : toUtf16(source, end, isStrict, Buffer<WCHAR>(target, size));
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int length, LPSTR target,
                        int size, LPCSTR defaultChar, BOOL* defaultUsed) {
    if (codePage != CP_UTF8 || (flags & ~WC_ERR_INVALID_CHARS) != 0 || !source || length == 0 ||
        size < 0 || (size > 0 && !target) || defaultChar || defaultUsed) {
        return 0;
    }
    const LPCWCH end = source + sourceLength(source, length);
    const bool isStrict = flags != 0;
    return size == 0 ? toUtf8(source, end, isStrict, Counter<char>())
                     : toUtf8(source, end, isStrict, Buffer<char>(target, size));
}
