// The terminator of converted text. Linux only: Wine drops it after an incomplete sequence.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/kernel.h"

namespace {

constexpr WCHAR kPoison = 0x5a5a;

struct Row {
    std::string text;
    std::u16string expected;
};

const std::vector<Row>& rows() {
    static const std::vector<Row> all = {{"ab\xe2", u"ab\ufffd"},  {"\xe2", u"\ufffd"},
                                         {"\xc3", u"\ufffd"},      {"\xf0", u"\ufffd"},
                                         {"\xf0\x9f", u"\ufffd"},  {"\xf0\x9f\x98", u"\ufffd"},
                                         {"a\xe2\x82", u"a\ufffd"}};
    return all;
}

TEST(TerminatedTextTest, TextThatEndsInAnIncompleteSequenceKeepsItsTerminator) {
    for (const Row& row : rows()) {
        const std::u16string expected = row.expected + u'\0';
        const auto size = static_cast<int>(expected.size());
        // Without a length, and with one that includes the terminator.
        for (const int length : {-1, static_cast<int>(row.text.size()) + 1}) {
            std::vector<WCHAR> buffer(16, kPoison);
            EXPECT_EQ(size, MultiByteToWideChar(CP_UTF8, 0, row.text.c_str(), length, nullptr, 0));
            EXPECT_EQ(size, MultiByteToWideChar(CP_UTF8, 0, row.text.c_str(), length, buffer.data(),
                                                size));
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin()));
            EXPECT_EQ(kPoison, buffer[expected.size()]);
        }
    }
}

TEST(TerminatedTextTest, TextWithoutRoomForItsTerminatorFails) {
    for (const Row& row : rows()) {
        std::vector<WCHAR> buffer(16, kPoison);
        const auto size = static_cast<int>(row.expected.size());
        EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, 0, row.text.c_str(), -1, buffer.data(), size));
        EXPECT_TRUE(std::equal(row.expected.begin(), row.expected.end(), buffer.begin()));
        EXPECT_EQ(kPoison, buffer[row.expected.size()]);
    }
}

TEST(TerminatedTextTest, IncompleteSequencesWithTheStrictFlagFail) {
    for (const Row& row : rows()) {
        EXPECT_EQ(0, MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, row.text.c_str(), -1,
                                         nullptr, 0));
    }
}

}  // namespace
