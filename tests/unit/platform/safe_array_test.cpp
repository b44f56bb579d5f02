// SAFEARRAY: creation, element types, bounds, locks, copies.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/unit/platform/variant_text.h"

namespace zr::test {
namespace {

struct ElementRow {
    int type;
    ULONG size;
    int features;
};

constexpr ElementRow kElements[] = {
    {VT_I1, 1, 0x80},      {VT_UI1, 1, 0x80},       {VT_I2, 2, 0x80},       {VT_UI2, 2, 0x80},
    {VT_BOOL, 2, 0x80},    {VT_I4, 4, 0x80},        {VT_UI4, 4, 0x80},      {VT_INT, 4, 0x80},
    {VT_UINT, 4, 0x80},    {VT_R4, 4, 0x80},        {VT_ERROR, 4, 0x80},    {VT_I8, 8, 0x80},
    {VT_UI8, 8, 0x80},     {VT_R8, 8, 0x80},        {VT_CY, 8, 0x80},       {VT_DATE, 8, 0x80},
    {VT_BSTR, 8, 0x180},   {VT_VARIANT, 24, 0x880}, {VT_UNKNOWN, 8, 0x240}, {VT_DISPATCH, 8, 0x440},
    {VT_DECIMAL, 16, 0x80}};

SAFEARRAY* makeVector(VARTYPE type, ULONG elements) {
    SAFEARRAYBOUND bound = {elements, 0};
    return SafeArrayCreate(type, 1, &bound);
}

TEST(SafeArrayTest, CreateStoresTheElementType) {
    for (const ElementRow& row : kElements) {
        SAFEARRAY* array = makeVector(static_cast<VARTYPE>(row.type), 2);
        ASSERT_NE(nullptr, array) << row.type;
        EXPECT_EQ(row.features, array->fFeatures) << row.type;
        EXPECT_EQ(row.size, array->cbElements) << row.type;
        EXPECT_EQ(row.size, SafeArrayGetElemsize(array)) << row.type;
        VARTYPE type = 0xeeee;
        EXPECT_EQ(S_OK, SafeArrayGetVartype(array, &type)) << row.type;
        EXPECT_EQ(row.type, type);
        EXPECT_EQ(S_OK, SafeArrayDestroy(array));
    }
}

TEST(SafeArrayTest, CreateZeroesTheElements) {
    SAFEARRAY* array = makeVector(VT_VARIANT, 3);
    const char zeros[3 * sizeof(VARIANT)] = {};
    EXPECT_EQ(0, std::memcmp(zeros, array->pvData, sizeof zeros));
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, CreateOfAnotherTypeReturnsNull) {
    for (const int type : std::initializer_list<int>{VT_EMPTY, VT_NULL, 15, 24, 25, 26, 27, 31, 64,
                                                     VT_ARRAY | VT_UI1, VT_BYREF | VT_I4}) {
        EXPECT_EQ(nullptr, makeVector(static_cast<VARTYPE>(type), 2)) << type;
    }
}

TEST(SafeArrayTest, CreateWithInvalidDimensionsReturnsNull) {
    SAFEARRAYBOUND bound = {1, 0};
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 0, &bound));
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 65536, &bound));
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 1, nullptr));
}

