// Numbers in long texts, and flags of the loader. Linux only: Wine's conversion stops at fewer digits,
// and its loader looks at no flag.
#include <gtest/gtest.h>

#include <kernel.h>

#include <string>

namespace {

/// The number in a text, as a real one.
double realOf(const std::string& text) {
    const std::basic_string<OLECHAR> wide(text.begin(), text.end());
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocString(wide.c_str());
    EXPECT_EQ(S_OK, VariantChangeType(&variant, &variant, 0, VT_R8));
    return variant.dblVal;
}

TEST(ExactNumbersTest, TheLastOfAThousandDigitsDecidesATie) {
    const std::string zeros(1000, '0');
    EXPECT_EQ(9007199254740992.0, realOf("9007199254740993"));
    EXPECT_EQ(9007199254740992.0, realOf("9007199254740993." + zeros));
    EXPECT_EQ(9007199254740994.0, realOf("9007199254740993." + zeros + "1"));
    EXPECT_EQ(9007199254740994.0, realOf("9007199254740993." + zeros + "2" + zeros));
}

TEST(ExactNumbersTest, ALoaderFlagThatIsNotKnownIsRefused) {
    int file = 0;
    EXPECT_EQ(nullptr, LoadLibraryExA("OleAut32.dll", nullptr, 1));
    EXPECT_EQ(nullptr, LoadLibraryExA("OleAut32.dll", &file, 0));
    EXPECT_NE(nullptr, LoadLibraryExA("OleAut32.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
}

}  // namespace
