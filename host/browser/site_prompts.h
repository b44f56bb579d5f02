// The prompts of the site of a connection.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/browser/audit_log.h"
#include "host/browser/inbox.h"
#include "host/browser/prompt.h"
#include "host/browser/site_limits.h"
#include "host/web/browser_settings.h"

namespace zr::host {

/// The settings. Throws a PageError when they cannot be read.
SitePolicy readPolicy(const std::function<SitePolicy()>& read);

/// Prompts of one site: whether it may show one now, and what the user's answer means.
/// When a request came, and whether the user had just acted in the page.
struct Activation {
    bool isActive = false;
    std::chrono::steady_clock::time_point arrival = {};
};

class SitePrompts {
public:
    using Clock = std::chrono::steady_clock;

    /// An action of the user in the page counts so long. After the answer of a prompt, the next one
    /// needs none so long.
    static constexpr std::chrono::seconds kActivation{5};

    /// What prompts are shown with; all are borrowed.
    struct Parts {
        Prompt& prompt;
        Inbox& inbox;
        SiteLimits& limits;
        const std::function<SitePolicy()>& readPolicy;
    };

    SitePrompts(Origin origin, Parts parts) : m_origin(std::move(origin)), m_parts(parts) {}

    const Origin& origin() const { return m_origin; }
    /// The turn of this site to show prompts, until destruction.
    using Turn = std::unique_ptr<HeldLock>;

    /// Throws a PageError when the site may not show a prompt now.
    Turn begin(const Activation& activation);

    // During a turn. Throw a PageError unless the user agrees.
    Pin askPin(const PinQuestion& question);
    void confirm(const Confirmation& confirmation);

    /// How many prompts were opened.
    std::uint64_t count() const { return m_count; }

private:
    bool isNewAction(const Activation& activation) const;
    void noteOpened();
    void requirePolicy() const;
    void take(PromptEnd end);

    Origin m_origin;
    Parts m_parts;
    std::optional<Clock::time_point> m_opened;    ///< the last prompt
    std::optional<Clock::time_point> m_answered;  ///< the same; not when it was closed otherwise
    std::uint64_t m_count = 0;
};

}  // namespace zr::host
