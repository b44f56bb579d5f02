// ZComVariantArray: the list of variants.
#include "runtime/zcom_variant_array.h"

#include <gtest/gtest.h>

namespace zr::test {
namespace {

using zrapi::ZComVariant;
using zrapi::ZComVariantArray;

TEST(ZComVariantArrayTest, AddAppendsCopiesInOrder) {
    ZComVariantArray list;
    ZComVariant text(OLESTR("abc"));
    ZComVariant number(5ul);
    EXPECT_EQ(1, list.Add(text));
    EXPECT_EQ(2, list.Add(number));
    EXPECT_EQ(2, list.Count());
    EXPECT_EQ(VT_BSTR, list.GetAt(0).vt);
    EXPECT_NE(text.bstrVal, list.GetAt(0).bstrVal);
    EXPECT_EQ(5u, list.GetAt(1).ulVal);
}

TEST(ZComVariantArrayTest, GetAtOutOfRangeReturnsTheSharedEmptyValue) {
    ZComVariantArray list;
    ZComVariant* shared = &list.GetAt(0);
    EXPECT_EQ(VT_EMPTY, shared->vt);
    ZComVariant number(5ul);
    list.Add(number);
    EXPECT_EQ(shared, &list.GetAt(-1));
    EXPECT_EQ(shared, &list.GetAt(1));
    EXPECT_NE(shared, &list.GetAt(0));
}

TEST(ZComVariantArrayTest, AddOfAnInvalidVariantStoresTheError) {
    ZComVariantArray list;
    ZComVariant bad;
    bad.vt = 0x7FF;
    EXPECT_EQ(1, list.Add(bad));
    EXPECT_EQ(VT_ERROR, list.GetAt(0).vt);
    EXPECT_EQ(DISP_E_BADVARTYPE, list.GetAt(0).scode);
    bad.vt = VT_EMPTY;
}

TEST(ZComVariantArrayTest, ParseMovesTheElementsIntoAnArray) {
    ZComVariantArray list;
    ZComVariant text(OLESTR("abc"));
    list.Add(text);
    list.Add(text);
    const BSTR first = list.GetAt(0).bstrVal;
    VARIANT* variants = nullptr;
    ASSERT_EQ(2, list.Parse(&variants));
    EXPECT_EQ(first, variants[0].bstrVal);
    EXPECT_EQ(VT_EMPTY, list.GetAt(0).vt);
    EXPECT_EQ(2, list.Count());
    VariantClear(&variants[0]);
    VariantClear(&variants[1]);
    delete[] variants;
    EXPECT_EQ(-1, list.Parse(nullptr));
    ZComVariantArray empty;
    EXPECT_EQ(0, empty.Parse(&variants));
    delete[] variants;
}

}  // namespace
}  // namespace zr::test
