// Helpers for variant types and numbers.
#pragma once

#include <zrkey/automation.h>

#include <cstdint>

/// A stub in the place of the platform's variant comparison.
/// @retval E_FAIL  always: values that the runtime does not compare itself are never equal. Kept.
HRESULT ZVariantCompare(...);

/// Returns the size of a value of a variant type.
/// @param size  receives 1, 2, 4 or 8 bytes; untouched on failure.
/// @retval S_OK          done.
/// @retval E_INVALIDARG  size is null.
/// @retval E_FAIL        the type has no fixed size.
HRESULT ZVariantGetTypeSize(VARTYPE vt, ULONG* size);

namespace zr {

/// Truncates a script number toward zero.
/// @return the smallest LONG for NaN and for numbers that do not fit, as the processor converts
///         them.
LONG truncateToLong(double value);

/// Truncates a script number toward zero.
/// @return the low 8 bits; 0 for NaN and the infinities.
std::uint8_t truncateToByte(double value);

}  // namespace zr
