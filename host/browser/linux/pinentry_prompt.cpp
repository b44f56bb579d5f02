// The prompt on Linux: the system's pinentry.
#include "host/browser/linux/pinentry_prompt.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <utility>

#include "host/system/system.h"

namespace zr::host {
namespace {

using Kind = PinentryReply::Kind;

constexpr const char* kSystemPinentry = "/usr/bin/pinentry";
/// How often a question is shown whose answers do not count.
constexpr int kMostTimes = 3;
// The numbers of libgpg-error, which the protocol uses.
constexpr unsigned kTimeOut = 62;
constexpr unsigned kCancelled = 99;
constexpr unsigned kNotConfirmed = 114;
constexpr unsigned kFullyCancelled = 198;

PromptEnd endOf(const PinentryReply& reply) {
    switch (reply.kind) {
        case Kind::kOk:
            return PromptEnd::kAnswered;
        case Kind::kTimedOut:
            return PromptEnd::kTimedOut;
        case Kind::kAborted:
            return PromptEnd::kAborted;
        case Kind::kBroken:
            return PromptEnd::kUnavailable;
        case Kind::kError:
            break;
    }
    switch (reply.code) {
        case kTimeOut:
            return PromptEnd::kTimedOut;
        case kCancelled:
        case kNotConfirmed:
        case kFullyCancelled:
            return PromptEnd::kCancelled;
        default:
            return PromptEnd::kUnavailable;
    }
}

/// The end of a prompt that did not open: a program that does not even answer is not there.
PromptEnd endOfPreparation(const PinentryReply& reply) {
    return reply.kind == Kind::kAborted ? PromptEnd::kAborted : PromptEnd::kUnavailable;
}

/// "OPTION name=value" of the first variable that is set.
void addOption(std::vector<std::string>& lines, const char* name,
               std::initializer_list<const char*> variables) {
    constexpr std::size_t kMost = 200;
    for (const char* variable : variables) {
        const std::string value = environmentVariable(variable).value_or("");
        const bool isPlain = std::all_of(value.begin(), value.end(),
                                         [](char c) { return c > ' ' && c < '\x7F' && c != '%'; });
        if (!value.empty() && value.size() < kMost && isPlain) {
            lines.push_back(std::string("OPTION ").append(name).append("=").append(value));
            return;
        }
    }
}

std::vector<std::string> optionLines() {
    std::vector<std::string> lines = {"OPTION grab"};
    addOption(lines, "display", {"DISPLAY"});
    // Only a user who says so is asked in a terminal; the browser's is somebody else's.
    addOption(lines, "ttyname", {"GPG_TTY"});
    addOption(lines, "ttytype", {"TERM"});
    addOption(lines, "lc-ctype", {"LC_ALL", "LC_CTYPE", "LANG"});
    addOption(lines, "lc-messages", {"LC_ALL", "LC_MESSAGES", "LANG"});
    return lines;
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text.append(text.empty() ? "" : "\n").append(line);
    }
    return text;
}

/// Whether a window shows "<" and "&" as they are.
bool isPlain(const std::string& flavour) {
    return flavour.starts_with("gtk2") || flavour.starts_with("curses") ||
           flavour.starts_with("tty");
}

}  // namespace

std::string assuanText(std::string_view text) {
    std::string line;
    for (const char c : text) {
        line.append(c == '%' ? "%25" : c == '\n' ? "%0A" : c == '\r' ? "%0D" : std::string(1, c));
    }
    return line;
}

std::vector<std::string> promptPages(const PromptLines& lines) {
    constexpr std::string_view kCount = "\n\nPart 10 of 10";
    const std::size_t most =
        PinentryProcess::kMostOfLine - std::string_view("SETDESC ").size() - 3 * kCount.size();
    const std::string head = joined(lines.head);
    // The empty line keeps the rest of a long value from looking like the rest of the site's name.
    std::vector<std::string> pages = {std::string(head).append(lines.body.empty() ? "" : "\n")};
    for (const std::string& line : lines.body) {
        if (line.empty() && pages.back().ends_with('\n')) {
            continue;
        }
        std::string longer = std::string(pages.back()).append("\n").append(line);
        if (assuanText(longer).size() > most) {
            longer = std::string(head).append("\n\n(continued)\n").append(line);
            pages.emplace_back();
        }
        pages.back() = longer;
        if (assuanText(longer).size() > most) {
            return {};
        }
    }
    for (std::size_t i = 0; pages.size() > 1 && i < pages.size(); ++i) {
        pages[i].append("\n\nPart ").append(std::to_string(i + 1)).append(" of ");
        pages[i].append(std::to_string(pages.size()));
    }
    return pages;
}

PinentryPrompt::PinentryPrompt(std::string program, PinentryTimes times)
    : m_program(program.empty() ? kSystemPinentry : std::move(program)), m_times(times) {}

PinentryReply PinentryPrompt::commands(PinentryProcess& program,
                                       const std::vector<std::string>& lines) const {
    PinentryReply reply = {Kind::kOk, 0};
    for (const std::string& line : lines) {
        reply = program.command(line, m_times.program);
        if (!reply.isOk()) {
            break;
        }
    }
    return reply;
}

