// What a VARIANT contains, with the references removed.
#pragma once

#include <zrkey/zrkey.hpp>

#include <optional>

namespace zr::automation {

/// Follows references.
/// @return a variant of a type without VT_BYREF, whose text, array or object is borrowed: do not clear
/// it. VT_ILLEGAL for a null reference, for one that leads nowhere, and for a type that is none of
/// Automation's.
VARIANT viewOf(const VARIANT& variant);

/// A number of any type.
/// @param variant  of viewOf.
/// @return nullopt for another type; VT_BOOL is not a number.
std::optional<double> numberIn(const VARIANT& variant);

}  // namespace zr::automation
