// The tokens of a module as they come and go.
#pragma once

#include <map>
#include <set>
#include <vector>

#include "host/output/failure.h"
#include "host/token/cryptoki.h"

namespace zr::host {

struct TokenChange {
    enum class Kind { kPresent, kInserted, kRemoved };
    Kind kind;
    CK_SLOT_ID slot;
    TokenFacts token;

    /// "present", "inserted" or "removed".
    const char* name() const;
};

/// Compares what a module says from time to time. A slot whose token has neither a label nor a
/// serial number contains no token, as for the list of tokens.
class TokenWatch {
public:
    /// @param module  initialised; outlives the watch.
    explicit TokenWatch(const Cryptoki& module) : m_module(module) {}

    /// The tokens that are there. To be called first. All throw a Failure when the module fails.
    std::vector<TokenChange> start();
    /// What changed since the last call. Asks only for the slots with an event when the module has
    /// events, else for all.
    std::vector<TokenChange> look();

private:
    /// What is known of a slot before its token is read.
    enum class Sign { kNone, kEvent, kNotListed };

    /// Takes the events that wait.
    /// @return false when the module has none.
    bool takeEvents(std::set<CK_SLOT_ID>& slots);
    std::set<CK_SLOT_ID> listSlots() const;
    void compare(CK_SLOT_ID slot, Sign sign, std::vector<TokenChange>& changes);

    const Cryptoki& m_module;
    bool m_hasEvents = true;
    std::map<CK_SLOT_ID, TokenFacts> m_tokens;
    std::set<CK_SLOT_ID> m_unread;  ///< slots that could not be read and are tried again
};

}  // namespace zr::host
