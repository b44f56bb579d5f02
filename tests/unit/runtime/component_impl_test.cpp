// ZComponentImpl: reference counts, interfaces, look-up by name, calls and probes.
#include <cstring>
#include <limits>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

class ComponentImplTest : public ThingTest {
protected:
    ConsoleCapture console;
};

TEST(BareComponentTest, QueryInterfaceWithoutAnErrorInterfaceIsNotImplemented) {
    auto* bare = new ZComponentImpl;
    EXPECT_EQ(1u, bare->AddRef());
    void* face = &face;
    EXPECT_HR(E_NOTIMPL, bare->QueryInterface(IID_ISupportErrorInfo, &face));
    EXPECT_EQ(&face, face);
    EXPECT_EQ(0u, bare->Release());
}

TEST_F(ComponentImplTest, LastReleaseCallsFinalReleaseAndDestroysTheObject) {
    auto* object = new Thing();
    Thing::s_destroyed = Thing::s_finalReleases = 0;
    EXPECT_EQ(1u, object->AddRef());
    EXPECT_EQ(2u, object->AddRef());
    EXPECT_EQ(1u, object->Release());
    EXPECT_EQ(0, Thing::s_finalReleases);
    EXPECT_EQ(0u, object->Release());
    EXPECT_EQ(1, Thing::s_finalReleases);
    EXPECT_EQ(1, Thing::s_destroyed);
}

TEST_F(ComponentImplTest, QueryInterfaceReturnsTheErrorInterfaceOnly) {
    void* face = this;
    EXPECT_HR(E_INVALIDARG, thing->QueryInterface(IID_ISupportErrorInfo, nullptr));
    for (const IID& iid : {IID_IUnknown, IID_IDispatch, IID_NULL}) {
        EXPECT_HR(E_NOTIMPL, thing->QueryInterface(iid, &face));
        EXPECT_EQ(this, face);
    }
    EXPECT_HR(S_OK, thing->QueryInterface(IID_ISupportErrorInfo, &face));
    EXPECT_EQ(static_cast<ISupportErrorInfo*>(thing), face);
    EXPECT_EQ(1u, static_cast<ISupportErrorInfo*>(face)->Release());
}

TEST_F(ComponentImplTest, TypeInformationIsNotImplementedAndWritesNothing) {
    UINT count = 5;
    ITypeInfo* info = reinterpret_cast<ITypeInfo*>(this);
    EXPECT_HR(E_NOTIMPL, thing->GetTypeInfoCount(&count));
    EXPECT_HR(E_NOTIMPL, thing->GetTypeInfo(0, 0, &info));
    EXPECT_EQ(5u, count);
    EXPECT_EQ(reinterpret_cast<ITypeInfo*>(this), info);
    EXPECT_HR(S_OK, thing->InterfaceSupportsErrorInfo(IID_NULL));
}

TEST_F(ComponentImplTest, GetIDsOfNamesMatchesNamesExactly) {
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Value"), &id));
    EXPECT_EQ(3, id);
    id = 99;
    for (const OLECHAR* name : {OLESTR("value"), OLESTR("Valu"), OLESTR("Values"), OLESTR("")}) {
        EXPECT_HR(E_FAIL, find(name, &id));
    }
    EXPECT_EQ(99, id);
}

TEST_F(ComponentImplTest, GetIDsOfNamesWithInvalidNamesFails) {
    DISPID id = 99;
    OLECHAR* none = nullptr;
    EXPECT_HR(E_FAIL, thing->GetIDsOfNames(IID_NULL, &none, 1, 0, &id));
    for (const std::size_t length : {1023, 1024, 100000}) {
        EXPECT_HR(E_FAIL, find(std::basic_string<OLECHAR>(length, 'x').c_str(), &id));
    }
    const OLECHAR lone[] = {0xD800, 0};
    EXPECT_HR(E_FAIL, find(lone, &id));
    EXPECT_EQ(99, id);
}

