// The prompt on Windows: a dialog of our own.
#pragma once

#include <chrono>
#include <mutex>
#include <string>

#include <windows.h>

#include "host/browser/prompt.h"
#include "host/browser/prompt_text.h"
#include "host/browser/windows/dialog_template.h"

namespace zr::host {

struct DialogTimes {
    std::chrono::milliseconds person{180000};
    /// The button that confirms and the box for the PIN do not work before: a click and keys meant for
    /// the page must not reach them.
    std::chrono::milliseconds patience{1000};
};

class PromptDialog : public Prompt {
public:
    enum Control : WORD { kHead = 100, kBody, kPinName, kPin, kError };

    explicit PromptDialog(DialogTimes times = {}) : m_times(times) {}

    PromptEnd askPin(const PinQuestion& question, Pin& pin) override;
    PromptEnd confirm(const Confirmation& confirmation) override;
    void abort() override;
    void resume() override;

private:
    static INT_PTR CALLBACK handle(HWND window, UINT message, WPARAM word, LPARAM data);
    INT_PTR handle(UINT message, WPARAM word);
    void open(HWND window);
    void press(WORD button);
    void enableYes();
    bool takePin();
    void erasePin();
    void becomeReady();
    PromptEnd show(const DialogTemplate& dialog);
    void end(PromptEnd end);

    DialogTimes m_times;
    Pin* m_pin = nullptr;  ///< null: a confirmation
    bool m_isPatient = false;
    std::mutex m_mutex;
    bool m_isAborted = false;  ///< guarded by m_mutex
    HWND m_window = nullptr;   ///< guarded by m_mutex
};

}  // namespace zr::host
