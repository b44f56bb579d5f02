// The table of conversions: the results of the system's automation for each source and target type.
#pragma once

#include <span>

namespace zr::test {

/// The target types of the results in a row, in this order. VT_INT and VT_UINT give the results of
/// VT_I4 and VT_UI4.
inline constexpr char kRowTypes[] = "I1 UI1 I2 UI2 I4 UI4 I8 UI8 R4 R8 CY DATE BOOL";

/// One source with its results: values, "M" (type mismatch) or "O" (overflow). Rows of numbers have
/// an additional result at the end, for BSTR. The source of a text row is the text itself; its
/// result for DATE is not tested.
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
    const char* system;  ///< the system's automation, here Wine's
    const char* ours;
    const char* reason;
};

std::span<const Divergence> divergences();

}  // namespace zr::test
