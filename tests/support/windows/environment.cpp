// The services of a process that tests need, on Windows.
#include "tests/support/environment.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

namespace zr::test {

int processId() {
    return _getpid();
}

int duplicate(int descriptor) {
    return _dup(descriptor);
}

void duplicateOnto(int source, int target) {
    _dup2(source, target);
}

void closeDescriptor(int descriptor) {
    _close(descriptor);
}

int descriptorOf(std::FILE* file) {
    return _fileno(file);
}

std::FILE* temporaryFile() {
    // tmpfile() makes its files in the root of the drive.
    static int s_number = 0;
    const std::string name =
        (std::filesystem::temp_directory_path() /
         ("zrcapture" + std::to_string(_getpid()) + "_" + std::to_string(s_number++)))
            .string();
    const int descriptor =
        _open(name.c_str(), _O_RDWR | _O_CREAT | _O_TRUNC | _O_BINARY | _O_TEMPORARY,
              _S_IREAD | _S_IWRITE);
    return descriptor < 0 ? nullptr : _fdopen(descriptor, "w+b");
}

std::size_t allocatedBytes() {
    return 0;
}

void setEnvironment(const std::string& name, const std::string& value) {
    SetEnvironmentVariableA(name.c_str(), value.empty() ? nullptr : value.c_str());
}

void setEmptyEnvironment(const std::string& name) {
    SetEnvironmentVariableA(name.c_str(), "");
}

}  // namespace zr::test
