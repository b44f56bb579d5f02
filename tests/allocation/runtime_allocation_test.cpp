// Strings, variants and proxies while each of their allocations fails in turn.
#include "runtime/path_utils.h"
#include "runtime/zcom_bstr.h"
#include "runtime/zcom_variant.h"
#include "runtime/zcom_variant_array.h"
#include "tests/allocation/fail_each.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

using zrapi::ZComBSTR;
using zrapi::ZComVariant;
using zrapi::ZComVariantArray;

void expectTextOrError(const Allocations& allocations, const ZComVariant& variant) {
    EXPECT_EQ(allocations.hasFailed() ? VT_ERROR : VT_BSTR, variant.vt);
    if (variant.vt == VT_ERROR) {
        EXPECT_HR(E_OUTOFMEMORY, variant.scode);
    }
}

class RuntimeAllocationTest : public testing::Test {
protected:
    ConsoleCapture quiet;
    OLECHAR wide[5] = OLESTR("text");
    ZComBSTR text{"text"};
};

TEST_F(RuntimeAllocationTest, StringOutOfMemoryIsNull) {
    failEach([](const Allocations& allocations) {
        const ZComBSTR made("text");
        EXPECT_EQ(allocations.hasFailed(), static_cast<BSTR>(made) == nullptr);
    });
}

TEST_F(RuntimeAllocationTest, StringViewOutOfMemoryIsNull) {
    failEach([this](const Allocations& allocations) {
        BSTR source = text;
        ZComBSTR copy(source);
        EXPECT_EQ(allocations.hasFailed(), static_cast<const char*>(copy) == nullptr);
    });
}

TEST_F(RuntimeAllocationTest, StringCopyOutOfMemoryIsNullAndLeavesTheOriginal) {
    failEach([this](const Allocations& allocations) {
        {
            const ZComBSTR copy(text);
            EXPECT_EQ(allocations.hasFailed(), static_cast<BSTR>(copy) == nullptr);
        }
        EXPECT_EQ(4u, text.GetLength());
    });
}

TEST_F(RuntimeAllocationTest, VariantOfATextOutOfMemoryHoldsTheError) {
    failEach([this](const Allocations& allocations) {
        expectTextOrError(allocations, ZComVariant(wide));
    });
    failEach([](const Allocations& allocations) {
        expectTextOrError(allocations, ZComVariant("text"));
    });
    failEach([this](const Allocations& allocations) {
        expectTextOrError(allocations, ZComVariant(text));
    });
}

TEST_F(RuntimeAllocationTest, VariantCopyOutOfMemoryHoldsTheError) {
    const ZComVariant source(wide);
    failEach([&](const Allocations& allocations) {
        expectTextOrError(allocations, ZComVariant(source));
    });
    failEach([&](const Allocations& allocations) {
        BSTR out = nullptr;
        const HRESULT hr = source.CopyTo(&out);
        EXPECT_HR(allocations.hasFailed() ? E_OUTOFMEMORY : S_OK, hr);
        SysFreeString(out);
    });
}

TEST_F(RuntimeAllocationTest, VariantOfAnArrayOutOfMemoryHoldsTheError) {
    SAFEARRAYBOUND bound = {4, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 1, &bound);
    failEach([&](const Allocations& allocations) {
        const ZComVariant made(array);
        EXPECT_EQ(allocations.hasFailed() ? VT_ERROR : VT_ARRAY | VT_UI1, made.vt);
        if (allocations.hasFailed()) {
            EXPECT_HR(E_OUTOFMEMORY, made.scode);
        }
    });
    SafeArrayDestroy(array);
}

TEST_F(RuntimeAllocationTest, AddOutOfMemoryLeavesTheList) {
    failEach([](const Allocations& allocations) {
        ZComVariantArray list;
        ZComVariant element(1);
        EXPECT_EQ(allocations.hasFailed() ? 0 : 1, list.Add(element));
        EXPECT_EQ(allocations.hasFailed() ? 0 : 1, list.Count());
    });
}

TEST_F(RuntimeAllocationTest, ParseOutOfMemoryKeepsTheElements) {
    ZComVariantArray list;
    ZComVariant element(1);
    list.Add(element);
    failEach([&](const Allocations& allocations) {
        VARIANT* out = nullptr;
        const int count = list.Parse(&out);
        EXPECT_EQ(allocations.hasFailed() ? -1 : 1, count);
        EXPECT_EQ(allocations.hasFailed(), out == nullptr);
        EXPECT_EQ(allocations.hasFailed() ? VT_I4 : VT_EMPTY, list.GetAt(0).vt);
        list.GetAt(0) = 1;
        delete[] out;
    });
}

TEST_F(RuntimeAllocationTest, GetAbsolutionPathOutOfMemoryLeavesTheBuffer) {
    const std::string path = "/" + std::string(50, 'd') + "/../" + std::string(50, 'd') + "/x";
    failEach([&](const Allocations& allocations) {
        char out[200] = "untouched";
        EXPECT_EQ(allocations.hasFailed() ? -1 : 0, ZGetAbsolutionPath(path.c_str(), out, 200));
        EXPECT_EQ(allocations.hasFailed(), std::string_view(out) == "untouched");
    });
}

