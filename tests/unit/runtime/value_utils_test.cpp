// Helpers for variant types and numbers.
#include "runtime/value_utils.h"

#include <gtest/gtest.h>

#include "tests/support/hresult.h"

namespace zr::test {
namespace {

TEST(ValueUtilsTest, GetTypeSizeReturnsTheSizeOfFixedTypesOnly) {
    const struct {
        VARTYPE type;
        ULONG size;
    } cases[] = {
        {VT_I2, 2},      {VT_BOOL, 2}, {VT_UI2, 2},  {VT_I4, 4},   {VT_R4, 4},
        {VT_ERROR, 4},   {VT_UI4, 4},  {VT_INT, 4},  {VT_UINT, 4}, {VT_R8, 8},
        {VT_CY, 8},      {VT_DATE, 8}, {VT_BSTR, 8}, {VT_I8, 8},   {VT_DISPATCH, 8},
        {VT_UNKNOWN, 8}, {VT_UI8, 8},  {VT_I1, 1},   {VT_UI1, 1},
    };
    for (const auto& entry : cases) {
        ULONG size = 0;
        EXPECT_HR(S_OK, ZVariantGetTypeSize(entry.type, &size));
        EXPECT_EQ(entry.size, size) << entry.type;
    }
    ULONG size = 99;
    for (const int type : {0, 1, 12, 14, 24, 0x2011, 0xFFFF}) {
        EXPECT_HR(E_FAIL, ZVariantGetTypeSize(static_cast<VARTYPE>(type), &size));
    }
    EXPECT_EQ(99u, size);
    EXPECT_HR(E_INVALIDARG, ZVariantGetTypeSize(VT_I2, nullptr));
}

TEST(ValueUtilsTest, VariantCompareAlwaysFails) {
    EXPECT_HR(E_FAIL, ZVariantCompare(1, 2));
}

}  // namespace
}  // namespace zr::test
