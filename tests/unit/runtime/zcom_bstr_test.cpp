// ZComBSTR: the owned string.
#include "runtime/zcom_bstr.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

namespace zr::test {
namespace {

using zrapi::ZComBSTR;

BSTR raw(const ZComBSTR& text) {
    return text;
}

TEST(ZComBstrTest, DefaultConstructorMakesANullString) {
    ZComBSTR text;
    EXPECT_EQ(nullptr, raw(text));
    EXPECT_EQ(nullptr, static_cast<const char*>(text));
    EXPECT_EQ(0u, text.GetLength());
    EXPECT_EQ(nullptr, text.Copy());
    EXPECT_EQ(sizeof(void*) * 3, sizeof(ZComBSTR));
}

TEST(ZComBstrTest, ConstructorsCopyOrTakeOverTheString) {
    BSTR source = SysAllocString(OLESTR("abc"));
    ZComBSTR copy(source);
    EXPECT_NE(source, raw(copy));
    ZComBSTR second(source, true);
    EXPECT_NE(source, raw(second));
    ZComBSTR owner(source, false);
    EXPECT_EQ(source, raw(owner));
}

TEST(ZComBstrTest, CopiesEndAtTheFirstZero) {
    BSTR source = SysAllocStringByteLen(reinterpret_cast<const char*>(OLESTR("ab\0cd")), 10);
    ZComBSTR copy(source);
    EXPECT_EQ(2u, copy.GetLength());
    ZComBSTR second(source, true);
    EXPECT_EQ(2u, second.GetLength());
    ZComBSTR owner(source, false);
    EXPECT_EQ(5u, owner.GetLength());
    EXPECT_STREQ("ab", static_cast<const char*>(owner));
    BSTR third = owner.Copy();
    EXPECT_EQ(2u, SysStringLen(third));
    SysFreeString(third);
}

TEST(ZComBstrTest, LayoutHasTheStringBeforeTheCache) {
    ZComBSTR text("abc");
    const char* view = text;
    const void* members[3];  // the first is the pointer to the virtual table
    std::memcpy(members, static_cast<const void*>(&text), sizeof members);
    EXPECT_EQ(raw(text), members[1]);
    EXPECT_EQ(view, members[2]);
}

TEST(ZComBstrTest, LengthsAndUtf8TextAreThoseOfTheString) {
    ZComBSTR text("a\xe2\x82\xac");
    EXPECT_EQ(2u, text.GetLength());
    EXPECT_EQ(4u, text.GetByteLength());
    EXPECT_STREQ("a\xe2\x82\xac", static_cast<const char*>(text));
    EXPECT_EQ(10, ZComBSTR::GetStreamSize(text));
    EXPECT_EQ(4, ZComBSTR::GetStreamSize(nullptr));
    BSTR copy = text.Copy();
    EXPECT_NE(raw(text), copy);
    SysFreeString(copy);
    text.Clear();
    EXPECT_EQ(nullptr, raw(text));
    text.Clear();
}

TEST(ZComBstrTest, Utf8TextOfAnyLengthIsWhole) {
    // With a character of three bytes at the end, around the length of text that is converted at
    // once.
    for (std::size_t length = 120; length <= 130; ++length) {
        for (const std::string last : {"x", "\xe2\x82\xac"}) {
            const std::string whole = std::string(length, 'a').append(last);
            ZComBSTR text(whole.c_str());
            EXPECT_EQ(whole, static_cast<const char*>(text));
            EXPECT_EQ(length + 1, text.GetLength());
        }
    }
}

TEST(ZComBstrTest, AssignmentSharesTheStringUntilTheLastObjectFreesIt) {
    ZComBSTR first("abc");
    const char* view = first;
    {
        ZComBSTR second("other");
        second = first;
        ZComBSTR third(second);
        EXPECT_EQ(raw(first), raw(second));
        EXPECT_EQ(raw(first), raw(third));
        third = first;
        first.Clear();
        EXPECT_EQ(3u, second.GetLength());
        EXPECT_STREQ("abc", view);
        second = *&second;
        EXPECT_EQ(3u, third.GetLength());
    }
    EXPECT_EQ(nullptr, raw(first));
}

TEST(ZComBstrTest, DestructorsOfManyOwnersFreeTheStringOnce) {
    ZComBSTR first("shared");
    ZComBSTR other("of its own");
    {
        ZComBSTR second;
        ZComBSTR third;
        ZComBSTR empty;
        second = first;
        third = first;
        third = empty;
        EXPECT_EQ(nullptr, raw(third));
        EXPECT_EQ(raw(first), raw(second));
        third = second;
        const ZComBSTR alone("freed while others share");
    }
    EXPECT_EQ(6u, first.GetLength());
    EXPECT_EQ(10u, other.GetLength());
}

}  // namespace
}  // namespace zr::test
