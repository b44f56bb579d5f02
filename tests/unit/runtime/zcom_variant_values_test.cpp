// ZComVariant: the values that typed constructors and assignments set, and what they do not
// release.
#include <gtest/gtest.h>

#include "runtime/zcom_variant.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"

namespace zr::test {
namespace {

using zrapi::ZComBSTR;
using zrapi::ZComVariant;

class ZComVariantValuesTest : public testing::Test {
protected:
    /// Constructs a variant from a value and assigns the value to another variant.
    /// @param get  reads the member that has to hold the value.
    template <class Value, class Get>
    static void expectValue(VARTYPE type, Value value, Get get) {
        const ZComVariant constructed(value);
        EXPECT_EQ(type, constructed.vt);
        EXPECT_EQ(value, get(constructed)) << type;
        ZComVariant assigned;
        assigned.ullVal = 0x5A5A5A5A5A5A5A5A;
        assigned = value;
        EXPECT_EQ(type, assigned.vt);
        EXPECT_EQ(value, get(assigned)) << type;
    }

    ConsoleCapture console;
};

TEST_F(ZComVariantValuesTest, IntegersSetTheirTagAndMember) {
    expectValue(VT_UI1, static_cast<unsigned char>(200), [](const VARIANT& v) { return v.bVal; });
    expectValue(VT_I1, static_cast<char>(-5), [](const VARIANT& v) { return v.cVal; });
    expectValue(VT_I2, static_cast<short>(-20000), [](const VARIANT& v) { return v.iVal; });
    expectValue(VT_UI2, static_cast<unsigned short>(60000),
                [](const VARIANT& v) { return v.uiVal; });
    expectValue(VT_I4, -2000000000, [](const VARIANT& v) { return v.lVal; });
    expectValue(VT_I4, -2000000000l, [](const VARIANT& v) { return v.lVal; });
    expectValue(VT_UI4, 4000000000u, [](const VARIANT& v) { return v.ulVal; });
    expectValue(VT_UI4, 4000000000ul, [](const VARIANT& v) { return v.ulVal; });
    expectValue(VT_I8, -(1ll << 40), [](const VARIANT& v) { return v.llVal; });
    expectValue(VT_UI8, ~0ull - 1, [](const VARIANT& v) { return v.ullVal; });
}

TEST_F(ZComVariantValuesTest, RealsSetTheirTagAndMember) {
    expectValue(VT_R4, -1.5f, [](const VARIANT& v) { return v.fltVal; });
    expectValue(VT_R8, 1e100, [](const VARIANT& v) { return v.dblVal; });
}

TEST_F(ZComVariantValuesTest, CurrencySetsItsTagAndMember) {
    CY money;
    money.int64 = -(1ll << 40);
    EXPECT_EQ(VT_CY, ZComVariant(money).vt);
    EXPECT_EQ(money.int64, ZComVariant(money).cyVal.int64);
    ZComVariant assigned;
    assigned = money;
    EXPECT_EQ(VT_CY, assigned.vt);
    EXPECT_EQ(money.int64, assigned.cyVal.int64);
}

TEST_F(ZComVariantValuesTest, TrueIsStoredAsMinusOne) {
    for (const bool truth : {true, false}) {
        EXPECT_EQ(VT_BOOL, ZComVariant(truth).vt);
        EXPECT_EQ(truth ? -1 : 0, ZComVariant(truth).boolVal);
        ZComVariant assigned;
        assigned = truth;
        EXPECT_EQ(VT_BOOL, assigned.vt);
        EXPECT_EQ(truth ? -1 : 0, assigned.boolVal);
    }
}

TEST_F(ZComVariantValuesTest, ConstructorsWithAnAllowedTypeSetIt) {
    const auto expect = [](const ZComVariant& variant, VARTYPE type, auto value, auto held) {
        EXPECT_EQ(type, variant.vt);
        EXPECT_EQ(value, held) << type;
    };
    const ZComVariant i4(-7, VT_I4);
    expect(i4, VT_I4, -7, i4.lVal);
    const ZComVariant integer(-8, VT_INT);
    expect(integer, VT_INT, -8, integer.intVal);
    const ZComVariant fromLong(-9l, VT_I4);
    expect(fromLong, VT_I4, -9, fromLong.lVal);
    const ZComVariant error(-10l, VT_ERROR);
    expect(error, VT_ERROR, -10, error.scode);
    const ZComVariant ui4(4000000000u, VT_UI4);
    expect(ui4, VT_UI4, 4000000000u, ui4.ulVal);
    const ZComVariant unsignedInteger(4000000001u, VT_UINT);
    expect(unsignedInteger, VT_UINT, 4000000001u, unsignedInteger.uintVal);
    const ZComVariant r8(2.5, VT_R8);
    expect(r8, VT_R8, 2.5, r8.dblVal);
    const ZComVariant date(-3.25, VT_DATE);
    expect(date, VT_DATE, -3.25, date.date);
    EXPECT_EQ(
        "[ZComVariant::ZComVariant(int nSrc, VARTYPE vtSrc)] ... vtSrc = [3]\n"
        "[ZComVariant::ZComVariant(int nSrc, VARTYPE vtSrc)] ... vtSrc = [22]\n",
        console.stop().out);
}

TEST_F(ZComVariantValuesTest, ConstructorsWithAnotherTypeSetAnErrorAndPrintNothing) {
    for (const ZComVariant& refused :
         {ZComVariant(5, VT_I2), ZComVariant(5, VT_ERROR), ZComVariant(5l, VT_INT),
          ZComVariant(5u, VT_I4), ZComVariant(5.0, VT_R4)}) {
        EXPECT_EQ(VT_ERROR, refused.vt);
        EXPECT_HR(E_INVALIDARG, refused.scode);
    }
    EXPECT_EQ("", console.stop().out);
}

/// Assignments to a variant that holds an object.
class ZComVariantOldContentTest : public testing::Test {
protected:
    template <class Source>
    void expectKept(VARTYPE type, Source source) {
        Proxy old;
        ZComVariant variant(static_cast<IDispatch*>(&old));
        variant = source;
        EXPECT_EQ(type, variant.vt);
        EXPECT_EQ(1u, old.references) << type;
    }
};

TEST_F(ZComVariantOldContentTest, AssigningANumberDoesNotReleaseTheOldContent) {
    expectKept(VT_BOOL, true);
    expectKept(VT_I4, 5);
    expectKept(VT_I4, 5l);
    expectKept(VT_UI4, 5u);
    expectKept(VT_R8, 5.0);
    expectKept(VT_UI1, static_cast<unsigned char>(5));
    expectKept(VT_I1, 'x');
    expectKept(VT_I2, static_cast<short>(5));
    expectKept(VT_UI2, static_cast<unsigned short>(5));
    expectKept(VT_UI4, 5ul);
    expectKept(VT_R4, 5.0f);
    expectKept(VT_I8, 5ll);
    expectKept(VT_UI8, 5ull);
    expectKept(VT_CY, CY{});
}

TEST_F(ZComVariantOldContentTest, AssigningATextDoesNotReleaseTheOldContent) {
    expectKept(VT_BSTR, OLESTR("wide"));
    expectKept(VT_BSTR, "narrow");
    expectKept(VT_BSTR, ZComBSTR("owned"));
}

TEST_F(ZComVariantOldContentTest, AssigningAnObjectDoesNotReleaseTheOldContent) {
    Proxy next;
    expectKept(VT_DISPATCH, static_cast<IDispatch*>(&next));
    expectKept(VT_UNKNOWN, static_cast<IUnknown*>(&next));
    EXPECT_EQ(0u, next.references);
}

TEST_F(ZComVariantOldContentTest, AssigningAnArrayDoesNotReleaseTheOldContent) {
    SAFEARRAYBOUND bound = {3, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 1, &bound);
    expectKept(VT_ARRAY | VT_UI1, static_cast<const SAFEARRAY*>(array));
    SafeArrayDestroy(array);
    expectKept(VT_ERROR, static_cast<const SAFEARRAY*>(nullptr));
}

TEST_F(ZComVariantOldContentTest, AssigningAPointerDoesNotReleaseTheOldContent) {
    long long place = 0;
    void* at = &place;
    expectKept(VT_BYREF | VT_UI1, static_cast<unsigned char*>(at));
    expectKept(VT_BYREF | VT_I2, static_cast<short*>(at));
    expectKept(VT_BYREF | VT_UI2, static_cast<unsigned short*>(at));
    expectKept(VT_BYREF | VT_I4, static_cast<int*>(at));
    expectKept(VT_BYREF | VT_I4, static_cast<long*>(at));
    expectKept(VT_BYREF | VT_UI4, static_cast<unsigned int*>(at));
    expectKept(VT_BYREF | VT_UI4, static_cast<unsigned long*>(at));
    expectKept(VT_BYREF | VT_I8, static_cast<long long*>(at));
    expectKept(VT_BYREF | VT_UI8, static_cast<unsigned long long*>(at));
    expectKept(VT_BYREF | VT_R4, static_cast<float*>(at));
    expectKept(VT_BYREF | VT_R8, static_cast<double*>(at));
}

TEST_F(ZComVariantOldContentTest, AssigningAVariantReleasesTheOldContent) {
    Proxy old;
    const ZComVariant source(5ul);
    ZComVariant first(static_cast<IDispatch*>(&old));
    first = source;
    ZComVariant second(static_cast<IDispatch*>(&old));
    second = static_cast<const VARIANT&>(source);
    EXPECT_EQ(0u, old.references);
    EXPECT_EQ(5u, first.ulVal);
    EXPECT_EQ(5u, second.ulVal);
}

}  // namespace
}  // namespace zr::test
