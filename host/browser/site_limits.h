// The limits that hold for all connections of a user of this machine, kept by locked files in a folder
// that only this user can use. A process that ends gives back what it holds.
#pragma once

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "host/browser/state_file.h"
#include "host/web/origin.h"

namespace zr::host {

class SiteLimits {
public:
    static constexpr int kConnections = 16;
    static constexpr int kConnectionsPerOrigin = 4;
    static constexpr std::chrono::seconds kWaitAfterCancel{30};
    static constexpr std::chrono::seconds kWaitAfterAbort{5};

    /// @param folder  exists; see browserStateFolder in host/browser/state_folder.h.
    SiteLimits(std::filesystem::path folder, Origin origin);

    /// Takes the place of one connection until destruction.
    /// @return false when there are too many. Throws a Failure when the folder cannot be used.
    bool takeConnection();
    /// Takes the turn to show a prompt until the result is destroyed.
    /// @return null when another prompt of this user is open. Throws a Failure as takeConnection does.
    std::unique_ptr<HeldLock> takePrompt();
    /// The user cancelled a prompt of this site. What cannot be written holds for this object alone.
    void noteCancelled();
    /// The same for a prompt that its page closed: the wait is shorter.
    void noteAborted();
    /// How long this site has to wait for its next prompt; nullopt: it need not.
    std::optional<std::chrono::seconds> waitAfterCancel() const;

private:
    void noteWait(std::chrono::milliseconds cancelled);
    std::unique_ptr<StateFile> openLocked(const char* name) const;
    std::unique_ptr<StateFile> openFile(const std::string& name) const;

    std::filesystem::path m_folder;
    Origin m_origin;
    std::unique_ptr<HeldLock> m_connection;
    std::optional<std::chrono::milliseconds> m_cancelled;
};

}  // namespace zr::host
