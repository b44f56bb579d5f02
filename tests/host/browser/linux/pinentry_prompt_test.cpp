// The prompt by a pinentry, with a scripted one; on Linux only, where prompts are those of a pinentry.
#include "host/browser/linux/pinentry_prompt.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>

#include "host/system/system.h"
#include "tests/host/browser/linux/scripted_pinentry.h"
#include "tests/support/process_memory.h"

namespace zr::test {
namespace {

using host::Confirmation;
using host::Pin;
using host::PinentryPrompt;
using host::PinQuestion;
using host::PromptEnd;

PinQuestion question() {
    return {"https://shop.example", "My token", "0042", "log in to the token", "", {4, 8}};
}

Confirmation confirmation() {
    return {"https://shop.example",
            "A web site asks for a signature.",
            {{"Certificate", "CN=Jane Doe"}, {"SHA-256", std::string(64, 'a')}},
            "one\ntwo",
            "Sign"};
}

using PinentryPromptTest = ScriptedPinentryTest;

TEST_F(PinentryPromptTest, PinIsTheOneThatWasEntered) {
    script("pin 1234");
    Pin pin;
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
    EXPECT_EQ("1234", pin.view());
}

TEST_F(PinentryPromptTest, PinIsDecoded) {
    script("pin 1%252%0a%C3%BC%");
    Pin pin;
    // Broken escapes end the program.
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(question(), pin));
    script("pin %31%25 %0D%c3%BC");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
    EXPECT_EQ("1% \r\u00fc", pin.view());
}

TEST_F(PinentryPromptTest, PinMayComeInSeveralLines) {
    script("raw D 12\\nD 34\\nS BUTTON_INFO close\\n# a remark\\nOK closing\\n");
    Pin pin;
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
    EXPECT_EQ("1234", pin.view());
}

TEST_F(PinentryPromptTest, NoCopyOfThePinStays) {
    // Letters that no literal contains, computed one at a time; the script has them as codes.
    const auto letter = [](unsigned i) {
        return static_cast<char>('A' + (i * i * 5 + i + 3) % 26);
    };
    constexpr unsigned kSize = 20;
    std::string codes;
    std::array<char, kSize> searched = {};
    for (unsigned i = 0; i < kSize; ++i) {
        std::array<char, 4> code = {};
        std::snprintf(code.data(), code.size(), "%%%02X", static_cast<unsigned>(letter(i)));
        codes += code.data();
        searched[i] = letter(i);
    }
    const MaskedBytes masked(searched.data(), searched.size());
    host::secureErase(searched.data(), searched.size());
    script("pin " + codes);
    {
        Pin pin;
        EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
        EXPECT_EQ(kSize, pin.view().size());
        EXPECT_LE(1U, masked.countInMemory());
    }
    EXPECT_EQ(0U, masked.countInMemory());
}

TEST_F(PinentryPromptTest, WindowSaysWhoAsksForWhat) {
    script("pin 1");
    PinQuestion asked = question();
    asked.tries = "The last PIN was wrong.";
    Pin pin;
    makePrompt().askPin(asked, pin);
    EXPECT_EQ(
        "A web site asks to log in to the token.\nSite: https://shop.example\n\nToken: My token\n"
        "Serial number: 0042\n\nThe last PIN was wrong.",
        description());
    EXPECT_EQ("PIN (4 to 8 characters):", last("SETPROMPT"));
    EXPECT_EQ("ZRKey", last("SETTITLE"));
    EXPECT_EQ("180", last("SETTIMEOUT"));
}

TEST_F(PinentryPromptTest, NoCacheIsAllowed) {
    script("pin 1");
    Pin pin;
    makePrompt().askPin(question(), pin);
    EXPECT_EQ(std::string::npos, asked().find("cache"));
    EXPECT_EQ(std::string::npos, asked().find("SETKEYINFO"));
    script("raw S PASSWORD_FROM_CACHE\\nD 1234\\nOK\\n");
    EXPECT_EQ(PromptEnd::kUnavailable, makePrompt().askPin(question(), pin));
}

TEST_F(PinentryPromptTest, ConfirmationShowsTextAndButton) {
    script("yes");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().confirm(confirmation()));
    EXPECT_EQ(
        "A web site asks for a signature.\nSite: https://shop.example\n\n"
        "Certificate: CN=Jane Doe\nSHA-256: " +
            std::string(37, 'a') + "\n    " + std::string(27, 'a') + "\n\nText:\n> one\n> two",
        description());
    EXPECT_EQ("Sign", last("SETOK"));
}