TEST(SafeArrayTest, GetBoundsCountsDimensionsFromTheFirst) {
    SAFEARRAYBOUND bounds[3] = {{2, 5}, {3, -1}, {4, 10}};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 3, bounds);
    ASSERT_NE(nullptr, array);
    EXPECT_EQ(3u, SafeArrayGetDim(array));
    EXPECT_EQ(4u, array->rgsabound[0].cElements);
    const LONG expected[3][2] = {{5, 6}, {-1, 1}, {10, 13}};
    for (UINT i = 1; i <= 3; ++i) {
        LONG lower = 99;
        LONG upper = 99;
        EXPECT_EQ(S_OK, SafeArrayGetLBound(array, i, &lower));
        EXPECT_EQ(S_OK, SafeArrayGetUBound(array, i, &upper));
        EXPECT_EQ(expected[i - 1][0], lower);
        EXPECT_EQ(expected[i - 1][1], upper);
    }
    for (const UINT i : {0u, 4u}) {
        LONG bound = 99;
        EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetLBound(array, i, &bound));
        EXPECT_EQ(DISP_E_BADINDEX, SafeArrayGetUBound(array, i, &bound));
        EXPECT_EQ(99, bound);
    }
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, CreateWithoutElementsMakesAUsableArray) {
    SAFEARRAY* array = makeVector(VT_UI1, 0);
    ASSERT_NE(nullptr, array);
    LONG upper = 99;
    EXPECT_EQ(S_OK, SafeArrayGetUBound(array, 1, &upper));
    EXPECT_EQ(-1, upper);
    void* data = nullptr;
    EXPECT_EQ(S_OK, SafeArrayAccessData(array, &data));
    EXPECT_NE(nullptr, data);
    EXPECT_EQ(S_OK, SafeArrayUnaccessData(array));
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(S_OK, SafeArrayCopy(array, &copy));
    EXPECT_NE(nullptr, copy);
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, LocksAreCountedAndPreventDestroy) {
    SAFEARRAY* array = makeVector(VT_I4, 2);
    void* data = nullptr;
    EXPECT_EQ(S_OK, SafeArrayAccessData(array, &data));
    EXPECT_EQ(array->pvData, data);
    EXPECT_EQ(S_OK, SafeArrayLock(array));
    EXPECT_EQ(2u, array->cLocks);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, SafeArrayDestroy(array));
    EXPECT_EQ(S_OK, SafeArrayUnaccessData(array));
    EXPECT_EQ(S_OK, SafeArrayUnlock(array));
    EXPECT_EQ(E_UNEXPECTED, SafeArrayUnlock(array));
    EXPECT_EQ(E_UNEXPECTED, SafeArrayUnaccessData(array));
    EXPECT_EQ(0u, array->cLocks);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, LockBeyondTheLimitFails) {
    SAFEARRAY* array = makeVector(VT_I4, 2);
    array->cLocks = 0xfffe;
    EXPECT_EQ(S_OK, SafeArrayLock(array));
    EXPECT_EQ(E_UNEXPECTED, SafeArrayLock(array));
    void* data = &data;
    EXPECT_EQ(E_UNEXPECTED, SafeArrayAccessData(array, &data));
    EXPECT_EQ(nullptr, data);
    EXPECT_EQ(0xffffu, array->cLocks);
    array->cLocks = 0;
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, NullArgumentsReturnInvalidArgument) {
    SAFEARRAY* array = makeVector(VT_I4, 2);
    void* data = nullptr;
    LONG bound = 0;
    VARTYPE type = 0;
    EXPECT_EQ(E_INVALIDARG, SafeArrayLock(nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayUnlock(nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayAccessData(nullptr, &data));
    EXPECT_EQ(E_INVALIDARG, SafeArrayAccessData(array, nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayUnaccessData(nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetLBound(nullptr, 1, &bound));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetUBound(nullptr, 1, &bound));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetLBound(array, 1, nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetUBound(array, 1, nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetVartype(nullptr, &type));
    EXPECT_EQ(E_INVALIDARG, SafeArrayGetVartype(array, nullptr));
    EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(array, nullptr));
    EXPECT_EQ(S_OK, SafeArrayDestroy(nullptr));
    EXPECT_EQ(0u, SafeArrayGetDim(nullptr));
    EXPECT_EQ(0u, SafeArrayGetElemsize(nullptr));
    EXPECT_EQ(0u, array->cLocks);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, CopyOfNullIsNull) {
    SAFEARRAY* copy = reinterpret_cast<SAFEARRAY*>(&copy);
    EXPECT_EQ(S_OK, SafeArrayCopy(nullptr, &copy));
    EXPECT_EQ(nullptr, copy);
}

TEST(SafeArrayTest, CopyOfALockedArrayIsUnlockedAndOwnsItsMemory) {
    SAFEARRAY* array = makeVector(VT_BSTR, 2);
    SafeArrayLock(array);
    for (const int feature : {0x1, 0x2, 0x4, 0x10, 0x2000}) {
        array->fFeatures = static_cast<USHORT>(0x180 | feature);
        SAFEARRAY* copy = nullptr;
        ASSERT_EQ(S_OK, SafeArrayCopy(array, &copy));
        EXPECT_EQ(0x180, copy->fFeatures) << feature;
        EXPECT_EQ(0u, copy->cLocks);
        EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
    }
    array->fFeatures = 0x180;
    SafeArrayUnlock(array);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, GetVartypeReadsTheTypeByTheFeatures) {
    SAFEARRAY* array = makeVector(VT_I4, 1);
    const std::pair<int, HRESULT> rows[] = {
        {0, E_INVALIDARG},     {0x100, E_INVALIDARG}, {0x200, E_INVALIDARG},
        {0x400, E_INVALIDARG}, {0x800, E_INVALIDARG}, {0x600, E_INVALIDARG},
        {0x40, VT_UNKNOWN},    {0x240, VT_UNKNOWN},   {0x440, VT_DISPATCH}};
    for (const auto& [features, expected] : rows) {
        array->fFeatures = static_cast<USHORT>(features);
        VARTYPE type = 0xee;
        const HRESULT hr = SafeArrayGetVartype(array, &type);
        EXPECT_EQ(expected, SUCCEEDED(hr) ? type : hr) << features;
    }
    array->fFeatures = 0x80;
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayTest, CopyOfLargerElementsCopiesEveryByte) {
    SAFEARRAYBOUND bounds[] = {{3, 0}, {2, 0}};
    SAFEARRAY* array = SafeArrayCreate(VT_R8, 2, bounds);
    ASSERT_NE(nullptr, array);
    auto* values = static_cast<double*>(array->pvData);
    for (int i = 0; i < 6; ++i) {
        values[i] = 1.0 / (i + 3);
    }
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(array, &copy));
    EXPECT_EQ(0, std::memcmp(array->pvData, copy->pvData, 6 * sizeof(double)));
    SafeArrayDestroy(copy);
    SafeArrayDestroy(array);
}

TEST(SafeArrayTest, CopyOfStringsIsDeep) {
    SAFEARRAY* array = makeVector(VT_BSTR, 2);
    auto* elements = static_cast<BSTR*>(array->pvData);
    elements[0] = SysAllocStringByteLen("abc", 3);
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(array, &copy));
    auto* copied = static_cast<BSTR*>(copy->pvData);
    EXPECT_NE(elements[0], copied[0]);
    EXPECT_EQ(3u, SysStringByteLen(copied[0]));
    EXPECT_EQ(0u, SysStringByteLen(copied[1]));
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
}

TEST(SafeArrayTest, CopyOfVariantsIsDeep) {
    SAFEARRAY* array = makeVector(VT_VARIANT, 2);
    auto* elements = static_cast<VARIANT*>(array->pvData);
    parseVariant("BSTR text", &elements[0]);
    elements[1].vt = VT_ARRAY | VT_UI1;
    elements[1].parray = makeVector(VT_UI1, 5);
    OwnedVariant source;
    source->vt = VT_ARRAY | VT_VARIANT;
    source->parray = array;
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantCopy(target.get(), source.get()));
    const auto* copied = static_cast<const VARIANT*>(target->parray->pvData);
    EXPECT_NE(elements[0].bstrVal, copied[0].bstrVal);
    EXPECT_EQ("text", valueText(copied[0]));
    EXPECT_NE(elements[1].parray, copied[1].parray);
    EXPECT_EQ(5u, copied[1].parray->rgsabound[0].cElements);
}

/// An object that counts its references and is not deleted.
struct Counted : IUnknown {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    ULONG references = 1;
};

TEST(SafeArrayTest, CopyOfObjectsAddsReferencesUntilItIsDestroyed) {
    Counted object;
    SAFEARRAY* array = makeVector(VT_UNKNOWN, 2);
    static_cast<IUnknown**>(array->pvData)[1] = &object;
    SAFEARRAY* copy = nullptr;
    ASSERT_EQ(S_OK, SafeArrayCopy(array, &copy));
    EXPECT_EQ(2u, object.references);
    VARTYPE type = 0;
    EXPECT_EQ(S_OK, SafeArrayGetVartype(copy, &type));
    EXPECT_EQ(VT_UNKNOWN, type);
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
    EXPECT_EQ(1u, object.references);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
    EXPECT_EQ(0u, object.references);
}

}  // namespace
}  // namespace zr::test
