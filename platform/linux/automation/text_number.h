// Numbers in texts as the automation functions read them.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// A number as it stood in a text, without loss for what any type can hold.
struct TextNumber {
    static constexpr int kMaxDigits = 48;

    bool hexadecimal = false;  ///< "&H" or "&O"; only bits and tooManyBits are set then.
    bool tooManyBits = false;  ///< does not fit 64 bits.
    ULONGLONG bits = 0;
    bool negative = false;
    char digits[kMaxDigits + 1] = {};  ///< significant digits, no leading zeros, terminated.
    int digitCount = 0;
    LONGLONG exponent = 0;  ///< the value is 0.DIGITS times ten to this power.
};

/// Reads a whole text: blanks, sign before or behind, parentheses for negative, "$", "," between
/// digits, "." and an exponent; or "&H" and "&O".
/// @param text  terminated.
/// @return false when the text is not a number.
bool parseNumber(const OLECHAR* text, TextNumber* number);

/// @retval DISP_E_OVERFLOW  too large.
HRESULT toReal(const TextNumber& number, double* value);

/// The integer nearest to the number, a half to the even one.
/// @retval DISP_E_OVERFLOW  the magnitude does not fit 64 bits.
HRESULT toInteger(const TextNumber& number, bool* negative, ULONGLONG* magnitude);

}  // namespace zr
