// Which module a command uses.
#include "host/token/module_choice.h"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>
#include <vector>

#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/interruption.h"
#include "host/system/module_search.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"
#include "host/token/configuration.h"
#include "host/token/cryptoki.h"
#include "host/token/cryptoki_names.h"
#include "host/token/module_places.h"
#include "host/token/pkcs11_header.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

constexpr const char* kVariable = "ZRKEY_MODULE";
constexpr const char* kSettings = "zrkey.conf";

/// The path of a module that a user names. What cannot be found stays as it is: the failure of the
/// load says what is wrong with it.
std::string resolve(const std::string& module) {
    const fs::path path = toPath(module);
    std::error_code ignored;
    if (path.has_parent_path() || fs::exists(path, ignored)) {
        return module;
    }
    const std::optional<fs::path> found = findModule(modulePlaces(), module);
    return found ? toUtf8(*found) : module;
}

/// The module of a settings file; empty when there is no file, or none in it.
std::string readSettings(const fs::path& file) {
    const std::string name = toUtf8(file);
    const std::string asked = "read the settings " + inQuotes(name);
    std::error_code error;
    if (!fs::exists(file, error) && !error) {
        return {};
    }
    if (error || !fs::is_regular_file(file, error)) {
        throw error ? systemFailure(kExitModule, asked, error, "check its permissions")
                    : commandFailure(kExitModule, asked, "it is not a regular file", "remove it");
    }
    const ErasedBytes bytes = readBytes(name, error);
    if (error) {
        throw systemFailure(kExitModule, asked, error, "check its permissions");
    }
    int badLine = 0;
    const auto keys = parseKeys(viewOf(bytes), '=', badLine);
    if (badLine > 0) {
        throw commandFailure(kExitModule, asked,
                             "line " + std::to_string(badLine) + " is not KEY = VALUE",
                             "correct it: module = PATH");
    }
    const auto other = std::find_if(keys.begin(), keys.end(),
                                    [](const auto& entry) { return entry.first != "module"; });
    if (other != keys.end()) {
        throw commandFailure(kExitModule, asked, "unknown setting " + inQuotes(other->first),
                             "the only one is module");
    }
    const auto module = keys.find("module");
    if (module == keys.end()) {
        return {};
    }
    const fs::path path = toPath(module->second);
    if (path.has_parent_path() && path.is_relative()) {
        throw commandFailure(kExitModule, asked,
                             "the path " + inQuotes(module->second) + " is relative",
                             "give a full path or a name");
    }
    return module->second;
}

/// The module that the user's settings name, or the system's.
std::string defaultModule() {
    std::string module;
    for (const std::optional<fs::path>& file : {userConfiguration(), systemConfiguration()}) {
        if (module.empty() && file) {
            module = readSettings(file->parent_path() / kSettings);
        }
    }
    return module;
}

/// Why a module cannot be the chosen one; empty when it has a token.
std::string whyNot(const Cryptoki& module) {
    const auto slots = module.slots(true);
    const bool hasToken = slots && std::any_of(slots->begin(), slots->end(), [&](CK_SLOT_ID slot) {
                              TokenFacts facts;
                              return module.readToken(slot, facts) == CKR_OK &&
                                     !isBlankToken(facts.label, facts.serial);
                          });
    return hasToken ? "" : "no token";
}

/// The same, with its start and its end.
std::string examine(const fs::path& file) {
    const std::string path = toUtf8(file);
    if (const std::string problem = pathProblem(path, PathUse::kModule); !problem.empty()) {
        return "its path " + problem;
    }
    searchBesideModule(path);
    const Cryptoki module(path);
    if (!module.library().isLoaded()) {
        return module.library().problem();
    }
    if (!module.problem().empty()) {
        return module.problem();
    }
    const CK_RV result = module.initialise();
    if (result != CKR_OK) {
        return "its C_Initialize returned " + resultText(result);
    }
    std::string why = whyNot(module);
    module.finalise();
    return why;
}

void append(std::string& list, const std::string& entry) {
    list.append(list.empty() ? "" : ", ").append(entry);
}

std::string onlyModuleWithToken() {
    const InterruptionGuard interruptions;
    const std::vector<KnownModule> modules = knownModules(modulePlaces());
    std::vector<KnownModule> chosen;
    std::string refused;
    std::string names;
    for (const KnownModule& module : modules) {
        stopIfInterrupted();
        const std::string why = examine(module.file);
        if (why.empty()) {
            chosen.push_back(module);
            append(names, inQuotes(module.name));
        } else {
            append(refused, inQuotes(module.name) + " (" + why + ")");
        }
    }
    stopIfInterrupted();
    const std::string asked = "load a module";
    if (modules.empty()) {
        throw commandFailure(kExitUsage, asked, "no module is named",
                             std::string("give --module PATH or set ") + kVariable);
    }
    if (chosen.empty()) {
        throw commandFailure(
            kExitNotFound, asked,
            "no module is named, and none of p11-kit's has a token: " + refused,
            std::string("connect the token, give --module PATH or set ") + kVariable);
    }
    if (chosen.size() > 1) {
        throw commandFailure(kExitNotFound, asked,
                             "no module is named, and several of p11-kit's have tokens: " + names,
                             std::string("choose one with --module, or set ") + kVariable);
    }
    std::string path = toUtf8(chosen.front().file);
    Console::note("zrkey: using the module " + inQuotes(path) +
                  " of p11-kit, the only one with a token\n");
    return path;
}

}  // namespace

ChosenModule chooseModule(const std::string& option) {
    if (!option.empty()) {
        return {resolve(option), "--module"};
    }
    if (const std::string module = environmentVariable(kVariable).value_or(""); !module.empty()) {
        return {resolve(module), kVariable};
    }
    if (const std::string module = defaultModule(); !module.empty()) {
        return {resolve(module), "the settings"};
    }
    return {onlyModuleWithToken(), "p11-kit"};
}

}  // namespace zr::host
