// PINs that a command holds are kept off the disk. On Linux only, where a process sees how many of
// its pages are locked and whether it may dump core.
#include <sys/prctl.h>

#include <array>
#include <cstdint>
#include <fstream>
#include <memory>
#include <optional>
#include <string>

#include "host/system/system.h"
#include "host/token/pin.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using host::Pin;
using host::PinText;

/// In KiB.
long lockedMemory() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("VmLck:")) {
            return std::stol(line.substr(6));
        }
    }
    return -1;
}

bool mayDumpCore() {
    return prctl(PR_GET_DUMPABLE) == 1;
}

Pin makePin() {
    Pin pin;
    for (const char byte : {'1', '2', '3', '4'}) {
        pin.append(byte);
    }
    return pin;
}

class PinMemoryTest : public CommandTest {
protected:
    PinMemoryTest() : m_lockedBefore(lockedMemory()) {
        EXPECT_TRUE(mayDumpCore());
        EXPECT_GE(m_lockedBefore, 0);
    }
    void expectProtected() const {
        EXPECT_GT(lockedMemory(), m_lockedBefore);
        EXPECT_FALSE(mayDumpCore());
    }
    void expectRestored() const {
        EXPECT_EQ(m_lockedBefore, lockedMemory());
        EXPECT_TRUE(mayDumpCore());
    }
    /// Looks at the memory while the module is in a call.
    void lookDuring(const char* function) {
        module->callBack(
            function,
            [](void* argument) {
                static_cast<PinMemoryTest*>(argument)->expectProtected();
                static_cast<PinMemoryTest*>(argument)->m_looks++;
            },
            this);
    }

    int m_looks = 0;

private:
    long m_lockedBefore;
};

TEST_F(PinMemoryTest, PinIsProtectedAsLongAsItLives) {
    auto first = std::make_unique<Pin>(makePin());
    expectProtected();
    {
        const PinText text(*first);
        const Pin second = std::move(*first);
        first.reset();
        expectProtected();
        EXPECT_EQ("1234", second.view());
    }
    expectRestored();
}

TEST_F(PinMemoryTest, TextOfAPinIsProtectedAsLongAsItLives) {
    std::optional<Pin> pin(makePin());
    const auto text = std::make_unique<PinText>(*pin);
    pin.reset();
    expectProtected();
}

TEST_F(PinMemoryTest, PageOfTwoPinsStaysLockedUntilTheLastOne) {
    struct Pair {
        std::optional<Pin> one = makePin();
        std::optional<Pin> other = makePin();
    };
    auto pair = std::make_unique<Pair>();
    pair->one.reset();
    expectProtected();
    pair->other.reset();
    expectRestored();
}

// The limit of scripts is calculated from it.
TEST_F(PinMemoryTest, PinOnTheStackDoesNotChangeWhereTheStackEnds) {
    const std::uintptr_t before = host::lowestStackAddress();
    std::array<Pin, 100> pins;
    pins[50].append('1');
    EXPECT_EQ(before, host::lowestStackAddress());
}

TEST_F(PinMemoryTest, CommandProtectsThePinUntilTheModuleIsUnloaded) {
    for (const char* function : {"C_Login", "C_Finalize"}) {
        lookDuring(function);
        expectOutput(withPin({"login"}), "logged in to \"Label\" as user\n");
        expectRestored();
    }
    EXPECT_EQ(2, m_looks);
}

TEST_F(PinMemoryTest, CommandWithoutAPinMayDumpCore) {
    module->callBack(
        "C_Finalize", [](void*) { EXPECT_TRUE(mayDumpCore()); }, nullptr);
    EXPECT_EQ(0, zrkey({"list"}).exitCode);
}

TEST_F(PinMemoryTest, ScriptMayNotDumpCoreAfterItGotAPin) {
    module->callBack(
        "C_Finalize",
        [](void* argument) {
            EXPECT_FALSE(mayDumpCore());
            ++*static_cast<int*>(argument);
        },
        &m_looks);
    const std::string script = "var provider = new TokenProvider(); provider.Load('" +
                               module.path() + "'); print(readPin())";
    EXPECT_EQ("1234\n", zrkey(withPin({"run", "-e", script})).output);
    EXPECT_EQ(1, m_looks);
    expectRestored();
}

}  // namespace
}  // namespace zr::test
