// Numbers in texts: the grammar of the automation functions, with the signs of the "C" locale.
#include "text_number.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace zr {
namespace {

// Far beyond every exponent a double has, far below what overflows the sums made with it.
constexpr LONGLONG kExponentLimit = 1000000;

bool isBlank(OLECHAR c) {
    return c == u' ' || (c >= u'\t' && c <= u'\r') || c == u'\u0085' || c == u'\u00A0' ||
           c == u'\u1680' || (c >= u'\u2000' && c <= u'\u200A') || c == u'\u2028' ||
           c == u'\u2029' || c == u'\u202F' || c == u'\u205F' || c == u'\u3000';
}

bool isDigit(OLECHAR c) {
    return c >= u'0' && c <= u'9';
}

int digitValue(OLECHAR c) {
    if (isDigit(c)) {
        return c - u'0';
    }
    const int lower = c | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : 99;
}

/// Walks over one text and fills one number.
class Parser {
public:
    Parser(const OLECHAR* text, TextNumber* number) : at_(text), number_(*number) {}

    bool parse() {
        readLeading();
        if (*at_ == u'&' ? !readBits() : !readDecimal()) {
            return false;
        }
        readTrailing();
        number_.negative = leadingMinus_ || trailingMinus_ || closed_;
        // A minus makes up for a parenthesis that is not closed.
        return *at_ == u'\0' && (number_.negative || !open_);
    }

private:
    // Takes the character when it is the one asked for and was not there before.
    bool takeOnce(OLECHAR c, bool* seen) {
        if (*at_ != c || *seen) {
            return false;
        }
        *seen = true;
        ++at_;
        return true;
    }

    void skipBlanks() {
        while (isBlank(*at_)) {
            ++at_;
        }
    }

    void readLeading() {
        do {
            skipBlanks();
        } while (takeOnce(u'+', &leadingPlus_) || takeOnce(u'-', &leadingMinus_) ||
                 takeOnce(u'(', &open_) || takeOnce(u'$', &currency_));
    }

    // A sign behind the number must not be there before it too; otherwise all may be repeated.
    void readTrailing() {
        const bool decimal = !number_.hexadecimal;
        for (;; ++at_) {
            if (*at_ == u'-' && !leadingMinus_) {
                trailingMinus_ = true;
            } else if (*at_ == u')' && open_) {
                closed_ = true;
            } else if (!isBlank(*at_) && !(*at_ == u'+' && !leadingPlus_) &&
                       !(decimal && (*at_ == u'$' || *at_ == u','))) {
                break;
            }
        }
    }

    bool readBits() {
        const int base = (at_[1] | 0x20) == u'h' ? 16 : (at_[1] | 0x20) == u'o' ? 8 : 0;
        if (base == 0 || currency_ || digitValue(at_[2]) >= base) {
            return false;
        }
        number_.hexadecimal = true;
        for (at_ += 2; digitValue(*at_) < base; ++at_) {
            const auto digit = static_cast<ULONGLONG>(digitValue(*at_));
            number_.tooManyBits |=
                number_.bits > std::numeric_limits<ULONGLONG>::max() / static_cast<ULONGLONG>(base);
            number_.bits = number_.bits * static_cast<ULONGLONG>(base) + digit;
        }
        return true;
    }

    bool readDecimal() {
        bool any = false;
        bool point = false;
        for (;; ++at_) {
            if (isDigit(*at_)) {
                any = true;
                addDigit(static_cast<char>(*at_), point);
            } else if (*at_ == u'.' && !point) {
                point = true;
            } else if (*at_ != u',' || !(any || point)) {
                break;
            }
        }
        if (!any) {
            return false;
        }
        // An amount of money has no exponent.
        return (*at_ | 0x20) != u'e' || (!currency_ && readExponent());
    }

    // Digits beyond those that are kept only tell whether the last kept one is exact.
    void addDigit(char digit, bool fraction) {
        const bool leadingZero = number_.digitCount == 0 && digit == '0';
        if (leadingZero) {
            number_.exponent -= fraction ? 1 : 0;
            return;
        }
        if (number_.digitCount < TextNumber::kMaxDigits) {
            number_.digits[number_.digitCount++] = digit;
        } else if (digit != '0') {
            number_.digits[TextNumber::kMaxDigits - 1] |= 1;
        }
        number_.exponent += fraction ? 0 : 1;
    }

    bool readExponent() {
        ++at_;
        bool minus = false;
        for (; *at_ == u'+' || *at_ == u'-'; ++at_) {
            minus = minus || *at_ == u'-';
        }
        if (!isDigit(*at_)) {
            return false;
        }
        LONGLONG exponent = 0;
        for (; isDigit(*at_); ++at_) {
            exponent = std::min(exponent * 10 + (*at_ - u'0'), kExponentLimit);
        }
        number_.exponent += minus ? -exponent : exponent;
        return true;
    }

    const OLECHAR* at_;
    TextNumber& number_;
    bool leadingPlus_ = false;
    bool leadingMinus_ = false;
    bool trailingMinus_ = false;
    bool open_ = false;
    bool closed_ = false;
    bool currency_ = false;
};

}  // namespace

bool parseNumber(const OLECHAR* text, TextNumber* number) {
    *number = TextNumber();
    return Parser(text, number).parse();
}

HRESULT toReal(const TextNumber& number, double* value) {
    *value = 0;
    if (number.digitCount > 0) {
        // ".DIGITSeEXPONENT"
        char text[TextNumber::kMaxDigits + 32] = ".";
        char* end = std::copy_n(number.digits, number.digitCount, text + 1);
        *end++ = 'e';
        const LONGLONG exponent = std::clamp(number.exponent, -kExponentLimit, kExponentLimit);
        end = std::to_chars(end, text + sizeof text, exponent).ptr;
        const auto result = std::from_chars(text, end, *value);
        if (result.ec == std::errc::result_out_of_range) {
            *value = 0;
            if (number.exponent > 0) {
                return DISP_E_OVERFLOW;
            }
        }
    }
    if (number.negative) {
        *value = -*value;
    }
    return S_OK;
}

HRESULT toInteger(const TextNumber& number, bool* negative, ULONGLONG* magnitude) {
    constexpr ULONGLONG kMax = std::numeric_limits<ULONGLONG>::max();
    *negative = number.negative;
    *magnitude = 0;
    if (number.digitCount == 0 || number.exponent < 0) {
        return S_OK;
    }
    if (number.exponent > std::numeric_limits<ULONGLONG>::digits10 + 1) {
        return DISP_E_OVERFLOW;
    }
    const int whole = static_cast<int>(number.exponent);
    for (int i = 0; i < whole; ++i) {
        const auto digit =
            i < number.digitCount ? static_cast<ULONGLONG>(number.digits[i] - '0') : 0;
        if (*magnitude > (kMax - digit) / 10) {
            return DISP_E_OVERFLOW;
        }
        *magnitude = *magnitude * 10 + digit;
    }
    if (whole < number.digitCount) {
        const char first = number.digits[whole];
        const bool rest = std::any_of(number.digits + whole + 1, number.digits + number.digitCount,
                                      [](char digit) { return digit != '0'; });
        if (first > '5' || (first == '5' && (rest || *magnitude % 2 == 1))) {
            if (*magnitude == kMax) {
                return DISP_E_OVERFLOW;
            }
            ++*magnitude;
        }
    }
    return S_OK;
}

}  // namespace zr
