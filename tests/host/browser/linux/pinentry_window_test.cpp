// A real pinentry with a real window, and a person who presses keys; on Linux only, where prompts are
// those of a pinentry. Needs a screen.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <thread>

#include "host/browser/linux/pinentry_prompt.h"

namespace zr::test {
namespace {

using host::Confirmation;
using host::Pin;
using host::PinQuestion;
using host::PromptEnd;

void sleepFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

bool hands(const std::string& words) {
    const std::string command = "xdotool " + words + " >>xdotool.log 2>&1";
    return std::system(command.c_str()) == 0;
}

bool isWindowOpen() {
    return hands("search --onlyvisible --class pinentry");
}

/// Presses keys when the window is open and has the keyboard.
std::thread person(const std::string& words) {
    return std::thread([words] {
        for (int i = 0; i < 200 && !isWindowOpen(); ++i) {
            sleepFor(50);
        }
        EXPECT_TRUE(isWindowOpen());
        // The window takes the keyboard a little later.
        sleepFor(700);
        EXPECT_TRUE(hands(words)) << words;
    });
}

class PinentryWindowTest : public testing::Test {
protected:
    PromptEnd askPin(const std::string& keys) {
        std::thread hand = person(keys);
        const PromptEnd end = prompt.askPin(question, pin);
        hand.join();
        return end;
    }

    host::PinentryPrompt prompt{
        "/usr/bin/pinentry-gtk-2",
        {.person = std::chrono::seconds(15), .patience = std::chrono::milliseconds(200)}};
    PinQuestion question = {"https://shop.example", "My <b>token</b> & co",    "0042",
                            "log in to the token",  "The last PIN was wrong.", {4, 8}};
    Pin pin;
};

TEST_F(PinentryWindowTest, PinIsTheOneThatWasTyped) {
    EXPECT_EQ(PromptEnd::kAnswered, askPin("type --args 1 --delay 20 '12%34+5'  key Return"));
    EXPECT_EQ("12%34+5", pin.view());
    EXPECT_FALSE(isWindowOpen());
}

TEST_F(PinentryWindowTest, EscapeCancels) {
    EXPECT_EQ(PromptEnd::kCancelled, askPin("key Escape"));
    EXPECT_EQ("", pin.view());
}

TEST_F(PinentryWindowTest, EmptyPinIsAskedAgain) {
    EXPECT_EQ(PromptEnd::kAnswered,
              askPin("key Return sleep 1 type --args 1 --delay 20 77 key Return"));
    EXPECT_EQ("77", pin.view());
}

TEST_F(PinentryWindowTest, AbortClosesTheWindow) {
    std::thread other([&] {
        for (int i = 0; i < 200 && !isWindowOpen(); ++i) {
            sleepFor(50);
        }
        prompt.abort();
    });
    EXPECT_EQ(PromptEnd::kAborted, prompt.askPin(question, pin));
    other.join();
    EXPECT_FALSE(isWindowOpen());
}

TEST_F(PinentryWindowTest, EnterKeyAloneDoesNotConfirm) {
    const Confirmation asked = {"https://shop.example",
                                "A web site asks for a signature.",
                                {{"Certificate", "CN=Jane Doe"}},
                                "I order one bicycle.",
                                "Sign"};
    std::thread hand = person("key Return");
    EXPECT_EQ(PromptEnd::kCancelled, prompt.confirm(asked));
    hand.join();
    hand = person("key Tab Return");
    EXPECT_EQ(PromptEnd::kAnswered, prompt.confirm(asked));
    hand.join();
}

TEST_F(PinentryWindowTest, WithoutAScreenThereIsNoPrompt) {
    const std::string before = std::getenv("DISPLAY");
    unsetenv("DISPLAY");
    EXPECT_EQ(PromptEnd::kUnavailable, prompt.askPin(question, pin));
    setenv("DISPLAY", ":12345", 1);
    EXPECT_EQ(PromptEnd::kUnavailable, prompt.askPin(question, pin));
    setenv("DISPLAY", before.c_str(), 1);
}

}  // namespace
}  // namespace zr::test
