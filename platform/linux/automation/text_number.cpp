// Parsing numbers: the grammar of the automation functions with the characters of the "C" locale.
#include "platform/linux/automation/text_number.h"

#include <algorithm>
#include <charconv>
#include <limits>

namespace zr {
namespace {

// More than any exponent of a double, and small enough that sums with it do not overflow.
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

/// Parses one text into one number.
class Parser {
public:
    Parser(const OLECHAR* text, TextNumber* number) : m_at(text), m_number(*number) {}

    bool parse() {
        readLeading();
        if (*m_at == u'&' ? !readBits() : !readDecimal()) {
            return false;
        }
        readTrailing();
        m_number.negative = m_leadingMinus || m_trailingMinus || m_closed;
        // An open parenthesis without a minus has to be closed.
        return *m_at == u'\0' && (m_number.negative || !m_open);
    }

private:
    // Consumes the character c unless it was seen before.
    bool takeOnce(OLECHAR c, bool* seen) {
        if (*m_at != c || *seen) {
            return false;
        }
        *seen = true;
        ++m_at;
        return true;
    }

    void skipBlanks() {
        while (isBlank(*m_at)) {
            ++m_at;
        }
    }

    void readLeading() {
        do {
            skipBlanks();
        } while (takeOnce(u'+', &m_leadingPlus) || takeOnce(u'-', &m_leadingMinus) ||
                 takeOnce(u'(', &m_open) || takeOnce(u'$', &m_currency));
    }

    // A sign after the number is refused when there is one before it. All else may be repeated.
    void readTrailing() {
        const bool decimal = !m_number.hexadecimal;
        for (;; ++m_at) {
            if (*m_at == u'-' && !m_leadingMinus) {
                m_trailingMinus = true;
            } else if (*m_at == u')' && m_open) {
                m_closed = true;
            } else if (!isBlank(*m_at) && !(*m_at == u'+' && !m_leadingPlus) &&
                       !(decimal && (*m_at == u'$' || *m_at == u','))) {
                break;
            }
        }
    }

    bool readBits() {
        const int base = (m_at[1] | 0x20) == u'h' ? 16 : (m_at[1] | 0x20) == u'o' ? 8 : 0;
        if (base == 0 || m_currency || digitValue(m_at[2]) >= base) {
            return false;
        }
        m_number.hexadecimal = true;
        for (m_at += 2; digitValue(*m_at) < base; ++m_at) {
            const auto digit = static_cast<ULONGLONG>(digitValue(*m_at));
            m_number.tooManyBits |= m_number.bits > std::numeric_limits<ULONGLONG>::max() /
                                                        static_cast<ULONGLONG>(base);
            m_number.bits = m_number.bits * static_cast<ULONGLONG>(base) + digit;
        }
        return true;
    }

    bool readDecimal() {
        bool any = false;
        bool point = false;
        for (;; ++m_at) {
            if (isDigit(*m_at)) {
                any = true;
                addDigit(static_cast<char>(*m_at), point);
            } else if (*m_at == u'.' && !point) {
                point = true;
            } else if (*m_at != u',' || !(any || point)) {
                break;
            }
        }
        if (!any) {
            return false;
        }
        // A number with "$" has no exponent.
        return (*m_at | 0x20) != u'e' || (!m_currency && readExponent());
    }

    // Digits beyond kMaxDigits are dropped; they only make the last kept digit odd, for rounding.
    void addDigit(char digit, bool fraction) {
        const bool leadingZero = m_number.digitCount == 0 && digit == '0';
        if (leadingZero) {
            m_number.exponent -= fraction ? 1 : 0;
            return;
        }
        if (m_number.digitCount < TextNumber::kMaxDigits) {
            m_number.digits[m_number.digitCount++] = digit;
        } else if (digit != '0') {
            m_number.digits[TextNumber::kMaxDigits - 1] |= 1;
        }
        m_number.exponent += fraction ? 0 : 1;
    }

    bool readExponent() {
        ++m_at;
        bool minus = false;
        for (; *m_at == u'+' || *m_at == u'-'; ++m_at) {
            minus = minus || *m_at == u'-';
        }
        if (!isDigit(*m_at)) {
            return false;
        }
        LONGLONG exponent = 0;
        for (; isDigit(*m_at); ++m_at) {
            exponent = std::min(exponent * 10 + (*m_at - u'0'), kExponentLimit);
        }
        m_number.exponent += minus ? -exponent : exponent;
        return true;
    }

    const OLECHAR* m_at;
    TextNumber& m_number;
    bool m_leadingPlus = false;
    bool m_leadingMinus = false;
    bool m_trailingMinus = false;
    bool m_open = false;
    bool m_closed = false;
    bool m_currency = false;
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
