// VariantChangeType of references, byte arrays and objects.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/unit/platform/variant_text.h"

namespace zr::test {
namespace {

/// An object on the stack whose default property is a number; counts its references.
class CountedObject : public IDispatch {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override {
        const bool known =
            IsEqualGUID(riid, IID_IUnknown) || (isDispatch && IsEqualGUID(riid, IID_IDispatch));
        *ppv = known ? static_cast<IDispatch*>(this) : nullptr;
        references += known ? 1 : 0;
        return known ? S_OK : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
    ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID riid, LCID, WORD flags, DISPPARAMS* params,
                                     VARIANT* result, EXCEPINFO* excep, UINT* argErr) override {
        EXPECT_EQ(0, id);
        EXPECT_TRUE(IsEqualGUID(riid, IID_NULL));
        EXPECT_EQ(DISPATCH_PROPERTYGET, flags);
        EXPECT_EQ(0u, params->cArgs);
        EXPECT_EQ(0u, params->cNamedArgs);
        EXPECT_EQ(nullptr, excep);
        EXPECT_EQ(nullptr, argErr);
        ++calls;
        if (inner) {
            VariantInit(result);
            result->vt = VT_DISPATCH;
            result->pdispVal = inner;
            inner->AddRef();
        } else if (SUCCEEDED(outcome)) {
            parseVariant(property, result);
        }
        return outcome;
    }

    bool isDispatch = true;
    int references = 1;
    int calls = 0;
    HRESULT outcome = S_OK;
    const char* property = "I4 500";
    IDispatch* inner = nullptr;
};

class VariantObjectTest : public ::testing::Test {
protected:
    VariantObjectTest() {
        VariantInit(&source);
        source.vt = VT_DISPATCH;
        source.pdispVal = &object;
    }
    ~VariantObjectTest() override { EXPECT_EQ(1, object.references); }

