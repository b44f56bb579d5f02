// UTF-8 to UTF-16 and back, with Windows' results for damaged input and small buffers.
#include <kernel.h>
#include <utf8.h>

#include <algorithm>
#include <climits>
#include <string>
#include <type_traits>

namespace {

constexpr char32_t kReplacement = 0xFFFD;

/// Takes the output of one conversion: counts it when no buffer was given, else fills the buffer.
template <typename Unit>
class Output {
public:
    Output(Unit* target, int size) : target_(target), size_(static_cast<std::size_t>(size)) {}

    bool counting() const { return size_ == 0; }
    std::size_t room() const { return counting() ? SIZE_MAX : size_ - used_; }
    void put(Unit unit) {
        if (!counting()) {
            target_[used_] = unit;
        }
        ++used_;
    }
    int result() const { return used_ > INT_MAX ? 0 : static_cast<int>(used_); }

private:
    Unit* target_;
    std::size_t size_;
    std::size_t used_ = 0;
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

// The end of the invalid sequence at start, for which one replacement stands. A sequence that
// would reach past the end swallows what is left, a terminator included; another one ends before
// the first byte that is no continuation, or after a second byte of a value that no text may have.
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

// Most text is of one unit a character in both encodings.
// False when the target is too small for it.
template <typename From, typename To>
bool putAscii(const From** source, const From* end, Output<To>* output) {
    for (; *source != end && static_cast<std::make_unsigned_t<From>>(**source) < 0x80; ++*source) {
        if (output->room() == 0) {
            return false;
        }
        output->put(static_cast<To>(**source));
    }
    return true;
}

// False when the target is too small. A pair of surrogates is cut when it is the last of the input
// and one unit is left for it.
bool putUtf16(char32_t codePoint, bool last, Output<WCHAR>* output) {
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

template <typename Unit>
std::size_t sourceLength(const Unit* source, int length) {
    return length < 0 ? std::char_traits<Unit>::length(source) + 1
                      : static_cast<std::size_t>(length);
}

}  // namespace

int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int length, WCHAR* target,
                        int size) {
    if (codePage != CP_UTF8 || (flags & ~MB_ERR_INVALID_CHARS) != 0 || source == nullptr ||
        length == 0 || size < 0 || (size > 0 && target == nullptr)) {
        return 0;
    }
    const char* const end = source + sourceLength(source, length);
    Output<WCHAR> output(target, size);
    bool invalid = false;
    while (putAscii(&source, end, &output) && source != end) {
        const char* const valid = utf8::find_invalid(source, end);
        while (source != valid) {
            const char32_t codePoint = utf8::unchecked::next(source);
            if (!putUtf16(codePoint, source == end, &output)) {
                return 0;
            }
        }
        if (source != end) {
            invalid = true;
            source = skipInvalid(source, end);
            if (!putUtf16(kReplacement, source == end, &output)) {
                return 0;
            }
        }
    }
    return source != end || (invalid && (flags & MB_ERR_INVALID_CHARS) != 0) ? 0 : output.result();
}

int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int length, LPSTR target,
                        int size, LPCSTR defaultChar, BOOL* defaultUsed) {
    if (codePage != CP_UTF8 || (flags & ~WC_ERR_INVALID_CHARS) != 0 || source == nullptr ||
        length == 0 || size < 0 || (size > 0 && target == nullptr) || defaultChar != nullptr ||
        defaultUsed != nullptr) {
        return 0;
    }
    const LPCWCH end = source + sourceLength(source, length);
    Output<char> output(target, size);
    bool invalid = false;
    while (putAscii(&source, end, &output) && source != end) {
        char bytes[4];
        const char* const bytesEnd =
            utf8::unchecked::append(nextCodePoint(&source, end, &invalid), bytes);
        if (output.room() < static_cast<std::size_t>(bytesEnd - bytes)) {
            return 0;
        }
        std::for_each(static_cast<const char*>(bytes), bytesEnd,
                      [&output](char byte) { output.put(byte); });
    }
    return source != end || (invalid && (flags & WC_ERR_INVALID_CHARS) != 0) ? 0 : output.result();
}