PinentryReply PinentryPrompt::prepare(PinentryProcess& program, Markup& markup) const {
    PinentryReply reply = program.greeting(m_times.program);
    if (!reply.isOk()) {
        return reply;
    }
    for (const std::string& line : optionLines()) {
        // A program need not know every option.
        reply = program.command(line, m_times.program);
        if (!reply.isOk() && reply.kind != Kind::kError) {
            return reply;
        }
    }
    std::string flavour;
    reply = program.command("GETINFO flavor", m_times.program, [&](char byte) {
        flavour += byte;
        return true;
    });
    if (!reply.isOk() && reply.kind != Kind::kError) {
        return reply;
    }
    markup = isPlain(flavour) ? Markup::kNone : Markup::kPossible;
    return commands(program,
                    {"SETTITLE ZRKey",
                     std::string("SETTIMEOUT ").append(std::to_string(m_times.person.count()))});
}

bool PinentryPrompt::isTooSoon(std::chrono::steady_clock::time_point opened) const {
    return std::chrono::steady_clock::now() - opened < m_times.patience;
}

/// Asks for a PIN once.
/// @param problem  why the PIN cannot be used; empty: it can.
PinentryReply PinentryPrompt::readPin(PinentryProcess& program, Pin& pin,
                                      std::string& problem) const {
    const auto opened = std::chrono::steady_clock::now();
    Pin entered;
    bool fits = true;
    const PinentryReply reply =
        program.command("GETPIN", m_times.person + m_times.later, [&](char byte) {
            fits = fits && entered.append(byte);
            return fits;
        });
    const std::string_view bytes = entered.view();
    const bool isReadable =
        fits && utf8::is_valid(bytes) && bytes.find('\0') == std::string_view::npos;
    problem = isTooSoon(opened)       ? "The PIN came too soon. Enter it again."
              : fits && bytes.empty() ? "Enter the PIN."
              : !isReadable           ? "This PIN is too long or not readable."
                                      : "";
    if (reply.isOk() && problem.empty()) {
        pin = std::move(entered);
    }
    return reply;
}

/// A PIN that cannot be used is asked for again: that costs no try of the token.
PromptEnd PinentryPrompt::askUntilUsable(PinentryProcess& program, Pin& pin) const {
    for (int i = 0; i < kMostTimes; ++i) {
        std::string problem;
        PinentryReply reply = readPin(program, pin, problem);
        if (reply.isOk() && !problem.empty()) {
            reply = commands(program, {std::string("SETERROR ").append(problem)});
            if (reply.isOk()) {
                continue;
            }
        }
        return endOf(reply);
    }
    return PromptEnd::kCancelled;
}

/// Shows a page until it is answered. One that is confirmed too soon is shown again.
PinentryReply PinentryPrompt::confirmPage(PinentryProcess& program) const {
    for (int i = 0; i < kMostTimes; ++i) {
        const auto opened = std::chrono::steady_clock::now();
        const PinentryReply reply = program.command("CONFIRM", m_times.person + m_times.later);
        if (!reply.isOk() || !isTooSoon(opened)) {
            return reply;
        }
    }
    return {Kind::kError, kNotConfirmed};
}

PromptEnd PinentryPrompt::askPin(const PinQuestion& question, Pin& pin) {
    if (m_abort.isRaised()) {
        return PromptEnd::kAborted;
    }
    PinentryProcess program(m_program, m_abort);
    Markup markup = Markup::kPossible;
    PinentryReply reply = prepare(program, markup);
    if (reply.isOk()) {
        const std::vector<std::string> pages = promptPages(linesOf(question, markup));
        if (pages.size() != 1) {
            return PromptEnd::kUnavailable;
        }
        reply = commands(program,
                         {std::string("SETDESC ").append(assuanText(pages.front())),
                          std::string("SETPROMPT PIN").append(question.lengths.text()).append(":"),
                          "SETOK OK", "SETCANCEL Cancel"});
    }
    return reply.isOk() ? askUntilUsable(program, pin) : endOfPreparation(reply);
}

PromptEnd PinentryPrompt::confirm(const Confirmation& confirmation) {
    if (m_abort.isRaised()) {
        return PromptEnd::kAborted;
    }
    PinentryProcess program(m_program, m_abort);
    Markup markup = Markup::kPossible;
    PinentryReply reply = prepare(program, markup);
    if (!reply.isOk()) {
        return endOfPreparation(reply);
    }
    const std::vector<std::string> pages = promptPages(linesOf(confirmation, markup));
    if (pages.empty()) {
        return PromptEnd::kUnavailable;
    }
    for (std::size_t i = 0; i < pages.size(); ++i) {
        const std::string yes = i + 1 < pages.size() ? "Continue" : confirmation.yes;
        reply =
            commands(program, {std::string("SETDESC ").append(assuanText(pages[i])),
                               std::string("SETOK ").append(assuanText(yes)), "SETCANCEL Cancel"});
        if (!reply.isOk()) {
            return endOfPreparation(reply);
        }
        reply = confirmPage(program);
        if (!reply.isOk()) {
            break;
        }
    }
    return endOf(reply);
}

void PinentryPrompt::abort() {
    m_abort.raise();
}

void PinentryPrompt::resume() {
    m_abort.lower();
}

std::unique_ptr<Prompt> makePrompt(const std::string& program) {
    return std::make_unique<PinentryPrompt>(program);
}

}  // namespace zr::host
