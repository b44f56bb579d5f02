// ZComponentImpl: the chain of proxies.
#include <cstring>
#include <string>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

class ComponentImplProxyTest : public ThingTest {
protected:
    ConsoleCapture console;
    Proxy proxy;
};

TEST_F(ComponentImplProxyTest, ProxyOfStageOneShadowsTheOwnMember) {
    EXPECT_EQ(1, thing->AddProxyDispatch(&proxy, 1000, 1, "front"));
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1001, id);
    VARIANT result;
    EXPECT_HR(S_OK, invoke(1001, {}, &result));
    EXPECT_EQ(1, proxy.lastId);
    EXPECT_EQ(0, thing->calls);
    thing->ClearPDI();
    EXPECT_EQ(0u, proxy.references);
}

TEST_F(ComponentImplProxyTest, ProxyOfStageZeroIsAskedAfterTheOwnTable) {
    thing->AddProxyDispatch(&proxy, 1000, 0, nullptr);
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1, id);
    EXPECT_EQ(0, proxy.lookUps);
    proxy.name = OLESTR("Other");
    EXPECT_HR(S_OK, find(OLESTR("Other"), &id));
    EXPECT_EQ(1001, id);
    EXPECT_HR(7, invoke(1, {}));
    EXPECT_EQ(0, proxy.lastId);
    EXPECT_HR(S_OK, invoke(1001, {}));
    EXPECT_EQ(1, proxy.lastId);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, ProxyOfAnotherStageIsNeverAsked) {
    thing->AddProxyDispatch(&proxy, 0, 2, nullptr);
    DISPID id = 0;
    proxy.name = OLESTR("Other");
    EXPECT_HR(E_FAIL, find(OLESTR("Other"), &id));
    EXPECT_HR(E_FAIL, invoke(77, {}));
    EXPECT_EQ(0, proxy.lookUps);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, GetIDsOfNamesWithAnEmptyNameAsksTheProxies) {
    thing->AddProxyDispatch(&proxy, 10, 0, nullptr);
    proxy.name = OLESTR("");
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR(""), &id));
    EXPECT_EQ(11, id);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, GetIDsOfNamesWithSeveralNamesWritesOneId) {
    thing->AddProxyDispatch(&proxy, 10, 1, nullptr);
    DISPID ids[2] = {0, 99};
    EXPECT_HR(S_OK, find(OLESTR("Keep"), ids, 1000));
    EXPECT_EQ(11, ids[0]);
    EXPECT_EQ(99, ids[1]);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, FailingProxyIsSkipped) {
    Proxy second;
    thing->AddProxyDispatch(&proxy, 10, 1, nullptr);
    thing->AddProxyDispatch(&second, 20, 1, nullptr);
    proxy.lookUpResult = E_FAIL;
    proxy.callResult = E_FAIL;
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(21, id);
    EXPECT_HR(S_OK, invoke(21, {}));
    EXPECT_EQ(11, proxy.lastId);
    EXPECT_EQ(1, second.lastId);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, IdFromAFailingProxyIsNotUsedForTheNext) {
    Proxy silent;
    proxy.name = silent.name = OLESTR("Other");
    proxy.lookUpResult = E_FAIL;
    silent.mostIds = 0;
    thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
    thing->AddProxyDispatch(&silent, 0, 1, nullptr);
    DISPID id = 9;
    EXPECT_HR(E_FAIL, find(OLESTR("Other"), &id));
    EXPECT_EQ(1, silent.lookUps);
    EXPECT_EQ(9, id);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, AddProxyTwiceAddsItOnce) {
    EXPECT_EQ(0, thing->AddProxyDispatch(nullptr, 0, 1, nullptr));
    EXPECT_EQ(1, thing->AddProxyDispatch(&proxy, 0, 1, nullptr));
    EXPECT_EQ(0, thing->AddProxyDispatch(&proxy, 5, 0, nullptr));
    EXPECT_EQ(1u, proxy.references);
    EXPECT_EQ(1, thing->RemoveProxyDispatch(&proxy));
    EXPECT_EQ(0u, proxy.references);
    EXPECT_EQ(0, thing->RemoveProxyDispatch(&proxy));
    EXPECT_EQ(0, thing->RemoveProxyDispatch(nullptr));
}

