// ZComVariant: comparisons, and the size of a value in a stream.
#include <gtest/gtest.h>

#include "runtime/zcom_variant.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"

namespace zr::test {
namespace {

using zrapi::ZComVariant;

ZComVariant null() {
    ZComVariant variant;
    variant.vt = VT_NULL;
    return variant;
}

TEST(ZComVariantCompareTest, ComparisonOfSupportedTypesUsesTheirValues) {
    EXPECT_TRUE(ZComVariant(7ul) == ZComVariant(7ul));
    EXPECT_FALSE(ZComVariant(7ul) != ZComVariant(7ul));
    EXPECT_TRUE(ZComVariant(7ul) != ZComVariant(8ul));
    EXPECT_TRUE(ZComVariant(7ul) < ZComVariant(8ul));
    EXPECT_TRUE(ZComVariant(0xFFFFFFFFul) > ZComVariant(8ul));
    EXPECT_FALSE(ZComVariant(7ul) < ZComVariant(7ul));
    EXPECT_FALSE(ZComVariant(7ul) > ZComVariant(7ul));
    EXPECT_TRUE(ZComVariant(static_cast<char>(-1)) < ZComVariant(static_cast<char>(1)));
    EXPECT_TRUE(ZComVariant(static_cast<unsigned short>(65535)) >
                ZComVariant(static_cast<unsigned short>(1)));
    EXPECT_TRUE(ZComVariant(~0ull) > ZComVariant(1ull));
}

/// Checks all comparisons of two values, the first of which is less.
template <class Value>
void expectOrder(Value less, Value greater) {
    ZComVariant a(less);
    ZComVariant b(greater);
    EXPECT_TRUE(a == ZComVariant(less)) << a.vt;
    EXPECT_FALSE(a == b) << a.vt;
    EXPECT_TRUE(a < b) << a.vt;
    EXPECT_FALSE(b < a) << a.vt;
    EXPECT_TRUE(b > a) << a.vt;
    EXPECT_FALSE(a > b) << a.vt;
    EXPECT_HR(0, ZComVariant::VarCmp(&a, &b, 0, 0)) << a.vt;
    EXPECT_HR(1, ZComVariant::VarCmp(&a, &a, 0, 0)) << a.vt;
    EXPECT_HR(2, ZComVariant::VarCmp(&b, &a, 0, 0)) << a.vt;
}

TEST(ZComVariantCompareTest, ComparisonOfSupportedTypesGivesLessEqualAndGreater) {
    expectOrder(static_cast<char>(-1), static_cast<char>(1));
    expectOrder(static_cast<unsigned short>(1), static_cast<unsigned short>(0x8001));
    expectOrder(1ul, 0x80000001ul);
    expectOrder(0x100000001ull, 0x8000000000000001ull);
    expectOrder(1ull, 0x100000001ull);
}

TEST(ZComVariantCompareTest, VarCmpOfNullFails) {
    ZComVariant a = null();
    ZComVariant b = null();
    EXPECT_HR(E_FAIL, ZComVariant::VarCmp(&a, &b, 0, 0));
}

TEST(ZComVariantCompareTest, ComparisonOfOtherOrMixedTypesIsAlwaysFalse) {
    const ZComVariant seven(7l, VT_I4);
    EXPECT_FALSE(seven == seven);
    EXPECT_TRUE(seven != seven);
    EXPECT_FALSE(seven < ZComVariant(8l, VT_I4));
    EXPECT_FALSE(seven > ZComVariant(6l, VT_I4));
    EXPECT_FALSE(ZComVariant() == ZComVariant());
    EXPECT_FALSE(ZComVariant(7ul) == ZComVariant(7ull));
}

TEST(ZComVariantCompareTest, NullEqualsOnlyNull) {
    EXPECT_TRUE(null() == null());
    EXPECT_FALSE(null() == ZComVariant());
    EXPECT_FALSE(null() < null());
    EXPECT_FALSE(null() > null());
    EXPECT_FALSE(null() < ZComVariant(7ul));
}

TEST(ZComVariantCompareTest, ComparisonUsesTheTypeOfTheFirstOperand) {
    ZComVariant a(7ul);
    ZComVariant b(8ul);
    EXPECT_HR(0, ZComVariant::VarCmp(&a, &b, 0, 0));
    EXPECT_HR(1, ZComVariant::VarCmp(&a, &a, 0, 0));
    EXPECT_HR(2, ZComVariant::VarCmp(&b, &a, 0, 0));
    ZComVariant other(7l, VT_I4);
    EXPECT_HR(2, ZComVariant::VarCmp(&b, &other, 0, 0));
    EXPECT_HR(E_FAIL, ZComVariant::VarCmp(&other, &b, 0, 0));
    EXPECT_TRUE(a < static_cast<const VARIANT&>(b));
}

TEST(ZComVariantCompareTest, GetSizeCountsTypeAndValue) {
    const ConsoleCapture console;
    const struct {
        ZComVariant value;
        ULONG size;
    } cases[] = {
        {ZComVariant(static_cast<short>(1)), 4},
        {ZComVariant(true), 4},
        {ZComVariant(1l, VT_I4), 6},
        {ZComVariant(1.0f), 6},
        {ZComVariant(1.0), 10},
        {ZComVariant(1ll), 10},
        {ZComVariant('x'), 3},
        {ZComVariant(OLESTR("abc")), 14},
        {ZComVariant(static_cast<const OLECHAR*>(nullptr)), 6},
        {ZComVariant(), 8},
    };
    for (const auto& entry : cases) {
        ULARGE_INTEGER size;
        EXPECT_HR(S_OK, entry.value.GetSizeMax(&size)) << entry.value.vt;
        EXPECT_EQ(entry.size, size.QuadPart) << entry.value.vt;
        EXPECT_EQ(entry.size, entry.value.GetSize()) << entry.value.vt;
    }
}

TEST(ZComVariantCompareTest, GetSizeOfAValueWithoutASizeFails) {
    ULARGE_INTEGER size;
    for (const ZComVariant& object : {ZComVariant(static_cast<IDispatch*>(nullptr)),
                                      ZComVariant(static_cast<IUnknown*>(nullptr))}) {
        EXPECT_HR(E_FAIL, object.GetSizeMax(&size));
        EXPECT_EQ(2u, object.GetSize());
    }
    const ZComVariant object;
    EXPECT_HR(E_INVALIDARG, object.GetSizeMax(nullptr));
    EXPECT_HR(DISP_E_TYPEMISMATCH, null().GetSizeMax(&size));
    EXPECT_EQ(2u, null().GetSize());
}

TEST(ZComVariantSizeTest, GetSizeOfAReferenceIsThatOfItsValueAsText) {
    int value = 5;
    ZComVariant variant;
    variant = &value;
    ULARGE_INTEGER size = {};
    EXPECT_HR(S_OK, variant.GetSizeMax(&size));
    EXPECT_EQ(10u, size.QuadPart);
    EXPECT_EQ(10u, variant.GetSize());
    value = -12345;
    EXPECT_EQ(20u, variant.GetSize());
    EXPECT_EQ(VT_BYREF | VT_I4, variant.vt);
}

TEST(ZComVariantSizeTest, GetSizeOfAReferenceToAnObjectDoesNotCallIt) {
    ValueObject object;
    IDispatch* face = &object;
    ZComVariant variant;
    variant.vt = VT_BYREF | VT_DISPATCH;
    variant.ppdispVal = &face;
    ULARGE_INTEGER size = {};
    EXPECT_HR(DISP_E_TYPEMISMATCH, variant.GetSizeMax(&size));
    EXPECT_EQ(2u, variant.GetSize());
    EXPECT_EQ(0, object.calls);
}

TEST(ZComVariantSizeTest, GetSizeOfAReferenceToABooleanIsThatOfItsNumberAsText) {
    VARIANT_BOOL truth = VARIANT_TRUE;
    ZComVariant variant;
    variant.vt = VT_BYREF | VT_BOOL;
    variant.pboolVal = &truth;
    EXPECT_EQ(12u, variant.GetSize());  // "-1"
}

TEST(ZComVariantSizeTest, GetSizeOfAnArrayFails) {
    SAFEARRAYBOUND bound = {3, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 1, &bound);
    const ZComVariant variant(array);
    ULARGE_INTEGER size = {};
    size.QuadPart = 99;
    EXPECT_HR(DISP_E_TYPEMISMATCH, variant.GetSizeMax(&size));
    EXPECT_EQ(99u, size.QuadPart);
    EXPECT_EQ(2u, variant.GetSize());
    SafeArrayDestroy(array);
}

TEST(ZComVariantSizeTest, GetSizeBeyond32BitsReturnsTwo) {
    // The length is read from the prefix, so the text need not be that long.
    struct {
        DWORD prefixOfPrefix;
        DWORD length;
        OLECHAR text[2];
    } longest = {0, 0xFFFFFFFE, {}};
    ZComVariant variant;
    variant.vt = VT_BSTR;
    variant.bstrVal = longest.text;
    ULARGE_INTEGER size = {};
    EXPECT_HR(S_OK, variant.GetSizeMax(&size));
    EXPECT_EQ(0x100000006u, size.QuadPart);
    EXPECT_EQ(2u, variant.GetSize());
    variant.vt = VT_EMPTY;
}

TEST(ZComVariantCompareTest, InequalityIsTheNegationOfEqualityForBothOperandTypes) {
    const ZComVariant seven(7ul);
    const ZComVariant eight(8ul);
    EXPECT_FALSE(seven != static_cast<const VARIANT&>(ZComVariant(7ul)));
    EXPECT_TRUE(seven != static_cast<const VARIANT&>(eight));
    EXPECT_TRUE(ZComVariant(7l, VT_I4) != ZComVariant(7l, VT_I4));
}

}  // namespace
}  // namespace zr::test
