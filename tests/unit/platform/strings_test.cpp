// BSTR: lengths, terminators, refused sizes.
#include <gtest/gtest.h>

#include <zrkey/automation.h>

#include <cstring>

namespace {

UINT prefixOf(BSTR text) {
    UINT prefix = 0;
    std::memcpy(&prefix, reinterpret_cast<const char*>(text) - 4, sizeof prefix);
    return prefix;
}

TEST(BstrTest, AllocCopiesTheTextBetweenPrefixAndTerminator) {
    BSTR text = SysAllocString(OLESTR("abc"));
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(6u, prefixOf(text));
    EXPECT_EQ(3u, SysStringLen(text));
    EXPECT_EQ(6u, SysStringByteLen(text));
    EXPECT_EQ(0, std::memcmp(text, OLESTR("abc"), 8));
    SysFreeString(text);
}

TEST(BstrTest, AllocOfNullReturnsNullAndOfEmptyTextAnEmptyString) {
    EXPECT_EQ(nullptr, SysAllocString(nullptr));
    for (BSTR text : {SysAllocString(OLESTR("")), SysAllocStringLen(nullptr, 0),
                      SysAllocStringByteLen(nullptr, 0)}) {
        ASSERT_NE(nullptr, text);
        EXPECT_EQ(0u, SysStringLen(text));
        EXPECT_EQ(0, text[0]);
        SysFreeString(text);
    }
}

TEST(BstrTest, LengthOfNullIsZero) {
    EXPECT_EQ(0u, SysStringLen(nullptr));
    EXPECT_EQ(0u, SysStringByteLen(nullptr));
    SysFreeString(nullptr);
}

TEST(BstrTest, AllocLenKeepsZerosInside) {
    BSTR text = SysAllocStringLen(OLESTR("ab\0cd"), 5);
    EXPECT_EQ(5u, SysStringLen(text));
    EXPECT_EQ(0, std::memcmp(text, OLESTR("ab\0cd"), 12));
    SysFreeString(text);
}

TEST(BstrTest, AllocByteLenOfAnOddNumberOfBytesIsTerminated) {
    BSTR text = SysAllocStringByteLen("abc", 3);
    EXPECT_EQ(3u, SysStringByteLen(text));
    EXPECT_EQ(1u, SysStringLen(text));
    EXPECT_EQ(0, std::memcmp(text, "abc\0", 5));
    SysFreeString(text);
}

TEST(BstrTest, AllocLenWithoutASourceZeroesTheText) {
    BSTR text = SysAllocStringLen(nullptr, 100);
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(100u, SysStringLen(text));
    EXPECT_EQ(0, text[100]);
    SysFreeString(text);
}

TEST(BstrTest, AllocBeyond32BitsReturnsNull) {
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0xffffffffu));
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0x80000000u));
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 0x7ffffffdu));
    EXPECT_EQ(nullptr, SysAllocStringByteLen(nullptr, 0xffffffffu));
}

}  // namespace
