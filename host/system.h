// What the command needs of the operating system; one implementation per target in a folder of its
// own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

/// The arguments of the process in UTF-8, without the name of the program.
std::vector<std::string> commandLineArguments(int argc, char** argv);

/// A second descriptor of the same file, which writes bytes as they are; -1 on failure.
int duplicateDescriptor(int descriptor);

/// Makes descriptor target write where source does.
void redirectDescriptor(int target, int source);

void closeDescriptor(int descriptor);

/// Writes everything; what can be written no more (a closed pipe, a full disk) is lost.
void writeAll(int descriptor, std::string_view bytes);

/// Opens a descriptor for output that nobody reads; -1 on failure.
int openDroppedOutput();

/// Keeps what has been written to openDroppedOutput's descriptor from adding up.
void rewindDroppedOutput(int descriptor);

}  // namespace zr::host
