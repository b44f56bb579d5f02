// What a VARIANT contains, with the references removed.
#pragma once

#include <zrkey/zrkey.hpp>

#include <optional>

namespace zr::automation {

/// Follows references.
/// @return a variant of a type without VT_BYREF, whose text, array or object is borrowed: do not clear
/// it. VT_ILLEGAL for a null reference, for a chain of references without an end, and for a type that
/// Automation does not have.
VARIANT viewOf(const VARIANT& variant);

/// A number of any type.
/// @param variant  of viewOf.
/// @return nullopt for another type; VT_BOOL is not a number.
std::optional<double> numberIn(const VARIANT& variant);

}  // namespace zr::automation
