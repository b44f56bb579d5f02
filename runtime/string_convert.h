// Conversions between UTF-8, the library's inner text, and the UTF-16 strings of automation.
//
// Every function stands here twice with the same behaviour: plain names for the value classes,
// names with a leading underscore for the dispatch base and the error reporting. Only the two
// messages of the allocating functions differ.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>

/// UTF-8 to UTF-16, the terminator included.
/// @param utf8    terminated; null or empty gives 1 and leaves out untouched.
/// @param out     receives the units; may be null when outLen is 0.
/// @param outLen  units at out; 0 asks for the number needed.
/// @return units written or needed; 0 on failure.
int ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen);

/// UTF-16 to UTF-8, the terminator included.
/// @param w       terminated; null gives 0.
/// @param outLen  bytes at out; 0 asks for the number needed.
/// @return bytes written or needed; 0 on failure.
int ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen);

/// A new string of UTF-8 text; null or empty text gives an empty string.
/// @return owned by the caller; null on failure.
BSTR ZSysAllocUTF8String(const char* utf8);

/// A new string of the first len bytes of UTF-8 text, or of all of it when it is shorter.
/// A cut inside a sequence is converted as it is.
/// @return owned by the caller; null for null text and on failure.
BSTR ZSysAllocUTF8StringLen(const char* utf8, unsigned int len);

/// Bytes the string takes in a stream: length prefix, text and terminator; 4 for null.
int ZSysStringGetStreamSize(BSTR s);

/// A string as terminated UTF-8.
/// @param out      receives the text, all outSize bytes zero-filled first; null asks for the size.
/// @param outSize  bytes at out.
/// @return the size with the terminator, also when it does not fit (out is then untouched);
///         0 for null and on failure.
int ZBstrToUtf8(BSTR s, char* out, unsigned int outSize);

/// UTF-16 units before the terminator.
std::size_t strlen_unicode(const OLECHAR* text);

/// Characters of UTF-8 text, by the lead bytes alone.
/// @note Skipped bytes are not looked at, so a sequence cut short jumps over the terminator, and a
///       byte from 0xD0 to 0xDF never ends the walk. Kept; nothing in the library calls it.
std::size_t strlen_utf8(const char* text);

int _ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen);
int _ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen);
/// As ZSysAllocUTF8String, and first reports its input on standard output.
BSTR _ZSysAllocUTF8String(const char* utf8);
BSTR _ZSysAllocUTF8StringLen(const char* utf8, unsigned int len);
int _ZSysStringGetStreamSize(BSTR s);
int _ZBstrToUtf8(BSTR s, char* out, unsigned int outSize);
std::size_t _strlen_unicode(const OLECHAR* text);
std::size_t _strlen_utf8(const char* text);
