// ZComVariant: construction, assignment, attaching and detaching.
#include "runtime/zcom_variant.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

using zrapi::ZComBSTR;
using zrapi::ZComVariant;

void expectError(const ZComVariant& variant, HRESULT hr) {
    EXPECT_EQ(VT_ERROR, variant.vt);
    EXPECT_HR(hr, variant.scode);
}

TEST(ZComVariantTest, LayoutIsThatOfAVariant) {
    EXPECT_EQ(sizeof(VARIANT), sizeof(ZComVariant));
    EXPECT_EQ(VT_EMPTY, ZComVariant().vt);
}

TEST(ZComVariantTest, ConstructorsOfStringsCopyThem) {
    EXPECT_EQ(3u, SysStringLen(ZComVariant(OLESTR("abc")).bstrVal));
    EXPECT_EQ(2u, SysStringLen(ZComVariant("a\xe2\x82\xac").bstrVal));
    const ZComVariant wideNull(static_cast<const OLECHAR*>(nullptr));
    EXPECT_EQ(VT_BSTR, wideNull.vt);
    EXPECT_EQ(nullptr, wideNull.bstrVal);
    const ZComVariant narrowNull(static_cast<const char*>(nullptr));
    EXPECT_EQ(VT_BSTR, narrowNull.vt);
    EXPECT_NE(nullptr, narrowNull.bstrVal);
    const ZComBSTR owned("abc");
    EXPECT_EQ(3u, SysStringLen(ZComVariant(owned).bstrVal));
}

TEST(ZComVariantTest, ConstructorAndAssignmentOfANullStringGiveANullString) {
    const ZComBSTR none;
    const ZComVariant constructed(none);
    EXPECT_EQ(VT_BSTR, constructed.vt);
    EXPECT_EQ(nullptr, constructed.bstrVal);
    ZComVariant assigned(5ul);
    assigned = none;
    EXPECT_EQ(VT_BSTR, assigned.vt);
    EXPECT_EQ(nullptr, assigned.bstrVal);
}

TEST(ZComVariantTest, ConstructorsOfObjectsAddAReference) {
    auto* thing = new Thing();
    thing->AddRef();
    {
        const ZComVariant dispatch(static_cast<IDispatch*>(thing));
        const ZComVariant unknown(static_cast<IUnknown*>(static_cast<IDispatch*>(thing)));
        EXPECT_EQ(VT_DISPATCH, dispatch.vt);
        EXPECT_EQ(VT_UNKNOWN, unknown.vt);
        EXPECT_EQ(4u, thing->AddRef());
        thing->Release();
    }
    EXPECT_EQ(0u, thing->Release());
}

TEST(ZComVariantTest, ConstructorsOfNullObjectsSetTheTag) {
    const ZComVariant dispatch(static_cast<IDispatch*>(nullptr));
    EXPECT_EQ(VT_DISPATCH, dispatch.vt);
    EXPECT_EQ(nullptr, dispatch.pdispVal);
    const ZComVariant unknown(static_cast<IUnknown*>(nullptr));
    EXPECT_EQ(VT_UNKNOWN, unknown.vt);
    EXPECT_EQ(nullptr, unknown.punkVal);
}

TEST(ZComVariantTest, ConstructorOfAnArrayCopiesItWithItsElementType) {
    SAFEARRAYBOUND bound = {3, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI2, 1, &bound);
    const ZComVariant variant(array);
    EXPECT_EQ(VT_ARRAY | VT_UI2, variant.vt);
    EXPECT_NE(array, variant.parray);
    SafeArrayDestroy(array);
    expectError(ZComVariant(static_cast<const SAFEARRAY*>(nullptr)), E_INVALIDARG);
}

TEST(ZComVariantTest, AssigningPointersSetsTheTypeByReference) {
    long long value = 0;
    const auto tag = [&value](auto* pointer) {
        ZComVariant variant;
        variant = pointer;
        EXPECT_EQ(&value, variant.byref);
        const VARTYPE type = variant.vt;
        variant.vt = VT_EMPTY;
        return type;
    };
    void* at = &value;
    EXPECT_EQ(0x4011, tag(static_cast<unsigned char*>(at)));
    EXPECT_EQ(0x4002, tag(static_cast<short*>(at)));
    EXPECT_EQ(0x4012, tag(static_cast<unsigned short*>(at)));
    EXPECT_EQ(0x4003, tag(static_cast<int*>(at)));
    EXPECT_EQ(0x4003, tag(static_cast<long*>(at)));
    EXPECT_EQ(0x4013, tag(static_cast<unsigned int*>(at)));
    EXPECT_EQ(0x4013, tag(static_cast<unsigned long*>(at)));
    EXPECT_EQ(0x4014, tag(static_cast<long long*>(at)));
    EXPECT_EQ(0x4015, tag(static_cast<unsigned long long*>(at)));
    EXPECT_EQ(0x4004, tag(static_cast<float*>(at)));
    EXPECT_EQ(0x4005, tag(static_cast<double*>(at)));
}

TEST(ZComVariantTest, AssigningAVariantMakesADeepCopy) {
    ZComVariant text(OLESTR("abc"));
    ZComVariant copy(OLESTR("other"));
    copy = text;
    EXPECT_NE(text.bstrVal, copy.bstrVal);
    EXPECT_EQ(3u, SysStringLen(copy.bstrVal));
    const BSTR before = copy.bstrVal;
    copy = *&copy;
    EXPECT_EQ(before, copy.bstrVal);
    VARIANT bad = {};
    bad.vt = 0x7FF;
    copy = bad;
    expectError(copy, DISP_E_BADVARTYPE);
    expectError(ZComVariant(bad), DISP_E_BADVARTYPE);
}

