// Runs the host after main has moved the streams.
#pragma once

#include <string>
#include <vector>

#include "host/browser/own_streams.h"

namespace zr::host {

/// @return the exit code of the process. Its threads may still run.
int runBrowserHost(const std::vector<std::string>& arguments, const OwnStreams& streams);

}  // namespace zr::host
