// The dialog that asks, with a person who presses keys; on Windows only, where prompts are dialogs of
// our own. Needs a screen.
#include "host/browser/windows/prompt_dialog.h"

#include <gtest/gtest.h>
#include <utf8cpp/utf8.h>

#include <array>
#include <atomic>
#include <functional>
#include <iterator>
#include <thread>

#include "host/system/system.h"
#include "tests/support/process_memory.h"

namespace zr::host {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kSoon{50};

void sleepFor(milliseconds time) {
    std::this_thread::sleep_for(time);
}

std::string textOf(HWND window, int control) {
    std::array<wchar_t, 5000> text = {};
    const auto size = SendMessageW(GetDlgItem(window, control), WM_GETTEXT, text.size(),
                                   reinterpret_cast<LPARAM>(text.data()));
    std::string bytes;
    utf8::utf16to8(text.begin(), text.begin() + size, std::back_inserter(bytes));
    return bytes;
}

bool isEnabled(HWND window, int control) {
    return IsWindowEnabled(GetDlgItem(window, control));
}

void press(HWND window, int control) {
    SendMessageW(GetDlgItem(window, control), BM_CLICK, 0, 0);
}

/// A key of the keyboard, which goes to the window in front.
void type(WORD key) {
    std::array<INPUT, 2> inputs = {};
    for (INPUT& input : inputs) {
        input.type = INPUT_KEYBOARD;
        input.ki.wVk = key;
    }
    inputs[1].ki.dwFlags = KEYEVENTF_KEYUP;
    SendInput(inputs.size(), inputs.data(), sizeof(INPUT));
}

void type(const char* keys) {
    for (; *keys; ++keys) {
        type(static_cast<WORD>(*keys));
    }
}

bool waitFor(const std::function<bool()>& condition) {
    for (int i = 0; i < 1500; ++i) {
        if (condition()) {
            return true;
        }
        sleepFor(milliseconds(10));
    }
    return false;
}

/// Somebody who waits for the dialog and then acts.
class Person {
public:
    explicit Person(std::function<void(HWND)> act)
        : m_thread([act = std::move(act)] {
              HWND window = nullptr;
              waitFor([&] {
                  window = FindWindowW(L"#32770", L"ZRKey");
                  return window && IsWindowVisible(window);
              });
              ASSERT_TRUE(window);
              act(window);
          }) {}
    ~Person() { m_thread.join(); }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

private:
    std::thread m_thread;
};

PinQuestion question() {
    return {"https://shop.example",    "My & token", "0042", "log in to the token",
            "The last PIN was wrong.", {4, 8}};
}

Confirmation confirmation() {
    return {"https://shop.example",
            "A web site asks for a signature.",
            {{"Certificate", "CN=Jane Doe"}},
            "one\ntwo",
            "Sign"};
}

class PromptDialogTest : public testing::Test {
protected:
    PromptEnd askPin(std::function<void(HWND)> act) {
        const Person person(std::move(act));
        return dialog.askPin(question(), pin);
    }
    PromptEnd confirm(std::function<void(HWND)> act) {
        const Person person(std::move(act));
        return dialog.confirm(confirmation());
    }
    static void waitForBox(HWND window) {
        EXPECT_TRUE(waitFor([&] {
            return GetForegroundWindow() == window && isEnabled(window, PromptDialog::kPin);
        }));
    }
    static void waitForYes(HWND window) {
        EXPECT_TRUE(waitFor([&] { return isEnabled(window, IDOK); }));
    }

