// Process services for tests that differ between the C libraries of the targets.
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
/// The bytes that are allocated now; 0 where they are not counted.
std::size_t allocatedBytes();

}  // namespace zr::test
