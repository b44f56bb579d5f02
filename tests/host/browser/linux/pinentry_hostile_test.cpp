// A pinentry that hangs, floods, lies or dies, and prompts that are aborted, in each state; on Linux
// only, where prompts are those of a pinentry.
#include <fstream>
#include <thread>

#include "tests/host/browser/linux/scripted_pinentry.h"

namespace zr::test {
namespace {

using host::Confirmation;
using host::Pin;
using host::PinQuestion;
using host::PromptEnd;
using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

const PinQuestion kQuestion = {"https://shop.example", "My token", "0042",
                               "log in to the token",  "",         {}};
const Confirmation kConfirmation = {
    "https://shop.example", "A web site asks for a signature.", {}, "one", "Sign"};

/// The states in which a program is while a PIN is asked for, and while a confirmation is.
const char* const kPinStates[] = {"START",   "OPTION",    "GETINFO", "SETTITLE",  "SETTIMEOUT",
                                  "SETDESC", "SETPROMPT", "SETOK",   "SETCANCEL", "GETPIN"};
const char* const kConfirmStates[] = {"START",   "OPTION", "GETINFO",   "SETTITLE", "SETTIMEOUT",
                                      "SETDESC", "SETOK",  "SETCANCEL", "CONFIRM"};

class PinentryHostileTest : public ScriptedPinentryTest {
protected:
    static host::PinentryTimes shortTimes() {
        return {milliseconds(300), std::chrono::seconds(0), milliseconds(300), milliseconds(0)};
    }
    /// Runs both prompts, with a program that does something in each of their states.
    /// @param endOfPerson  when that is the state in which a person answers.
    void expectEnd(const std::string& action, PromptEnd end, PromptEnd endOfPerson) {
        for (const char* state : kPinStates) {
            script(std::string("at ") + state + " " + action + "\npin 1234");
            Pin pin;
            const bool isPerson = state == std::string("GETPIN");
            EXPECT_EQ(isPerson ? endOfPerson : end, makePrompt(shortTimes()).askPin(kQuestion, pin))
                << action << " at " << state;
            EXPECT_EQ("", pin.view());
        }
        for (const char* state : kConfirmStates) {
            script(std::string("at ") + state + " " + action + "\nyes");
            const bool isPerson = state == std::string("CONFIRM");
            EXPECT_EQ(isPerson ? endOfPerson : end, makePrompt(shortTimes()).confirm(kConfirmation))
                << action << " at " << state;
        }
    }
    /// Whether the program that was started last still runs. Its number may live on: nobody may ask
    /// for its exit code.
    bool isRunning() const {
        std::ifstream status("/proc/" + last("START") + "/stat");
        std::string text;
        return std::getline(status, text) && text.find(") Z ") == std::string::npos;
    }
    void waitFor(const std::string& text) const {
        for (int i = 0; i < 2000 && asked().find(text) == std::string::npos; ++i) {
            std::this_thread::sleep_for(milliseconds(2));
        }
    }
};

TEST_F(PinentryHostileTest, ProgramThatDiesIsUnavailable) {
    expectEnd("die", PromptEnd::kUnavailable, PromptEnd::kUnavailable);
}

TEST_F(PinentryHostileTest, ProgramThatHangsIsEnded) {
    // In few states: each costs the time that the prompt waits.
    for (const char* state : {"START", "SETDESC", "GETPIN"}) {
        script(std::string("at ") + state + " wait\npin 1234");
        Pin pin;
        EXPECT_EQ(state == std::string("GETPIN") ? PromptEnd::kTimedOut : PromptEnd::kUnavailable,
                  makePrompt(shortTimes()).askPin(kQuestion, pin))
            << state;
        EXPECT_FALSE(isRunning()) << state;
    }
    script("wait");
    EXPECT_EQ(PromptEnd::kTimedOut, makePrompt(shortTimes()).confirm(kConfirmation));
}

TEST_F(PinentryHostileTest, ProgramThatHangsAndIgnoresSignalsIsEnded) {
    script("mute-term\nwait");
    Pin pin;
    EXPECT_EQ(PromptEnd::kTimedOut, makePrompt(shortTimes()).askPin(kQuestion, pin));
    EXPECT_FALSE(isRunning());
    // It also ends when it would not leave after the last answer.
    script("mute-term\nat END wait\npin 1234");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(kQuestion, pin));
    EXPECT_EQ("1234", pin.view());
    EXPECT_FALSE(isRunning());
}

TEST_F(PinentryHostileTest, ProgramThatFloodsIsEnded) {
    expectEnd("flood", PromptEnd::kUnavailable, PromptEnd::kUnavailable);
    EXPECT_FALSE(isRunning());
}

TEST_F(PinentryHostileTest, ProgramThatWritesNoLineEndIsEnded) {
    script("raw D " + std::string(5000, '1'));
    Pin pin;
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(kQuestion, pin));
    EXPECT_EQ("", pin.view());
}