class ProxyAllocationTest : public ThingTest {
protected:
    ConsoleCapture quiet;
    Proxy proxy;
};

TEST_F(ProxyAllocationTest, AddProxyDispatchOutOfMemoryDoesNotKeepTheProxy) {
    failEach([this](const Allocations& allocations) {
        EXPECT_EQ(allocations.hasFailed() ? 0 : 1, thing->AddProxyDispatch(&proxy, 0, 1, "name"));
        EXPECT_EQ(allocations.hasFailed() ? 0u : 1u, proxy.references);
        thing->RemoveProxyDispatch(&proxy);
    });
}

TEST_F(ProxyAllocationTest, GetIdsOfNamesOutOfMemoryForAProxyFails) {
    // The object has a member of the same name, which must not be found instead.
    for (const int stage : {1, 0}) {
        proxy.name = stage == 1 ? OLESTR("Keep") : OLESTR("Proxied");
        thing->AddProxyDispatch(&proxy, 100, stage, nullptr);
        std::vector<LPOLESTR> names(100, proxy.name.data());
        failEach([&](const Allocations& allocations) {
            DISPID id = 99;
            const HRESULT hr = thing->GetIDsOfNames(IID_NULL, names.data(), 100, 0, &id);
            EXPECT_HR(allocations.hasFailed() ? E_FAIL : S_OK, hr);
            EXPECT_EQ(allocations.hasFailed() ? 99 : 101, id);
        });
        thing->RemoveProxyDispatch(&proxy);
    }
}

TEST_F(ProxyAllocationTest, GetIdsOfNamesOfTooManyNamesCallsNoProxy) {
    thing->AddProxyDispatch(&proxy, 100, 1, nullptr);
    LPOLESTR name = proxy.name.data();
    DISPID id = 99;
    const Allocations allocations(Allocations::kOfEverything, 1);
    EXPECT_HR(E_FAIL, thing->GetIDsOfNames(IID_NULL, &name, 0xFFFFFFFF, 0, &id));
    EXPECT_TRUE(allocations.hasFailed());
    EXPECT_EQ(0, proxy.lookUps);
    EXPECT_EQ(99, id);
    thing->RemoveProxyDispatch(&proxy);
}

TEST_F(ProxyAllocationTest, GetIdsOfNamesOf16NamesAllocatesNothing) {
    thing->AddProxyDispatch(&proxy, 100, 1, nullptr);
    DISPID id = 0;
    std::vector<LPOLESTR> names(16, proxy.name.data());
    const Allocations allocations(Allocations::kOfEverything, 1);
    EXPECT_HR(S_OK, thing->GetIDsOfNames(IID_NULL, names.data(), 16, 0, &id));
    EXPECT_EQ(0u, allocations.made());
    EXPECT_EQ(101, id);
    thing->RemoveProxyDispatch(&proxy);
}

TEST_F(ProxyAllocationTest, CloneOutOfMemoryForATextFails) {
    BSTR text = SysAllocString(OLESTR("text"));
    VARIANT argument = {};
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    DISPPARAMS params = {};
    params.rgvarg = &argument;
    params.cArgs = 1;
    failEach([&](const Allocations& allocations) {
        DISPPARAMS clone = {};
        EXPECT_EQ(allocations.hasFailed() ? 0 : 1, thing->CloneDispParams(1, &params, &clone));
        EXPECT_EQ(allocations.hasFailed(), clone.rgvarg == nullptr);
        thing->FreeDispParams(&clone);
    });
    SysFreeString(text);
}

TEST_F(ProxyAllocationTest, CloneOutOfMemoryForTheArrayPrintsAMessage) {
    VARIANT argument = {};
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    DISPPARAMS clone = {};
    Allocations allocations(Allocations::kOfEverything, 1);
    EXPECT_EQ(0, thing->CloneDispParams(1, &params, &clone));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(nullptr, clone.rgvarg);
    EXPECT_EQ(
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::CloneDispParams] params->rgvarg == NULL.\n",
        quiet.stop().out);
}

TEST_F(ProxyAllocationTest, InvokeOutOfMemoryForATextDoesNotCallTheMember) {
    BSTR text = SysAllocString(OLESTR("text"));
    VARIANT argument = {};
    argument.vt = VT_BSTR;
    argument.bstrVal = text;
    DISPPARAMS params = {&argument, nullptr, 1, 0};
    Allocations allocations(Allocations::kOfEverything, 2);
    EXPECT_HR(E_FAIL, thing->Invoke(1, IID_NULL, 0, 1, &params, nullptr, nullptr, nullptr));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(0, thing->calls);
    EXPECT_EQ(
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::CloneDispParams] call in...\n"
        "[ZComponentImpl::Invoke] call CloneDispParams error...\n",
        quiet.stop().out);
    SysFreeString(text);
}

}  // namespace
}  // namespace zr::test
