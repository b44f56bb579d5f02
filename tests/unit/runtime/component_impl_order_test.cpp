// The order in which table and proxies are asked, and what the proxies are passed.
#include <limits>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

/// The lines of a call of a member without arguments.
constexpr const char* kCallWithoutAList =
    "[ZComponentImpl::Invoke] call in...\n"
    "[ZComponentImpl::CloneDispParams] call in...\n"
    "[ZComponentImpl::CloneDispParams] 2 argument error.\n"
    "[ZComponentImpl::Invoke] call CloneDispParams error...\n";

class ComponentImplOrderTest : public ThingTest {
protected:
    ~ComponentImplOrderTest() override { thing->ClearPDI(); }

    HRESULT probe(DISPID id, WORD flags) {
        return thing->Invoke(id, IID_NULL, 0, flags, nullptr, nullptr, nullptr, nullptr);
    }

    ConsoleCapture console;
    Proxy first;  ///< asked before the own table
    Proxy last;   ///< asked after the own table
};

TEST_F(ComponentImplOrderTest, InvokeWithAnIdBelowOneAsksNoProxy) {
    thing->AddProxyDispatch(&first, -1000, 1, nullptr);
    thing->AddProxyDispatch(&last, -1000, 0, nullptr);
    for (const DISPID id : {std::numeric_limits<DISPID>::min(), DISPID{-1}, DISPID{0}}) {
        VARIANT result = {};
        result.vt = VT_I2;
        EXPECT_HR(E_INVALIDARG, invoke(id, {}, &result));
        EXPECT_EQ(VT_I2, result.vt);
    }
    EXPECT_EQ(0, first.calls);
    EXPECT_EQ(0, last.calls);
}

TEST_F(ComponentImplOrderTest, InvokeWithAnIdBelowOnePrintsItsLine) {
    EXPECT_HR(E_INVALIDARG, invoke(0, {}));
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::Invoke] argument error...\n",
        console.stop().out);
}

TEST_F(ComponentImplOrderTest, ProbeForAnUnknownMemberAsksTheLastProxies) {
    thing->AddProxyDispatch(&last, 1000, 0, nullptr);
    EXPECT_HR(S_OK, probe(1001, DISPATCH_METHOD));
    EXPECT_EQ(1, last.lastId);
    last.callResult = E_NOINTERFACE;
    EXPECT_HR(E_FAIL, probe(1001, DISPATCH_METHOD));
    EXPECT_EQ(2, last.calls);
}

TEST_F(ComponentImplOrderTest, ProbeForAMemberOfTheOtherKindAsksNoLastProxy) {
    thing->AddProxyDispatch(&last, 0, 0, nullptr);
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_PROPERTYGET));
    EXPECT_EQ(0, last.calls);
}

TEST_F(ComponentImplOrderTest, ProbeAsksTheFirstProxiesBeforeTheTable) {
    thing->AddProxyDispatch(&first, 0, 1, nullptr);
    EXPECT_HR(S_OK, probe(1, DISPATCH_PROPERTYGET));
    EXPECT_EQ(1, first.calls);
    first.callResult = E_FAIL;
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_PROPERTYGET));
    EXPECT_EQ(2, first.calls);
}

TEST_F(ComponentImplOrderTest, InvokeWithAnExceptionRecordOnlyIsACallWithoutArguments) {
    EXCEPINFO excep = {};
    EXPECT_HR(E_FAIL, thing->Invoke(1, IID_NULL, 0, 1, nullptr, nullptr, &excep, nullptr));
    EXPECT_EQ(0, thing->calls);
    EXPECT_EQ(kCallWithoutAList, console.stop().out);
}

TEST_F(ComponentImplOrderTest, InvokeWithAResultOnlyIsACallWithoutArguments) {
    VARIANT result;
    EXPECT_HR(E_FAIL, thing->Invoke(1, IID_NULL, 0, 1, nullptr, &result, nullptr, nullptr));
    EXPECT_EQ(VT_EMPTY, result.vt);
    EXPECT_EQ(0, thing->calls);
    EXPECT_EQ(kCallWithoutAList, console.stop().out);
}

TEST_F(ComponentImplOrderTest, InvokeWithArgumentsOnlyCallsTheMember) {
    DISPPARAMS params = {};
    EXPECT_HR(7, thing->Invoke(1, IID_NULL, 0, 1, &params, nullptr, nullptr, nullptr));
    EXPECT_EQ(1, thing->calls);
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n",
        console.stop().out);
}

TEST_F(ComponentImplOrderTest, InvokeGivesTheFirstProxiesAnEmptyResult) {
    thing->AddProxyDispatch(&first, 0, 1, nullptr);
    VARIANT result = {};
    result.vt = VT_I4;
    VARTYPE whenAsked = VT_NULL;
    first.onAsked = [&] { whenAsked = result.vt; };
    EXPECT_HR(S_OK, invoke(1, {}, &result));
    EXPECT_EQ(VT_EMPTY, whenAsked);
}

TEST_F(ComponentImplOrderTest, InvokeWithACountButNoArrayReachesTheLastProxies) {
    thing->AddProxyDispatch(&last, 1000, 0, nullptr);
    DISPPARAMS params = {nullptr, nullptr, 1, 0};
    EXPECT_HR(S_OK, thing->Invoke(1001, IID_NULL, 0, 1, &params, nullptr, nullptr, nullptr));
    EXPECT_EQ(1, last.lastId);
    EXPECT_EQ(1u, last.call.params->cArgs);
}

