// The kernel services that the library calls, with the names and results of Windows.
//
// They are linked into the library and not exported. Paths are bytes in the encoding of the file
// system; nothing is converted.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// The separator in the paths that the system returns.
inline constexpr char kPathSeparator = '/';

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

/// Loads a shared library. Call FreeLibrary once for each successful call.
/// @param fileName  a path, or a bare name that the dynamic loader searches for. "OleAut32.dll", in
///                  upper or lower case, is the automation platform of the process. A name with a
///                  token that the dynamic loader would replace ($ORIGIN, $LIB or $PLATFORM) is
///                  refused: it would name another file.
/// @return the module; null when it cannot be loaded.
HMODULE LoadLibraryA(LPCSTR fileName);

/// As LoadLibraryA.
/// @param file   reserved, must be null.
/// @param flags  0 or LOAD_WITH_ALTERED_SEARCH_PATH, which makes no difference on this target.
/// @return the module; null when it cannot be loaded or an argument is not supported.
HMODULE LoadLibraryExA(LPCSTR fileName, HANDLE file, DWORD flags);

/// @return the function that the module or a library it depends on exports; null when there is
///         none.
FARPROC GetProcAddress(HMODULE module, LPCSTR name);

/// @return 1 when the module was released, else 0.
BOOL FreeLibrary(HMODULE module);

/// @param size    size of buffer in bytes.
/// @param buffer  receives the terminated path; untouched when it does not fit.
/// @return the length without the terminator; when the path does not fit, the size it needs with
///         the terminator; 0 on failure.
DWORD GetCurrentDirectoryA(DWORD size, LPSTR buffer);

/// @return 1 when the directory was changed, else 0.
BOOL SetCurrentDirectoryA(LPCSTR path);

/// Returns the path of the process's executable.
/// @param module  must be null; other modules are not supported.
/// @param buffer  receives the terminated path, cut when it does not fit.
/// @param size    size of buffer in bytes.
/// @return the length without the terminator; size when the path was cut; 0 on failure.
DWORD GetModuleFileNameA(HMODULE module, LPSTR buffer, DWORD size);

/// @param buffer  receives the terminated value; untouched when it does not fit.
/// @param size    size of buffer in bytes.
/// @return the length without the terminator; when the value does not fit, the size it needs with
///         the terminator; 0 when the variable is not set, and always in a set-user-ID program.
DWORD GetEnvironmentVariableA(LPCSTR name, LPSTR buffer, DWORD size);

/// Creates a directory for its owner alone.
/// @param attributes  reserved, must be null.
/// @return 1 when the directory was created, else 0.
BOOL CreateDirectoryA(LPCSTR path, SECURITY_ATTRIBUTES* attributes);

/// Returns the wall-clock time in the time zone of the process.
void GetLocalTime(SYSTEMTIME* time);

/// Converts UTF-8 to UTF-16.
/// @param codePage  must be CP_UTF8.
/// @param flags     0, invalid sequences become U+FFFD, or MB_ERR_INVALID_CHARS, they are a
///                  failure.
/// @param length    length of source in bytes; negative when source is terminated. A terminator at
///                  the end is converted, too.
/// @param target    receives the text; may be null when size is 0.
/// @param size      size of target in UTF-16 units; 0 only computes the size needed.
/// @return the number of units written or needed; 0 on failure, also when target is too small.
int MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, int length, WCHAR* target,
                        int size);

/// Converts UTF-16 to UTF-8.
/// @param codePage     must be CP_UTF8.
/// @param flags        0, a lone surrogate becomes U+FFFD, or WC_ERR_INVALID_CHARS, it is a
///                     failure.
/// @param length       length of source in UTF-16 units; negative when source is terminated.
/// @param target       receives the text; may be null when size is 0.
/// @param size         size of target in bytes; 0 only computes the size needed.
/// @param defaultChar  must be null.
/// @param defaultUsed  must be null.
/// @return the number of bytes written or needed; 0 on failure, also when target is too small.
int WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int length, LPSTR target,
                        int size, LPCSTR defaultChar, BOOL* defaultUsed);

/// @return the new value.
LONG InterlockedIncrement(volatile LONG* value);
LONG InterlockedDecrement(volatile LONG* value);
