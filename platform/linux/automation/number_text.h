// Numbers as the automation functions write them, the same in every locale.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// @return a new string; null when memory is short.
BSTR textOfInteger(bool negative, ULONGLONG magnitude);
/// At most digits significant ones, with an exponent where that is shorter: "0.1", "1E+15".
BSTR textOfReal(double value, int digits);
/// At most four decimals, none that are zeros at the end.
BSTR textOfCurrency(LONGLONG tenThousandths);

}  // namespace zr
