/* MD5 (RFC 1321), one loop for each round. */
#include <math.h>
#include <stdlib.h>
#include <string.h>

#include "tests/cost/floor.h"

static uint32_t s_sine[64];

static uint32_t rotate(uint32_t value, int bits) {
    return value << bits | value >> (32 - bits);
}

#define STEP(mix, word, index, shift)                                      \
    do {                                                                   \
        const uint32_t sum = a + (mix) + words[(word)&15] + s_sine[index]; \
        a = d;                                                             \
        d = c;                                                             \
        c = b;                                                             \
        b += rotate(sum, shift);                                           \
    } while (0)

static void transform(uint32_t state[4], const unsigned char block[64]) {
    static const int kShift[4][4] = {
        {7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
    uint32_t words[16];
    uint32_t a = state[0];
    uint32_t b = state[1];
    uint32_t c = state[2];
    uint32_t d = state[3];
    memcpy(words, block, sizeof words);
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        STEP((b & c) | (~b & d), i, i, kShift[0][i % 4]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        STEP((b & d) + (c & ~d), 5 * i + 1, 16 + i, kShift[1][i % 4]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        STEP(b ^ c ^ d, 3 * i + 5, 32 + i, kShift[2][i % 4]);
    }
#pragma GCC unroll 16
    for (int i = 0; i < 16; ++i) {
        STEP(c ^ (b | ~d), 7 * i, 48 + i, kShift[3][i % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

int floorDigest(const unsigned char* data, size_t size) {
    uint32_t state[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};
    const uint64_t bits = (uint64_t)size * 8;
    unsigned char last[128] = {0};
    unsigned char* digest;
    size_t rest;
    size_t lastSize;
    if (s_sine[0] == 0) {
        for (int i = 0; i < 64; ++i) {
            s_sine[i] = (uint32_t)floor(4294967296.0 * fabs(sin(i + 1)));
        }
    }
    for (rest = size; rest >= 64; rest -= 64, data += 64) {
        transform(state, data);
    }
    lastSize = rest < 56 ? 64 : 128;
    memcpy(last, data, rest);
    last[rest] = 0x80;
    memcpy(last + lastSize - 8, &bits, sizeof bits);
    for (size_t at = 0; at < lastSize; at += 64) {
        transform(state, last + at);
    }
    digest = malloc(sizeof state);
    if (digest) {
        memcpy(digest, state, sizeof state);
    }
    free(digest);
    return digest != NULL;
}
