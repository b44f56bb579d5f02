// The few services of a process that tests need and that differ between the targets' C libraries.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string>

namespace zr::test {

int processId();
int duplicate(int descriptor);
void duplicateOnto(int source, int target);
void closeDescriptor(int descriptor);
int descriptorOf(std::FILE* file);
/// A file open for reading and writing that is removed when it is closed; null on failure.
std::FILE* temporaryFile();
/// The bytes that are allocated now; 0 where nobody counts them.
std::size_t allocatedBytes();

}  // namespace zr::test
