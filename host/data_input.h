// Bytes that a command takes in and hands to the library.
#pragma once

#include <string>

#include "variant.h"

namespace zr::host {

/// Reads a file or, for "-", standard input into a byte array. Throws a Failure when it cannot.
void readData(const std::string& path, Variant& data);

}  // namespace zr::host
