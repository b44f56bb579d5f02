// The forms of a report: raw, hex, base64, PEM and JSON, and the line of a failure.
#include <gtest/gtest.h>

#include "host/output/encoding.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/output/report.h"

namespace zr::test {
namespace {

using host::ByteFormat;
using host::encode;

TEST(EncodingTest, RawBytesAreUnchanged) {
    const std::string bytes("\0\r\n\x1a\xff", 5);
    EXPECT_EQ(bytes, encode(bytes, ByteFormat::kRaw, "DATA"));
}

TEST(EncodingTest, HexIsOneLowerCaseLine) {
    EXPECT_EQ("000dff\n", encode(std::string("\0\r\xff", 3), ByteFormat::kHex, "DATA"));
    EXPECT_EQ("0123456789abcdef\n",
              encode("\x01\x23\x45\x67\x89\xab\xcd\xef", ByteFormat::kHex, "DATA"));
    EXPECT_EQ("\n", encode("", ByteFormat::kHex, "DATA"));
}

TEST(EncodingTest, Base64IsPadded) {
    // The test values of RFC 4648.
    EXPECT_EQ("", host::toBase64(""));
    EXPECT_EQ("Zg==", host::toBase64("f"));
    EXPECT_EQ("Zm8=", host::toBase64("fo"));
    EXPECT_EQ("Zm9v", host::toBase64("foo"));
    EXPECT_EQ("Zm9vYg==", host::toBase64("foob"));
    EXPECT_EQ("Zm9vYmE=", host::toBase64("fooba"));
    EXPECT_EQ("Zm9vYmFy", host::toBase64("foobar"));
    EXPECT_EQ("+/8=", host::toBase64("\xfb\xff"));
    EXPECT_EQ("Zm9v\n", encode("foo", ByteFormat::kBase64, "DATA"));
}

TEST(EncodingTest, Base64UsesEveryDigit) {
    // Every group of four digits: 0 1 2 3, 4 5 6 7, and so on.
    std::string bytes;
    for (unsigned digit = 0; digit < 64; digit += 4) {
        const unsigned bits = digit << 18 | (digit + 1) << 12 | (digit + 2) << 6 | (digit + 3);
        for (const unsigned shift : {16U, 8U, 0U}) {
            bytes += static_cast<char>(bits >> shift);
        }
    }
    EXPECT_EQ("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/",
              host::toBase64(bytes));
}

TEST(EncodingTest, PemBreaksItsLinesAfter64Characters) {
    EXPECT_EQ("-----BEGIN DATA-----\nZm9v\n-----END DATA-----\n",
              encode("foo", ByteFormat::kPem, "DATA"));
    const std::string line(64, 'A');
    EXPECT_EQ("-----BEGIN DATA-----\n" + line + "\nAAAA\n-----END DATA-----\n",
              encode(std::string(51, '\0'), ByteFormat::kPem, "DATA"));
    EXPECT_EQ("-----BEGIN DATA-----\n" + line + "\n-----END DATA-----\n",
              encode(std::string(48, '\0'), ByteFormat::kPem, "DATA"));
}

TEST(JsonTest, EveryKindOfValueIsWritten) {
    EXPECT_EQ(
        "{\"b\":true,\"n\":4294967296,\"t\":\"a\\\"\\\\\\n\",\"x\":\"Zg==\","
        "\"o\":{\"i\":1},\"l\":[{},{\"i\":2}]}\n",
        host::toJson({{"b", true},
                      {"n", std::uint64_t{4294967296}},
                      {"t", std::string("a\"\\\n")},
                      {"x", host::ByteValue{"f"}},
                      {"o", host::Record{{"i", std::uint64_t{1}}}},
                      {"l", std::vector<host::Record>{{}, {{"i", std::uint64_t{2}}}}}}));
}

TEST(JsonTest, MalformedUtf8IsReplaced) {
    EXPECT_EQ("{\"t\":\"a\xEF\xBF\xBD\"}\n", host::toJson({{"t", std::string("a\xff")}}));
}

TEST(JsonTest, ResultsHaveNameAndNumber) {
    EXPECT_EQ("{\"name\":\"E_FAIL\",\"hex\":\"0x80004005\"}\n",
              host::toJson(host::resultFields(E_FAIL)));
    EXPECT_EQ("{\"hex\":\"0x80041234\"}\n",
              host::toJson(host::resultFields(static_cast<HRESULT>(0x80041234U))));
}

TEST(FailureTest, LineContainsRequestCauseAndAdvice) {
    EXPECT_EQ("zrkey: cannot do it: the library returned E_FAIL (0x80004005); do that\n",
              host::libraryFailure(1, "do it", E_FAIL, "do that").line());
    EXPECT_EQ("zrkey: cannot do it: No such file or directory; do that\n",
              host::systemFailure(
                  1, "do it", std::make_error_code(std::errc::no_such_file_or_directory), "do that")
                  .line());
    EXPECT_EQ("zrkey: cannot do it: no way; do that\n",
              host::commandFailure(1, "do it", "no way", "do that").line());
}

TEST(FailureTest, LineContainsNoControlCharacters) {
    EXPECT_EQ("zrkey: cannot open \"a?b?c???\xC3\xA4\": r; t\n",
              host::commandFailure(1,
                                   "open " + host::inQuotes("a\nb\x1b"
                                                            "c\x7f\xC2\x9B\xC3\xA4"),
                                   "r", "t")
                  .line());
}

}  // namespace
}  // namespace zr::test