TEST_F(ComponentImplProxyTest, AddProxyWithALabelOf20CharactersDropsTheLabel) {
    thing->AddProxyDispatch(&proxy, 7, 1, "1234567890123456789");
    EXPECT_STREQ("1234567890123456789", thing->FindPDI(&proxy)->szName);
    EXPECT_EQ(7, thing->FindPDI(&proxy)->nIdOffset);
    EXPECT_EQ(1, thing->FindPDI(&proxy)->nStage);
    thing->RemoveProxyDispatch(&proxy);
    thing->AddProxyDispatch(&proxy, 0, 1, "12345678901234567890");
    EXPECT_STREQ("", thing->FindPDI(&proxy)->szName);
    thing->ClearPDI();
    EXPECT_EQ(nullptr, thing->FindPDI(&proxy));
}

TEST_F(ComponentImplProxyTest, RemoveProxyKeepsTheOthersInOrder) {
    Proxy proxies[3];
    for (const int removed : {0, 1, 2}) {
        for (Proxy& each : proxies) {
            thing->AddProxyDispatch(&each, 0, 1, nullptr);
        }
        thing->RemoveProxyDispatch(&proxies[removed]);
        thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
        const int first = removed == 0 ? 1 : 0;
        const int second = removed == 2 ? 1 : 2;
        // Copies: the fields of a node are packed.
        const ProxyDispatchInfo* next = thing->FindPDI(&proxies[first])->pNext;
        EXPECT_EQ(thing->FindPDI(&proxies[second]), next);
        next = next->pNext;
        EXPECT_EQ(thing->FindPDI(&proxy), next);
        next = next->pNext;
        EXPECT_EQ(nullptr, next);
        thing->ClearPDI();
    }
}

TEST_F(ComponentImplProxyTest, DestructorReleasesTheProxies) {
    auto* object = new Thing();
    object->AddRef();
    object->AddProxyDispatch(&proxy, 0, 1, nullptr);
    object->Release();
    EXPECT_EQ(0u, proxy.references);
}

TEST_F(ComponentImplProxyTest, CallsOfAProxyPrintTheirLines) {
    thing->AddProxyDispatch(&proxy, 1000, 1, nullptr);
    thing->PrintPDI();
    DISPID id = 0;
    find(OLESTR("Keep"), &id);
    invoke(1001, {});
    EXPECT_EQ(
        "-------------PrintPDI End----------------\n"
        "[ZComponentImpl::GetIDsOfNames] call in...\n"
        "[ZComponentImpl::GetIDsOfNames] lpszName = [Keep] ...\n"
        "[ZComponentImpl::GetIDsOfNames] pre proxy...\n"
        "[ZComponentImpl::GetIDsOfNames] *rgdispid = [1001] ...\n"
        "[ZComponentImpl::Invoke] call in...\n"
        "[ZComponentImpl::Invoke] call CallProxyDispatch error...\n",
        console.stop().out);
    thing->ClearPDI();
}

TEST_F(ComponentImplProxyTest, GetIDsOfNamesByAProxyThatRemovesItselfReturnsItsId) {
    thing->AddProxyDispatch(&proxy, 1000, 1, nullptr);
    proxy.onAsked = [&] { thing->RemoveProxyDispatch(&proxy); };
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1001, id);
    EXPECT_EQ(nullptr, thing->FindPDI(&proxy));
}

TEST_F(ComponentImplProxyTest, GetIDsOfNamesHoldsAReferenceToTheProxyItAsks) {
    thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
    ASSERT_EQ(1u, proxy.references);
    ULONG whenAsked = 0;
    proxy.onAsked = [&] {
        thing->RemoveProxyDispatch(&proxy);
        whenAsked = proxy.references;
    };
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1u, whenAsked);
    EXPECT_EQ(0u, proxy.references);
}

TEST_F(ComponentImplProxyTest, ClearReleasesAProxyThatIsAddedDuringIt) {
    Proxy next;
    next.name = OLESTR("Next");
    thing->AddProxyDispatch(&proxy, 0, 1, nullptr);
    proxy.onReleased = [&] { EXPECT_EQ(1, thing->AddProxyDispatch(&next, 0, 1, nullptr)); };
    thing->ClearPDI();
    EXPECT_EQ(nullptr, thing->FindPDI(&next));
    EXPECT_EQ(0u, next.references);
}

TEST_F(ComponentImplProxyTest, AddRefAndReleaseDuringDestructionDestroyNothingTwice) {
    auto* object = new Thing();
    object->AddRef();
    object->AddProxyDispatch(&proxy, 0, 1, nullptr);
    proxy.onReleased = [&] {
        EXPECT_EQ((1u << 30) + 1, object->ZComponentImpl::AddRef());
        EXPECT_EQ(1u << 30, object->ZComponentImpl::Release());
    };
    const int destroyed = Thing::s_destroyed;
    EXPECT_EQ(0u, object->Release());
    EXPECT_EQ(destroyed + 1, Thing::s_destroyed);
}

}  // namespace
}  // namespace zr::test
