// zrkey watch: tokens of the recording module that come and go.
#include <algorithm>
#include <functional>
#include <sstream>

#include "host/system/interruption.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

/// Each step is what happens before the command looks again; the command is interrupted after the
/// last one.
class WatchTest : public CommandTest {
protected:
    using Step = std::function<void()>;

    ~WatchTest() override { host::forgetInterruption(); }

    /// @param function  the call with which the command looks.
    CommandResult watch(const char* function, const std::vector<Step>& steps,
                        std::vector<std::string> options = {}) {
        m_function = function;
        // A look makes two calls: the second has no event, or gets the list. The first look, at what
        // is there, has no event.
        m_steps.assign(m_function == kEvents ? 1 : 2, [] {});
        for (const Step& next : steps) {
            m_steps.push_back(next);
            m_steps.emplace_back([] {});
        }
        arm();
        options.insert(options.begin(), "watch");
        const CommandResult result = zrkey(options);
        EXPECT_TRUE(host::isInterrupted());
        EXPECT_EQ(host::interruptionExitCode(), result.exitCode);
        host::forgetInterruption();
        return result;
    }
    void withoutEvents() {
        module->fail("C_WaitForSlotEvent", 0, 0x54);  // CKR_FUNCTION_NOT_SUPPORTED
    }
    Step setSlots(CK_ULONG count) {
        return [this, count] {
            module->settings().slotCount = count;
            module->settings().slotCountWhenListed = count;
        };
    }
    Step remove() {
        return [this] {
            module->settings().eventSlot = kSlot;
            module->fail("C_GetTokenInfo", 1, CKR_TOKEN_NOT_PRESENT);
        };
    }
    Step exchange(const std::string& label) {
        return [this, label] { setText(module->settings().tokenInfo.label, label); };
    }
    Step event() {
        return [this] { module->settings().eventSlot = kSlot; };
    }

    static constexpr CK_SLOT_ID kSlot = 10;
    static constexpr const char* kEvents = "C_WaitForSlotEvent";
    static constexpr const char* kList = "C_GetSlotList";

private:
    void arm() { module->callBack(m_function, step, this); }
    static void step(void* data) {
        WatchTest& test = *static_cast<WatchTest*>(data);
        if (test.m_steps.empty()) {
            host::noteInterruption(2);
            return;
        }
        const Step next = test.m_steps.front();
        test.m_steps.erase(test.m_steps.begin());
        next();
        test.arm();
    }

    const char* m_function = nullptr;
    std::vector<Step> m_steps;
};

std::string line(const std::string& event, const std::string& label = "Label") {
    return event + "\t10\t" + label + "\tSerial\tMaker\tModel\n";
}

TEST_F(WatchTest, TokensThatAreThereAreShownFirst) {
    EXPECT_EQ(line("present"), watch(kEvents, {}).output);
    withoutEvents();
    EXPECT_EQ(line("present"), watch(kList, {}).output);
    EXPECT_EQ(0u, module.count("C_OpenSession"));
    EXPECT_EQ(2u, module.count("C_Finalize"));
}

TEST_F(WatchTest, EventsShowWhatIsTakenOutAndPutIn) {
    const CommandResult result = watch(kEvents, {remove(), event()});
    EXPECT_EQ(line("present") + line("removed") + line("inserted"), result.output);
    EXPECT_EQ("", result.errors);
}

TEST_F(WatchTest, EventOfAnUnchangedTokenIsARemovalAndAnInsertion) {
    EXPECT_EQ(line("present") + line("removed") + line("inserted"),
              watch(kEvents, {event()}).output);
}

TEST_F(WatchTest, SlotsWithoutAnEventAreNotRead) {
    EXPECT_EQ(line("present"), watch(kEvents, {exchange("Other")}).output);
    EXPECT_EQ(1u, module.count("C_GetTokenInfo"));
}

TEST_F(WatchTest, TokenThatCannotBeReadYetIsReadAgain) {
    const CommandResult result =
        watch(kEvents, {[this] {
                            event()();
                            exchange("Other")();
                            module->fail("C_GetTokenInfo", 1, CKR_FUNCTION_FAILED);
                        },
                        [] {}});
    EXPECT_EQ(line("present") + line("removed") + line("inserted", "Other"), result.output);
}

TEST_F(WatchTest, WithoutEventsTheListShowsWhatIsTakenOutAndPutIn) {
    withoutEvents();
    EXPECT_EQ(line("present") + line("removed") + line("inserted"),
              watch(kList, {setSlots(0), setSlots(1)}).output);
    EXPECT_EQ(1u, module.count("C_WaitForSlotEvent"));
}

TEST_F(WatchTest, OtherTokenInTheSlotIsARemovalAndAnInsertion) {
    withoutEvents();
    EXPECT_EQ(line("present") + line("removed") + line("inserted", "Other"),
              watch(kList, {exchange("Other")}).output);
}

TEST_F(WatchTest, BlankTokenIsNotShown) {
    setText(module->settings().tokenInfo.label, "");
    for (const char* serial : {"", "0000000000000000"}) {
        setText(module->settings().tokenInfo.serialNumber, serial);
        EXPECT_EQ("", watch(kEvents, {event()}).output);
    }
}

TEST_F(WatchTest, ControlCharactersAreReplaced) {
    exchange(
        "a\n\x1b"
        "b")();
    EXPECT_EQ(line("present", "a??b"), watch(kEvents, {}).output);
}

TEST_F(WatchTest, JsonIsALineForEachChange) {
    const std::string texts =
        R"("slot":10,"label":"Label","serial":"Serial","manufacturer":"Maker","model":"Model"})";
    const std::string begin = R"({"schema":1,"command":"watch","event":")";
    EXPECT_EQ(begin + "present\"," + texts + "\n" + begin + "removed\"," + texts + "\n",
              watch(kEvents, {remove()}, {"--json"}).output);
}

TEST_F(WatchTest, ModuleThatFailsEndsTheCommand) {
    module->fail("C_WaitForSlotEvent", 2, CKR_GENERAL_ERROR);
    CommandResult result = zrkey({"watch"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ(line("present"), result.output);
    EXPECT_EQ(0u, result.errors.find("zrkey: cannot watch the tokens: the module's "
                                     "C_WaitForSlotEvent returned CKR_GENERAL_ERROR (0x00000005)"))
        << result.errors;
    withoutEvents();
    module->fail("C_GetSlotList", 0, CKR_GENERAL_ERROR);
    result = zrkey({"watch"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.errors.find("C_GetSlotList returned CKR_GENERAL_ERROR"));
}

TEST_F(WatchTest, ProgramThatFailsIsReportedAndTheWatchGoesOn) {
    // Without words it is wrong usage.
    const CommandResult result =
        watch(kEvents, {[] {}, [] {}, remove()}, {"--exec", ZRKEY_COMMAND});
    EXPECT_EQ(line("present") + line("removed"), result.output);
    EXPECT_NE(std::string::npos,
              result.errors.find("ended with exit code 2 for: " + line("present")))
        << result.errors;
    EXPECT_NE(std::string::npos, result.errors.find("zrkey: a command is missing"))
        << result.errors;
}

TEST_F(WatchTest, ProgramThatIsMissingIsReportedAndTheWatchGoesOn) {
    const CommandResult result = watch(kEvents, {remove()}, {"--exec", "no-such-program"});
    EXPECT_EQ(line("present") + line("removed"), result.output);
    const std::string report =
        "zrkey: cannot start \"no-such-program\": No such file or directory; check --exec\n";
    EXPECT_EQ(report + report, result.errors);
}

}  // namespace
}  // namespace zr::test