TEST_F(ComponentImplTest, GetIDsOfNamesPrintsNamesOfUpTo1023Bytes) {
    DISPID id = 0;
    find(std::basic_string<OLECHAR>(1023, 'x').c_str(), &id);
    find(std::basic_string<OLECHAR>(1024, 'x').c_str(), &id);
    const std::string text = console.stop().out;
    EXPECT_NE(text.npos, text.find("lpszName = [" + std::string(1023, 'x') + "] ...\n"));
    EXPECT_NE(text.npos, text.find("lpszName = [] ...\n"));
}

TEST_F(ComponentImplTest, GetIDsOfNamesOfATooLongNameThatBeginsLikeAMemberFails) {
    // The name before it must not count either.
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_HR(E_FAIL, find((OLESTR("Keep") + std::basic_string<OLECHAR>(2000, 'x')).c_str(), &id));
    EXPECT_EQ(1, id);
}

TEST_F(ComponentImplTest, GetIDsOfNamesWithoutNamesPrintsItsFirstLineOnly) {
    DISPID id = 99;
    EXPECT_HR(E_INVALIDARG, thing->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_EQ(99, id);
    EXPECT_EQ("[ZComponentImpl::GetIDsOfNames] call in...\n", console.stop().out);
}

TEST_F(ComponentImplTest, GetIDsOfNamesOfAMemberWithoutAnOutPointerReturnsInvalidArgument) {
    EXPECT_HR(E_INVALIDARG, find(OLESTR("Keep"), nullptr));
    EXPECT_EQ(
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [Keep] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] self...\n",
        console.stop().out);
}

TEST_F(ComponentImplTest, GetIDsOfNamesOfAnUnknownNameWithoutAnOutPointerFails) {
    EXPECT_HR(E_FAIL, find(OLESTR("Other"), nullptr));
    EXPECT_EQ(
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [Other] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] self...\n"
        "[ZComponentImpl::GetIDsOfNames] Last Proxy...\n",
        console.stop().out);
}

TEST_F(ComponentImplTest, GetIDsOfNamesPrintsTheNameAsUtf8) {
    DISPID id = 0;
    find(OLESTR("na\u20acme"), &id);
    const std::string text = console.stop().out;
    EXPECT_NE(text.npos, text.find("lpszName = [na\xe2\x82\xacme] ...\n")) << text;
}

TEST_F(ComponentImplTest, InvokeReturnsTheResultOfTheAdapter) {
    VARIANT result;
    EXPECT_HR(7, invoke(1, {}, &result));
    EXPECT_EQ(1, thing->calls);
    EXPECT_EQ(42, result.lVal);
}

TEST_F(ComponentImplTest, InvokeWithAnyFlagsCallsTheAdapter) {
    DISPPARAMS params = {};
    VARIANT result;
    for (const WORD flags : {WORD{0}, WORD{DISPATCH_PROPERTYGET}, WORD{DISPATCH_PROPERTYPUT}}) {
        EXPECT_HR(7, thing->Invoke(1, IID_NULL, 0, flags, &params, &result, nullptr, nullptr));
    }
    EXPECT_EQ(3, thing->calls);
}

TEST_F(ComponentImplTest, InvokeOfAMemberWithoutAnAdapterFails) {
    VARIANT result;
    EXPECT_HR(E_FAIL, invoke(2, {}, &result));
    EXPECT_EQ(VT_EMPTY, result.vt);
}

TEST_F(ComponentImplTest, InvokeWithIdsOutsideTheTableFails) {
    VARIANT result;
    for (const DISPID id : {std::numeric_limits<DISPID>::min(), DISPID{-1}, DISPID{0}}) {
        EXPECT_HR(E_INVALIDARG, invoke(id, {}, &result));
    }
    for (const DISPID id : {DISPID{5}, std::numeric_limits<DISPID>::max()}) {
        EXPECT_HR(E_FAIL, invoke(id, {number(1)}, &result));
    }
    EXPECT_EQ(0, thing->calls);
}

