// Reading the number of a variant, and storing a number as another numeric type.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// The number of a variant. An integer is a sign and a magnitude, so that both 64-bit types fit. A
/// currency is an integer in units of 1/10,000.
struct Number {
    enum class Kind { kInteger, kBool, kReal, kDate, kCurrency };

    Kind kind = Kind::kInteger;
    int bits = 32;  ///< width of an integer or a real
    bool negative = false;
    ULONGLONG magnitude = 0;
    double real = 0;
};

/// @return whether the type is numeric.
bool isNumeric(VARTYPE type);

/// The number of a variant of a numeric type, or 0 for VT_EMPTY.
Number numberOf(const VARIANT& variant);

/// Stores the number as a numeric type.
/// @retval DISP_E_OVERFLOW  the number does not fit.
HRESULT storeNumber(const Number& number, VARTYPE type, VARIANT* target);

/// Reads a text and stores its number as a numeric type.
/// @retval DISP_E_TYPEMISMATCH  the text is not a number.
/// @retval DISP_E_OVERFLOW      the number does not fit.
HRESULT storeText(const OLECHAR* text, VARTYPE type, VARIANT* target);

}  // namespace zr
