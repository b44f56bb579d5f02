// What SecretMemory needs of the operating system; one implementation per target.
#pragma once

#include <cstddef>

namespace zr::host {

std::size_t pageSize();

/// Keeps a page in memory. The system counts one lock only.
/// @param address  of its first byte.
void lockPage(std::size_t address);
void unlockPage(std::size_t address);

/// Switches core dumps off.
/// @return what allowCoreDumps needs to switch them on again.
int forbidCoreDumps();
void allowCoreDumps(int before);

}  // namespace zr::host
