// MD5: the digests of RFC 1321, section A.5, input in pieces, and files.
#include "runtime/md5.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

std::string hex(const unsigned char* digest) {
    std::string text;
    for (int i = 0; i < 16; ++i) {
        char byte[3];
        std::snprintf(byte, sizeof byte, "%02x", digest[i]);
        text += byte;
    }
    return text;
}

std::string digestOf(const std::string& data) {
    unsigned char digest[16];
    MD5Data(data.data(), static_cast<unsigned int>(data.size()), digest);
    return hex(digest);
}

TEST(Md5Test, Md5OfTheTextsInTheStandardGivesItsDigests) {
    const struct {
        const char* text;
        const char* digest;
    } cases[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"},
    };
    for (const auto& entry : cases) {
        unsigned char digest[16];
        MD5(entry.text, digest);
        EXPECT_EQ(entry.digest, hex(digest)) << entry.text;
        EXPECT_EQ(entry.digest, digestOf(entry.text));
    }
    unsigned char digest[16];
    MD5Data(nullptr, 0, digest);
    EXPECT_EQ(cases[0].digest, hex(digest));
}

TEST(Md5Test, UpdateInPiecesGivesTheDigestOfTheWhole) {
    std::string data;
    for (unsigned int length = 0; length <= 4096;
         length = length < 200 ? length + 1 : length + 97) {
        data.assign(length, 'x');
        for (unsigned int i = 0; i < length; ++i) {
            data[i] = static_cast<char>(i * 7);
        }
        MD5_CTX context;
        MD5Init(&context);
        for (unsigned int at = 0, step = 1; at < length; at += step, step = step * 2 % 131 + 1) {
            const unsigned int piece = std::min(step, length - at);
            MD5Update(&context, reinterpret_cast<const unsigned char*>(data.data()) + at, piece);
        }
        unsigned char digest[16];
        MD5Final(digest, &context);
        EXPECT_EQ(digestOf(data), hex(digest)) << length;
    }
}

TEST(Md5Test, UpdateBeyond32BitsOfLengthCarriesIntoTheHighWord) {
    const unsigned char bytes[8] = {};
    MD5_CTX context;
    MD5Init(&context);
    context.count[0] = 0xFFFFFFC0;
    MD5Update(&context, bytes, 7);
    EXPECT_EQ(0xFFFFFFF8u, context.count[0]);
    EXPECT_EQ(0u, context.count[1]);
    MD5Update(&context, bytes, 1);
    EXPECT_EQ(0u, context.count[0]);
    EXPECT_EQ(1u, context.count[1]);
    MD5Update(&context, bytes, 0);
    EXPECT_EQ(1u, context.count[1]);
}

TEST(Md5Test, FinalWipesTheContext) {
    MD5_CTX context;
    MD5Init(&context);
    MD5Update(&context, reinterpret_cast<const unsigned char*>("secret"), 6);
    unsigned char digest[16];
    MD5Final(digest, &context);
    const MD5_CTX zero = {};
    EXPECT_EQ(0, std::memcmp(&zero, &context, sizeof context));
}

TEST(Md5Test, Md5FileOfSeveralBlocksDigestsThemAll) {
    const TempDir folder;
    unsigned char digest[16] = {1};
    EXPECT_EQ(0, MD5File("missing", digest));
    EXPECT_EQ(1, digest[0]);
    folder.write("empty", "");
    EXPECT_EQ(1, MD5File("empty", digest));
    EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e", hex(digest));
    const std::string data(1025, '\n');
    folder.write("long", data);
    EXPECT_EQ(1, MD5File("long", digest));
    EXPECT_EQ(digestOf(data), hex(digest));
}

TEST(Md5Test, Md5FileWithLineEndsDigestsTheBytesUnchanged) {
    const TempDir folder;
    std::string data = "a line\r\nand\x1A the end of a text\r\n";
    data.append(1023 - data.size(), 'x').append("\r\n\x1A\r\n");
    for (const std::string& content : {std::string("\r\n"), std::string("\x1A"), data}) {
        folder.write("file", content);
        unsigned char digest[16] = {};
        EXPECT_EQ(1, MD5File("file", digest));
        EXPECT_EQ(digestOf(content), hex(digest));
    }
}

TEST(Md5Test, Md5DataOf0To4096BytesAgreesWithAnotherImplementation) {
    // The build generates the table. Each row is the digest of one letter more.
    static const char* const expected[] = {
#include "md5_table.inc"
    };
    ASSERT_EQ(4097u, std::size(expected));
    std::string text;
    for (std::size_t length = 0; length < std::size(expected); ++length) {
        EXPECT_EQ(expected[length], digestOf(text)) << length;
        text += static_cast<char>('a' + (length * 7 + length / 26) % 26);
    }
}

}  // namespace
}  // namespace zr::test
