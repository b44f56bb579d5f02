// A process that uses the limits and the log as a native messaging host does.
// usage: state_user FOLDER ORIGIN COUNT   notes so many lines, and ends while it holds a connection and
//                                         the turn to show a prompt; exit code 0 when it got them
#include <cstdlib>
#include <memory>
#include <string>

#include "host/browser/audit_log.h"
#include "host/browser/site_limits.h"
#include "host/system/utf8_path.h"

int main(int, char** argv) {
    using zr::host::SiteLimits;
    std::string problem;
    const auto origin = zr::host::Origin::read(argv[2], problem);
    const auto folder = zr::host::toPath(argv[1]);
    SiteLimits limits(folder, origin.value());
    zr::host::AuditLog log(folder, origin->text());
    for (int i = std::stoi(argv[3]); i > 0; --i) {
        log.note("sign", std::to_string(i));
    }
    const bool isConnected = limits.takeConnection();
    const std::unique_ptr<zr::host::HeldLock> turn = limits.takePrompt();
    // Nothing is destroyed: as in a process that is killed.
    std::_Exit(isConnected && turn ? 0 : 1);
}