TEST(ZComVariantTest, AttachAndDetachMoveTheContent) {
    ZComVariant source(OLESTR("abc"));
    const BSTR text = source.bstrVal;
    ZComVariant target(OLESTR("old"));
    EXPECT_HR(S_OK, target.Attach(&source));
    EXPECT_EQ(VT_EMPTY, source.vt);
    EXPECT_EQ(text, target.bstrVal);
    VARIANT out = {};
    EXPECT_HR(S_OK, target.Detach(&out));
    EXPECT_EQ(VT_EMPTY, target.vt);
    EXPECT_EQ(text, out.bstrVal);
    VariantClear(&out);
    EXPECT_HR(E_INVALIDARG, target.Attach(nullptr));
    EXPECT_HR(E_POINTER, target.Detach(nullptr));
    out.vt = 0x7FF;
    EXPECT_HR(DISP_E_BADVARTYPE, source.Detach(&out));
}

TEST(ZComVariantTest, DetachOntoAVariantThatCannotBeClearedChangesNeither) {
    ZComVariant source(OLESTR("abc"));
    const BSTR text = source.bstrVal;
    VARIANT target = {};
    target.vt = 0x7FF;
    target.llVal = 0x5A5A5A5A;
    EXPECT_HR(DISP_E_BADVARTYPE, source.Detach(&target));
    EXPECT_EQ(VT_BSTR, source.vt);
    EXPECT_EQ(text, source.bstrVal);
    EXPECT_EQ(0x7FF, target.vt);
    EXPECT_EQ(0x5A5A5A5A, target.llVal);
}

TEST(ZComVariantTest, ConstructorOfAnArrayWithoutAnElementTypeSetsAnError) {
    SAFEARRAYBOUND bound = {2, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 1, &bound);
    const USHORT features = array->fFeatures;
    array->fFeatures = static_cast<USHORT>(features & ~FADF_HAVEVARTYPE);
    expectError(ZComVariant(array), E_INVALIDARG);
    array->fFeatures = features;
    SafeArrayDestroy(array);
}

TEST(ZComVariantTest, AttachOverALockedArrayFails) {
    SAFEARRAYBOUND bound = {2, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_I4, 1, &bound);
    SafeArrayLock(array);
    ZComVariant holder;
    holder.vt = VT_ARRAY | VT_I4;
    holder.parray = array;
    ZComVariant source(5);
    EXPECT_HR(DISP_E_ARRAYISLOCKED, holder.Attach(&source));
    EXPECT_EQ(VT_I4, source.vt);
    holder.vt = VT_EMPTY;
    SafeArrayUnlock(array);
    SafeArrayDestroy(array);
}

TEST(ZComVariantTest, CopyToKeepsTheFullLength) {
    ZComVariant text;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringByteLen("a\0b", 3);
    BSTR copy = nullptr;
    EXPECT_HR(S_OK, text.CopyTo(&copy));
    EXPECT_EQ(3u, SysStringByteLen(copy));
    SysFreeString(copy);
    EXPECT_HR(E_POINTER, text.CopyTo(nullptr));
    EXPECT_HR(DISP_E_TYPEMISMATCH, ZComVariant().CopyTo(&copy));
    EXPECT_HR(DISP_E_TYPEMISMATCH, ZComVariant().CopyTo(nullptr));
}

TEST(ZComVariantTest, ChangeTypeOfABooleanWritesItsNumber) {
    ZComVariant variant(true);
    EXPECT_HR(S_OK, variant.ChangeType(VT_BSTR));
    EXPECT_EQ(OLESTR("-1"), std::basic_string<OLECHAR>(variant.bstrVal));
}

TEST(ZComVariantTest, ChangeTypeOfAnObjectUsesItsValue) {
    ValueObject object;
    const ZComVariant source(static_cast<IDispatch*>(&object));
    ZComVariant number;
    EXPECT_HR(S_OK, number.ChangeType(VT_I4, &source));
    EXPECT_EQ(VT_I4, number.vt);
    EXPECT_EQ(42, number.lVal);
}

TEST(ZComVariantTest, ClearCopyAndChangeTypeReturnTheResultOfThePlatform) {
    ZComVariant variant(OLESTR("12"));
    EXPECT_HR(S_OK, variant.ChangeType(VT_I4));
    EXPECT_EQ(12, variant.lVal);
    const ZComVariant text(OLESTR("x"));
    EXPECT_HR(DISP_E_TYPEMISMATCH, variant.ChangeType(VT_I4, &text));
    EXPECT_HR(S_OK, variant.Copy(&text));
    EXPECT_EQ(VT_BSTR, variant.vt);
    EXPECT_HR(S_OK, variant.Clear());
    EXPECT_EQ(VT_EMPTY, variant.vt);
    variant.vt = 0x7FF;
    EXPECT_HR(DISP_E_BADVARTYPE, variant.Clear());
    EXPECT_HR(DISP_E_BADVARTYPE, variant.InternalClear());
    expectError(variant, DISP_E_BADVARTYPE);
}

}  // namespace
}  // namespace zr::test