    CountedObject object;
    VARIANT source;
};

TEST_F(VariantObjectTest, ObjectConvertsItsDefaultProperty) {
    EXPECT_EQ("500", convertedText(&source, VT_I4));
    EXPECT_EQ("500", convertedText(&source, VT_BSTR));
    EXPECT_EQ("O", convertedText(&source, VT_UI1));
    EXPECT_EQ(3, object.calls);
}

TEST_F(VariantObjectTest, ObjectConvertsAnyValueOfItsProperty) {
    object.property = "BSTR 12";
    EXPECT_EQ("12", convertedText(&source, VT_I2));
    object.property = "NULL";
    EXPECT_EQ("M", convertedText(&source, VT_I2));
    object.property = "EMPTY";
    EXPECT_EQ("0", convertedText(&source, VT_I2));
}

TEST_F(VariantObjectTest, ObjectWithAnObjectAsPropertyConvertsThatObjectsProperty) {
    CountedObject inner;
    object.inner = &inner;
    EXPECT_EQ("500", convertedText(&source, VT_I4));
    EXPECT_EQ("500", convertedText(&source, VT_BSTR));
    inner.outcome = E_FAIL;
    EXPECT_EQ("M", convertedText(&source, VT_I4));
    EXPECT_EQ(3, inner.calls);
    EXPECT_EQ(1, inner.references);
}

TEST_F(VariantObjectTest, ObjectWithAFailingPropertyIsATypeMismatch) {
    for (const HRESULT outcome : {E_FAIL, E_NOTIMPL, DISP_E_EXCEPTION}) {
        object.outcome = outcome;
        EXPECT_EQ("M", convertedText(&source, VT_I4));
    }
}

TEST_F(VariantObjectTest, ObjectWithNoValuePropFlagIsATypeMismatch) {
    EXPECT_EQ("M", convertedText(&source, VT_I4, VARIANT_NOVALUEPROP));
    EXPECT_EQ("M", convertedText(&source, VT_BSTR, VARIANT_NOVALUEPROP));
    EXPECT_EQ("M", convertedText(&source, VT_EMPTY, VARIANT_NOVALUEPROP));
    EXPECT_EQ(0, object.calls);
}

TEST_F(VariantObjectTest, ObjectConvertsToItsOtherInterface) {
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantChangeType(target.get(), &source, 0, VT_UNKNOWN));
    EXPECT_EQ(VT_UNKNOWN, target->vt);
    EXPECT_EQ(&object, target->punkVal);
    EXPECT_EQ(2, object.references);
    EXPECT_EQ(0, object.calls);
}

TEST_F(VariantObjectTest, ObjectWithoutIDispatchFails) {
    object.isDispatch = false;
    source.vt = VT_UNKNOWN;
    EXPECT_EQ("80004002", convertedText(&source, VT_DISPATCH));
    EXPECT_EQ("M", convertedText(&source, VT_I4));
    EXPECT_EQ("EMPTY", convertedText(&source, VT_EMPTY));
}

TEST_F(VariantObjectTest, NullObjectIsABadType) {
    source.pdispVal = nullptr;
    EXPECT_EQ("B", convertedText(&source, VT_I4));
    OwnedVariant target;
    ASSERT_EQ(S_OK, VariantChangeType(target.get(), &source, 0, VT_UNKNOWN));
    EXPECT_EQ(nullptr, target->punkVal);
}

TEST_F(VariantObjectTest, ObjectToErrorOrVariantIsATypeMismatch) {
    EXPECT_EQ("M", convertedText(&source, VT_ERROR));
    EXPECT_EQ("M", convertedText(&source, VT_VARIANT));
    EXPECT_EQ(0, object.calls);
}

TEST(VariantReferenceTest, ReferenceConvertsItsValue) {
    for (const char* text : {"I1 -5", "UI1 200", "I2 -300", "UI2 60000", "I4 70000", "UI4 70000",
                             "I8 1099511627776", "UI8 1099511627776", "INT 70000", "UINT 70000",
                             "R4 1.5", "R8 2.5", "CY 25000", "BOOL -1", "BSTR 12"}) {
        OwnedVariant value;
        parseVariant(text, value.get());
        VARIANT reference;
        VariantInit(&reference);
        reference.vt = static_cast<VARTYPE>(VT_BYREF | value->vt);
        reference.byref = &value->llVal;
        for (const char* type : {"I4", "R8", "BSTR", "BOOL", "UI1", "I8"}) {
            const VARTYPE target = typeNamed(type);
            EXPECT_EQ(convertedText(value.get(), target), convertedText(&reference, target))
                << text << " to " << type;
        }
    }
}

TEST(VariantReferenceTest, ReferenceToAVariantWithAReferenceConvertsItsValue) {
    LONG number = 70000;
    VARIANT inner;
    VariantInit(&inner);
    inner.vt = VT_BYREF | VT_I4;
    inner.plVal = &number;
    VARIANT outer;
    VariantInit(&outer);
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    EXPECT_EQ("70000", convertedText(&outer, VT_BSTR));
    EXPECT_EQ("O", convertedText(&outer, VT_I2));
}

TEST(VariantReferenceTest, ReferenceToAVariantReferenceOrAnInvalidVariantFails) {
    VARIANT innermost;
    VariantInit(&innermost);
    VARIANT inner;
    VariantInit(&inner);
    inner.vt = VT_BYREF | VT_VARIANT;
    inner.pvarVal = &innermost;
    VARIANT outer;
    VariantInit(&outer);
    outer.vt = VT_BYREF | VT_VARIANT;
    outer.pvarVal = &inner;
    OwnedVariant target;
    EXPECT_EQ(E_INVALIDARG, VariantChangeType(target.get(), &outer, 0, VT_BSTR));
    for (const int type : std::initializer_list<int>{VT_BYREF | VT_EMPTY, VT_RECORD + 1, 0xFFFF}) {
        inner.vt = static_cast<VARTYPE>(type);
        // The failures of oleaut32 differ from type to type.
        EXPECT_TRUE(FAILED(VariantChangeType(target.get(), &outer, 0, VT_BSTR))) << type;
    }
}

TEST(VariantReferenceTest, NullReferenceIsATypeMismatch) {
    VARIANT reference;
    VariantInit(&reference);
    for (const int type : std::initializer_list<int>{VT_I4, VT_BSTR, VT_VARIANT}) {
        reference.vt = static_cast<VARTYPE>(VT_BYREF | type);
        EXPECT_EQ("M", convertedText(&reference, VT_I4));
    }
}

TEST(VariantReferenceTest, ReferenceConvertedInPlaceLeavesItsValue) {
    LONG number = 70000;
    OwnedVariant variant;
    variant->vt = VT_BYREF | VT_I4;
    variant->plVal = &number;
    ASSERT_EQ(S_OK, VariantChangeType(variant.get(), variant.get(), 0, VT_R8));
    EXPECT_EQ(70000.0, variant->dblVal);
    EXPECT_EQ(70000, number);
}

TEST(VariantBytesTest, TextConvertsToItsBytesAndBack) {
    OwnedVariant text;
    parseVariant("BSTR ab", text.get());
    OwnedVariant bytes;
    ASSERT_EQ(S_OK, VariantChangeType(bytes.get(), text.get(), 0, VT_ARRAY | VT_UI1));
    LONG lower = -1;
    LONG upper = -1;
    SafeArrayGetLBound(bytes->parray, 1, &lower);
    SafeArrayGetUBound(bytes->parray, 1, &upper);
    EXPECT_EQ(0, lower);
    EXPECT_EQ(3, upper);
    EXPECT_EQ(0, std::memcmp(bytes->parray->pvData, "a\0b\0", 4));
    EXPECT_EQ("ab", convertedText(bytes.get(), VT_BSTR));
}

TEST(VariantBytesTest, OddNumberOfBytesConvertsToATextOfThatLength) {
    SAFEARRAYBOUND bound = {3, 0};
    OwnedVariant bytes;
    bytes->vt = VT_ARRAY | VT_UI1;
    bytes->parray = SafeArrayCreate(VT_UI1, 1, &bound);
    OwnedVariant text;
    ASSERT_EQ(S_OK, VariantChangeType(text.get(), bytes.get(), 0, VT_BSTR));
    EXPECT_EQ(3u, SysStringByteLen(text->bstrVal));
}

TEST(VariantBytesTest, ArrayToOtherTypesIsATypeMismatch) {
    SAFEARRAYBOUND bound = {3, 0};
    OwnedVariant bytes;
    bytes->vt = VT_ARRAY | VT_UI1;
    bytes->parray = SafeArrayCreate(VT_UI1, 1, &bound);
    for (const int type : std::initializer_list<int>{VT_EMPTY, VT_NULL, VT_I4, VT_ARRAY | VT_I1,
                                                     VT_ARRAY | VT_VARIANT}) {
        EXPECT_EQ("M", convertedText(bytes.get(), static_cast<VARTYPE>(type))) << type;
    }
}

TEST(VariantBytesTest, ReferenceToAnArrayIsCopied) {
    SAFEARRAYBOUND bound = {3, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 1, &bound);
    VARIANT reference;
    VariantInit(&reference);
    reference.vt = VT_BYREF | VT_ARRAY | VT_UI1;
    reference.pparray = &array;
    OwnedVariant copy;
    ASSERT_EQ(S_OK, VariantChangeType(copy.get(), &reference, 0, VT_ARRAY | VT_UI1));
    EXPECT_NE(array, copy->parray);
    EXPECT_EQ(S_OK, SafeArrayDestroy(array));
}

}  // namespace
}  // namespace zr::test
