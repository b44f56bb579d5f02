// No traces on Windows: Debian's spy module is a library of Linux.
#include "host/system/tracing.h"

namespace zr::host {

NoSpy whyNoSpy() {
    return {"the spy module that writes down the calls is a library of Linux",
            "run the command on Linux"};
}

std::string findSpy() {
    return {};
}

std::optional<int> runTraced(const std::string&, const std::vector<std::string>&,
                             const std::function<void(std::string_view)>&, std::error_code& error) {
    error = std::make_error_code(std::errc::not_supported);
    return std::nullopt;
}

std::string spyInsteadOf(const std::string&, std::error_code&) {
    return {};
}

}  // namespace zr::host
