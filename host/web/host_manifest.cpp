// The manifest by which a browser finds zrkey-browser.
#include "host/web/host_manifest.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <set>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"
#include "host/web/browser_settings.h"
#include "host/web/host_names.h"
#include "host/web/manifest_places.h"
#include "host/web/strict_json.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

using Json = nlohmann::json;

const char* listOf(Browser browser) {
    return browser == Browser::kFirefox ? "allowed_extensions" : "allowed_origins";
}

/// What a manifest names for the extensions of a browser.
std::vector<std::string> entriesFor(Browser browser, const std::vector<std::string>& extensions) {
    std::vector<std::string> entries;
    for (const std::string& id : extensions) {
        if (browser == Browser::kFirefox && isFirefoxExtension(id)) {
            entries.push_back(id);
        } else if (browser != Browser::kFirefox && isChromiumExtension(id)) {
            entries.push_back(std::string("chrome-extension://").append(id).append("/"));
        }
    }
    return entries;
}

std::string textAt(const Json& object, const char* key) {
    const auto found = object.find(key);
    return found != object.end() && found->is_string() ? found->get<std::string>() : "";
}

/// The entries of a list; those that are not texts as empty ones.
std::set<std::string> textsAt(const Json& object, const char* key) {
    std::set<std::string> texts;
    const auto found = object.find(key);
    for (const Json& entry : found != object.end() && found->is_array() ? *found : Json::array()) {
        texts.insert(entry.is_string() ? entry.get<std::string>() : "");
    }
    return texts;
}

/// Of a manifest that is ours.
ManifestReport judgeContent(Browser browser, const Json& object, const fs::path& program,
                            const HostManifest& expected) {
    if (!toPath(textAt(object, "path")).is_absolute() && program.is_relative()) {
        return {ManifestState::kBroken, "names its program by a relative path"};
    }
    if (textAt(object, "type") != "stdio") {
        return {ManifestState::kBroken, "does not have the type \"stdio\""};
    }
    if (const std::string problem = programProblem(program); !problem.empty()) {
        return {ManifestState::kBroken, std::string("names ")
                                            .append(inQuotes(toUtf8(program)))
                                            .append(", which ")
                                            .append(problem)};
    }
    std::error_code error;
    if (!fs::equivalent(program, expected.program, error) || error) {
        return {ManifestState::kOutdated, std::string("starts ")
                                              .append(inQuotes(toUtf8(program)))
                                              .append(", not ")
                                              .append(inQuotes(toUtf8(expected.program)))};
    }
    const std::vector<std::string> entries = entriesFor(browser, expected.extensions);
    if (textsAt(object, listOf(browser)) != std::set<std::string>(entries.begin(), entries.end())) {
        return {ManifestState::kOutdated, "names other extensions"};
    }
    return {ManifestState::kInstalled};
}

}  // namespace

std::string manifestText(Browser browser, const HostManifest& manifest) {
    fs::path program = manifest.program;
    program.make_preferred();
    const std::u8string path = program.u8string();
    const nlohmann::ordered_json object = {
        {"name", kBrowserHostName},
        {"description", "ZRKey: cryptographic tokens for web pages"},
        {"path", std::string(path.begin(), path.end())},
        {"type", "stdio"},
        {listOf(browser), entriesFor(browser, manifest.extensions)}};
    try {
        constexpr int kIndent = 2;
        return object.dump(kIndent).append("\n");
    } catch (const Json::exception&) {
        throw commandFailure(kExitFailure, "write a manifest",
                             "the path of zrkey-browser is not UTF-8",
                             "install it in another folder");
    }
}

ManifestReport judgeManifest(Browser browser, std::string_view text, const fs::path& file,
                             const HostManifest& expected) {
    constexpr int kDepth = 8;
    std::string problem;
    const std::optional<Json> object = parseStrictJson(text, kDepth, problem);
    if (!object) {
        return {ManifestState::kForeign, problem};
    }
    if (!object->is_object()) {
        return {ManifestState::kForeign, "is not a JSON object"};
    }
    if (const std::string name = textAt(*object, "name"); name != kBrowserHostName) {
        return {ManifestState::kForeign, "has the name " + inQuotes(name)};
    }
    const fs::path program = programOf(file, toPath(textAt(*object, "path")));
    if (!isHostProgramName(program)) {
        return {ManifestState::kForeign, "starts " + inQuotes(toUtf8(program))};
    }
    return judgeContent(browser, *object, program, expected);
}

std::string programProblem(const fs::path& program) {
    std::error_code error;
    const fs::file_status status = fs::status(program, error);
    if (!fs::exists(status)) {
        return status.type() == fs::file_type::not_found
                   ? "does not exist"
                   : "cannot be looked at: " + error.message();
    }
    if (!fs::is_regular_file(status)) {
        return "is not a regular file";
    }
    constexpr fs::perms kExecutable =
        fs::perms::owner_exec | fs::perms::group_exec | fs::perms::others_exec;
    return (status.permissions() & kExecutable) == fs::perms::none ? "cannot be executed" : "";
}

}  // namespace zr::host
