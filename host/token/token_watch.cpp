// The tokens of a module as they come and go.
#include "host/token/token_watch.h"

#include <string>

#include "host/token/cryptoki_names.h"
#include "host/token/pkcs11_header.h"

namespace zr::host {
namespace {

/// A faulty module may never run out of events.
constexpr int kMostEvents = 1000;

Failure watchFailure(const std::string& function, CK_RV result) {
    const Cause cause = moduleCause(function, result);
    return commandFailure(kExitFailure, "watch the tokens", cause.text, cause.advice);
}

bool isSame(const TokenFacts& left, const TokenFacts& right) {
    return left.label == right.label && left.serial == right.serial;
}

}  // namespace

const char* TokenChange::name() const {
    switch (kind) {
        case Kind::kPresent:
            return "present";
        case Kind::kInserted:
            return "inserted";
        case Kind::kRemoved:
            break;
    }
    return "removed";
}

std::vector<TokenChange> TokenWatch::start() {
    // Events of what is there already.
    std::set<CK_SLOT_ID> ignored;
    m_hasEvents = takeEvents(ignored);
    std::vector<TokenChange> changes;
    for (const CK_SLOT_ID slot : listSlots()) {
        compare(slot, Sign::kNone, changes);
    }
    for (TokenChange& change : changes) {
        change.kind = TokenChange::Kind::kPresent;
    }
    return changes;
}

std::vector<TokenChange> TokenWatch::look() {
    std::vector<TokenChange> changes;
    const std::set<CK_SLOT_ID> unread = m_unread;
    std::set<CK_SLOT_ID> slots = unread;
    if (m_hasEvents && takeEvents(slots)) {
        for (const CK_SLOT_ID slot : slots) {
            compare(slot, unread.count(slot) == 0 ? Sign::kEvent : Sign::kNone, changes);
        }
        return changes;
    }
    m_hasEvents = false;
    const std::set<CK_SLOT_ID> listed = listSlots();
    slots = listed;
    for (const auto& [slot, token] : m_tokens) {
        slots.insert(slot);
    }
    for (const CK_SLOT_ID slot : slots) {
        compare(slot, listed.count(slot) == 0 ? Sign::kNotListed : Sign::kNone, changes);
    }
    return changes;
}

bool TokenWatch::takeEvents(std::set<CK_SLOT_ID>& slots) {
    for (int i = 0; i < kMostEvents; ++i) {
        CK_SLOT_ID slot = 0;
        const CK_RV result = m_module.takeSlotEvent(slot);
        if (result == CKR_FUNCTION_NOT_SUPPORTED) {
            return false;
        }
        if (result == CKR_NO_EVENT) {
            return true;
        }
        if (result != CKR_OK) {
            throw watchFailure("C_WaitForSlotEvent", result);
        }
        slots.insert(slot);
    }
    return true;
}

std::set<CK_SLOT_ID> TokenWatch::listSlots() const {
    std::vector<CK_SLOT_ID> slots;
    const CK_RV result = m_module.listSlots(true, slots);
    if (result != CKR_OK) {
        throw watchFailure("C_GetSlotList", result);
    }
    return {slots.begin(), slots.end()};
}

void TokenWatch::compare(CK_SLOT_ID slot, Sign sign, std::vector<TokenChange>& changes) {
    TokenFacts facts;
    const CK_RV result =
        sign == Sign::kNotListed ? CK_RV{CKR_TOKEN_NOT_PRESENT} : m_module.readToken(slot, facts);
    m_unread.erase(slot);
    if (result != CKR_OK && !isTokenGone(result)) {
        m_unread.insert(slot);
        return;
    }
    const bool isThere = result == CKR_OK && !isBlankToken(facts.label, facts.serial);
    const auto before = m_tokens.find(slot);
    // With an event it was taken out and put in again.
    if (before != m_tokens.end() &&
        (!isThere || sign == Sign::kEvent || !isSame(before->second, facts))) {
        changes.push_back({TokenChange::Kind::kRemoved, slot, before->second});
        m_tokens.erase(before);
    }
    if (isThere && m_tokens.emplace(slot, facts).second) {
        changes.push_back({TokenChange::Kind::kInserted, slot, facts});
    }
}

}  // namespace zr::host
