// Waits for descriptors that an interruption must not leave waiting.
#pragma once

#include <cstddef>

namespace zr::host {

/// Waits until a descriptor can be used; at once, and true, where no guard notes interruptions.
/// @param events  POLLIN or POLLOUT.
/// @return false when there is an interruption.
bool awaitDescriptor(int descriptor, short events);

/// How many bytes a write may have at most so that it does not wait after awaitDescriptor.
std::size_t mostBytesOfAWrite(std::size_t size);

}  // namespace zr::host
