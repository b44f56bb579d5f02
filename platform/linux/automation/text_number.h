// Numbers in texts, as the automation functions read them.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// A number as written in a text, exact enough for every type.
struct TextNumber {
    static constexpr int kMaxDigits = 48;

    bool hexadecimal = false;  ///< "&H" or "&O"; only bits and tooManyBits are set then
    bool tooManyBits = false;  ///< the number does not fit 64 bits
    ULONGLONG bits = 0;
    bool negative = false;
    char digits[kMaxDigits + 1] = {};  ///< significant digits without leading zeros, terminated
    int digitCount = 0;
    LONGLONG exponent = 0;  ///< the value is 0.DIGITS times ten to this power
};

/// Parses a whole text: blanks, a sign before or after the digits, parentheses for a negative
/// number, "$", "," between digits, "." and an exponent; or "&H" or "&O" and digits.
/// @param text  terminated.
/// @return false when the text is not a number.
bool parseNumber(const OLECHAR* text, TextNumber* number);

/// @retval DISP_E_OVERFLOW  too large.
HRESULT toReal(const TextNumber& number, double* value);

/// Rounds to the nearest integer, a half to the even one.
/// @retval DISP_E_OVERFLOW  the magnitude does not fit 64 bits.
HRESULT toInteger(const TextNumber& number, bool* negative, ULONGLONG* magnitude);

}  // namespace zr
