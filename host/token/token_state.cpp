// What a module says about its readers and tokens when the library only fails.
#include "host/token/token_state.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/token/cryptoki.h"
#include "host/token/cryptoki_names.h"
#include "host/token/pin.h"
#include "host/token/pkcs11_header.h"
#include "host/token/token_table.h"

namespace zr::host {
namespace {

/// A flag of the user's PIN, shifted by this, is the same flag of the security officer's.
constexpr unsigned kOfficerShift = 4;
static_assert(CKF_USER_PIN_LOCKED << kOfficerShift == CKF_SO_PIN_LOCKED);

/// Whether a text of the module can be the one that the library read. The library changes bytes
/// that are not valid UTF-8.
bool isSame(const std::string& text, const std::string& read) {
    return text == read || !utf8::is_valid(text);
}

PinState stateOf(CK_FLAGS flags, bool securityOfficer) {
    const CK_FLAGS pinFlags = securityOfficer ? flags >> kOfficerShift : flags;
    if (pinFlags & CKF_USER_PIN_LOCKED) {
        return PinState::kLocked;
    }
    if (pinFlags & CKF_USER_PIN_FINAL_TRY) {
        return PinState::kLastTry;
    }
    if (pinFlags & CKF_USER_PIN_COUNT_LOW) {
        return PinState::kFewTries;
    }
    // Only a module that sets the one flag can be expected to set the other.
    const bool isNotSet = !securityOfficer && (flags & CKF_TOKEN_INITIALIZED) != 0 &&
                          (flags & CKF_USER_PIN_INITIALIZED) == 0;
    return isNotSet ? PinState::kNotSet : PinState::kUsable;
}

PinLengths lengthsOf(const TokenFacts& facts) {
    // The greatest number means that the token does not say.
    const bool isKnown =
        facts.longestPin > 0 && facts.longestPin != CK_UNAVAILABLE_INFORMATION &&
        facts.shortestPin <= std::min<std::size_t>(facts.longestPin, Pin::kCapacity);
    return isKnown ? PinLengths{facts.shortestPin,
                                std::min<std::size_t>(facts.longestPin, Pin::kCapacity)}
                   : PinLengths();
}

/// A token in another place of the list: tokens before it were connected or removed.
/// @param missing  the result when it is in none of the slots.
TokenState findMoved(const Cryptoki& calls, const TokenRow& row,
                     const std::vector<CK_SLOT_ID>& slots, CK_RV missing) {
    TokenState state;
    for (const CK_SLOT_ID slot : slots) {
        const bool isRead = calls.readToken(slot, state.facts) == CKR_OK;
        if (isRead && !row.serial.empty() && state.facts.serial == row.serial &&
            state.facts.label == row.label) {
            state.slot = slot;
            state.result = CKR_OK;
            return state;
        }
    }
    state.facts = {};
    state.result = missing;
    return state;
}

}  // namespace

PinLengths PinLengths::within(const PinLengths& others) const {
    const PinLengths both = {std::max(shortest, others.shortest),
                             std::min(longest, others.longest)};
    return both.shortest <= both.longest ? both : others;
}

std::string PinLengths::text() const {
    if (longest == 0) {
        return {};
    }
    std::string text = " (";
    if (shortest < longest) {
        text.append(shortest > 0 ? std::to_string(shortest).append(" to ") : "up to ");
    }
    return text.append(std::to_string(longest))
        .append(longest == 1 ? " character)" : " characters)");
}

TokenState readTokenState(const Cryptoki& calls, const TokenRow& row) {
    TokenState state;
    std::vector<CK_SLOT_ID> slots;
    state.result = calls.listSlots(true, slots);
    if (state.result != CKR_OK) {
        return state;
    }
    const auto index = static_cast<std::size_t>(row.index);
    if (index >= slots.size()) {
        return findMoved(calls, row, slots, CKR_TOKEN_NOT_PRESENT);
    }
    state.slot = slots[index];
    state.result = calls.readToken(state.slot, state.facts);
    // Another token may be in its place.
    if (state.result == CKR_OK &&
        (!isSame(state.facts.label, row.label) || !isSame(state.facts.serial, row.serial))) {
        slots.erase(slots.begin() + row.index);
        return findMoved(calls, row, slots, CKR_DEVICE_REMOVED);
    }
    return state;
}

PinState readPinState(const Cryptoki& calls, const TokenRow& row, bool securityOfficer,
                      PinLengths* lengths) {
    const TokenState state = readTokenState(calls, row);
    if (state.result != CKR_OK) {
        return isTokenGone(state.result) ? PinState::kTokenRemoved : PinState::kUnknown;
    }
    if (lengths) {
        *lengths = lengthsOf(state.facts);
    }
    return stateOf(state.facts.flags, securityOfficer);
}

PinState pinStateOf(CK_FLAGS flags, bool securityOfficer) {
    return stateOf(flags, securityOfficer);
}

Cause whyNoToken(const Cryptoki& calls) {
    const auto readers = calls.slots(false);
    const auto slots = calls.slots(true);
    if (slots && slots->empty() && readers && readers->empty()) {
        return {"the module finds no reader",
                "connect a reader or a token, and check that its service runs"};
    }
    if (slots && slots->empty()) {
        return {"no reader contains a token", "connect a token"};
    }
    const auto isBlank = [&](CK_SLOT_ID slot) {
        TokenFacts facts;
        return calls.readToken(slot, facts) == CKR_OK && (facts.flags & CKF_TOKEN_INITIALIZED) == 0;
    };
    if (slots && std::any_of(slots->begin(), slots->end(), isBlank)) {
        return {"the token is not initialised", "initialise it with the tool of its maker"};
    }
    return {"the module does not open its tokens", "disconnect the token and connect it again"};
}

}  // namespace zr::host
