// Conversions between the numeric variant types, and from text to them.
#include "platform/linux/automation/number.h"

#include <cmath>
#include <limits>

#include "platform/linux/automation/text_number.h"

namespace zr {
namespace {

constexpr LONGLONG kCurrencyUnit = 10000;
constexpr double kFirstDate = -657435.0;  // exclusive: 1 January 100 is the first day
constexpr double kLastDate = 2958466.0;   // exclusive: 31 December 9999 is the last day

struct IntegerType {
    int bits;
    bool isSigned;
};

// Width and sign of an integer type; 0 bits for any other type.
IntegerType integerType(VARTYPE type) {
    switch (type) {
        case VT_I1:
            return {8, true};
        case VT_I2:
            return {16, true};
        case VT_I4:
        case VT_INT:
            return {32, true};
        case VT_I8:
            return {64, true};
        case VT_UI1:
            return {8, false};
        case VT_UI2:
            return {16, false};
        case VT_UI4:
        case VT_UINT:
            return {32, false};
        case VT_UI8:
            return {64, false};
        default:
            return {0, false};
    }
}

void setSigned(LONGLONG value, Number* number) {
    number->negative = value < 0;
    number->magnitude =
        value < 0 ? 0 - static_cast<ULONGLONG>(value) : static_cast<ULONGLONG>(value);
}

void storeBits(ULONGLONG bits, int width, VARIANT* target) {
    if (width == 8) {
        target->bVal = static_cast<BYTE>(bits);
    } else if (width == 16) {
        target->uiVal = static_cast<USHORT>(bits);
    } else if (width == 32) {
        target->ulVal = static_cast<ULONG>(bits);
    } else {
        target->ullVal = bits;
    }
}

ULONGLONG twosComplement(bool negative, ULONGLONG magnitude) {
    return negative ? 0 - magnitude : magnitude;
}

HRESULT storeInteger(bool negative, ULONGLONG magnitude, IntegerType type, VARIANT* target) {
    const ULONGLONG all =
        type.bits < 64 ? (ULONGLONG{1} << type.bits) - 1 : std::numeric_limits<ULONGLONG>::max();
    ULONGLONG limit = all;
    if (type.isSigned) {
        limit = (all >> 1) + (negative ? 1 : 0);
    } else if (negative) {
        limit = 0;
    }
    if (magnitude > limit) {
        return DISP_E_OVERFLOW;
    }
    storeBits(twosComplement(negative, magnitude), type.bits, target);
    return S_OK;
}

// Rounds to the nearest integer, a half to the even one.
double roundHalfEven(double value) {
    const double down = std::floor(value);
    const double rest = value - down;
    const bool up = rest > 0.5 || (rest == 0.5 && std::fmod(down, 2.0) != 0.0);
    return up ? down + 1.0 : down;
}

HRESULT realToInteger(double value, IntegerType type, VARIANT* target) {
    constexpr double kTwo62 = 4611686018427387904.0;
    constexpr double kTwo64 = 18446744073709551616.0;
    // Windows refuses reals of more than 62 bits here.
    if (type.bits == 64 && type.isSigned && !(value >= -kTwo62 && value < kTwo62)) {
        return DISP_E_OVERFLOW;
    }
    if (!(std::fabs(value) < kTwo64)) {
        return DISP_E_OVERFLOW;
    }
    const double rounded = roundHalfEven(value);
    return storeInteger(rounded < 0, static_cast<ULONGLONG>(std::fabs(rounded)), type, target);
}

HRESULT currencyToInteger(const Number& number, IntegerType type, VARIANT* target) {
    ULONGLONG whole = number.magnitude / kCurrencyUnit;
    const ULONGLONG twice = number.magnitude % kCurrencyUnit * 2;
    if (twice > kCurrencyUnit || (twice == kCurrencyUnit && whole % 2 == 1)) {
        ++whole;
    }
    return storeInteger(number.negative, whole, type, target);
}

double realOf(const Number& number) {
    switch (number.kind) {
        case Number::Kind::kReal:
        case Number::Kind::kDate:
            return number.real;
        case Number::Kind::kCurrency:
            return static_cast<double>(
                       static_cast<LONGLONG>(twosComplement(number.negative, number.magnitude))) /
                   kCurrencyUnit;
        default:
            break;
    }
    const auto magnitude = static_cast<double>(number.magnitude);
    return number.negative ? -magnitude : magnitude;
}

HRESULT realToR4(double value, VARIANT* target) {
    target->fltVal = static_cast<FLOAT>(value);
    return std::isinf(target->fltVal) ? DISP_E_OVERFLOW : S_OK;
}

// The integral part and the fraction are scaled separately: scaling the sum would lose digits.
HRESULT realToCurrency(double value, VARIANT* target) {
    constexpr double kLimit = 922337203685477.5807;
    if (!(std::fabs(value) < kLimit)) {
        return DISP_E_OVERFLOW;
    }
    double whole = 0;
    const double fraction = std::modf(value, &whole);
    target->cyVal.int64 = static_cast<LONGLONG>(whole) * kCurrencyUnit +
                          std::llround(fraction * static_cast<double>(kCurrencyUnit));
    return S_OK;
}

HRESULT integerToCurrency(const Number& number, VARIANT* target) {
    constexpr ULONGLONG kLimit = std::numeric_limits<LONGLONG>::max() / kCurrencyUnit;
    if (number.magnitude > kLimit) {
        return DISP_E_OVERFLOW;
    }
    target->cyVal.int64 =
        static_cast<LONGLONG>(twosComplement(number.negative, number.magnitude * kCurrencyUnit));
    return S_OK;
}

// Only integers and doubles are checked for the range of dates.
HRESULT storeDate(const Number& number, VARIANT* target) {
    const bool checked = number.kind == Number::Kind::kInteger ||
                         (number.kind == Number::Kind::kReal && number.bits == 64);
    const double value = realOf(number);
    if (checked && (value <= kFirstDate || value >= kLastDate)) {
        return DISP_E_OVERFLOW;
    }
    target->date = value;
    return S_OK;
}

bool isZero(const Number& number) {
    const bool real = number.kind == Number::Kind::kReal || number.kind == Number::Kind::kDate;
    return real ? number.real == 0 : number.magnitude == 0;
}

HRESULT storeAsInteger(const Number& number, IntegerType type, VARIANT* target) {
    switch (number.kind) {
        case Number::Kind::kReal:
        case Number::Kind::kDate:
            return realToInteger(number.real, type, target);
        case Number::Kind::kCurrency:
            return currencyToInteger(number, type, target);
        case Number::Kind::kBool:
            storeBits(twosComplement(number.negative, number.magnitude), type.bits, target);
            return S_OK;
        default:
            break;
    }
    // Integers of the same width keep their bits, even when the value changes.
    if (number.bits == type.bits) {
        storeBits(twosComplement(number.negative, number.magnitude), type.bits, target);
        return S_OK;
    }
    return storeInteger(number.negative, number.magnitude, type, target);
}

HRESULT storeHexadecimal(const TextNumber& number, VARTYPE type, VARIANT* target) {
    const IntegerType integer = integerType(type);
    if (number.tooManyBits || type == VT_CY) {
        return DISP_E_OVERFLOW;
    }
    if (integer.bits != 0) {
        if (integer.bits < 64 && number.bits >> integer.bits != 0) {
            return DISP_E_OVERFLOW;
        }
        storeBits(number.bits, integer.bits, target);
        return S_OK;
    }
    // All other types read the text as a signed 32-bit integer.
    constexpr ULONGLONG kSign = 0x80000000u;
    if (number.bits > kSign) {
        return DISP_E_OVERFLOW;
    }
    Number value;
    value.negative = number.bits == kSign;
    value.magnitude = number.bits;
    return storeNumber(value, type, target);
}

}  // namespace

bool isNumeric(VARTYPE type) {
    switch (type) {
        case VT_R4:
        case VT_R8:
        case VT_DATE:
        case VT_CY:
        case VT_BOOL:
            return true;
        default:
            return integerType(type).bits != 0;
    }
}

Number numberOf(const VARIANT& variant) {
    Number number;
    number.bits = integerType(variant.vt).bits;
    switch (variant.vt) {
        case VT_I1:
            setSigned(static_cast<signed char>(variant.cVal), &number);
            break;
        case VT_I2:
            setSigned(variant.iVal, &number);
            break;
        case VT_I4:
        case VT_INT:
            setSigned(variant.lVal, &number);
            break;
        case VT_I8:
            setSigned(variant.llVal, &number);
            break;
        case VT_UI1:
            number.magnitude = variant.bVal;
            break;
        case VT_UI2:
            number.magnitude = variant.uiVal;
            break;
        case VT_UI4:
        case VT_UINT:
            number.magnitude = variant.ulVal;
            break;
        case VT_UI8:
            number.magnitude = variant.ullVal;
            break;
        case VT_BOOL:
            number.kind = Number::Kind::kBool;
            setSigned(variant.boolVal, &number);
            break;
        case VT_CY:
            number.kind = Number::Kind::kCurrency;
            setSigned(variant.cyVal.int64, &number);
            break;
        case VT_R4:
            number.kind = Number::Kind::kReal;
            number.bits = 32;
            number.real = static_cast<double>(variant.fltVal);
            break;
        case VT_R8:
            number.kind = Number::Kind::kReal;
            number.bits = 64;
            number.real = variant.dblVal;
            break;
        case VT_DATE:
            number.kind = Number::Kind::kDate;
            number.real = variant.date;
            break;
        default:
            break;
    }
    return number;
}

HRESULT storeNumber(const Number& number, VARTYPE type, VARIANT* target) {
    target->vt = type;
    switch (type) {
        case VT_R4:
            return realToR4(realOf(number), target);
        case VT_R8:
            target->dblVal = realOf(number);
            return S_OK;
        case VT_DATE:
            return storeDate(number, target);
        case VT_BOOL:
            target->boolVal = isZero(number) ? VARIANT_FALSE : VARIANT_TRUE;
            return S_OK;
        case VT_CY:
            return number.kind == Number::Kind::kReal || number.kind == Number::Kind::kDate
                       ? realToCurrency(number.real, target)
                       : integerToCurrency(number, target);
        default:
            return storeAsInteger(number, integerType(type), target);
    }
}

HRESULT storeText(const OLECHAR* text, VARTYPE type, VARIANT* target) {
    TextNumber number;
    if (!parseNumber(text, &number)) {
        return DISP_E_TYPEMISMATCH;
    }
    target->vt = type;
    if (number.hexadecimal) {
        return storeHexadecimal(number, type, target);
    }
    const IntegerType integer = integerType(type);
    if (integer.bits != 0) {
        bool negative = false;
        ULONGLONG magnitude = 0;
        const HRESULT hr = toInteger(number, &negative, &magnitude);
        return FAILED(hr) ? hr : storeInteger(negative, magnitude, integer, target);
    }
    Number value;
    value.kind = Number::Kind::kReal;
    const HRESULT hr = toReal(number, &value.real);
    if (FAILED(hr)) {
        return hr;
    }
    // A value other than zero that a float rounds to zero is an overflow, too.
    if (type == VT_R4 && value.real != 0 &&
        std::fabs(value.real) < static_cast<double>(std::numeric_limits<FLOAT>::denorm_min())) {
        return DISP_E_OVERFLOW;
    }
    return storeNumber(value, type, target);
}

}  // namespace zr