TEST_F(ComponentImplTest, ProbeSucceedsForTheKindOfTheMemberAndCallsNothing) {
    const auto probe = [this](DISPID id, WORD flags) {
        return thing->Invoke(id, IID_NULL, 0, flags, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_HR(S_OK, probe(1, DISPATCH_METHOD));
    EXPECT_HR(E_FAIL, probe(1, DISPATCH_PROPERTYGET));
    EXPECT_HR(S_OK, probe(3, DISPATCH_PROPERTYGET));
    EXPECT_HR(S_OK, probe(3, DISPATCH_PROPERTYPUT));
    EXPECT_HR(E_FAIL, probe(3, DISPATCH_METHOD));
    EXPECT_HR(E_FAIL, probe(3, 3));
    EXPECT_HR(E_FAIL, probe(9, DISPATCH_METHOD));
    EXPECT_EQ(0, thing->calls);
}

TEST_F(ComponentImplTest, ProbeWithAnyOtherFlagsFailsForMethodsAndProperties) {
    for (const DISPID id : {1, 3}) {
        for (WORD flags = 0; flags < 32; ++flags) {
            if (flags == DISPATCH_METHOD || flags == DISPATCH_PROPERTYGET ||
                flags == DISPATCH_PROPERTYPUT) {
                continue;
            }
            ConsoleCapture probe;
            EXPECT_HR(E_FAIL,
                      thing->Invoke(id, IID_NULL, 0, flags, nullptr, nullptr, nullptr, nullptr))
                << id << " with flags " << flags;
            EXPECT_TRUE(probe.stop().out.ends_with("[ZComponentImpl::Invoke] match id error...\n"))
                << id << " with flags " << flags;
        }
    }
}

TEST_F(ComponentImplTest, ProbePrintsALineForEachRow) {
    const UINT unused = 0;
    UINT argErr = unused;
    thing->Invoke(2, IID_NULL, 0, DISPATCH_PROPERTYGET, nullptr, nullptr, nullptr, &argErr);
    thing->Invoke(3, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr, nullptr);
    thing->Invoke(1, IID_NULL, 0, 8, nullptr, nullptr, nullptr, nullptr);
    const std::string rule =
        "+++++++++++++++++++// NPAPI. HasProperty & HasMethod support++++++++++++++++++++\n";
    EXPECT_EQ("[ZComponentImpl::Invoke] call in...\n" + rule +
                  "#########pDispList[i].id = [1] VS pdispparams = [2]\n"
                  "#########pDispList[i].id = [2] VS pdispparams = [2]\n"
                  "[ZComponentImpl::Invoke] match [2]...\n"
                  "[ZComponentImpl::Invoke] not enDispatchProperty...\n"
                  "[ZComponentImpl::Invoke] call in...\n" +
                  rule +
                  "#########pDispList[i].id = [1] VS pdispparams = [3]\n"
                  "#########pDispList[i].id = [2] VS pdispparams = [3]\n"
                  "#########pDispList[i].id = [3] VS pdispparams = [3]\n"
                  "[ZComponentImpl::Invoke] match [3]...\n"
                  "[ZComponentImpl::Invoke] not enDispatchMethod...\n"
                  "[ZComponentImpl::Invoke] call in...\n" +
                  rule +
                  "#########pDispList[i].id = [1] VS pdispparams = [1]\n"
                  "[ZComponentImpl::Invoke] match [1]...\n"
                  "[ZComponentImpl::Invoke] match id error...\n",
              console.stop().out);
}

TEST_F(ComponentImplTest, GetDispatchInfoFindsRowsByNameAndById) {
    EXPECT_EQ(&Thing::s_rows[1], ZComponentImpl::GetDispatchInfo(thing, "Listed"));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfo(thing, "listed"));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfo(thing, ""));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfo(thing, nullptr));
    EXPECT_EQ(&Thing::s_rows[3], ZComponentImpl::GetDispatchInfoById(thing, 4));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfoById(thing, 0));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfoById(thing, -1));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfoById(thing, 5));
    ZComponentImpl bare;
    EXPECT_EQ(0, bare.GetSelfGetDispatchInfoCount());
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfo(&bare, "Keep"));
    EXPECT_EQ(nullptr, ZComponentImpl::GetDispatchInfoById(&bare, 1));
}

