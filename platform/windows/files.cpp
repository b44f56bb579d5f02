// Opening files, over the C library.
#include "platform/files.h"

#include <io.h>
#include <windows.h>

namespace zr {

std::FILE* openRegularFile(const char* path) {
    // "N": child processes do not inherit the file.
    std::FILE* file = std::fopen(path, "rbN");
    if (!file) {
        return nullptr;
    }
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file)));
    if (GetFileType(handle) != FILE_TYPE_DISK) {
        std::fclose(file);
        return nullptr;
    }
    return file;
}

std::FILE* openLogFile(const char* path) {
    return std::fopen(path, "a+N");
}

}  // namespace zr
