// From options to a token: the tokens of a module, the choice of one, the login.
#include "host/token/token_session.h"

#include <algorithm>
#include <utility>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

/// More slots than any reader has: a faulty module may report billions.
constexpr INT kMostSlots = 1 << 16;

std::string readText(IKeyObject& token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    zrkey::Text text;
    return SUCCEEDED((token.*getter)(text.receive())) ? text.utf8() : std::string();
}

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

}  // namespace

TokenTable readTokens(ITokenProvider& provider) {
    TokenTable table;
    const HRESULT result = provider.GetKeyCount(&table.slots);
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "count the tokens", result,
                             "check that the reader is connected");
    }
    for (LONG i = 0; i < std::min(table.slots, kMostSlots); ++i) {
        TokenRow row;
        row.index = i;
        if (FAILED(provider.OpenKey(i, row.token.receive())) || !row.token) {
            continue;
        }
        IKeyObject& token = *row.token.get();
        row.label = readText(token, &IKeyObject::GetLabel);
        row.serial = readText(token, &IKeyObject::GetSerialNumber);
        row.manufacturer = readText(token, &IKeyObject::GetManufacturerID);
        row.model = readText(token, &IKeyObject::GetModelID);
        if (!row.label.empty() || !row.serial.empty()) {
            table.rows.push_back(std::move(row));
        }
    }
    return table;
}

TokenRow chooseToken(TokenTable table, const TokenChoice& choice) {
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
    if (chosen.empty()) {
        throw commandFailure(kExitNotFound, asked,
                             present.empty() ? "none of " + std::to_string(table.slots) +
                                                   " slots contains a token that opens"
                                             : "the tokens are: " + present,
                             present.empty() ? "connect a token, or initialise the connected one"
                                             : "choose one of them");
    }
    return std::move(chosen.front());
}

PinEntry::PinEntry(const PinOptions& options, Need need)
    : m_source(options.source), m_securityOfficer(options.securityOfficer) {
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
    if (m_source->kind != PinSource::Kind::kPrompt) {
        m_pin = readPin(*m_source, "");
    } else if (!hasTerminal()) {
        throw noTerminal();
    }
}

const Pin* PinEntry::get(const TokenRow& token) {
    if (!m_source) {
        return nullptr;
    }
    if (!m_pin) {
        m_pin = readPin(*m_source, role() + " PIN of " + inQuotes(token.label) + ": ");
    }
    return &*m_pin;
}

std::string PinEntry::role() const {
    return m_securityOfficer ? "security officer" : "user";
}

INT PinEntry::type() const {
    return m_securityOfficer ? 1 : 0;
}

TokenSession::TokenSession(const TokenOptions& options)
    : m_module(options.module),
      m_row(chooseToken(readTokens(m_module.provider()), options.choice)) {}

bool TokenSession::login(PinEntry& pin) const {
    const Pin* value = pin.get(m_row);
    if (!value) {
        return false;
    }
    const HRESULT result = m_row.token->VerifyPIN(PinText(*value).get(), pin.type());
    if (FAILED(result)) {
        throw libraryFailure(
            kExitLoginRefused, "log in to " + inQuotes(m_row.label) + " as " + pin.role(), result,
            "the PIN is wrong or locked; retries are limited, so check the PIN before you "
            "try again");
    }
    return true;
}

}  // namespace zr::host
