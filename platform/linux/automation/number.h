// The numeric variant types: reading them, and storing a number in another one of them.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// A number held by a variant. An integer is a sign and a magnitude, so that both 64-bit types
/// fit; a currency is one in units of a ten-thousandth.
struct Number {
    enum class Kind { kInteger, kBool, kReal, kDate, kCurrency };

    Kind kind = Kind::kInteger;
    int bits = 32;  ///< of an integer or a real.
    bool negative = false;
    ULONGLONG magnitude = 0;
    double real = 0;
};

/// @return false when the type is not numeric.
bool isNumeric(VARTYPE type);

/// The number of a variant of a numeric type, or 0 for VT_EMPTY.
Number numberOf(const VARIANT& variant);

/// Stores the number as a numeric type.
/// @retval DISP_E_OVERFLOW  it does not fit.
HRESULT storeNumber(const Number& number, VARTYPE type, VARIANT* target);

/// Stores the number that a text holds as a numeric type.
/// @retval DISP_E_TYPEMISMATCH  the text is not a number.
/// @retval DISP_E_OVERFLOW      it does not fit.
HRESULT storeText(const OLECHAR* text, VARTYPE type, VARIANT* target);

}  // namespace zr
