// From options to a token: the choice of one of a module's, the login.
#include "host/token/token_session.h"

#include <utility>
#include <vector>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"
#include "host/system/terminal.h"
#include "host/token/direct_session.h"
#include "host/token/token_state.h"

namespace zr::host {
namespace {

bool isChosen(const TokenRow& row, const TokenChoice& choice) {
    return (!choice.index || *choice.index == row.index) &&
           (!choice.label || *choice.label == row.label) &&
           (!choice.serial || *choice.serial == row.serial);
}

std::string describe(const TokenChoice& choice) {
    if (choice.index) {
        return "the token with index " + std::to_string(*choice.index);
    }
    if (choice.label) {
        return "the token with label " + inQuotes(*choice.label);
    }
    if (choice.serial) {
        return "the token with serial number " + inQuotes(*choice.serial);
    }
    return "a token";
}

std::string listRows(const std::vector<TokenRow>& rows) {
    std::string text;
    for (const TokenRow& row : rows) {
        text += (text.empty() ? "" : ", ") + std::to_string(row.index) + " " + inQuotes(row.label) +
                " serial " + inQuotes(row.serial);
    }
    return text;
}

/// A cause as constants.
struct FixedCause {
    const char* text;
    const char* advice;
};

constexpr FixedCause kRemoved = {"the token was removed", "connect it and try again"};
constexpr FixedCause kLocked = {"the PIN is locked", "ask the issuer of the token to unlock it"};

std::string askedLogin(const TokenRow& row, const PinEntry& pin) {
    return "log in to " + inQuotes(row.label) + " as " + pin.role();
}

/// The failure of a login.
/// @param state  of the PIN, after the login.
Failure refusedLogin(PinState state, const std::string& asked, HRESULT result) {
    const auto explain = [&](int exitCode, const FixedCause& cause) {
        return explainedFailure(exitCode, asked, result, {cause.text, cause.advice});
    };
    constexpr const char* kCheck = "retries are limited, so check the PIN before you try again";
    switch (state) {
        case PinState::kTokenRemoved:
            return explain(kExitFailure, kRemoved);
        case PinState::kLocked:
            return explain(kExitPinLocked, kLocked);
        case PinState::kNotSet:
            return explain(kExitLoginRefused,
                           {"the PIN is not initialised", "ask the issuer of the token to set it"});
        case PinState::kLastTry:
            return explain(kExitLoginRefused, {"the PIN is wrong, and one try is left",
                                               "make sure of the PIN: another wrong one locks it"});
        case PinState::kFewTries:
            return explain(kExitLoginRefused, {"the PIN is wrong", kCheck});
        default:
            // The library's result is the same for every cause.
            return explain(kExitLoginRefused,
                           {"the PIN is wrong, or the token could not check it", kCheck});
    }
}

}  // namespace

TokenRow chooseToken(const LoadedModule& module, const TokenChoice& choice) {
    TokenTable table = readTokens(module.provider());
    std::vector<TokenRow> chosen;
    const std::string present = listRows(table.rows);
    for (TokenRow& row : table.rows) {
        if (isChosen(row, choice)) {
            chosen.push_back(std::move(row));
        }
    }
    const std::string asked = "choose " + describe(choice);
    if (chosen.size() > 1) {
        throw commandFailure(kExitNotFound, asked, "several tokens match: " + listRows(chosen),
                             "choose one with --index, --label or --serial");
    }
    if (chosen.empty() && present.empty()) {
        const Cause cause = whyNoToken(module.calls());
        throw commandFailure(kExitNotFound, asked, cause.text, cause.advice);
    }
    if (chosen.empty()) {
        throw commandFailure(kExitNotFound, asked, "the tokens are: " + present,
                             "choose one of them");
    }
    return std::move(chosen.front());
}

PinEntry::PinEntry(const PinOptions& options, Need need)
    : m_source(options.source),
      m_securityOfficer(options.securityOfficer),
      m_mayUseLastTry(options.lastTry) {
    const bool isMissing = !m_source && need != Need::kOnRequest;
    if (isMissing && (need == Need::kAlways || hasTerminal())) {
        m_source = PinSource();
    }
    if (!m_source) {
        if (m_securityOfficer) {
            throw commandFailure(kExitUsage, "log in as " + role(), "no PIN is given",
                                 "give --pin");
        }
        return;
    }
    if (!m_source->isPrompt()) {
        m_pin = readPin(*m_source, "");
    } else if (!hasTerminal()) {
        throw noTerminal();
    }
}

const Pin* PinEntry::get(const TokenRow& token, const PinLengths& lengths) {
    if (!m_source) {
        return nullptr;
    }
    if (!m_pin) {
        m_pin =
            readPin(*m_source, role() + " PIN of " + inQuotes(token.label) + lengths.text() + ": ");
    }
    return &*m_pin;
}

void PinEntry::agreeToLastTry(const TokenRow& token) {
    if (m_mayUseLastTry) {
        return;
    }
    const std::string asked =
        "use the last try for the " + role() + " PIN of " + inQuotes(token.label);
    std::string answer;
    const PromptResult result =
        promptVisible("One try is left for the " + role() + " PIN of " + inQuotes(token.label) +
                          "; a wrong PIN locks it. Use it (yes/no)? ",
                      [&](char byte) {
                          answer += byte;
                          return answer.size() < 16;
                      });
    if (result == PromptResult::kNoTerminal) {
        throw commandFailure(kExitUsage, asked, "there is no terminal to ask",
                             "make sure of the PIN, then give --last-try");
    }
    stopIfInterrupted();
    if (result != PromptResult::kAnswered || (answer != "yes" && answer != "y")) {
        throw commandFailure(kExitUsage, asked, "the answer was not yes",
                             "the try is not used; make sure of the PIN first");
    }
    m_mayUseLastTry = true;
}

std::string PinEntry::role() const {
    return m_securityOfficer ? "security officer" : "user";
}

INT PinEntry::type() const {
    return m_securityOfficer ? 1 : 0;
}

TokenSession::TokenSession(const TokenOptions& options)
    : m_module(options.module), m_row(chooseToken(m_module, options.choice)) {}

const Pin* TokenSession::pinFor(PinEntry& pin, const PinLengths& lengths) const {
    if (!pin.isGiven()) {
        return nullptr;
    }
    const std::string asked = askedLogin(m_row, pin);
    PinLengths allowed;
    switch (readPinState(m_module.calls(), m_row, pin.isSecurityOfficer(), &allowed)) {
        case PinState::kTokenRemoved:
            throw commandFailure(kExitFailure, asked, kRemoved.text, kRemoved.advice);
        case PinState::kLocked:
            throw commandFailure(kExitPinLocked, asked, kLocked.text, kLocked.advice);
        case PinState::kLastTry:
            pin.agreeToLastTry(m_row);
            break;
        default:
            // A module may forget to say that the PIN is set, and trying costs nothing if it is not.
            break;
    }
    return pin.get(m_row, lengths.longest > 0 ? allowed.within(lengths) : allowed);
}

PinLengths TokenSession::pinLengths() const {
    PinLengths lengths;
    readPinState(m_module.calls(), m_row, false, &lengths);
    return lengths;
}

bool TokenSession::login(PinEntry& pin) const {
    const Pin* value = pinFor(pin);
    if (!value) {
        return false;
    }
    stopIfInterrupted();
    const HRESULT result = m_row.token->VerifyPIN(PinText(*value).get(), pin.type());
    if (FAILED(result)) {
        throw refusedLogin(readPinState(m_module.calls(), m_row, pin.isSecurityOfficer()),
                           askedLogin(m_row, pin), result);
    }
    m_acceptedPin = &pin;
    stopIfInterrupted();
    return true;
}

DirectSession::DirectSession(const TokenSession& token, std::string asked,
                             CryptokiSession::Access access)
    : DirectSession(token.module().calls(), token.row(), std::move(asked), access) {
    if (PinEntry* const pin = token.acceptedPin()) {
        repeatLogin(*pin->get(token.row()), pin->isSecurityOfficer());
    }
}

}  // namespace zr::host
