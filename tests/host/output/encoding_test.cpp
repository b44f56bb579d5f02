// Encodings of bytes: what is written is read again, and nothing else.
#include "host/output/encoding.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>

namespace zr::host {
namespace {

constexpr ByteFormat kFormats[] = {ByteFormat::kRaw, ByteFormat::kHex, ByteFormat::kBase64,
                                   ByteFormat::kPem};

TEST(DecodeTest, EncodedBytesAreReadAgain) {
    for (std::size_t size = 0; size < 300; ++size) {
        std::string bytes(size, '\0');
        std::iota(bytes.begin(), bytes.end(), static_cast<char>(size));
        for (const ByteFormat format : kFormats) {
            EXPECT_EQ(bytes, decode(encode(bytes, format, "DATA"), format, "DATA")) << size;
        }
    }
}

TEST(DecodeTest, BlanksAndLineEndsAreSkipped) {
    EXPECT_EQ("abc", decode(" 61\r\n62\t6 3\n\n", ByteFormat::kHex));
    EXPECT_EQ("abcd", decode("YW\r\nJj\nZA ==\n", ByteFormat::kBase64));
    EXPECT_EQ("abc", decode("\n-----BEGIN DATA-----\r\nYW\r\nJj\r\n-----END DATA-----\r\n\n",
                            ByteFormat::kPem, "DATA"));
    EXPECT_EQ(" a\n", decode(" a\n", ByteFormat::kRaw));
}

TEST(DecodeTest, HexMayBeInUpperCase) {
    EXPECT_EQ("\xAB\xCD", decode("ABcd", ByteFormat::kHex));
}

TEST(DecodeTest, OtherTextIsNoHex) {
    for (const char* text : {"6", "6g", "616", "0x61", "-1", "+1", "61;62"}) {
        EXPECT_EQ(std::nullopt, decode(text, ByteFormat::kHex)) << text;
    }
}

TEST(DecodeTest, OtherTextIsNoBase64) {
    for (const char* text : {"YWI", "YWJjZ", "YW=j", "Y===", "====", "=", "YW-_",
                             "YWJj=", "YR==", "YWJ=", "YWJjZA==YWJj", "YWJj*"}) {
        EXPECT_EQ(std::nullopt, decode(text, ByteFormat::kBase64)) << text;
    }
}

TEST(DecodeTest, OtherTextIsNoPem) {
    for (const char* text : {"", "YWJj", "-----BEGIN DATA-----", "-----END DATA-----",
                             "-----BEGIN OTHER-----\nYWJj\n-----END OTHER-----",
                             "-----BEGIN DATA-----\nYWJj\n-----END OTHER-----",
                             "x\n-----BEGIN DATA-----\nYWJj\n-----END DATA-----",
                             "-----BEGIN DATA-----\nYWJj\n-----END DATA-----\nx",
                             "-----BEGIN DATA-----\nYWJ\n-----END DATA-----"}) {
        EXPECT_EQ(std::nullopt, decode(text, ByteFormat::kPem, "DATA")) << text;
    }
}

}  // namespace
}  // namespace zr::host
