// Why the library could not load a module.
#pragma once

#include <zrkey/zrkey.hpp>

#include <filesystem>
#include <optional>
#include <string>

#include "host/output/failure.h"
#include "host/token/configuration.h"

namespace zr::host {

class Cryptoki;

/// The folder that is current during Load.
struct LoadFolder {
    std::filesystem::path path;
    std::string what;         ///< how messages call it
    std::string alternative;  ///< how to get another one
};

/// A load that failed.
struct FailedLoad {
    ITokenProvider& provider;        ///< it may have loaded and initialised the module
    HRESULT result;                  ///< the library's
    std::filesystem::path module;    ///< absolute
    std::filesystem::path loadable;  ///< the path that the library got
    LoadFolder folder;
    ConfigurationPlace configuration;
};

/// What is wrong with the file of a module, before anything is loaded.
std::optional<Cause> findFileCause(const std::filesystem::path& module);

/// Why the system did not load it.
Cause whyNotLoaded(const std::filesystem::path& module, const Cryptoki& calls);

/// The platform that a file was built for, as platformOf says it.
std::string platformOfFile(const std::filesystem::path& module);

/// Finds the cause: first in the module, then in the configuration. It initialises the module once more,
/// for its result, when it is not initialised; if that succeeds, it finalises it.
Cause findLoadCause(const FailedLoad& load);

}  // namespace zr::host