TEST_F(ComponentImplOrderTest, InvokePassesTheCallUnchangedToTheProxies) {
    thing->AddProxyDispatch(&first, 1000, 1, nullptr);
    thing->AddProxyDispatch(&last, 2000, 0, nullptr);
    first.callResult = E_FAIL;
    VARIANT argument = number(2.5);
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    VARIANT result;
    EXCEPINFO excep = {};
    UINT argErr = 77;
    EXPECT_HR(S_OK, thing->Invoke(2005, IID_IUnknown, 0x407, DISPATCH_PROPERTYPUT, &params, &result,
                                  &excep, &argErr));
    EXPECT_EQ(1005, first.lastId);
    EXPECT_EQ(5, last.lastId);
    for (const Proxy* proxy : {&first, &last}) {
        EXPECT_TRUE(proxy->call.riid == IID_IUnknown);
        EXPECT_EQ(0x407u, proxy->call.lcid);
        EXPECT_EQ(DISPATCH_PROPERTYPUT, proxy->call.flags);
        EXPECT_EQ(&params, proxy->call.params);
        EXPECT_EQ(&result, proxy->call.result);
        EXPECT_EQ(&excep, proxy->call.excep);
        EXPECT_EQ(&argErr, proxy->call.argErr);
    }
    EXPECT_EQ(&argument, params.rgvarg);
    EXPECT_EQ(77u, argErr);
}

TEST_F(ComponentImplOrderTest, GetIDsOfNamesPassesTheNamesUnchangedToTheProxies) {
    thing->AddProxyDispatch(&first, 1000, 1, nullptr);
    thing->AddProxyDispatch(&last, 2000, 0, nullptr);
    OLECHAR text[] = OLESTR("Other");
    last.name = text;
    for (const UINT count : {UINT{0}, UINT{1}, UINT{16}, UINT{17}}) {
        std::vector<LPOLESTR> names(20, text);
        DISPID id = 99;
        EXPECT_HR(count > 0 ? S_OK : E_FAIL,
                  thing->GetIDsOfNames(IID_IUnknown, names.data(), count, 0x407, &id));
        EXPECT_EQ(count > 0 ? 2001 : 99, id);  // the proxy writes count ids
        for (const Proxy* proxy : {&first, &last}) {
            EXPECT_TRUE(proxy->lookUp.riid == IID_IUnknown);
            EXPECT_EQ(names.data(), proxy->lookUp.names);
            EXPECT_EQ(count, proxy->lookUp.count);
            EXPECT_EQ(0x407u, proxy->lookUp.lcid);
            EXPECT_EQ(0, proxy->lookUp.firstId);
        }
    }
}

TEST_F(ComponentImplOrderTest, GetIDsOfNamesIgnoresAProxysIdBelowOne) {
    thing->AddProxyDispatch(&first, 1000, 1, nullptr);
    for (const DISPID ownId : {std::numeric_limits<DISPID>::min(), DISPID{-1}, DISPID{0}}) {
        first.ownId = ownId;
        DISPID id = 0;
        EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
        EXPECT_EQ(1, id);
    }
    EXPECT_EQ(3, first.lookUps);
}

TEST_F(ComponentImplOrderTest, GetIDsOfNamesOfAProxysNameWithoutAnOutPointerIsRefused) {
    thing->AddProxyDispatch(&first, 1000, 1, nullptr);
    last.name = OLESTR("Other");
    thing->AddProxyDispatch(&last, 2000, 0, nullptr);
    EXPECT_HR(E_INVALIDARG, find(OLESTR("Keep"), nullptr));
    EXPECT_HR(E_INVALIDARG, find(OLESTR("Other"), nullptr));
    EXPECT_HR(E_FAIL, find(OLESTR("None"), nullptr));
    EXPECT_EQ(2, last.lookUps);
}

TEST_F(ComponentImplOrderTest, GetIDsOfNamesOfALastProxysNamePrintsAllLines) {
    thing->AddProxyDispatch(&last, 1000, 0, nullptr);
    last.name = OLESTR("Other");
    DISPID id = 0;
    find(OLESTR("Other"), &id);
    EXPECT_EQ(
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [Other] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] self...\n"
        "[ZComponentImpl::GetIDsOfNames] Last Proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] *rgdispid = [1001] ...\n",
        console.stop().out);
}

TEST_F(ComponentImplOrderTest, InvokeTakenByALastProxyPrintsNoEndLine) {
    thing->AddProxyDispatch(&last, 1000, 0, nullptr);
    EXPECT_HR(S_OK, invoke(1001, {}));
    const auto text = console.stop();
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n",
        text.out);
    EXPECT_EQ("GetDipatchInfo() fail\n", text.error);
}

TEST_F(ComponentImplOrderTest, InvokeTakenByNobodyPrintsTheEndLine) {
    EXPECT_HR(E_FAIL, invoke(1001, {}));
    const auto text = console.stop();
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::Invoke] call end...\n",
        text.out);
    EXPECT_EQ("GetDipatchInfo() fail\n", text.error);
}

TEST_F(ComponentImplOrderTest, GetIDsOfNamesWithAHugeCountNeverReturnsAShadowedId) {
    thing->AddProxyDispatch(&first, 1000, 1, nullptr);
    first.mostIds = 1;
    LPOLESTR name = first.name.data();
    DISPID id = 99;
    const HRESULT hr = thing->GetIDsOfNames(IID_NULL, &name, UINT{1} << 28, 0, &id);
    if (first.lookUps == 1) {
        EXPECT_HR(S_OK, hr);
        EXPECT_EQ(1001, id);
    } else {  // out of memory for so many ids
        EXPECT_HR(E_FAIL, hr);
        EXPECT_EQ(99, id);
    }
}

}  // namespace
}  // namespace zr::test
