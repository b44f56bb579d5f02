// The prompts of the site of a connection.
#include "host/browser/site_prompts.h"

#include "host/browser/complaint.h"
#include "host/browser/page_error.h"
#include "host/output/failure.h"

namespace zr::host {

SitePolicy readPolicy(const std::function<SitePolicy()>& read) {
    try {
        return read();
    } catch (const Failure& failure) {
        // The page does not read paths of this machine.
        complain(failure.line());
        throw PageError(page_code::kSettings,
                        "browser.json cannot be read; the host's standard error says why");
    }
}

SitePrompts::Turn SitePrompts::begin(const Activation& activation) {
    const Clock::time_point now = Clock::now();
    const bool isActive = activation.isActive && now - activation.arrival <= kActivation;
    const bool isChained = m_answered && now - *m_answered <= kActivation;
    if (!isActive && !isChained) {
        throw PageError(page_code::kNoActivation,
                        "a prompt needs an action of the user in the page: call this in the "
                        "handler of a click");
    }
    requirePolicy();
    if (const auto wait = m_parts.limits.waitAfterCancel()) {
        std::string message = "a prompt of this site was cancelled; wait ";
        throw PageError(page_code::kWait,
                        message.append(std::to_string(wait->count())).append(" s"));
    }
    if (!isChained && !isNewAction(activation)) {
        throw PageError(page_code::kNoActivation,
                        "a prompt was opened for this action of the user already");
    }
    Turn turn = m_parts.limits.takePrompt();
    if (!turn) {
        throw PageError(page_code::kBusy, "another prompt of this user is open");
    }
    return turn;
}

/// Browsers count one action for some seconds. It is good for one prompt, and those after its answer.
bool SitePrompts::isNewAction(const Activation& activation) const {
    return !m_opened || (m_answered && activation.arrival >= *m_answered) ||
           activation.arrival >= *m_opened + kActivation;
}

void SitePrompts::noteOpened() {
    m_opened = Clock::now();
    ++m_count;
}

/// The lists may have changed since the handshake.
void SitePrompts::requirePolicy() const {
    if (!readPolicy(m_parts.readPolicy).allows(m_origin)) {
        throw PageError(page_code::kNotAllowed, "the site is not allowed any more");
    }
}

Pin SitePrompts::askPin(const PinQuestion& question) {
    Pin pin;
    noteOpened();
    take(m_parts.prompt.askPin(question, pin));
    return pin;
}

void SitePrompts::confirm(const Confirmation& confirmation) {
    noteOpened();
    take(m_parts.prompt.confirm(confirmation));
}

void SitePrompts::take(PromptEnd end) {
    if (m_parts.inbox.isCancelled()) {
        // An answer that came at the same time does not count.
        end = PromptEnd::kAborted;
    }
    switch (end) {
        case PromptEnd::kAnswered:
            m_answered = Clock::now();
            return;
        case PromptEnd::kCancelled:
        case PromptEnd::kTimedOut:
            m_answered.reset();
            m_parts.limits.noteCancelled();
            throw PageError(page_code::kCancelled, end == PromptEnd::kCancelled
                                                       ? "the user cancelled the prompt"
                                                       : "the user did not answer the prompt");
        case PromptEnd::kAborted:
            // Otherwise a page could open and close prompts in a loop.
            m_answered.reset();
            m_parts.limits.noteAborted();
            throw PageError(page_code::kAborted, "the request was cancelled");
        default:
            throw PageError(page_code::kNoPrompt,
                            "there is no program or no display to ask the user");
    }
}

}  // namespace zr::host
