// What the command needs of the operating system; one implementation per target in a folder of its
// own.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zr::host {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

/// The arguments of the process in UTF-8, without the name of the program.
std::vector<std::string> commandLineArguments(int argc, char** argv);

/// A variable of the environment in UTF-8.
std::optional<std::string> environmentVariable(const std::string& name);

/// How large the stack of the calling thread may become, at least.
std::size_t stackSize();

/// Puts the null device in the place of each standard stream that the caller closed, so that no
/// file opened later gets its number. Using it fails as the closed one would.
void holdStandardStreams();

bool isDescriptorOpen(int descriptor);

/// Opens a file to read its bytes, or to replace them; -1 on failure.
int openForReading(const std::string& path);
int openForWriting(const std::string& path);

/// Reads bytes as they are; 0 at the end, -1 on failure.
std::ptrdiff_t readSome(int descriptor, char* bytes, std::size_t size);

/// A second descriptor of the same file, which writes bytes as they are; -1 on failure.
int duplicateDescriptor(int descriptor);

/// Makes descriptor target write where source does.
void redirectDescriptor(int target, int source);

/// @return false when the system reports that what was written may be lost.
bool closeDescriptor(int descriptor);

/// Writes everything.
/// @return false when a part could not be written: a closed pipe, a full disk.
bool writeAll(int descriptor, std::string_view bytes);

/// Opens a descriptor for output that nobody reads; -1 on failure.
int openDroppedOutput();

/// Keeps what has been written to openDroppedOutput's descriptor from adding up.
void rewindDroppedOutput(int descriptor);

}  // namespace zr::host