TEST_F(PinentryPromptTest, LongConfirmationIsShownInParts) {
    script("yes");
    Confirmation asked = confirmation();
    asked.text.clear();
    for (int i = 10; i < 60; ++i) {
        asked.text += "line " + std::to_string(i) + " of the contract\n";
    }
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().confirm(asked));
    const std::vector<std::string> parts = all("SETDESC");
    ASSERT_EQ(2U, parts.size());
    EXPECT_EQ((std::vector<std::string>{"Continue", "Sign"}), all("SETOK"));
    EXPECT_TRUE(parts[0].ends_with("Part 1 of 2"));
    for (const std::string& part : parts) {
        EXPECT_TRUE(part.starts_with("A web site asks for a signature.%0ASite: https://shop.ex"));
        EXPECT_LE(part.size(), 992U);
    }
    for (int i = 10; i < 60; ++i) {
        const std::string line = "> line " + std::to_string(i) + " of";
        EXPECT_NE(parts[0].find(line) == std::string::npos,
                  parts[1].find(line) == std::string::npos);
    }
}

TEST_F(PinentryPromptTest, RestOfAValueStaysAwayFromTheSite) {
    script("yes");
    Confirmation asked = confirmation();
    asked.lines = {{"Certificate", std::string(590, 'x')}, {"Token", std::string(590, 'y')}};
    asked.text.clear();
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().confirm(asked));
    const std::vector<std::string> parts = all("SETDESC");
    ASSERT_EQ(2U, parts.size());
    EXPECT_NE(std::string::npos,
              parts[0].find("%0ASite: https://shop.example%0A%0ACertificate: x"));
    EXPECT_NE(std::string::npos,
              parts[1].find("%0ASite: https://shop.example%0A%0A(continued)%0A    yyy"));
}

/// A person who hits the window that has just opened.
TEST_F(PinentryPromptTest, EarlyConfirmationIsAskedForAgain) {
    const host::PinentryTimes times = {.patience = std::chrono::milliseconds(200)};
    script("yes\nsleep 100\nyes\nsleep 250\nyes");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt(times).confirm(confirmation()));
    EXPECT_EQ(3U, all("CONFIRM").size());
    script("yes");
    EXPECT_EQ(PromptEnd::kCancelled, makePrompt(times).confirm(confirmation()));
    EXPECT_EQ(3U, all("CONFIRM").size());
    EXPECT_GE(host::PinentryTimes().patience, std::chrono::milliseconds(700));
}

TEST_F(PinentryPromptTest, EarlyConfirmationOfALaterPartIsAskedForAgain) {
    const host::PinentryTimes times = {.patience = std::chrono::milliseconds(200)};
    Confirmation asked = confirmation();
    asked.text = std::string(1200, 'x');
    // A double click.
    script("sleep 250\nyes\nyes\nsleep 250\nyes");
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt(times).confirm(asked));
    EXPECT_EQ((std::vector<std::string>{"Continue", "Sign"}), all("SETOK"));
    EXPECT_EQ(3U, all("CONFIRM").size());
    script("sleep 250\nyes\nyes");
    EXPECT_EQ(PromptEnd::kCancelled, makePrompt(times).confirm(asked));
    EXPECT_EQ(4U, all("CONFIRM").size());
}

TEST_F(PinentryPromptTest, EarlyPinIsDroppedAndAskedForAgain) {
    const host::PinentryTimes times = {.patience = std::chrono::milliseconds(200)};
    script("pin 666\npin \nsleep 250\npin 1234");
    Pin pin;
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt(times).askPin(question(), pin));
    EXPECT_EQ("1234", pin.view());
    const std::string early = "The PIN came too soon. Enter it again.";
    EXPECT_EQ((std::vector<std::string>{early, early}), all("SETERROR"));
    script("pin 666");
    Pin none;
    EXPECT_EQ(PromptEnd::kCancelled, makePrompt(times).askPin(question(), none));
    EXPECT_EQ("", none.view());
    EXPECT_EQ(3U, all("GETPIN").size());
}

TEST_F(PinentryPromptTest, EveryPartNeedsItsConfirmation) {
    Confirmation asked = confirmation();
    asked.text = std::string(1500, 'x');
    for (const char* answers : {"cancel\nyes", "yes\ncancel", "yes\nno"}) {
        script(answers);
        EXPECT_EQ(PromptEnd::kCancelled, makePrompt().confirm(asked)) << answers;
    }
}

TEST_F(PinentryPromptTest, RefusalsHaveTheirEnds) {
    const std::pair<const char*, PromptEnd> refusals[] = {
        {"cancel", PromptEnd::kCancelled},         {"no", PromptEnd::kCancelled},
        {"timeout", PromptEnd::kTimedOut},         {"no-display", PromptEnd::kUnavailable},
        {"die", PromptEnd::kUnavailable},          {"raw ERR\\n", PromptEnd::kUnavailable},
        {"raw ERR x\\n", PromptEnd::kUnavailable}, {"raw \\n", PromptEnd::kUnavailable},
        {"raw OKAY\\n", PromptEnd::kUnavailable},  {"raw INQUIRE X\\n", PromptEnd::kUnavailable}};
    for (const auto& [action, end] : refusals) {
        script(action);
        Pin pin;
        EXPECT_EQ(end, makePrompt().askPin(question(), pin)) << action;
        EXPECT_EQ("", pin.view()) << action;
        EXPECT_EQ(end, makePrompt().confirm(confirmation())) << action;
    }
}

