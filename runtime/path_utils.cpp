// Paths, module loading and hexadecimal text.
#include "runtime/path_utils.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr unsigned int kDirectorySize = 260;
constexpr unsigned int kModulePathSize = 300;

/// The normalised path, appended to the current directory when it begins with a dot. Empty when the
/// current directory does not fit its buffer.
std::string startingPath(const char* path) {
    std::string work;
    if (path[0] == '.') {
        char directory[kDirectorySize] = {};
        const DWORD length = GetCurrentDirectoryA(sizeof directory, directory);
        if (length == 0 || length >= sizeof directory) {
            return work;
        }
        work = directory;
        if (work.back() != '/' && work.back() != '\\') {
            work += '/';
        }
    }
    work += path;
    std::replace(work.begin(), work.end(), '\\', '/');
    return work;
}

/// The components that a separator follows, with "." and ".." resolved; tail receives the rest.
std::vector<std::string_view> resolveComponents(std::string_view path, std::string_view* tail) {
    std::vector<std::string_view> components;
    for (std::size_t end; (end = path.find('/')) != path.npos; path.remove_prefix(end + 1)) {
        const std::string_view component = path.substr(0, end);
        if (component == "..") {
            if (!components.empty()) {
                components.pop_back();
            }
        } else if (component != ".") {
            components.push_back(component);
        }
    }
    *tail = path;
    return components;
}

}  // namespace

int ZGetCurrentPath(char* buf, unsigned int size) {
    const DWORD length = GetCurrentDirectoryA(size, buf);
    if (length > 0 && length < size) {
        ZConvertLinuxPath(buf);
    }
    return static_cast<int>(length);
}

int ZSetCurrentPath(const char* path) {
    return SetCurrentDirectoryA(path) ? 1 : 0;
}

int ZGetModulePath(char* buf, int size) {
    char path[kModulePathSize] = {};
    const DWORD pathLength = GetModuleFileNameA(nullptr, path, sizeof path);
    if (pathLength == 0 || pathLength >= sizeof path) {
        return 0;  // a cut path would be another directory
    }
    if (char* separator = std::strrchr(path, zr::kPathSeparator)) {
        separator[1] = 0;
    }
    ZConvertLinuxPath(path);
    const int length = static_cast<int>(std::strlen(path));
    if (buf && size > 0) {
        const auto copied = static_cast<std::size_t>(std::min(length, size - 1));
        std::memcpy(buf, path, copied);
        buf[copied] = 0;
    }
    return length;
}

int ZGetModuleFilePath(char* buf, unsigned int size) {
    if (!buf || size == 0) {
        return 0;
    }
    const DWORD length = GetModuleFileNameA(nullptr, buf, size);
    buf[std::min<DWORD>(length, size - 1)] = 0;
    ZConvertLinuxPath(buf);
    return static_cast<int>(length);
}

void ZConvertLinuxPath(char* path) {
    for (; path && *path; ++path) {
        if (*path == '\\') {
            *path = '/';
        }
    }
}

int ZGetAbsolutionPath(const char* path, char* out, int outSize) {
    if (!path || !*path) {
        return 0;
    }
    try {
        const std::string work = startingPath(path);
        if (work.empty()) {
            return 0;
        }
        std::string_view tail;
        std::string result;
        for (const std::string_view component : resolveComponents(work, &tail)) {
            result.append(component).append("/");
        }
        result.append(tail);
        if (out && outSize > 0 && static_cast<std::size_t>(outSize) > result.size()) {
            std::memcpy(out, result.c_str(), result.size() + 1);
        }
        return 0;
    } catch (const std::bad_alloc&) {
        return -1;
    }
}

HMODULE ZLoadLibrary(const char* file) {
    return file && *file ? LoadLibraryA(file) : nullptr;
}

HMODULE ZLoadLibraryEx(const char* file) {
    return file && *file ? LoadLibraryExA(file, nullptr, LOAD_WITH_ALTERED_SEARCH_PATH) : nullptr;
}

int ZFreeLibrary(HMODULE module) {
    return module ? FreeLibrary(module) : 0;
}

FARPROC ZGetProcAddress(HMODULE module, const char* name) {
    return module && name && *name ? GetProcAddress(module, name) : nullptr;
}

int ZHexToDec(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return 0;
}

unsigned int ZHexStringToInt(const char* s, int len) {
    unsigned int value = 0;
    for (int i = 0; s && i < len; ++i) {
        value = value * 16 + static_cast<unsigned int>(ZHexToDec(s[i]));
    }
    return value;
}

GUID ZCreateGUIDFromString(const char* s) {
    GUID guid = {};
    if (!s || std::strlen(s) != 36 || s[8] != '-' || s[13] != '-' || s[18] != '-' || s[23] != '-') {
        return guid;
    }
    guid.Data1 = ZHexStringToInt(s, 8);
    guid.Data2 = static_cast<WORD>(ZHexStringToInt(s + 9, 4));
    guid.Data3 = static_cast<WORD>(ZHexStringToInt(s + 14, 4));
    for (std::size_t i = 0; i < 8; ++i) {
        const char* pair = i < 2 ? s + 19 + 2 * i : s + 24 + 2 * (i - 2);
        guid.Data4[i] = static_cast<BYTE>(ZHexStringToInt(pair, 2));
    }
    return guid;
}
