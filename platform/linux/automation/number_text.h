// Numbers as texts, in the format of the automation functions and the same in every locale.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// @return a new string; null when out of memory.
BSTR textOfInteger(bool negative, ULONGLONG magnitude);
/// @param digits  maximum number of significant digits; an exponent is written where that is
///                shorter: "0.1", "1E+15".
BSTR textOfReal(double value, int digits);
/// With at most four decimals and without zeros at the end.
BSTR textOfCurrency(LONGLONG tenThousandths);

}  // namespace zr
