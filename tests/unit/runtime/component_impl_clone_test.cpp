// CloneDispParams: the copies of the arguments of a call.
#include <limits>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

class ComponentImplCloneTest : public ThingTest {
protected:
    ConsoleCapture console;
};

TEST_F(ComponentImplCloneTest, CloneOfNumbersConvertsThemToTheTypesOfTheRow) {
    invoke(1, {number(2.9), number(300.7), number(2.5), number(1.5), number(3)});
    ASSERT_EQ(5u, thing->kept.size());
    EXPECT_EQ(VT_I4, thing->kept[0].vt);
    EXPECT_EQ(2, thing->kept[0].lVal);
    EXPECT_EQ(VT_I1, thing->kept[1].vt);
    EXPECT_EQ(300 & 0xFF, static_cast<unsigned char>(thing->kept[1].cVal));
    for (const std::size_t i : {2, 3, 4}) {
        EXPECT_EQ(VT_R8, thing->kept[i].vt);
    }
    EXPECT_EQ(2.5, thing->kept[2].dblVal);
}

TEST_F(ComponentImplCloneTest, CloneOfANegativeNumberTruncatesTowardZero) {
    invoke(1, {number(-2.9)});
    EXPECT_EQ(-2, thing->kept[0].lVal);
}

TEST_F(ComponentImplCloneTest, CloneToAByteTakesTheLowBitsOfTheTruncatedNumber) {
    const struct {
        double value;
        int byte;
    } cases[] = {
        {-1, 0xFF},
        {-1.9, 0xFF},
        {-256, 0},
        {255.9, 0xFF},
        {4294967301.0, 5},
        {-4294967297.0, 0xFF},
        {0x1p61 + 512, 0},
        {-0x1p63, 0},
        {1e300, 0},
        {-1e300, 0},
        {std::numeric_limits<double>::quiet_NaN(), 0},
        {std::numeric_limits<double>::infinity(), 0},
    };
    for (const auto& entry : cases) {
        invoke(1, {number(1), number(entry.value)});
        EXPECT_EQ(VT_I1, thing->kept[1].vt);
        EXPECT_EQ(entry.byte, static_cast<unsigned char>(thing->kept[1].cVal)) << entry.value;
    }
}

TEST_F(ComponentImplCloneTest, CloneOfANumberThatDoesNotFitGivesTheSmallest) {
    for (const double value :
         {2147483648.0, -2147483649.0, 1e300, std::numeric_limits<double>::quiet_NaN(),
          std::numeric_limits<double>::infinity()}) {
        invoke(1, {number(value)});
        EXPECT_EQ(std::numeric_limits<LONG>::min(), thing->kept[0].lVal) << value;
    }
    invoke(1, {number(2147483647.9)});
    EXPECT_EQ(2147483647, thing->kept[0].lVal);
}

TEST_F(ComponentImplCloneTest, CloneOfOtherTypesKeepsThem) {
    VARIANT flag = {};
    flag.vt = VT_BOOL;
    flag.boolVal = 1;
    VARIANT integer = {};
    integer.vt = VT_I8;
    integer.llVal = 1LL << 40;
    invoke(1, {flag, integer});
    EXPECT_EQ(VT_BOOL, thing->kept[0].vt);
    EXPECT_EQ(1, thing->kept[0].boolVal);
    EXPECT_EQ(VT_I8, thing->kept[1].vt);
    EXPECT_EQ(1LL << 40, thing->kept[1].llVal);
}

TEST_F(ComponentImplCloneTest, CloneOfAStringEndsAtTheFirstZero) {
    VARIANT text = {};
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringByteLen(reinterpret_cast<const char*>(OLESTR("ab\0cd")), 10);
    invoke(1, {text});
    EXPECT_NE(text.bstrVal, thing->kept[0].bstrVal);
    EXPECT_EQ(OLESTR("ab"), thing->text);
    VariantClear(&text);
    text.vt = VT_BSTR;
    text.bstrVal = nullptr;
    invoke(1, {text});
    EXPECT_EQ(VT_BSTR, thing->kept[0].vt);
}

TEST_F(ComponentImplCloneTest, CloneOfAnObjectAddsAReference) {
    for (const VARTYPE type : {VARTYPE{VT_DISPATCH}, VARTYPE{VT_UNKNOWN}}) {
        Proxy other;
        VARIANT object = {};
        object.vt = type;
        object.pdispVal = &other;
        DISPPARAMS params = {&object, nullptr, 1, 0};
        DISPPARAMS clone = {};
        EXPECT_EQ(1, thing->CloneDispParams(1, &params, &clone));
        EXPECT_EQ(type, clone.rgvarg[0].vt);
        EXPECT_EQ(&other, clone.rgvarg[0].pdispVal);
        EXPECT_EQ(1u, other.references);
        thing->FreeDispParams(&clone);
        EXPECT_EQ(0u, other.references);
    }
}

