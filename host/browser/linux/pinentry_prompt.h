// The prompt on Linux: the system's pinentry.
#pragma once

#include <chrono>
#include <string>

#include "host/browser/linux/pinentry_process.h"
#include "host/browser/prompt.h"
#include "host/browser/prompt_text.h"

namespace zr::host {

struct PinentryTimes {
    /// For a reply that waits for no person.
    std::chrono::milliseconds program{20000};
    /// For a person. The pinentry closes its window by itself; it is ended a little later.
    std::chrono::seconds person{180};
    std::chrono::milliseconds later{5000};
    /// An answer that comes sooner does not count: a click or a key was meant for the page, over which
    /// the window has just opened.
    std::chrono::milliseconds patience{1000};
};

class PinentryPrompt : public Prompt {
public:
    explicit PinentryPrompt(std::string program, PinentryTimes times = {});

    PromptEnd askPin(const PinQuestion& question, Pin& pin) override;
    PromptEnd confirm(const Confirmation& confirmation) override;
    void abort() override;
    void resume() override;

private:
    PinentryReply prepare(PinentryProcess& program, Markup& markup) const;
    PinentryReply commands(PinentryProcess& program, const std::vector<std::string>& lines) const;
    PinentryReply readPin(PinentryProcess& program, Pin& pin, std::string& problem) const;
    PromptEnd askUntilUsable(PinentryProcess& program, Pin& pin) const;
    PinentryReply confirmPage(PinentryProcess& program) const;
    /// Whether an answer comes too soon for a window that opened at that time.
    bool isTooSoon(std::chrono::steady_clock::time_point opened) const;

    std::string m_program;
    PinentryTimes m_times;
    AbortSignal m_abort;
};

/// A text within an Assuan line.
std::string assuanText(std::string_view text);

/// The descriptions of a prompt, each of which fits into a line of a command: more than one when it is
/// long. Each begins with the head.
/// @return none when the head does not fit.
std::vector<std::string> promptPages(const PromptLines& lines);

}  // namespace zr::host
