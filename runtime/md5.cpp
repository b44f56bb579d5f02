// MD5 message digests (RFC 1321).
#include "runtime/md5.h"

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <memory>

#include "runtime/secret.h"

namespace {

// RFC 1321, step 4: the constant of step i is the integer part of 2^32 * abs(sin(i)).
constexpr std::array<ULONG, 64> kSine = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391};

constexpr int kShift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

/// The 16 steps of one round. mix is the function of the round, Start and Step select the words.
template <int Round, int Step, int Start, class Mix>
inline void runRound(ULONG& a, ULONG& b, ULONG& c, ULONG& d, const ULONG* words, Mix mix) {
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        const ULONG sum = a + mix(b, c, d) + words[(Start + Step * i) % 16] + kSine[Round * 16 + i];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kShift[Round][i % 4]);
    }
}

/// Adds blocks of 64 bytes to the state, and wipes the copy of their words at the end.
void addBlocks(ULONG state[4], const unsigned char* blocks, unsigned int count) {
    ULONG words[16];
    ULONG a = state[0];
    ULONG b = state[1];
    ULONG c = state[2];
    ULONG d = state[3];
    for (; count > 0; --count, blocks += 64) {
        Decode(words, blocks, 64);
        runRound<0, 1, 0>(a, b, c, d, words,
                          [](ULONG x, ULONG y, ULONG z) { return z ^ (x & (y ^ z)); });
        // A sum instead of "or": the processor can add x & z before it knows the newest word, x.
        runRound<1, 5, 1>(a, b, c, d, words,
                          [](ULONG x, ULONG y, ULONG z) { return (x & z) + (y & ~z); });
        runRound<2, 3, 5>(a, b, c, d, words, [](ULONG x, ULONG y, ULONG z) { return x ^ y ^ z; });
        runRound<3, 7, 0>(a, b, c, d, words,
                          [](ULONG x, ULONG y, ULONG z) { return y ^ (x | ~z); });
        state[0] = a += state[0];
        state[1] = b += state[1];
        state[2] = c += state[2];
        state[3] = d += state[3];
    }
    MD5_memset(reinterpret_cast<unsigned char*>(words), 0, sizeof words);
}

}  // namespace

void MD5Init(MD5_CTX* context) {
    context->count[0] = context->count[1] = 0;
    context->state[0] = 0x67452301;
    context->state[1] = 0xefcdab89;
    context->state[2] = 0x98badcfe;
    context->state[3] = 0x10325476;
}

void MD5Update(MD5_CTX* context, const unsigned char* input, unsigned int inputLen) {
    unsigned int pending = (context->count[0] >> 3) & 63;
    const ULONG bits = inputLen << 3;
    context->count[0] += bits;
    context->count[1] += (inputLen >> 29) + (context->count[0] < bits ? 1 : 0);

    if (pending + static_cast<unsigned long long>(inputLen) >= 64 && pending > 0) {
        const unsigned int taken = 64 - pending;
        MD5_memcpy(context->buffer + pending, input, taken);
        MD5Transform(context->state, context->buffer);
        input += taken;
        inputLen -= taken;
        pending = 0;
    }
    const unsigned int rest = inputLen % 64;
    addBlocks(context->state, input, inputLen / 64);
    MD5_memcpy(context->buffer + pending, input + (inputLen - rest), rest);
}

void MD5Final(unsigned char digest[16], MD5_CTX* context) {
    static constexpr unsigned char kPadding[64] = {0x80};
    unsigned char length[8];
    Encode(length, context->count, 8);
    const unsigned int pending = (context->count[0] >> 3) & 63;
    MD5Update(context, kPadding, pending < 56 ? 56 - pending : 120 - pending);
    MD5Update(context, length, 8);
    Encode(digest, context->state, 16);
    MD5_memset(reinterpret_cast<unsigned char*>(context), 0, sizeof *context);
}

void MD5Transform(ULONG state[4], const unsigned char block[64]) {
    addBlocks(state, block, 1);
}

void Encode(unsigned char* output, const ULONG* input, unsigned int len) {
    for (unsigned int i = 0; i < len; ++i) {
        output[i] = static_cast<unsigned char>(input[i / 4] >> (i % 4 * 8));
    }
}

void Decode(ULONG* output, const unsigned char* input, unsigned int len) {
    for (std::size_t i = 0; i < len / 4; ++i) {
        const unsigned char* bytes = input + i * 4;
        output[i] = static_cast<ULONG>(bytes[0]) | static_cast<ULONG>(bytes[1]) << 8 |
                    static_cast<ULONG>(bytes[2]) << 16 | static_cast<ULONG>(bytes[3]) << 24;
    }
}

void MD5_memcpy(unsigned char* output, const unsigned char* input, unsigned int len) {
    if (len > 0) {
        std::memcpy(output, input, len);
    }
}

void MD5_memset(unsigned char* output, int value, unsigned int len) {
    zr::secureFill(output, value, len);
}

void MD5(const char* text, unsigned char* digest) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const unsigned char*>(text),
              static_cast<unsigned int>(std::strlen(text)));
    MD5Final(digest, &context);
}

void MD5Data(const void* data, unsigned int len, unsigned char* digest) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, static_cast<const unsigned char*>(data), len);
    MD5Final(digest, &context);
}

int MD5File(const char* path, unsigned char* digest) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path, "rb"), std::fclose);
    if (!file) {
        return 0;
    }
    MD5_CTX context;
    MD5Init(&context);
    unsigned char block[1024];
    while (const std::size_t length = std::fread(block, 1, sizeof block, file.get())) {
        MD5Update(&context, block, static_cast<unsigned int>(length));
    }
    MD5Final(digest, &context);
    return 1;
}