TEST_F(PinentryPromptTest, EmptyPinIsAskedAgain) {
    script("pin \nraw OK\\n\npin 1234");
    Pin pin;
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
    EXPECT_EQ("1234", pin.view());
    EXPECT_EQ((std::vector<std::string>{"Enter the PIN.", "Enter the PIN."}), all("SETERROR"));
}

TEST_F(PinentryPromptTest, UnusablePinIsAskedAgainTwice) {
    for (const std::string& entered :
         {std::string(128, '1'), std::string("%00"), std::string("%FF"), std::string(900, '1'),
          std::string(127, '1') + "%C3%BC"}) {
        script("pin " + entered);
        Pin pin;
        EXPECT_EQ(PromptEnd::kCancelled, makePrompt().askPin(question(), pin)) << entered;
        EXPECT_EQ("", pin.view());
        EXPECT_EQ(3U, all("GETPIN").size());
    }
    script("pin " + std::string(127, '1'));
    Pin pin;
    EXPECT_EQ(PromptEnd::kAnswered, makePrompt().askPin(question(), pin));
}

TEST_F(PinentryPromptTest, ProgramThatIsNotThereIsUnavailable) {
    for (const char* path : {"/nowhere/pinentry", "pinentry", "./pinentry", "/", "/etc/passwd"}) {
        Pin pin;
        EXPECT_EQ(PromptEnd::kUnavailable, PinentryPrompt(path).askPin(question(), pin)) << path;
        EXPECT_EQ(PromptEnd::kUnavailable, PinentryPrompt(path).confirm(confirmation())) << path;
    }
}

TEST_F(PinentryPromptTest, OnlyChosenVariablesArePassedOn) {
    script("environment\ncancel");
    setEnvironment("DISPLAY", ":77");
    setEnvironment("LC_MESSAGES", "C.UTF-8");
    setEnvironment("LD_PRELOAD", "");
    setEnvironment("GTK_MODULES", "evil");
    setEnvironment("GTK_PATH", "/tmp");
    setEnvironment("ZR_SECRET", "x");
    Pin pin;
    makePrompt().askPin(question(), pin);
    EXPECT_NE(std::string::npos, asked().find("ENVIRONMENT DISPLAY=:77\n"));
    EXPECT_NE(std::string::npos, asked().find("ENVIRONMENT LC_MESSAGES=C.UTF-8\n"));
    EXPECT_NE(std::string::npos, asked().find("ENVIRONMENT PATH=/usr/local/bin:/usr/bin:/bin\n"));
    EXPECT_NE(std::string::npos, asked().find("\nOPTION display=:77\n"));
    for (const char* name : {"GTK_", "ZR_SECRET"}) {
        EXPECT_EQ(std::string::npos, asked().find(name)) << name;
        setEnvironment(name, "");
    }
    for (const char* name : {"DISPLAY", "LC_MESSAGES", "GTK_MODULES", "GTK_PATH"}) {
        setEnvironment(name, "");
    }
}

TEST_F(PinentryPromptTest, VariableCannotAddACommand) {
    script("cancel");
    setEnvironment("DISPLAY", ":0\nSETDESC forged");
    Pin pin;
    EXPECT_EQ(PromptEnd::kCancelled, makePrompt().askPin(question(), pin));
    EXPECT_EQ(std::string::npos, asked().find("forged"));
    setEnvironment("DISPLAY", "");
}

TEST_F(PinentryPromptTest, TextsCannotAddACommandOrALine) {
    script("cancel");
    PinQuestion asked = question();
    asked.label = "x\nOK\nSite: https://bank.example%0ASite: x";
    asked.serial = "1\r\nGETPIN";
    Pin pin;
    makePrompt().askPin(asked, pin);
    EXPECT_EQ(
        "A web site asks to log in to the token.\nSite: https://shop.example\n\n"
        "Token: x[U+000A]OK[U+000A]Site: https:/\n    /bank.example%0ASite: x\n"
        "Serial number: 1[U+000D][U+000A]GETPI\n    N",
        description());
    EXPECT_EQ(1U, all("GETPIN").size());
}

TEST_F(PinentryPromptTest, MarkupIsShownAsCodesWhereItMayBeRead) {
    PinQuestion asked = question();
    asked.label = "<b>A&amp;B</b>";
    for (const char* flavour : {"gnome3", "qt", "unknown"}) {
        script(std::string("at GETINFO raw D ") + flavour + "\\nOK\\n\ncancel");
        Pin pin;
        makePrompt().askPin(asked, pin);
        EXPECT_NE(std::string::npos, description().find("[U+003C]b>A[U+0026]amp;B")) << flavour;
    }
    script("cancel");
    Pin pin;
    makePrompt().askPin(asked, pin);
    EXPECT_NE(std::string::npos, description().find("Token: <b>A&amp;B</b>\n"));
}

}  // namespace
}  // namespace zr::test
