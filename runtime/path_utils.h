// Paths, module loading, hexadecimal text: narrow wrappers over the platform's services.
//
// Paths are in the platform's narrow encoding. A path is normalised when every "\" is a "/".
#pragma once

#include <zrkey/automation.h>

#include "kernel.h"

/// The current directory, normalised.
/// @param size  bytes at buf.
/// @return what GetCurrentDirectoryA returned: the length, or the size needed when it does not fit.
int ZGetCurrentPath(char* buf, unsigned int size);

/// @return 1 on success, else 0.
int ZSetCurrentPath(const char* path);

/// The directory of the process's executable, normalised, with the separator at its end.
/// @param size  bytes at buf; a longer result is cut.
/// @return the full length of the result.
int ZGetModulePath(char* buf, int size);

/// The path of the process's executable, normalised.
/// @return what GetModuleFileNameA returned.
int ZGetModuleFilePath(char* buf, unsigned int size);

/// Normalises path in place; null is ignored.
void ZConvertLinuxPath(char* path);

/// Resolves "." and ".." components. Only a path that begins with "." is joined to the current
/// directory, which has to be there and have at most 259 bytes, or nothing is written; the text after
/// the last separator is kept whatever it is.
/// @param path     null or empty gives 0.
/// @param out      receives the result when outSize exceeds its length; may be path itself.
/// @param outSize  bytes at out.
/// @return 0, also when nothing was written; -1 when memory is short.
/// @note A buffer that is too small cannot be told from success; kept, callers preset the buffer.
int ZGetAbsolutionPath(const char* path, char* out, int outSize);

/// @return the module, or null; null or empty names give null.
HMODULE ZLoadLibrary(const char* file);
/// As ZLoadLibrary; on Windows dependencies are looked for beside the library, when its path is
/// absolute, before they are anywhere else. On Linux there is no difference.
HMODULE ZLoadLibraryEx(const char* file);
/// @return 0 for null, else what FreeLibrary returned.
int ZFreeLibrary(HMODULE module);
/// @return the exported procedure; null for a null module, a null or empty name, or no such export.
FARPROC ZGetProcAddress(HMODULE module, const char* name);

/// @return 0 to 15; 0 for any character that is no hexadecimal digit.
int ZHexToDec(char c);

/// @param len  characters read at s; a terminator is not looked for.
/// @return the value in 32 bits, wrapped; 0 for null or len below 1.
unsigned int ZHexStringToInt(const char* s, int len);

/// @param s  36 characters in the form 6B29FC40-CA47-1067-B31D-00DD010662DA, without braces.
/// @return the identifier; all zeros for any other length or dash position, and for null.
GUID ZCreateGUIDFromString(const char* s);
