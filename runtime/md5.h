// MD5 message digests (RFC 1321), with the names of its reference operations.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>

/// The state of an unfinished digest.
struct MD5_CTX {
    ULONG state[4];            ///< the words A, B, C, D
    ULONG count[2];            ///< length of the message in bits, low word first
    unsigned char buffer[64];  ///< input that does not fill a block yet
};

void MD5Init(MD5_CTX* context);
/// @param inputLen  length of input in bytes.
void MD5Update(MD5_CTX* context, const unsigned char* input, unsigned int inputLen);
/// Finishes the digest and wipes the context.
/// @param digest  receives 16 bytes.
void MD5Final(unsigned char digest[16], MD5_CTX* context);
/// Adds one block of 64 bytes to the state.
void MD5Transform(ULONG state[4], const unsigned char block[64]);
/// Converts words to bytes, low byte first.
/// @param len  number of bytes, a multiple of 4.
void Encode(unsigned char* output, const ULONG* input, unsigned int len);
/// Converts bytes to words, low byte first.
/// @param len  number of bytes, a multiple of 4.
void Decode(ULONG* output, const unsigned char* input, unsigned int len);
void MD5_memcpy(unsigned char* output, const unsigned char* input, unsigned int len);
/// Fills memory; the compiler cannot optimise this away.
void MD5_memset(unsigned char* output, int value, unsigned int len);

/// Digests terminated text without its terminator.
/// @param digest  receives 16 bytes.
void MD5(const char* text, unsigned char* digest);
/// Digests bytes.
/// @param data    may be null when len is 0.
/// @param len     length of data in bytes.
/// @param digest  receives 16 bytes.
void MD5Data(const void* data, unsigned int len, unsigned char* digest);
/// Digests a file. A read error counts as the end of the file.
/// @param digest  receives 16 bytes.
/// @return 1; 0 when the file cannot be opened, digest is then untouched.
int MD5File(const char* path, unsigned char* digest);
