// The automation platform out of memory, with arrays that are too large, and with endless objects.
#include <gtest/gtest.h>

#include <zrkey/automation.h>

#include "tests/unit/platform/failing_allocator.h"

namespace zr::test {
namespace {

class AutomationMemoryTest : public ::testing::Test {
protected:
    ~AutomationMemoryTest() override {
        failAllocation(0);
        EXPECT_EQ(0, liveAllocations());
    }
};

SAFEARRAY* makeVariants() {
    SAFEARRAYBOUND bound = {2, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 1, &bound);
    for (int i = 0; i < 2; ++i) {
        VARIANT* element = static_cast<VARIANT*>(array->pvData) + i;
        element->vt = VT_BSTR;
        element->bstrVal = SysAllocString(OLESTR("text"));
    }
    return array;
}

TEST_F(AutomationMemoryTest, SysAllocStringOutOfMemoryReturnsNull) {
    failAllocation(1);
    EXPECT_EQ(nullptr, SysAllocString(OLESTR("text")));
    failAllocation(1);
    EXPECT_EQ(nullptr, SysAllocStringLen(nullptr, 5));
    failAllocation(1);
    EXPECT_EQ(nullptr, SysAllocStringByteLen("ab", 2));
}

TEST_F(AutomationMemoryTest, SafeArrayCreateOutOfMemoryReturnsNull) {
    SAFEARRAYBOUND bound = {2, 0};
    for (const int number : {1, 2}) {
        failAllocation(number);
        EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 1, &bound)) << number;
    }
}

TEST_F(AutomationMemoryTest, SafeArrayCopyOutOfMemoryFreesEverything) {
    SAFEARRAY* array = makeVariants();
    const int before = liveAllocations();
    for (const int number : {1, 2, 3, 4}) {
        failAllocation(number);
        SAFEARRAY* copy = array;
        EXPECT_EQ(E_OUTOFMEMORY, SafeArrayCopy(array, &copy)) << number;
        EXPECT_EQ(nullptr, copy);
        EXPECT_EQ(before, liveAllocations()) << number;
    }
    failAllocation(0);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

TEST_F(AutomationMemoryTest, VariantCopyOutOfMemoryLeavesTheTargetEmpty) {
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_BSTR;
    source.bstrVal = SysAllocString(OLESTR("text"));
    VARIANT target;
    VariantInit(&target);
    failAllocation(1);
    EXPECT_EQ(E_OUTOFMEMORY, VariantCopy(&target, &source));
    EXPECT_EQ(VT_EMPTY, target.vt);
    failAllocation(0);
    VariantClear(&source);
}

TEST_F(AutomationMemoryTest, VariantChangeTypeOutOfMemoryLeavesTheTarget) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_I4;
    variant.lVal = 5;
    failAllocation(1);
    EXPECT_EQ(E_OUTOFMEMORY, VariantChangeType(&variant, &variant, 0, VT_BSTR));
    EXPECT_EQ(VT_I4, variant.vt);
    EXPECT_EQ(5, variant.lVal);
}

TEST_F(AutomationMemoryTest, SafeArrayCreateBeyond32BitsReturnsNull) {
    SAFEARRAYBOUND bound = {0x80000000u, 0};
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I8, 1, &bound));
    bound.cElements = 0xffffffffu;
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_I4, 1, &bound));
    SAFEARRAYBOUND square[2] = {{0x10000, 0}, {0x10000, 0}};
    EXPECT_EQ(nullptr, SafeArrayCreate(VT_UI1, 2, square));
}

TEST_F(AutomationMemoryTest, VariantChangeTypeWithUnsupportedFlagsReturnsInvalidArgument) {
    VARIANT variant;
    VariantInit(&variant);
    for (const USHORT flags : {USHORT{4}, USHORT{8}, USHORT{0x80}, USHORT{0xffff}}) {
        EXPECT_EQ(E_INVALIDARG, VariantChangeType(&variant, &variant, flags, VT_I4)) << flags;
    }
}

TEST_F(AutomationMemoryTest, VariantClearOfALockedArrayLeavesTheVariant) {
    SAFEARRAYBOUND bound = {1, 0};
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_I4;
    variant.parray = SafeArrayCreate(VT_I4, 1, &bound);
    SafeArrayLock(variant.parray);
    EXPECT_EQ(DISP_E_ARRAYISLOCKED, VariantClear(&variant));
    EXPECT_EQ(VT_ARRAY | VT_I4, variant.vt);
    SafeArrayUnlock(variant.parray);
    EXPECT_EQ(S_OK, VariantClear(&variant));
}

/// An object that is its own default property.
struct EndlessObject : IDispatch {
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** ppv) override {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                     EXCEPINFO*, UINT*) override {
        result->vt = VT_DISPATCH;
        result->pdispVal = this;
        AddRef();
        return S_OK;
    }
    ULONG references = 1;
};

TEST_F(AutomationMemoryTest, VariantChangeTypeOfAnObjectThatIsItsOwnPropertyEnds) {
    EndlessObject object;
    VARIANT source;
    VariantInit(&source);
    source.vt = VT_DISPATCH;
    source.pdispVal = &object;
    VARIANT target;
    VariantInit(&target);
    EXPECT_EQ(DISP_E_BADVARTYPE, VariantChangeType(&target, &source, 0, VT_I4));
    EXPECT_EQ(1u, object.references);
}

}  // namespace
}  // namespace zr::test
