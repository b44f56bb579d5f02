// zrkey-browser, the native messaging host.
#include "host/browser/browser_host.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>

#include "host/browser/browser_arguments.h"
#include "host/browser/complaint.h"
#include "host/browser/serving.h"
#include "host/browser/state_folder.h"
#include "host/output/failure.h"
#include "host/system/module_search.h"
#include "host/system/secret_memory.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

constexpr const char* kUsage =
    "zrkey-browser: a browser starts this program for its extension; the only other use is "
    "zrkey-browser --version\n";

/// Makes a folder of this user the current one. Throws a Failure.
/// @return the folder of the host's state.
std::filesystem::path enterStateFolder() {
    std::filesystem::path state = browserStateFolder();
    const std::filesystem::path folder = state / "work";
    const std::string asked = "use the folder " + toUtf8(folder);
    if (const std::error_code error = makeOwnFolder(folder)) {
        throw systemFailure(kExitFailure, asked, error, "check its rights");
    }
    if (const std::string problem = folderProblem(folder); !problem.empty()) {
        throw commandFailure(kExitFailure, asked, "it " + problem, "remove it");
    }
    std::error_code error;
    std::filesystem::current_path(folder, error);
    if (error) {
        throw systemFailure(kExitFailure, asked, error, "check its rights");
    }
    return state;
}

/// The settings; nullopt when they cannot be read, which the handshake reports.
std::optional<SitePolicy> readSettingsNow() {
    try {
        return SitePolicy::read();
    } catch (const Failure&) {
        return std::nullopt;
    }
}

}  // namespace

int runBrowserHost(const std::vector<std::string>& arguments, const OwnStreams& streams) {
    if (arguments == std::vector<std::string>{"--version"}) {
        return writeAll(streams.output, "zrkey-browser " ZRKEY_VERSION "\n") ? kExitFailure
                                                                             : kExitOk;
    }
    const std::optional<std::string> extension = extensionOf(arguments);
    if (!extension) {
        complain(kUsage);
        return kExitUsage;
    }
    const SitePolicy policy = readSettingsNow().value_or(SitePolicy({}, {}));
    if (!policy.knowsExtension(*extension)) {
        complain("zrkey-browser: the extension " + *extension + " is not known\n");
        return kExitUsage;
    }
    restrictModuleSearch();
    noteSignals();
    // None of these is destroyed: the threads use them until the process ends.
    new NoCoreDumps;
    Prompt* const prompt = makePrompt(policy.pinentry()).release();
    auto* const surroundings = new Surroundings{*prompt, SitePolicy::read, enterStateFolder};
    auto* const serving = new Serving(streams.input, streams.output, *surroundings, endProcess);
    return serving->run();
}

}  // namespace zr::host