TEST_F(ComponentImplTest, GetDipatchInfoWithoutAnyArgumentReturnsNull) {
    UINT argErr = 0;
    EXPECT_EQ(nullptr, thing->GetDipatchInfo(1, 1, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(&Thing::s_rows[0], thing->GetDipatchInfo(1, 1, nullptr, nullptr, nullptr, &argErr));
    EXPECT_EQ(nullptr, thing->GetDipatchInfo(5, 1, nullptr, nullptr, nullptr, &argErr));
}

TEST_F(ComponentImplTest, InvokeWithAnyResultWritesNeitherExceptionRecordNorArgumentIndex) {
    EXCEPINFO poison;
    std::memset(&poison, 0x5A, sizeof poison);
    const struct {
        DISPID id;
        HRESULT result;
        bool hasParams;
    } calls[] = {
        {0, E_INVALIDARG, true},  // no id
        {1, E_FAIL, false},       // nothing to copy
        {2, E_FAIL, true},        // no adapter
        {4, 7, true},             // a call that succeeds
        {5, E_FAIL, true},        // no member
    };
    for (const auto& call : calls) {
        EXCEPINFO excep = poison;
        UINT argErr = 0x5A5A5A5A;
        DISPPARAMS params = {};
        VARIANT result;
        EXPECT_HR(call.result,
                  thing->Invoke(call.id, IID_NULL, 0, DISPATCH_METHOD,
                                call.hasParams ? &params : nullptr, &result, &excep, &argErr));
        EXPECT_EQ(0, std::memcmp(&poison, &excep, sizeof poison)) << call.id;
        EXPECT_EQ(0x5A5A5A5Au, argErr) << call.id;
    }
}

/// Two rows of one name, and two of one id.
class TwinRows : public Thing {
public:
    TwinRows() {
        rows[0] = s_rows[0];
        rows[1] = {2, "Keep", enDispatchProperty, nullptr, VT_I4, {}};
        rows[2] = {1, "Again", enDispatchProperty, nullptr, VT_I4, {}};
    }
    DispatchInfo* GetSelfDispatchInfo() override { return rows; }
    int GetSelfGetDispatchInfoCount() override { return 3; }

    DispatchInfo rows[4] = {};
};

class TwinRowsTest : public testing::Test {
protected:
    TwinRowsTest() { twins->AddRef(); }
    ~TwinRowsTest() override { twins->Release(); }

    ConsoleCapture console;
    TwinRows* twins = new TwinRows;
};

TEST_F(TwinRowsTest, LookUpFindsTheFirstOfTwoRowsOfOneName) {
    LPOLESTR name = const_cast<LPOLESTR>(OLESTR("Keep"));
    DISPID id = 0;
    EXPECT_HR(S_OK, twins->GetIDsOfNames(IID_NULL, &name, 1, 0, &id));
    EXPECT_EQ(1, id);
    EXPECT_EQ(&twins->rows[0], ZComponentImpl::GetDispatchInfo(twins, "Keep"));
}

TEST_F(TwinRowsTest, InvokeCallsTheFirstOfTwoRowsOfOneId) {
    DISPPARAMS params = {};
    VARIANT result;
    EXPECT_HR(7, twins->Invoke(1, IID_NULL, 0, 1, &params, &result, nullptr, nullptr));
    EXPECT_EQ(1, twins->calls);
    EXPECT_EQ(&twins->rows[0], ZComponentImpl::GetDispatchInfoById(twins, 1));
    EXPECT_EQ(&twins->rows[0], twins->GetDipatchInfo(1, 1, &params, nullptr, nullptr, nullptr));
}

TEST_F(TwinRowsTest, ProbeDecidesByTheFirstOfTwoRowsOfOneId) {
    const auto probe = [this](WORD flags) {
        return twins->Invoke(1, IID_NULL, 0, flags, nullptr, nullptr, nullptr, nullptr);
    };
    EXPECT_HR(S_OK, probe(DISPATCH_METHOD));
    EXPECT_HR(E_FAIL, probe(DISPATCH_PROPERTYGET));
}

}  // namespace
}  // namespace zr::test
