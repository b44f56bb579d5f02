// VariantInit, VariantClear and VariantCopy.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/unit/platform/variant_text.h"

namespace zr::test {
namespace {

constexpr int kPlainTypes[] = {VT_EMPTY, VT_NULL,    VT_I2,       VT_I4,     VT_R4,   VT_R8,
                               VT_CY,    VT_DATE,    VT_BSTR,     VT_ERROR,  VT_BOOL, VT_I1,
                               VT_UI1,   VT_UI2,     VT_UI4,      VT_I8,     VT_UI8,  VT_INT,
                               VT_UINT,  VT_UNKNOWN, VT_DISPATCH, VT_VARIANT};
constexpr int kBadTypes[] = {15,
                             24,
                             25,
                             26,
                             27,
                             28,
                             31,
                             32,
                             35,
                             37,
                             64,
                             65,
                             VT_ARRAY,
                             VT_ARRAY | VT_NULL,
                             VT_ARRAY | 15,
                             VT_BYREF,
                             VT_BYREF | VT_NULL,
                             VT_BYREF | 15,
                             VT_VECTOR | VT_I4,
                             VT_RESERVED | VT_I4,
                             VT_VECTOR | VT_BYREF | VT_I4,
                             0xfff,
                             0xffff};

TEST(VariantTest, InitSetsEmpty) {
    VARIANT variant;
    std::memset(&variant, 0x5a, sizeof variant);
    VariantInit(&variant);
    EXPECT_EQ(VT_EMPTY, variant.vt);
}

TEST(VariantTest, ClearOfEveryVariantTypeSucceeds) {
    for (const int type : kPlainTypes) {
        for (const int modifier : std::initializer_list<int>{0, VT_ARRAY, VT_BYREF}) {
            if (modifier != 0 && (type == VT_EMPTY || type == VT_NULL)) {
                continue;
            }
            VARIANT variant;
            VariantInit(&variant);
            variant.vt = static_cast<VARTYPE>(type | modifier);
            EXPECT_EQ(S_OK, VariantClear(&variant)) << (type | modifier);
            EXPECT_EQ(VT_EMPTY, variant.vt);
        }
    }
}

TEST(VariantTest, ClearOfAnotherTypeFails) {
    for (const int type : kBadTypes) {
        VARIANT variant;
        VariantInit(&variant);
        variant.vt = static_cast<VARTYPE>(type);
        EXPECT_EQ(DISP_E_BADVARTYPE, VariantClear(&variant)) << type;
        EXPECT_EQ(type, variant.vt);
    }
}

TEST(VariantTest, ClearOfAReferenceLeavesItsValue) {
    BSTR text = SysAllocString(OLESTR("kept"));
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_BYREF | VT_BSTR;
    variant.pbstrVal = &text;
    EXPECT_EQ(S_OK, VariantClear(&variant));
    EXPECT_EQ(4u, SysStringLen(text));
    SysFreeString(text);
}

TEST(VariantTest, ClearOfALockedArrayFails) {
    SAFEARRAYBOUND bound = {1, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 1, &bound);
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_I4;
    variant.parray = array;
    SafeArrayLock(array);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantClear(&variant));
    SafeArrayUnlock(array);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(VariantTest, CopyOfAnInvalidSourceKeepsTheTarget) {
    for (const int type : kBadTypes) {
        VARIANT source;
        VariantInit(&source);
        source.vt = static_cast<VARTYPE>(type);
        OwnedVariant target;
        parseVariant("I4 7", target.get());
        EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(target.get(), &source)) << type;
        EXPECT_EQ(VT_I4, target->vt);
    }
}

TEST(VariantTest, CopyIntoAnInvalidTargetFails) {
    VARIANT target;
    VariantInit(&target);
    target.vt = 0xfff;
    OwnedVariant source;
    parseVariant("I4 7", source.get());
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&target, source.get()));
    EXPECT_EQ(0xfff, target.vt);
}

TEST(VariantTest, CopyIntoItselfDoesNothing) {
    OwnedVariant variant;
    parseVariant("BSTR text", variant.get());
    BSTR before = variant->bstrVal;
    EXPECT_EQ(S_OK, VariantCopy(variant.get(), variant.get()));
    EXPECT_EQ(before, variant->bstrVal);
    VARIANT bad;
    VariantInit(&bad);
    bad.vt = 0xfff;
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantCopy(&bad, &bad));
}

TEST(VariantTest, CopyOfAStringKeepsAnOddNumberOfBytes) {
    OwnedVariant source;
    source->vt = VT_BSTR;
    source->bstrVal = SysAllocStringByteLen("a\0b", 3);
    OwnedVariant target;
    parseVariant("BSTR old", target.get());
    ASSERT_EQ(S_OK, VariantCopy(target.get(), source.get()));
    EXPECT_NE(source->bstrVal, target->bstrVal);
    EXPECT_EQ(3u, SysStringByteLen(target->bstrVal));
    EXPECT_EQ(0, std::memcmp(target->bstrVal, "a\0b", 3));
}

TEST(VariantTest, CopyOfANullStringIsEmpty) {
    OwnedVariant source;
    source->vt = VT_BSTR;
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantCopy(target.get(), source.get()));
    ASSERT_NE(nullptr, target->bstrVal);
    EXPECT_EQ(0u, SysStringLen(target->bstrVal));
}

TEST(VariantTest, CopyOfANullArrayIsNull) {
    OwnedVariant source;
    source->vt = VT_ARRAY | VT_UI1;
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantCopy(target.get(), source.get()));
    EXPECT_EQ(VT_ARRAY | VT_UI1, target->vt);
    EXPECT_EQ(nullptr, target->parray);
}

TEST(VariantTest, CopyOfAReferenceRefersToTheSameValue) {
    LONG number = 5;
    OwnedVariant source;
    source->vt = VT_BYREF | VT_I4;
    source->plVal = &number;
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantCopy(target.get(), source.get()));
    EXPECT_EQ(VT_BYREF | VT_I4, target->vt);
    EXPECT_EQ(&number, target->plVal);
}

}  // namespace
}  // namespace zr::test
