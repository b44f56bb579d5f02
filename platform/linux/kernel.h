// The kernel services the library calls, under their Windows names and with their results.
//
// Linked into the library and exported by nobody. Paths and texts are bytes in the encoding of the
// file system; nothing is converted.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// What separates the components of a path the system hands out.
inline constexpr char kPathSeparator = '/';

/// Whether a path with "/" as separator leads from the root.
inline bool isAbsolutePath(const char* path) {
    return path[0] == '/';
}

}  // namespace zr

struct ZrModule;
using HMODULE = ZrModule*;
using HANDLE = void*;
using FARPROC = std::intptr_t (*)();
using LPCSTR = const char*;
using LPSTR = char*;
using LPCWCH = const WCHAR*;

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;
    WORD wDayOfWeek;
    WORD wDay;
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};

struct SECURITY_ATTRIBUTES;

inline constexpr UINT CP_UTF8 = 65001;
inline constexpr DWORD MAX_PATH = 260;
inline constexpr DWORD LOAD_WITH_ALTERED_SEARCH_PATH = 8;
inline constexpr DWORD MB_ERR_INVALID_CHARS = 8;
inline constexpr DWORD WC_ERR_INVALID_CHARS = 0x80;

/// Loads a shared library; every call is balanced by one FreeLibrary.
/// "OleAut32.dll", in any case, names the automation platform that the process runs on.
/// @param fileName  path, or a bare name that the dynamic loader looks up.
/// @return the module, or null when it cannot be loaded.
HMODULE LoadLibraryA(LPCSTR fileName);

/// As LoadLibraryA.
/// @param file   reserved, null.
/// @param flags  0 or LOAD_WITH_ALTERED_SEARCH_PATH; on this target both find dependencies alike.
/// @return the module; null when it cannot be loaded or a flag is not supported.
HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE file, DWORD flags);

/// @return the exported function, or null.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// @return 1 when the reference was given back, else 0.
BOOL FreeLibrary(HMODULE module);

/// @param size    bytes at buffer.
/// @param buffer  receives the terminated path when it fits; untouched otherwise.
/// @return length without the terminator; the size needed, with it, when it does not fit; 0 on
///         failure.
DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer);

/// @return 1 when the directory was changed, else 0.
BOOL SetCurrentDirectoryA(LPCSTR path);

/// The path of the process's executable.
/// @param module  null; other modules are not supported and give 0.
/// @param size    bytes at buffer; a longer path is cut and still terminated.
/// @return length without the terminator; size when the path was cut; 0 on failure.
DWORD GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size);

/// @param size  bytes at buffer; a value that does not fit leaves it untouched.
/// @return length without the terminator; the size needed, with it, when it does not fit; 0 when
///         the variable is not set.
DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size);

/// @param attributes  reserved, null.
/// @return 1 when the directory was made, else 0.
BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES* attributes);

/// The wall-clock time of the process's time zone.
void GetLocalTime(SYSTEMTIME* time);

/// UTF-8 to UTF-16.
/// @param codePage  CP_UTF8; any other gives 0.
/// @param flags     0 (an invalid sequence becomes U+FFFD) or MB_ERR_INVALID_CHARS.
/// @param length    bytes at source, or -1 when it is terminated (the terminator is converted too).
/// @param size      units at target; 0 asks for the number needed.
/// @return units written or needed; 0 on failure, a target that is too small included.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int length, WCHAR* target,
                        int size);

/// UTF-16 to UTF-8.
/// @param codePage     CP_UTF8; any other gives 0.
/// @param flags        0 (a lone surrogate becomes U+FFFD) or WC_ERR_INVALID_CHARS.
/// @param length       units at source, or -1 when it is terminated.
/// @param size         bytes at target; 0 asks for the number needed.
/// @param defaultChar  null for UTF-8, as on Windows; otherwise 0 is returned.
/// @param defaultUsed  null for UTF-8.
/// @return bytes written or needed; 0 on failure, a target that is too small included.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int length, LPSTR target,
                        int size, LPCSTR defaultChar, BOOL* defaultUsed);

/// @return the value after the step.
LONG InterlockedIncrement(volatile LONG* value);
LONG InterlockedDecrement(volatile LONG* value);
