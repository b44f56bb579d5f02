// Why the library could not load a module.
#pragma once

#include <zrkey/zrkey.hpp>

#include <filesystem>

#include "host/output/failure.h"

namespace zr::host {

/// A load that failed.
struct FailedLoad {
    ITokenProvider& provider;        ///< it may have loaded and initialised the module
    HRESULT result;                  ///< the library's
    std::filesystem::path module;    ///< absolute
    std::filesystem::path folder;    ///< where the library looks for config.xml
    std::filesystem::path loadable;  ///< the path that the library got
};

/// Finds the cause: first in the module, then in config.xml. It initialises the module once more,
/// for its result, when it is not initialised; if that succeeds, it finalises it.
Cause findLoadCause(const FailedLoad& load);

}  // namespace zr::host
