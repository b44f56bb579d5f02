// ZComponentImpl: the walk over proxies that change the chain while they are asked.
#include <iterator>
#include <string>

#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"
#include "tests/unit/runtime/proxy.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

/// Four proxies of stage 1 that fail every call and know no member of the object. Tests make them
/// change the chain while they are asked.
class ComponentImplProxyWalkTest : public ThingTest {
protected:
    ComponentImplProxyWalkTest() {
        for (Proxy& each : proxies) {
            each.name = OLESTR("Other");
            each.callResult = E_FAIL;
            add(each);
        }
    }
    ~ComponentImplProxyWalkTest() override {
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

    ConsoleCapture console;
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

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesItselfAsksTheNext) {
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

TEST_F(ComponentImplProxyWalkTest, GetIDsOfNamesWithAProxyThatRemovesItselfAsksTheNext) {
    proxies[0].onAsked = [&] { remove(proxies[0]); };
    proxies[3].name = OLESTR("Keep");
    EXPECT_EQ("0123", askedByLookUp());
}

TEST_F(ComponentImplProxyWalkTest,
       GetIDsOfNamesWithAProxyThatRemovesItselfReturnsTheIdOfALaterProxy) {
    proxies[0].onAsked = [&] { remove(proxies[0]); };
    proxies[3].name = OLESTR("Keep");
    DISPID id = 0;
    EXPECT_HR(S_OK, find(OLESTR("Keep"), &id));
    EXPECT_EQ(1001, id);
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithProxiesThatAllRemoveThemselvesAsksEach) {
    for (Proxy& each : proxies) {
        each.onAsked = [this, &each] { remove(each); };
    }
    EXPECT_EQ("0123", askedByCall());
    EXPECT_EQ("", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesTheNextSkipsIt) {
    proxies[0].onAsked = [&] { remove(proxies[1]); };
    EXPECT_EQ("023", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesTheLastSkipsIt) {
    proxies[0].onAsked = [&] { remove(proxies[3]); };
    EXPECT_EQ("012", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesItselfAndTheNextAsksTheRest) {
    proxies[1].onAsked = [&] {
        remove(proxies[1]);
        remove(proxies[2]);
    };
    EXPECT_EQ("013", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesEarlierOnesAsksTheRestOnce) {
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

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatClearsTheChainEnds) {
    proxies[1].onAsked = [&] { thing->ClearPDI(); };
    EXPECT_EQ("01", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatAddsAnotherAsksIt) {
    remove(proxies[3]);
    proxies[2].onAsked = [&] { add(proxies[3]); };
    EXPECT_EQ("0123", askedByCall());
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesAndAddsItselfAsksItOnce) {
    proxies[0].onAsked = [&] {
        remove(proxies[0]);
        add(proxies[0]);
    };
    EXPECT_EQ("0123", askedByCall());
    EXPECT_NE(nullptr, thing->FindPDI(&proxies[0]));
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithProxiesThatRemoveAndAddEachOtherEnds) {
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

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatClearsAndRefillsTheChainEnds) {
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

TEST_F(ComponentImplProxyWalkTest, InvokeInsideAnInvokeThatRemovesProxiesFinishesBoth) {
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

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyThatRemovesItselfReleasesItAfterwards) {
    ULONG whenAsked = 0;
    proxies[0].onAsked = [&] {
        remove(proxies[0]);
        whenAsked = proxies[0].references;
    };
    EXPECT_EQ("0123", askedByCall());
    EXPECT_EQ(1u, whenAsked);
    EXPECT_EQ(0u, proxies[0].references);
}

TEST_F(ComponentImplProxyWalkTest, InvokeWithAProxyRemovedByItsReleaseAsksTheNext) {
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
