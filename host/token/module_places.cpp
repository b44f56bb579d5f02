// The places where modules are looked for.
#include "host/token/module_places.h"

#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include "host/system/module_folders.h"
#include "host/system/system.h"
#include "host/system/utf8_path.h"

namespace fs = std::filesystem;

namespace zr::host {
namespace {

using Keys = std::map<std::string, std::string>;

constexpr std::string_view kBlanks = " \t\r";
constexpr const char* kEnding = ".module";
/// How p11-kit's files name this command.
constexpr std::string_view kProgram = "zrkey";
constexpr std::size_t kMostBytes = 1 << 16;
constexpr std::size_t kMostFiles = 1000;

std::optional<ModulePlaces> s_replaced;

std::vector<fs::path> pathsOf(const std::vector<std::string>& texts) {
    std::vector<fs::path> paths(texts.size());
    std::transform(texts.begin(), texts.end(), paths.begin(), toPath);
    return paths;
}

std::string_view trimmed(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

bool isFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(path, ignored);
}

/// The text of a file; empty when it cannot be read, is not a regular file or is too large: another
/// file may say what it does not.
std::string readSmallFile(const fs::path& path) {
    std::error_code error;
    const int descriptor = isFile(path) ? openForReading(toUtf8(path), error) : -1;
    if (descriptor < 0) {
        return {};
    }
    std::string text;
    std::array<char, 4096> part;
    while (const std::size_t count = readSome(descriptor, part.data(), part.size(), error)) {
        text.append(part.data(), count);
        if (text.size() > kMostBytes) {
            text.clear();
            break;
        }
    }
    closeDescriptor(descriptor);
    return text;
}

/// The names of the files NAME.module in a folder, without the ending.
std::vector<std::string> namesIn(const fs::path& folder) {
    std::vector<std::string> names;
    std::error_code error;
    fs::directory_iterator entry(folder, error);
    for (std::size_t i = 0; !error && i < kMostFiles && entry != fs::directory_iterator(); ++i) {
        std::string name = toUtf8(entry->path().filename());
        if (name.ends_with(kEnding)) {
            names.push_back(name.substr(0, name.rfind('.')));
        }
        entry.increment(error);
    }
    return names;
}

/// What the files of a module say, the most important first.
Keys readModuleKeys(const ModulePlaces& places, const std::string& name) {
    Keys keys;
    for (const fs::path& folder : places.configurations) {
        int badLine = 0;
        keys.merge(parseKeys(readSmallFile(folder / toPath(name + kEnding)), ':', badLine));
    }
    return keys;
}

bool isListed(std::string_view list, std::string_view program) {
    constexpr std::string_view kSeparators = ", \t";
    while (!list.empty()) {
        const std::size_t end = std::min(list.find_first_of(kSeparators), list.size());
        if (list.substr(0, end) == program) {
            return true;
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return false;
}

/// Whether a module is one for this command.
bool isEnabled(const Keys& keys) {
    const auto enabled = keys.find("enable-in");
    const auto disabled = keys.find("disable-in");
    const auto trust = keys.find("trust-policy");
    return (enabled == keys.end() || isListed(enabled->second, kProgram)) &&
           (disabled == keys.end() || !isListed(disabled->second, kProgram)) &&
           (trust == keys.end() || trust->second != "yes");
}

/// @param file  absolute, or relative to one of the folders.
std::optional<fs::path> findFile(const ModulePlaces& places, const std::string& file) {
    const fs::path path = toPath(file);
    if (path.is_absolute()) {
        return isFile(path) ? std::optional(path) : std::nullopt;
    }
    for (const fs::path& folder : places.folders) {
        if (isFile(folder / path)) {
            return folder / path;
        }
    }
    return std::nullopt;
}

std::optional<fs::path> fileOf(const ModulePlaces& places, const Keys& keys) {
    const auto module = keys.find("module");
    return module != keys.end() && !module->second.empty() ? findFile(places, module->second)
                                                           : std::nullopt;
}

}  // namespace

ModulePlaces modulePlaces() {
    if (s_replaced) {
        return *s_replaced;
    }
    return {pathsOf(moduleFolders()), pathsOf(moduleConfigurationFolders())};
}

void replaceModulePlaces(std::optional<ModulePlaces> places) {
    s_replaced = std::move(places);
}

std::map<std::string, std::string> parseKeys(std::string_view text, char separator, int& badLine) {
    Keys keys;
    badLine = 0;
    for (int number = 1; !text.empty(); ++number) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        const std::string_view line = trimmed(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        const std::size_t middle = line.find(separator);
        const std::string_view key = trimmed(line.substr(0, middle));
        if (line.empty() || line.front() == '#') {
            continue;
        }
        if (middle != std::string_view::npos && !key.empty()) {
            keys[std::string(key)] = trimmed(line.substr(middle + 1));
        } else if (badLine == 0) {
            badLine = number;
        }
    }
    return keys;
}

std::vector<KnownModule> knownModules(const ModulePlaces& places) {
    std::vector<std::string> names;
    for (const fs::path& folder : places.configurations) {
        const std::vector<std::string> more = namesIn(folder);
        names.insert(names.end(), more.begin(), more.end());
    }
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    std::vector<KnownModule> modules;
    for (const std::string& name : names) {
        const Keys keys = readModuleKeys(places, name);
        const std::optional<fs::path> file = isEnabled(keys) ? fileOf(places, keys) : std::nullopt;
        const bool isKnown =
            std::any_of(modules.begin(), modules.end(), [&](const KnownModule& other) {
                std::error_code ignored;
                return file && fs::equivalent(other.file, *file, ignored);
            });
        if (file && !isKnown) {
            modules.push_back({name, *file});
        }
    }
    return modules;
}

std::optional<fs::path> findModule(const ModulePlaces& places, const std::string& name) {
    if (std::optional<fs::path> file = fileOf(places, readModuleKeys(places, name))) {
        return file;
    }
    for (const fs::path& folder : places.folders) {
        for (const std::string& fileName : moduleFileNames(name)) {
            if (isFile(folder / toPath(fileName))) {
                return folder / toPath(fileName);
            }
        }
    }
    return std::nullopt;
}

}  // namespace zr::host