TEST_F(PinentryHostileTest, PinOfTenThousandBytesIsNotTaken) {
    script("raw D " + std::string(10000, '1') + "\\nOK\\n");
    Pin pin;
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(kQuestion, pin));
    std::string lines;
    for (int i = 0; i < 20; ++i) {
        lines += "D " + std::string(500, '1') + "\\n";
    }
    script("raw " + lines + "OK\\n");
    EXPECT_EQ(PromptEnd::kCancelled, makePrompt().askPin(kQuestion, pin));
    EXPECT_EQ("", pin.view());
    EXPECT_EQ(3U, all("GETPIN").size());
}

TEST_F(PinentryHostileTest, AnswersBeforeTheirQuestionsDoNotCount) {
    script("at SETCANCEL raw OK\\nD 1234\\nOK\\n\npin 5678");
    Pin pin;
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(kQuestion, pin));
    EXPECT_EQ("", pin.view());
    script("at START raw OK\\nOK\\nOK\\nOK\\nOK\\nOK\\nOK\\nOK\\nOK\\nOK\\nOK\\n\nyes");
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().confirm(kConfirmation));
}

TEST_F(PinentryHostileTest, BrokenEscapesAreNotTaken) {
    for (const char* data : {"%", "1%", "1%2", "%zz", "%2", "%%%", "1%G1", "%1G", "% 1", "%+1"}) {
        script(std::string("pin ") + data);
        Pin pin;
        EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(kQuestion, pin)) << data;
        EXPECT_EQ("", pin.view()) << data;
    }
}

TEST_F(PinentryHostileTest, DataIsNoAnswerToAConfirmation) {
    script("raw D yes\\nOK\\n");
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().confirm(kConfirmation));
}

TEST_F(PinentryHostileTest, HeapOfMistakesInOneReplyIsEnded) {
    std::string marks;
    for (int i = 0; i < 100; ++i) {
        marks += "# " + std::string(900, 'x') + "\\n";
    }
    script("raw " + marks + "D 1234\\nOK\\n");
    Pin pin;
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(kQuestion, pin));
}

TEST_F(PinentryHostileTest, RefusalInEachStateIsUnavailable) {
    for (const char* state : {"START", "SETTITLE", "SETTIMEOUT", "SETDESC", "SETOK"}) {
        script(std::string("at ") + state + " no-display\nyes");
        EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().confirm(kConfirmation)) << state;
        // Before the window is open nobody can have cancelled it.
        script(std::string("at ") + state + " cancel\nyes");
        EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().confirm(kConfirmation)) << state;
    }
    // Options and the name of the window's kind may be unknown to it.
    script("at OPTION no-display\nat GETINFO no-display\nyes");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().confirm(kConfirmation));
}

TEST_F(PinentryHostileTest, AbortInEachStateEndsAtOnce) {
    for (const char* state : kPinStates) {
        script(std::string("at ") + state + " wait\npin 1234");
        host::PinentryPrompt prompt = makePrompt();
        Clock::time_point aborted;
        std::thread other([&] {
            waitFor(state);
            std::this_thread::sleep_for(milliseconds(5));
            aborted = Clock::now();
            prompt.abort();
        });
        Pin pin;
        EXPECT_EQ(PromptEnd::kAborted, prompt.askPin(kQuestion, pin)) << state;
        const Clock::time_point ended = Clock::now();
        other.join();
        EXPECT_LT(ended - aborted, milliseconds(700)) << state;
        EXPECT_FALSE(isRunning()) << state;
    }
}

TEST_F(PinentryHostileTest, AbortAtAnyTimeEndsThePrompt) {
    script("wait");
    host::PinentryPrompt prompt = makePrompt();
    for (int i = 0; i < 25; ++i) {
        std::thread other([&] {
            std::this_thread::sleep_for(milliseconds(i));
            prompt.abort();
        });
        Pin pin;
        EXPECT_EQ(PromptEnd::kAborted, prompt.askPin(kQuestion, pin)) << i;
        other.join();
        prompt.resume();
    }
}

TEST_F(PinentryHostileTest, AbortHoldsForLaterPromptsUntilTheyMayOpen) {
    script("yes");
    host::PinentryPrompt prompt = makePrompt();
    prompt.abort();
    prompt.abort();
    EXPECT_EQ(PromptEnd::kAborted, prompt.confirm(kConfirmation));
    Pin pin;
    EXPECT_EQ(PromptEnd::kAborted, prompt.askPin(kQuestion, pin));
    // No program was started.
    EXPECT_EQ("", asked());
    prompt.resume();
    EXPECT_EQ(PromptEnd::kAnswered, prompt.confirm(kConfirmation));
}

TEST_F(PinentryHostileTest, ScriptThatStartsTheRealProgramIsEndedWithIt) {
    script("wait");
    temp.write("wrapper", "#!/bin/sh\n" + program() + "\n");
    std::filesystem::permissions("wrapper", std::filesystem::perms::owner_all);
    host::PinentryPrompt prompt((temp.work() / "wrapper").string(), shortTimes());
    EXPECT_EQ(PromptEnd::kTimedOut, prompt.confirm(kConfirmation));
    for (int i = 0; i < 100 && isRunning(); ++i) {
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_FALSE(isRunning());
}

}  // namespace
}  // namespace zr::test
