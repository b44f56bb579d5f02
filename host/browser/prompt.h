// What the native messaging host asks the user, in windows that a page cannot reach; one implementation
// per target. One prompt at a time per process; abort may be called by another thread.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "host/token/pin.h"
#include "host/token/token_state.h"

namespace zr::host {

enum class PromptEnd {
    kAnswered,
    kCancelled,
    kTimedOut,
    kAborted,     ///< by abort
    kUnavailable  ///< no program or no display for it
};

/// Texts are as the page, the token or the certificate has them: the prompt makes them safe to show.
struct PinQuestion {
    std::string origin;  ///< in Punycode
    std::string label;
    std::string serial;
    std::string purpose;  ///< our own text: "log in to the token"
    std::string tries;    ///< our own text, empty or "The last PIN was wrong."
    PinLengths lengths = {};
};

struct Confirmation {
    std::string origin;
    std::string title;  ///< our own text
    /// Lines of a name, our own, and a value: "Certificate" and the subject.
    std::vector<std::pair<std::string, std::string>> lines;
    std::string text;  ///< shown as a block of its own below; may be empty
    std::string yes;   ///< the words on the button that confirms: "Sign"
};

class Prompt {
public:
    virtual ~Prompt() = default;
    virtual PromptEnd askPin(const PinQuestion& question, Pin& pin) = 0;
    virtual PromptEnd confirm(const Confirmation& confirmation) = 0;
    /// Closes the prompt that is open, and each later one at once.
    virtual void abort() = 0;
    /// Later prompts open again.
    virtual void resume() = 0;
};

/// @param program  Linux: the pinentry to start, absolute; empty: the system's.
std::unique_ptr<Prompt> makePrompt(const std::string& program);

}  // namespace zr::host