    PromptDialog dialog{DialogTimes{milliseconds(20000), milliseconds(300)}};
    Pin pin;
};

TEST_F(PromptDialogTest, PinIsTheOneThatWasTyped) {
    EXPECT_EQ(PromptEnd::kAnswered, askPin([](HWND window) {
                  waitForBox(window);
                  type("1234");
                  waitForYes(window);
                  type(VK_RETURN);
              }));
    EXPECT_EQ("1234", pin.view());
}

TEST_F(PromptDialogTest, WindowSaysWhoAsksForWhat) {
    EXPECT_EQ(PromptEnd::kCancelled, askPin([](HWND window) {
                  EXPECT_EQ("A web site asks to log in to the token.\r\nSite: https://shop.example",
                            textOf(window, PromptDialog::kHead));
                  EXPECT_EQ(
                      "Token: My & token\r\nSerial number: 0042\r\n\r\n"
                      "The last PIN was wrong.",
                      textOf(window, PromptDialog::kBody));
                  EXPECT_EQ("PIN (4 to 8 characters):", textOf(window, PromptDialog::kPinName));
                  press(window, IDCANCEL);
              }));
}

TEST_F(PromptDialogTest, PinIsHiddenAndWindowIsInFront) {
    askPin([](HWND window) {
        EXPECT_NE(0, SendDlgItemMessageW(window, PromptDialog::kPin, EM_GETPASSWORDCHAR, 0, 0));
        EXPECT_NE(0, GetWindowLongW(window, GWL_EXSTYLE) & WS_EX_TOPMOST);
        EXPECT_NE(0,
                  GetWindowLongW(GetDlgItem(window, PromptDialog::kBody), GWL_STYLE) & ES_READONLY);
        press(window, IDCANCEL);
    });
}

TEST_F(PromptDialogTest, EmptyPinIsNotTaken) {
    EXPECT_EQ(PromptEnd::kCancelled, askPin([](HWND window) {
                  waitForBox(window);
                  EXPECT_FALSE(isEnabled(window, IDOK));
                  type(VK_RETURN);
                  SendMessageW(window, WM_COMMAND, IDOK, 0);
                  sleepFor(kSoon);
                  EXPECT_TRUE(IsWindow(window));
                  type("1");
                  waitForYes(window);
                  type(VK_BACK);
                  EXPECT_TRUE(waitFor([&] { return !isEnabled(window, IDOK); }));
                  type(VK_ESCAPE);
              }));
    EXPECT_EQ("", pin.view());
}

TEST_F(PromptDialogTest, PinThatIsTooLongIsNotTaken) {
    EXPECT_EQ(PromptEnd::kAnswered, askPin([](HWND window) {
                  waitForBox(window);
                  SetDlgItemTextW(window, PromptDialog::kPin, std::wstring(100, L'\u00fc').c_str());
                  waitForYes(window);
                  press(window, IDOK);
                  EXPECT_EQ("This PIN is too long.", textOf(window, PromptDialog::kError));
                  EXPECT_EQ("", textOf(window, PromptDialog::kPin));
                  SetDlgItemTextW(window, PromptDialog::kPin, L"1\u00fc");
                  press(window, IDOK);
              }));
    EXPECT_EQ("1\u00fc", pin.view());
}

TEST_F(PromptDialogTest, KeysMeantForThePageAreDropped) {
    EXPECT_EQ(PromptEnd::kAnswered, askPin([](HWND window) {
                  EXPECT_TRUE(waitFor([&] { return GetForegroundWindow() == window; }));
                  EXPECT_FALSE(isEnabled(window, PromptDialog::kPin));
                  type("666");
                  type(VK_RETURN);
                  waitForBox(window);
                  EXPECT_EQ("", textOf(window, PromptDialog::kPin));
                  type("12");
                  waitForYes(window);
                  type(VK_RETURN);
              }));
    EXPECT_EQ("12", pin.view());
    EXPECT_GE(DialogTimes().patience, milliseconds(700));
}

/// Letters that no literal contains, computed one at a time.
char letter(unsigned i) {
    // Volatile: the compiler must not compute the letters.
    static volatile unsigned factor = 5;
    return static_cast<char>('A' + (i * i * factor + i + 3) % 26);
}

TEST_F(PromptDialogTest, NoCopyOfThePinStays) {
    std::array<wchar_t, 12> end = {};
    for (unsigned i = 0; i < end.size(); ++i) {
        end[i] = static_cast<wchar_t>(letter(i + 8));
    }
    const zr::test::MaskedBytes searched(end.data(), sizeof end);
    secureErase(end.data(), sizeof end);
    const auto typeThen = [&](const std::function<void(HWND)>& act) {
        return askPin([&](HWND window) {
            waitForBox(window);
            for (unsigned i = 0; i < 20; ++i) {
                type(static_cast<WORD>(letter(i)));
            }
            EXPECT_TRUE(waitFor([&] {
                return SendDlgItemMessageW(window, PromptDialog::kPin, WM_GETTEXTLENGTH, 0, 0) ==
                       20;
            }));
            act(window);
        });
    };
    EXPECT_EQ(PromptEnd::kCancelled, typeThen([](HWND window) { press(window, IDCANCEL); }));
    EXPECT_EQ(0U, searched.countInMemory());
    EXPECT_EQ(PromptEnd::kAborted, typeThen([&](HWND) { dialog.abort(); }));
    EXPECT_EQ(0U, searched.countInMemory());
    dialog.resume();
    EXPECT_EQ(PromptEnd::kAnswered, typeThen([](HWND window) {
                  waitForYes(window);
                  press(window, IDOK);
              }));
    EXPECT_EQ(20U, pin.view().size());
    EXPECT_EQ(0U, searched.countInMemory());
}

TEST_F(PromptDialogTest, ConfirmationNeedsTheButton) {
    EXPECT_EQ(PromptEnd::kAnswered, confirm([](HWND window) {
                  EXPECT_EQ("Sign", textOf(window, IDOK));
                  EXPECT_EQ("Certificate: CN=Jane Doe\r\n\r\nText:\r\n> one\r\n> two",
                            textOf(window, PromptDialog::kBody));
                  waitForYes(window);
                  press(window, IDOK);
              }));
}

TEST_F(PromptDialogTest, EnterKeyCancelsAConfirmation) {
    EXPECT_EQ(PromptEnd::kCancelled, confirm([](HWND window) {
                  waitForYes(window);
                  EXPECT_TRUE(waitFor([&] { return GetForegroundWindow() == window; }));
                  type(VK_RETURN);
              }));
}

TEST_F(PromptDialogTest, ClickMeantForThePageDoesNotConfirm) {
    EXPECT_EQ(PromptEnd::kCancelled, confirm([](HWND window) {
                  press(window, IDOK);
                  SendMessageW(window, WM_COMMAND, IDOK, 0);
                  EXPECT_TRUE(IsWindow(window));
                  EXPECT_FALSE(isEnabled(window, IDOK));
                  press(window, IDCANCEL);
              }));
}

TEST_F(PromptDialogTest, ClosingTheWindowCancels) {
    EXPECT_EQ(PromptEnd::kCancelled,
              confirm([](HWND window) { SendMessageW(window, WM_CLOSE, 0, 0); }));
    EXPECT_EQ(PromptEnd::kCancelled,
              askPin([](HWND window) { SendMessageW(window, WM_CLOSE, 0, 0); }));
}

TEST_F(PromptDialogTest, AbortClosesTheWindow) {
    EXPECT_EQ(PromptEnd::kAborted, askPin([&](HWND) { dialog.abort(); }));
    EXPECT_FALSE(FindWindowW(L"#32770", L"ZRKey"));
    // And each later one, until prompts may open again.
    EXPECT_EQ(PromptEnd::kAborted, dialog.confirm(confirmation()));
    EXPECT_EQ(PromptEnd::kAborted, dialog.askPin(question(), pin));
    dialog.resume();
    EXPECT_EQ(PromptEnd::kCancelled, confirm([](HWND window) { press(window, IDCANCEL); }));
    EXPECT_EQ("", pin.view());
}

TEST_F(PromptDialogTest, AbortAtAnyTimeEndsThePrompt) {
    for (int i = 0; i < 60; i += 5) {
        std::thread other([&] {
            sleepFor(milliseconds(i));
            dialog.abort();
        });
        EXPECT_EQ(PromptEnd::kAborted, dialog.askPin(question(), pin)) << i;
        other.join();
        dialog.resume();
    }
}

TEST_F(PromptDialogTest, NobodyAnswers) {
    PromptDialog impatient{DialogTimes{milliseconds(200), milliseconds(100)}};
    EXPECT_EQ(PromptEnd::kTimedOut, impatient.askPin(question(), pin));
    EXPECT_EQ(PromptEnd::kTimedOut, impatient.confirm(confirmation()));
}

TEST_F(PromptDialogTest, LongTextIsScrolled) {
    Confirmation asked = confirmation();
    for (int i = 0; i < 100; ++i) {
        asked.text += "line\n";
    }
    const Person person([](HWND window) {
        RECT place = {};
        GetWindowRect(window, &place);
        EXPECT_LT(place.bottom - place.top, 700);
        const HWND body = GetDlgItem(window, PromptDialog::kBody);
        EXPECT_NE(0, GetWindowLongW(body, GWL_STYLE) & WS_VSCROLL);
        press(window, IDCANCEL);
    });
    EXPECT_EQ(PromptEnd::kCancelled, dialog.confirm(asked));
}

}  // namespace
}  // namespace zr::host
