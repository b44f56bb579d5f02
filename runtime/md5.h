// MD5 message digests after RFC 1321, with the names of its reference operations.
#pragma once

#include <zrkey/automation.h>

#include <cstddef>

/// The state of a digest under way.
struct MD5_CTX {
    ULONG state[4];            ///< the words A, B, C, D
    ULONG count[2];            ///< message length in bits, low word first
    unsigned char buffer[64];  ///< input not yet digested
};

void MD5Init(MD5_CTX* context);
/// @param inputLen  bytes at input.
void MD5Update(MD5_CTX* context, const unsigned char* input, unsigned int inputLen);
/// Ends the digest and wipes the context.
/// @param digest  receives 16 raw bytes.
void MD5Final(unsigned char digest[16], MD5_CTX* context);
/// Digests one block of 64 bytes into the state.
void MD5Transform(ULONG state[4], const unsigned char block[64]);
/// Words to bytes, low byte first. @param len  bytes, a multiple of 4.
void Encode(unsigned char* output, const ULONG* input, unsigned int len);
/// Bytes to words, low byte first. @param len  bytes, a multiple of 4.
void Decode(ULONG* output, const unsigned char* input, unsigned int len);
void MD5_memcpy(unsigned char* output, const unsigned char* input, unsigned int len);
/// Fills memory, also memory that is not read again.
void MD5_memset(unsigned char* output, int value, unsigned int len);

/// Digest of terminated text, without its terminator.
/// @param digest  receives 16 raw bytes.
void MD5(const char* text, unsigned char* digest);
/// Digest of len bytes at data; data may be null when len is 0.
void MD5Data(const void* data, unsigned int len, unsigned char* digest);
/// Digest of a file.
/// @return 1; 0 when the file cannot be opened, digest is then untouched.
/// @note A read error is not told from the end of the file.
int MD5File(const char* path, unsigned char* digest);
