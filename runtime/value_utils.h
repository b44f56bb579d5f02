// Facts about variant types that the value classes and hosts of the runtime share.
#pragma once

#include <zrkey/automation.h>

#include <cstdint>

/// Stands where the platform's variant comparison would be.
/// @retval E_FAIL  always; kept, so that values not compared natively are never equal.
HRESULT ZVariantCompare(...);

/// Bytes the value of a variant type takes.
/// @param size  receives 1, 2, 4 or 8; untouched on failure.
/// @retval S_OK          done.
/// @retval E_INVALIDARG  size is null.
/// @retval E_FAIL        a type without a fixed size.
HRESULT ZVariantGetTypeSize(VARTYPE vt, ULONG* size);

namespace zr {

/// A number as scripts pass it, truncated toward zero to 32 bits.
/// @return the smallest LONG for what does not fit and for NaN, as the processor converts them.
LONG truncateToLong(double value);

/// The low 8 bits of a number that is truncated toward zero; 0 for what is no number.
std::uint8_t truncateToByte(double value);

}  // namespace zr
