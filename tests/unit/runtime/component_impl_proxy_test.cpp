// ZComponentImpl: the chain of proxies.
#include <cstring>
#include <iterator>
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

/// Four proxies of stage 1 that fail every call and know no member of the object. Tests make them
/// change the chain while they are asked.
class ProxyWalkTest : public ComponentImplProxyTest {
protected:
    ProxyWalkTest() {
        for (Proxy& each : proxies) {
            each.name = OLESTR("Other");
            each.callResult = E_FAIL;
            add(each);
        }
    }
    ~ProxyWalkTest() override {
        for (Proxy& each : proxies) {
            each.onAsked = nullptr;
        }
        thing->ClearPDI();
        for (const Proxy& each : proxies) {
            EXPECT_EQ(0u, each.references);
        }
    }

    void add(Proxy& each) { thing->AddProxyDispatch(&each, 1000, 1, nullptr); }
    void remove(Proxy& each) { thing->RemoveProxyDispatch(&each); }

    /// The numbers of the proxies that a call asks, such as "0123".
    std::string askedByCall() {
        return asked([&] { EXPECT_HR(E_FAIL, invoke(1001, {})); }, &Proxy::calls);
    }
    std::string askedByLookUp() {
        DISPID id = 0;
        return asked([&] { EXPECT_HR(S_OK, find(OLESTR("Keep"), &id)); }, &Proxy::lookUps);
    }

    Proxy proxies[4];

private:
    template <class Walk>
    std::string asked(Walk walk, int Proxy::*counter) {
        for (Proxy& each : proxies) {
            each.*counter = 0;
        }
        walk();
        std::string numbers;
        for (std::size_t i = 0; i < std::size(proxies); ++i) {
            numbers.append(static_cast<std::size_t>(proxies[i].*counter), "0123"[i]);
        }
        return numbers;
    }
};

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesItselfAsksTheNext) {
    for (std::size_t i = 0; i < std::size(proxies); ++i) {
        proxies[i].onAsked = [this, i] { remove(proxies[i]); };
        EXPECT_EQ("0123", askedByCall()) << i;
        EXPECT_EQ(nullptr, thing->FindPDI(&proxies[i]));
        thing->ClearPDI();
        proxies[i].onAsked = nullptr;
        for (Proxy& each : proxies) {
            add(each);
        }
    }
}

TEST_F(ProxyWalkTest, GetIDsOfNamesWithAProxyThatRemovesItselfAsksTheNext) {
    proxies[0].onAsked = [&] { remove(proxies[0]); };
    proxies[3].name = OLESTR("Keep");
    EXPECT_EQ("0123", askedByLookUp());
}

TEST_F(ProxyWalkTest, GetIDsOfNamesWithAProxyThatRemovesItselfReturnsTheIdOfALaterProxy) {
    proxies[0].onAsked = [&] { remove(proxies[0]); };
    proxies[3].name = OLESTR("Keep");
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1001, id);
}

TEST_F(ProxyWalkTest, InvokeWithProxiesThatAllRemoveThemselvesAsksEach) {
    for (Proxy& each : proxies) {
        each.onAsked = [this, &each] { remove(each); };
    }
    EXPECT_EQ("0123", askedByCall());
    EXPECT_EQ("", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesTheNextSkipsIt) {
    proxies[0].onAsked = [&] { remove(proxies[1]); };
    EXPECT_EQ("023", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesTheLastSkipsIt) {
    proxies[0].onAsked = [&] { remove(proxies[3]); };
    EXPECT_EQ("012", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesItselfAndTheNextAsksTheRest) {
    proxies[1].onAsked = [&] {
        remove(proxies[1]);
        remove(proxies[2]);
    };
    EXPECT_EQ("013", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesEarlierOnesAsksTheRestOnce) {
    proxies[2].onAsked = [&] {
        remove(proxies[0]);
        remove(proxies[1]);
    };
    EXPECT_EQ("0123", askedByCall());
    proxies[3].onAsked = [&] {
        remove(proxies[2]);
        remove(proxies[3]);
    };
    EXPECT_EQ("23", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatClearsTheChainEnds) {
    proxies[1].onAsked = [&] { thing->ClearPDI(); };
    EXPECT_EQ("01", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatAddsAnotherAsksIt) {
    remove(proxies[3]);
    proxies[2].onAsked = [&] { add(proxies[3]); };
    EXPECT_EQ("0123", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesAndAddsItselfAsksItOnce) {
    proxies[0].onAsked = [&] {
        remove(proxies[0]);
        add(proxies[0]);
    };
    EXPECT_EQ("0123", askedByCall());
    EXPECT_NE(nullptr, thing->FindPDI(&proxies[0]));
}

TEST_F(ProxyWalkTest, InvokeWithProxiesThatRemoveAndAddEachOtherEnds) {
    for (Proxy& each : proxies) {
        each.onAsked = [this, &each] {
            for (Proxy& other : proxies) {
                if (&other != &each) {
                    remove(other);
                    add(other);
                }
            }
        };
    }
    EXPECT_EQ("0", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatClearsAndRefillsTheChainEnds) {
    proxies[0].onAsked = [&] {
        thing->ClearPDI();
        for (Proxy& each : proxies) {
            add(each);
        }
    };
    EXPECT_EQ("0", askedByCall());
    proxies[0].onAsked = nullptr;
    EXPECT_EQ("0123", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeInsideAnInvokeThatRemovesProxiesFinishesBoth) {
    // The second proxy calls the object again; in the inner call it removes itself.
    proxies[1].onAsked = [&] {
        proxies[1].onAsked = [&] {
            remove(proxies[1]);
            remove(proxies[2]);
        };
        EXPECT_HR(E_FAIL, invoke(1001, {}));
    };
    EXPECT_EQ("001133", askedByCall());
}

TEST_F(ProxyWalkTest, InvokeWithAProxyThatRemovesItselfReleasesItAfterwards) {
    ULONG whenAsked = 0;
    proxies[0].onAsked = [&] {
        remove(proxies[0]);
        whenAsked = proxies[0].references;
    };
    EXPECT_EQ("0123", askedByCall());
    EXPECT_EQ(1u, whenAsked);
    EXPECT_EQ(0u, proxies[0].references);
}

TEST_F(ProxyWalkTest, InvokeWithAProxyRemovedByItsReleaseAsksTheNext) {
    // When the walk releases its reference, the proxy removes itself.
    proxies[0].onReleased = [&] {
        proxies[0].onReleased = nullptr;
        remove(proxies[0]);
    };
    EXPECT_EQ("0123", askedByCall());
    EXPECT_EQ(nullptr, thing->FindPDI(&proxies[0]));
}

}  // namespace
}  // namespace zr::test
