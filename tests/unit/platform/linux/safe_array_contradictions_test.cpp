// Arrays whose structure contradicts itself, and arrays that contain themselves. Windows' functions
// follow such an array into foreign memory or without end, so this is for Linux alone.
#include <gtest/gtest.h>
#include <zrkey/automation.h>

#include <vector>

namespace {

SAFEARRAY* makeVector(VARTYPE type, ULONG size) {
    SAFEARRAYBOUND bound = {size, 0};
    return SafeArrayCreate(type, 1, &bound);
}

/// An array that a test contradicts, and restores in the destructor.
class Array {
public:
    Array(VARTYPE type, ULONG size) : m_array(makeVector(type, size)), m_before(*m_array) {}
    Array(const Array&) = delete;
    Array& operator=(const Array&) = delete;
    ~Array() {
        *m_array = m_before;
        EXPECT_EQ(S_OK, SafeArrayDestroy(m_array));
    }
    SAFEARRAY* operator->() const { return m_array; }
    SAFEARRAY* get() const { return m_array; }

private:
    SAFEARRAY* m_array;
    SAFEARRAY m_before;
};

void expectRefused(const Array& array) {
    SAFEARRAY* copy = array.get();
    EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(array.get(), &copy));
    EXPECT_EQ(nullptr, copy);
    void* data = &copy;
    EXPECT_EQ(E_INVALIDARG, SafeArrayAccessData(array.get(), &data));
    EXPECT_EQ(nullptr, data);
    EXPECT_EQ(0u, array->cLocks);
}

TEST(SafeArrayContradictionsTest, ElementsWithoutMemoryAreRefused) {
    Array array(VT_UI1, 4);
    array->pvData = nullptr;
    expectRefused(array);
}

TEST(SafeArrayContradictionsTest, ElementsWithoutASizeAreRefused) {
    Array array(VT_UI1, 4);
    array->cbElements = 0;
    expectRefused(array);
}

TEST(SafeArrayContradictionsTest, ArrayWithoutDimensionsIsRefused) {
    Array array(VT_UI1, 4);
    array->cDims = 0;
    expectRefused(array);
}

TEST(SafeArrayContradictionsTest, SizeThatContradictsTheKindOfElementsIsRefused) {
    for (const VARTYPE type : {VT_BSTR, VT_VARIANT, VT_UNKNOWN, VT_DISPATCH}) {
        Array array(type, 4);
        array->cbElements = 1;
        expectRefused(array);
        EXPECT_EQ(E_INVALIDARG, SafeArrayDestroy(array.get()));
    }
}

TEST(SafeArrayContradictionsTest, KindThatContradictsTheSizeOfElementsIsRefused) {
    for (const USHORT kind : {FADF_BSTR, FADF_VARIANT, FADF_UNKNOWN, FADF_DISPATCH}) {
        Array array(VT_UI1, 4);
        array->fFeatures = kind;
        expectRefused(array);
        EXPECT_EQ(E_INVALIDARG, SafeArrayDestroy(array.get()));
    }
}

TEST(SafeArrayContradictionsTest, CopyOfElementsThatContradictTheirTypeIsRefused) {
    Array array(VT_I4, 4);
    array->cbElements = 1;
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(array.get(), &copy));
}

TEST(SafeArrayContradictionsTest, EmptyArrayWithoutMemoryIsAccessibleAndCopied) {
    Array array(VT_UI1, 0);
    void* const memory = array->pvData;
    array->pvData = nullptr;
    void* data = &data;
    EXPECT_EQ(S_OK, SafeArrayAccessData(array.get(), &data));
    EXPECT_EQ(S_OK, SafeArrayUnaccessData(array.get()));
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(S_OK, SafeArrayCopy(array.get(), &copy));
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
    array->pvData = memory;
}

/// A variant that holds an array.
VARIANT holding(SAFEARRAY* array) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_VARIANT;
    variant.parray = array;
    return variant;
}

VARIANT& elementOf(SAFEARRAY* array) {
    return *static_cast<VARIANT*>(array->pvData);
}

TEST(SafeArrayContradictionsTest, ArrayThatContainsItselfIsNotCopiedAndDestroyedOnce) {
    SAFEARRAY* array = makeVector(VT_VARIANT, 2);
    elementOf(array) = holding(array);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(array, &copy));
    EXPECT_EQ(nullptr, copy);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST(SafeArrayContradictionsTest, CircleOfArraysIsNotCopiedAndDestroyedOnce) {
    SAFEARRAY* first = makeVector(VT_VARIANT, 1);
    SAFEARRAY* second = makeVector(VT_VARIANT, 1);
    elementOf(first) = holding(second);
    elementOf(second) = holding(first);
    VARIANT copy;
    VariantInit(&copy);
    const VARIANT source = holding(first);
    EXPECT_EQ(E_INVALIDARG, VariantCopy(&copy, &source));
    EXPECT_EQ(VT_EMPTY, copy.vt);
    EXPECT_EQ(S_OK, SafeArrayDestroy(first));
}

/// Arrays of one element, each inside the one before.
std::vector<SAFEARRAY*> nest(std::size_t levels) {
    std::vector<SAFEARRAY*> arrays;
    for (std::size_t i = 0; i < levels; ++i) {
        arrays.push_back(makeVector(VT_VARIANT, 1));
        if (i > 0) {
            elementOf(arrays[i - 1]) = holding(arrays[i]);
        }
    }
    return arrays;
}

TEST(SafeArrayContradictionsTest, Arrays256LevelsDeepAreCopiedAndDestroyed) {
    const auto arrays = nest(256);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(S_OK, SafeArrayCopy(arrays[0], &copy));
    EXPECT_EQ(S_OK, SafeArrayDestroy(copy));
    EXPECT_EQ(S_OK, SafeArrayDestroy(arrays[0]));
}

TEST(SafeArrayContradictionsTest, ArraysTooManyLevelsDeepAreNotCopied) {
    const auto arrays = nest(100000);
    SAFEARRAY* copy = nullptr;
    EXPECT_EQ(E_INVALIDARG, SafeArrayCopy(arrays[0], &copy));
    EXPECT_EQ(nullptr, copy);
    // From the innermost outwards: destroyed at once, the deeper ones would be left over.
    for (auto array = arrays.rbegin(); array != arrays.rend(); ++array) {
        EXPECT_EQ(S_OK, SafeArrayDestroy(*array));
        if (array + 1 != arrays.rend()) {
            elementOf(*(array + 1)).vt = VT_EMPTY;
        }
    }
}

}  // namespace