TEST_F(ComponentImplCloneTest, CloneOfANullObjectIsNull) {
    for (const VARTYPE type : {VARTYPE{VT_DISPATCH}, VARTYPE{VT_UNKNOWN}}) {
        VARIANT object = {};
        object.vt = type;
        EXPECT_HR(7, invoke(1, {object}));
        EXPECT_EQ(type, thing->kept[0].vt);
        EXPECT_EQ(nullptr, thing->kept[0].punkVal);
    }
}

TEST_F(ComponentImplCloneTest, CloneOfAnInvalidVariantIsEmpty) {
    VARIANT bad = {};
    bad.vt = 0x7FF;
    bad.llVal = -1;
    EXPECT_HR(7, invoke(1, {bad}));
    EXPECT_EQ(VT_EMPTY, thing->kept[0].vt);
}

TEST_F(ComponentImplCloneTest, CloneOfMoreArgumentsThanDeclaredCopiesAll) {
    EXPECT_HR(7, invoke(1, std::vector<VARIANT>(10000, number(1))));
    EXPECT_EQ(10000u, thing->kept.size());
    EXPECT_EQ(VT_I4, thing->kept[0].vt);
    EXPECT_EQ(VT_R8, thing->kept[9999].vt);
}

TEST_F(ComponentImplCloneTest, CloneWithoutAListFailsAndPrintsItsLine) {
    DISPPARAMS params = {};
    EXPECT_EQ(0, thing->CloneDispParams(1, &params, nullptr));
    EXPECT_EQ(0, thing->CloneDispParams(1, nullptr, &params));
    params.cArgs = 1;
    DISPPARAMS clone = {};
    EXPECT_EQ(0, thing->CloneDispParams(1, &params, &clone));
    EXPECT_EQ(
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::CloneDispParams] 1 argument error.\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::CloneDispParams] 2 argument error.\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::CloneDispParams] 2 argument error.\n",
        console.stop().out);
}

TEST_F(ComponentImplCloneTest, CloneForAnUnknownIdLeavesTheArgumentsEmpty) {
    VARIANT argument = number(1);
    DISPID named = 5;
    DISPPARAMS params = {&argument, &named, 1, 1};
    DISPPARAMS clone = {};
    EXPECT_EQ(1, thing->CloneDispParams(9, &params, &clone));
    EXPECT_EQ(&named, clone.rgdispidNamedArgs);
    EXPECT_EQ(1u, clone.cNamedArgs);
    EXPECT_EQ(1u, clone.cArgs);
    EXPECT_EQ(VT_EMPTY, clone.rgvarg[0].vt);
    thing->FreeDispParams(&clone);
    EXPECT_EQ(nullptr, clone.rgvarg);
    thing->FreeDispParams(&clone);
    thing->FreeDispParams(nullptr);
}

TEST_F(ComponentImplCloneTest, CloneForAnUnknownIdWithoutAnArrayGivesEmptyArguments) {
    DISPPARAMS params = {nullptr, nullptr, 2, 0};
    DISPPARAMS clone = {};
    EXPECT_EQ(1, thing->CloneDispParams(9, &params, &clone));
    ASSERT_TRUE(clone.rgvarg);
    EXPECT_EQ(2u, clone.cArgs);
    EXPECT_EQ(VT_EMPTY, clone.rgvarg[0].vt);
    EXPECT_EQ(VT_EMPTY, clone.rgvarg[1].vt);
    thing->FreeDispParams(&clone);
    EXPECT_EQ("[ZComponentImpl::CloneDispParams] call in...\n", console.stop().out);
}

TEST_F(ComponentImplCloneTest, InvokeWithACountButNoArrayCallsNothing) {
    DISPPARAMS params = {nullptr, nullptr, 1, 0};
    EXPECT_HR(E_FAIL, thing->Invoke(1, IID_NULL, 0, 1, &params, nullptr, nullptr, nullptr));
    EXPECT_EQ(0, thing->calls);
    const std::string text = console.stop().out;
    EXPECT_NE(text.npos, text.find("[ZComponentImpl::Invoke] call CloneDispParams error...\n"));
}

}  // namespace
}  // namespace zr::test
