// Paths, module loading and hexadecimal text, over the services of the platform.
//
// Paths are in the narrow encoding of the platform. In a normalised path every "\" is replaced by
// "/".
#pragma once

#include <zrkey/automation.h>

#include "platform/kernel.h"

/// Returns the current directory, normalised.
/// @param buf   receives the terminated path; untouched when it does not fit.
/// @param size  size of buf in bytes.
/// @return the length without the terminator; when the path does not fit, the size it needs; 0 on
///         failure.
int ZGetCurrentPath(char* buf, unsigned int size);

/// Changes the current directory.
/// @return 1 on success, else 0.
int ZSetCurrentPath(const char* path);

/// Returns the directory of the process's executable, normalised, with a separator at its end.
/// @param buf   receives the terminated path, cut when it does not fit.
/// @param size  size of buf in bytes.
/// @return the full length of the path; 0 when the executable's path is longer than 299 bytes.
int ZGetModulePath(char* buf, int size);

/// Returns the path of the process's executable, normalised.
/// @param buf   receives the terminated path, cut when it does not fit.
/// @param size  size of buf in bytes.
/// @return what GetModuleFileNameA returned; 0 when buf is null or size is 0.
int ZGetModuleFilePath(char* buf, unsigned int size);

/// Normalises a path in place; null is ignored.
void ZConvertLinuxPath(char* path);

/// Normalises a path and resolves the components "." and "..". The text after the last separator is
/// kept, whatever it is. Only a path that begins with "." is appended to the current directory;
/// when that directory is gone or longer than 259 bytes, nothing is written.
/// @param path     null or empty writes nothing.
/// @param out      receives the terminated result; untouched when it does not fit. May be path.
/// @param outSize  size of out in bytes.
/// @return 0, also when nothing was written; -1 when out of memory.
/// @note Callers set the buffer before the call to find out whether it was written.
int ZGetAbsolutionPath(const char* path, char* out, int outSize);

/// Loads a library.
/// @return the module; null on failure and for a null or empty name.
HMODULE ZLoadLibrary(const char* file);
/// As ZLoadLibrary. On Windows the dependencies of a library with an absolute path are searched for
/// in its own directory first; on Linux there is no difference.
HMODULE ZLoadLibraryEx(const char* file);
/// Frees a library.
/// @return what FreeLibrary returned; 0 for null.
int ZFreeLibrary(HMODULE module);
/// @return the exported procedure; on Linux also one that a dependency of the module exports. Null
///         when there is none, and for a null module or a null or empty name.
FARPROC ZGetProcAddress(HMODULE module, const char* name);

/// @return the value of a hexadecimal digit; 0 for any other character.
int ZHexToDec(char c);

/// Reads a hexadecimal number by the rule of ZHexToDec.
/// @param len  number of characters to read; a terminator does not end the number.
/// @return the low 32 bits of the number; 0 for null and for len below 1.
unsigned int ZHexStringToInt(const char* s, int len);

/// @param s  36 characters in the form 6B29FC40-CA47-1067-B31D-00DD010662DA, without braces.
/// @return the identifier; all zeros for null and for any other length or position of the dashes.
GUID ZCreateGUIDFromString(const char* s);
