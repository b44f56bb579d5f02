// The table of conversions: what the system's automation gives for each source and target type.
#pragma once

#include <span>

namespace zr::test {

/// The types that the results of a row are listed for, in this order; of integers, VT_INT and
/// VT_UINT give what VT_I4 and VT_UI4 give.
inline constexpr char kRowTypes[] = "I1 UI1 I2 UI2 I4 UI4 I8 UI8 R4 R8 CY DATE BOOL";

/// One source. Results are values, "M" (type mismatch) or "O" (overflow); after those of kRowTypes
/// numbers have one more, that for BSTR. The source of a text row is the text itself; it has no
/// result for DATE.
struct NumericRow {
    const char* source;
    const char* results;
};

std::span<const NumericRow> numberRows();
std::span<const NumericRow> textRows();

/// A result that differs between the targets, with the reason.
struct Divergence {
    const char* source;
    const char* type;
    const char* system;  ///< the system's automation, here Wine's.
    const char* ours;
    const char* reason;
};

std::span<const Divergence> divergences();

}  // namespace zr::test
