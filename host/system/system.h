// What the command needs of the operating system; one implementation per target in a folder of its
// own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace zr::host {

inline constexpr int kStandardInput = 0;
inline constexpr int kStandardOutput = 1;
inline constexpr int kStandardError = 2;

/// The arguments of the process in UTF-8, without the name of the program.
std::vector<std::string> commandLineArguments(int argc, char** argv);

/// A variable of the environment in UTF-8; nullopt when it is not set.
std::optional<std::string> environmentVariable(const std::string& name);

/// The folders that hold the configurations of all programs, of the user and of the system; empty
/// when the environment does not name it.
std::string userConfigurationFolder();
std::string systemConfigurationFolder();

/// Makes an empty folder for temporary files that only this user can use.
/// @return its path; empty when it cannot be made: error says why.
std::string makePrivateFolder(std::error_code& error);

/// Calls a function with the name and the value of each variable of the environment, in UTF-8 on
/// Windows and as they are on Linux. Every copy is erased.
void forEachVariable(const std::function<void(std::string_view, std::string_view)>& take);

enum class PathUse { kFolder, kModule };

/// Why the library would not use the folder or module that a path names, but another one. The
/// library changes the path, or the system reads it differently.
/// @param path  absolute, in UTF-8.
/// @return what comes after "the path"; empty when the library uses what the path names.
std::string pathProblem(const std::string& path, PathUse use);
/// Another path of the same file or folder that has no such problem, a short name of Windows; the path
/// itself when it has none, or when there is no other.
/// @param path  absolute, in UTF-8.
std::string usablePath(const std::string& path);

/// The lowest address that the stack of the calling thread may reach.
std::uintptr_t lowestStackAddress();

/// Overwrites memory with zeros; the compiler cannot optimise this away.
void secureErase(void* memory, std::size_t size);

/// Opens the null device for each standard stream that the caller closed, so that no file opened
/// later gets its number. Reading or writing such a stream still fails.
void holdStandardStreams();

/// Makes writing to a pipe or socket whose reader is gone an error, where it ends the process
/// otherwise: a module may write to its dead server.
void ignoreClosedPipes();

bool isDescriptorOpen(int descriptor);

/// Opens a file to read its bytes.
/// @return -1 when it cannot be opened; error says why.
int openForReading(const std::string& path, std::error_code& error);

/// Opens a file to replace its bytes, which are still there.
/// @param isNew  set to whether the file did not exist.
/// @return -1 when it cannot be opened; error says why.
int openForWriting(const std::string& path, std::error_code& error, bool* isNew = nullptr);

/// Opens a file for writing that does not exist yet.
/// @return -1 when it cannot be opened; error says why.
int openNewForWriting(const std::string& path, std::error_code& error);

/// Removes the bytes of a file, if it is one that keeps bytes.
std::error_code emptyFile(int descriptor);

/// Reads bytes unchanged.
/// @return how many; 0 at the end, and when they cannot be read: error says why then.
std::size_t readSome(int descriptor, char* bytes, std::size_t size, std::error_code& error);

/// The bytes of a file that keeps them; nullopt for pipes, terminals and other devices.
std::optional<std::uint64_t> fileSize(int descriptor);

/// A second descriptor of the same file, which writes bytes unchanged; -1 on failure.
int duplicateDescriptor(int descriptor);

/// Makes descriptor target write where source does.
void redirectDescriptor(int target, int source);

/// @return an error when bytes written before may be lost.
std::error_code closeDescriptor(int descriptor);

/// Writes all bytes.
/// @return an error when some could not be written: a closed pipe, a full disk.
std::error_code writeAll(int descriptor, std::string_view bytes);

/// Opens a descriptor for output that nobody reads; -1 on failure.
int openDroppedOutput();

/// Lets new output replace what was written to openDroppedOutput's descriptor.
void rewindDroppedOutput(int descriptor);

}  // namespace zr::host
