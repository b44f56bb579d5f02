// The forms in which Automation clients pass bytes.
#pragma once

#include <zrkey/zrkey.hpp>

#include "host/objects/value.h"

namespace zr::automation {

/// Reads a one-dimensional array of bytes, of numbers from 0 to 255 or of variants with such numbers,
/// whatever its lower bound; or an array of JScript, which is an object.
/// @param view  of viewOf.
/// @throws WrongValue, std::bad_alloc
host::Bytes readBytes(const VARIANT& view);

}  // namespace zr::automation
