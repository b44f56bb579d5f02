// One connection of a page: the handshake, then one request after another. All of it is the worker's,
// on the main thread, where every call of the module is made.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/browser/audit_log.h"
#include "host/browser/call_time.h"
#include "host/browser/inbox.h"
#include "host/browser/page_objects.h"
#include "host/browser/replies.h"
#include "host/browser/site_limits.h"
#include "host/browser/site_prompts.h"
#include "host/browser/uploads.h"
#include "host/objects/provider_object.h"

namespace zr::host {

/// Where a connection is.
struct Surroundings {
    Prompt& prompt;
    std::function<SitePolicy()> readPolicy;
    /// The folder for limits and log; it makes a folder of this user the current one.
    std::function<std::filesystem::path()> enterFolder;
    /// A site that was denied is noticed after so long, by its next request.
    std::chrono::milliseconds policyAge{2000};
};

class Connection {
public:
    /// All are borrowed.
    Connection(Inbox& inbox, Replies& replies, const Surroundings& surroundings)
        : m_inbox(inbox), m_replies(replies), m_surroundings(surroundings) {}

    /// Serves the page until it is gone, then logs out and closes everything.
    void run();
    // What run consists of.
    /// @return false when the handshake failed or was a check; serve must not be called then.
    bool greet(const HelloMessage& hello);
    /// Carries out a request and answers it.
    void serve(const RequestMessage& request);
    /// For the uploads of requests that were not carried out.
    void changeUploads(const std::vector<UploadChange>& changes);
    void close();
    /// For the attendant, while the worker is within a call: notes in the log that it is late.
    void noteLate(const std::string& member);

private:
    /// What the handshake made.
    struct Session {
        Session(const Origin& origin, const std::filesystem::path& folder, const SitePolicy& policy,
                Inbox& inbox, const Surroundings& surroundings)
            : limits(folder, origin),
              prompts(origin, {surroundings.prompt, inbox, limits, surroundings.readPolicy}),
              timed(inbox, std::chrono::seconds(policy.callSeconds())) {}

        SiteLimits limits;
        SitePrompts prompts;
        TimedCalls timed;
    };

    void open(const HelloMessage& hello);
    /// The policy for the site. Throws a PageError when it is not allowed.
    SitePolicy requireAllowed(const Origin& origin) const;
    void checkPolicy();
    nlohmann::json call(const RequestMessage& request, std::optional<PageObject>& object);
    nlohmann::json callConnection(const RequestMessage& request);
    Value callObject(const RequestMessage& request, const PageObject& object, const Member& member,
                     const std::vector<Value>& values);
    PageError errorNow(const std::optional<PageObject>& object) const;
    /// @param isOfUser  the user was asked, or was logged out.
    void note(const RequestMessage& request, const char* outcome, bool isOfUser);

    Inbox& m_inbox;
    Replies& m_replies;
    const Surroundings& m_surroundings;
    std::optional<AuditLog> m_audit;
    std::optional<Session> m_session;
    /// What the log has of requests without the user: it has them once, so that a page cannot fill it
    /// to push older lines out.
    std::set<std::pair<std::string, std::string>> m_noted;
    std::uint64_t m_provider = 0;
    std::chrono::steady_clock::time_point m_policyRead;
    bool m_isDenied = false;
    bool m_isLoggedOut = false;  ///< by the current request
    PageObjects m_objects;
    Uploads m_uploads;
};

}  // namespace zr::host
