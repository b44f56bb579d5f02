// The forms of what comes out: raw, hex, base64, PEM and JSON, and the line of a failure.
#include <gtest/gtest.h>

#include "encoding.h"
#include "failure.h"
#include "library.h"
#include "result_output.h"

namespace zr::test {
namespace {

using host::ByteFormat;
using host::encode;

TEST(EncodingTest, RawBytesStayAsTheyAre) {
    const std::string bytes("\0\r\n\x1a\xff", 5);
    EXPECT_EQ(bytes, encode(bytes, ByteFormat::kRaw, "DATA"));
}

TEST(EncodingTest, HexIsLowerCaseOnALine) {
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
    // Each group of four digits in turn: 0 1 2 3, 4 5 6 7, and so on.
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
                      {"x", host::Bytes{"f"}},
                      {"o", host::Record{{"i", std::uint64_t{1}}}},
                      {"l", std::vector<host::Record>{{}, {{"i", std::uint64_t{2}}}}}}));
}

TEST(JsonTest, TextThatIsNoUtf8IsReplaced) {
    EXPECT_EQ("{\"t\":\"a\xEF\xBF\xBD\"}\n", host::toJson({{"t", std::string("a\xff")}}));
}

TEST(JsonTest, CodesAreNameAndNumber) {
    EXPECT_EQ("{\"name\":\"E_FAIL\",\"hex\":\"0x80004005\"}\n",
              host::toJson(host::codeFields(E_FAIL)));
    const std::pair<HRESULT, const char*> codes[] = {
        {S_OK, "S_OK (0x00000000)"},
        {E_NOTIMPL, "E_NOTIMPL (0x80004001)"},
        {E_NOINTERFACE, "E_NOINTERFACE (0x80004002)"},
        {E_POINTER, "E_POINTER (0x80004003)"},
        {E_FAIL, "E_FAIL (0x80004005)"},
        {E_UNEXPECTED, "E_UNEXPECTED (0x8000FFFF)"},
        {E_OUTOFMEMORY, "E_OUTOFMEMORY (0x8007000E)"},
        {E_INVALIDARG, "E_INVALIDARG (0x80070057)"},
        {RPC_E_CANTCALLOUT_INEXTERNALCALL, "RPC_E_CANTCALLOUT_INEXTERNALCALL (0x80010005)"},
        {DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH (0x80020005)"},
        {DISP_E_EXCEPTION, "DISP_E_EXCEPTION (0x80020009)"},
        {DISP_E_OVERFLOW, "DISP_E_OVERFLOW (0x8002000A)"},
        {S_FALSE, "0x00000001"}};
    for (const auto& [code, text] : codes) {
        EXPECT_EQ(text, host::resultText(code));
    }
    EXPECT_EQ("{\"hex\":\"0x80041234\"}\n",
              host::toJson(host::codeFields(static_cast<HRESULT>(0x80041234U))));
}

TEST(FailureTest, ItsLineSaysWhatWasAskedAnsweredAndWhatToTry) {
    EXPECT_EQ("zrkey: cannot do it: the library answered E_FAIL (0x80004005); do that\n",
              host::refused(1, "do it", E_FAIL, "do that").line());
    EXPECT_EQ("zrkey: cannot do it: no way; do that\n",
              host::failed(1, "do it", "no way", "do that").line());
}

TEST(FailureTest, NothingInItsLineMovesTheCursor) {
    EXPECT_EQ("zrkey: cannot open \"a?b?c???\xC3\xA4\": r; t\n",
              host::failed(1,
                           "open " + host::inQuotes("a\nb\x1b"
                                                    "c\x7f\xC2\x9B\xC3\xA4"),
                           "r", "t")
                  .line());
}

}  // namespace
}  // namespace zr::test
