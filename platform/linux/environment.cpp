// Current directory, executable, environment variables, directories and local time.
#include "platform/linux/kernel.h"

#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <string_view>

namespace {

// Copies a text if it fits. Returns its length then, otherwise the size it needs.
DWORD copyIfItFits(std::string_view text, LPSTR buffer, DWORD size) {
    const auto length = static_cast<DWORD>(text.size());
    if (!buffer || length >= size) {
        return length + 1;
    }
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
    return length;
}

}  // namespace

DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer) {
    char* directory = getcwd(nullptr, 0);
    if (!directory) {
        return 0;
    }
    const DWORD length = copyIfItFits(directory, buffer, size);
    std::free(directory);
    return length;
}

BOOL SetCurrentDirectoryA(LPCSTR path) {
    return path && chdir(path) == 0 ? TRUE : FALSE;
}

DWORD GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size) {
    if (module || !buffer || size == 0) {
        return 0;
    }
    const ssize_t length = readlink("/proc/self/exe", buffer, size);
    if (length < 0) {
        return 0;
    }
    if (static_cast<DWORD>(length) >= size) {
        buffer[size - 1] = '\0';
        return size;
    }
    buffer[length] = '\0';
    return static_cast<DWORD>(length);
}

DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size) {
    // A set-user-ID host has more rights than its caller, whose environment it must not obey.
    const char* value = name ? secure_getenv(name) : nullptr;
    return value ? copyIfItFits(value, buffer, size) : 0;
}

BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES* attributes) {
    return path && !attributes && mkdir(path, S_IRWXU) == 0 ? TRUE : FALSE;
}

void GetLocalTime(SYSTEMTIME* time) {
    timeval now{};
    gettimeofday(&now, nullptr);
    std::tm local{};
    localtime_r(&now.tv_sec, &local);
    time->wYear = static_cast<WORD>(local.tm_year + 1900);
    time->wMonth = static_cast<WORD>(local.tm_mon + 1);
    time->wDayOfWeek = static_cast<WORD>(local.tm_wday);
    time->wDay = static_cast<WORD>(local.tm_mday);
    time->wHour = static_cast<WORD>(local.tm_hour);
    time->wMinute = static_cast<WORD>(local.tm_min);
    time->wSecond = static_cast<WORD>(local.tm_sec);
    time->wMilliseconds = static_cast<WORD>(now.tv_usec / 1000);
}
