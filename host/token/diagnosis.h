// Looks at everything that a login needs, in order, without logging in.
#pragma once

#include <string>
#include <vector>

#include "host/token/token_options.h"

namespace zr::host {

struct Check {
    enum class Status { kOk, kWarning, kFailed };
    std::string name;
    Status status = Status::kOk;
    std::string found;
    std::string advice = {};  ///< what to do; empty when it is good

    /// "ok", "warning" or "failed".
    const char* statusName() const;
};

struct Diagnosis {
    std::vector<Check> checks;
    /// 0 when a login could work, else that of a login that fails for the first reason found.
    int exitCode = 0;
};

/// Checks the module first, by itself, then the configuration, then the readers and tokens that the
/// library finds. What needs a part that failed is left out.
Diagnosis diagnose(const ModuleOptions& options);

}  // namespace zr::host
