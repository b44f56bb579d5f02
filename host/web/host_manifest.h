// The manifest by which a browser finds zrkey-browser: its text, and what is wrong with one.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "host/web/browsers.h"

namespace zr::host {

/// What a manifest is to say.
struct HostManifest {
    std::filesystem::path program;        ///< zrkey-browser, absolute
    std::vector<std::string> extensions;  ///< those that may start it, of all browsers
};

/// Throws a Failure when the path of the program is not UTF-8.
std::string manifestText(Browser browser, const HostManifest& manifest);

enum class ManifestState {
    kInstalled,  ///< it says what it is to say
    kMissing,
    kOutdated,  ///< ours, but it starts another zrkey-browser, or for other extensions
    kBroken,    ///< ours, and cannot work
    kForeign    ///< another program's, or unreadable
};

struct ManifestReport {
    ManifestState state = ManifestState::kMissing;
    std::string problem = {};  ///< what is wrong, after "it"; empty when nothing is
};

/// @param file  where it is: a path in it may be relative to that.
ManifestReport judgeManifest(Browser browser, std::string_view text,
                             const std::filesystem::path& file, const HostManifest& expected);

/// Why a file cannot be started as zrkey-browser; empty when it can.
std::string programProblem(const std::filesystem::path& program);

}  // namespace zr::host
