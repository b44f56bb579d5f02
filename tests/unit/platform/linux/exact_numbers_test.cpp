// Numbers in long texts, and unsupported arguments of the loader. Linux only: Wine converts fewer
// digits and ignores these arguments.
#include <gtest/gtest.h>

#include <string>

#include "platform/kernel.h"

namespace {

HRESULT convert(const std::string& text, VARTYPE type, VARIANT* number) {
    const std::basic_string<OLECHAR> wide(text.begin(), text.end());
    VARIANT source;
    VariantInit(&source);
    VariantInit(number);
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocString(wide.c_str());
    const HRESULT hr = VariantChangeType(number, &source, 0, type);
    VariantClear(&source);
    return hr;
}

double realOf(const std::string& text) {
    VARIANT number;
    EXPECT_EQ(S_OK, convert(text, VT_R8, &number));
    return number.dblVal;
}

TEST(ExactNumbersTest, TextOfAThousandDigitsRoundsByItsLastDigit) {
    const std::string zeros(1000, '0');
    EXPECT_EQ(9007199254740992.0, realOf("9007199254740993"));
    EXPECT_EQ(9007199254740992.0, realOf("9007199254740993." + zeros));
    EXPECT_EQ(9007199254740994.0, realOf("9007199254740993." + zeros + "1"));
    EXPECT_EQ(9007199254740994.0, realOf("9007199254740993." + zeros + "2" + zeros));
}

TEST(ExactNumbersTest, IntegersBeyond64BitsOverflow) {
    VARIANT number;
    EXPECT_EQ(S_OK, convert("18446744073709551615", VT_UI8, &number));
    EXPECT_EQ(18446744073709551615u, number.ullVal);
    for (const char* text : {"18446744073709551616", "18446744073709551620", "99999999999999999999",
                             "36893488147419103232", "18446744073709551615.5"}) {
        EXPECT_EQ(DISP_E_OVERFLOW, convert(text, VT_UI8, &number)) << text;
    }
    EXPECT_EQ(S_OK, convert("&HFFFFFFFFFFFFFFFF", VT_I8, &number));
    EXPECT_EQ(-1, number.llVal);
    EXPECT_EQ(DISP_E_OVERFLOW, convert("&H10000000000000000", VT_I8, &number));
}

TEST(ExactNumbersTest, LoadLibraryExWithUnsupportedArgumentsFails) {
    int file = 0;
    EXPECT_EQ(nullptr, LoadLibraryExA("OleAut32.dll", nullptr, 1));
    EXPECT_EQ(nullptr, LoadLibraryExA("OleAut32.dll", &file, 0));
    EXPECT_NE(nullptr, LoadLibraryExA("OleAut32.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH));
}

}  // namespace
