// Conversions between UTF-8, which the library uses inside, and the UTF-16 strings of automation.
//
// Each function exists twice with the same behaviour: the plain names are for the value classes,
// the names with a leading underscore for the dispatch base and the error reporting. Only two
// messages of the allocating functions differ.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>

/// Converts UTF-8 to UTF-16 with the terminator.
/// @param utf8    terminated; for null and empty text out is untouched and the result is 1.
/// @param out     receives the text; may be null when outLen is 0.
/// @param outLen  size of out in UTF-16 units; 0 only computes the size needed.
/// @return the number of units written or needed; 0 on failure.
int ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen);

/// Converts UTF-16 to UTF-8 with the terminator.
/// @param w       terminated.
/// @param out     receives the text; may be null when outLen is 0.
/// @param outLen  size of out in bytes; 0 only computes the size needed.
/// @return the number of bytes written or needed; 0 on failure and for null.
int ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen);

/// Creates a string of UTF-8 text, an empty string of null.
/// @return owned by the caller; null on failure.
BSTR ZSysAllocUTF8String(const char* utf8);

/// Creates a string of the first len bytes of UTF-8 text, or of all of it when it is shorter. When
/// the cut splits a sequence, the rest of it is converted as invalid text.
/// @return owned by the caller; null on failure and for null.
BSTR ZSysAllocUTF8StringLen(const char* utf8, unsigned int len);

/// @return the size of a string in a stream: length prefix, text and terminator in bytes; 4 for
///         null.
int ZSysStringGetStreamSize(BSTR s);

/// Converts a string to UTF-8.
/// @param out      receives the terminated text after all its bytes are zeroed; untouched when the
///                 text does not fit; null only computes the size.
/// @param outSize  size of out in bytes.
/// @return the size of the text with its terminator, also when it does not fit; 0 on failure and
///         for null.
int ZBstrToUtf8(BSTR s, char* out, unsigned int outSize);

/// @return the number of UTF-16 units before the terminator.
std::size_t strlen_unicode(const OLECHAR* text);

/// Counts the characters of UTF-8 text by their lead bytes.
/// @note The bytes after a lead byte are skipped unread, so an incomplete sequence skips the
///       terminator. A byte from 0xD0 to 0xDF makes the function run for ever. Kept;
///       nothing in the library calls it.
std::size_t strlen_utf8(const char* text);

int _ZConvUTF8ToUnicode(const char* utf8, OLECHAR* out, unsigned int outLen);
int _ZConvUnicodeToUTF8(const OLECHAR* w, char* out, unsigned int outLen);
/// As ZSysAllocUTF8String, but first prints its input on standard output.
BSTR _ZSysAllocUTF8String(const char* utf8);
BSTR _ZSysAllocUTF8StringLen(const char* utf8, unsigned int len);
int _ZSysStringGetStreamSize(BSTR s);
int _ZBstrToUtf8(BSTR s, char* out, unsigned int outSize);
std::size_t _strlen_unicode(const OLECHAR* text);
std::size_t _strlen_utf8(const char* text);
