// browser.json as text: what it may say, and how it is written.
#include <algorithm>
#include <cmath>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/utf8_path.h"
#include "host/web/browser_settings.h"
#include "host/web/strict_json.h"

namespace zr::host {
namespace {

using Json = nlohmann::json;

constexpr unsigned kMostCallSeconds = 600;
constexpr std::size_t kMostPathBytes = 4096;

/// What is wrong with the file; thrown within this file.
struct SettingsProblem {
    std::string text;
};

[[noreturn]] void refuse(const std::string& key, const std::string& why) {
    throw SettingsProblem{
        std::string("has the key ").append(inQuotes(key)).append(", ").append(why)};
}

/// A text that may be long, for a message.
std::string shortened(const std::string& text) {
    constexpr std::size_t kMost = 80;
    return inQuotes(text.size() > kMost ? text.substr(0, kMost).append("...") : text);
}

std::string readPath(const std::string& key, const Json& value) {
    if (!value.is_string()) {
        refuse(key, "which must be a text");
    }
    std::string path = value.get<std::string>();
    const bool hasControls = std::any_of(path.begin(), path.end(), [](char c) {
        return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
    });
    if (hasControls || path.size() > kMostPathBytes) {
        refuse(key,
               hasControls ? "whose path contains a control character" : "whose path is too long");
    }
    if (!toPath(path).is_absolute()) {
        refuse(key, "whose path is not a full one");
    }
    return path;
}

std::vector<std::string> readTexts(const std::string& key, const Json& value) {
    std::vector<std::string> texts;
    if (!value.is_array()) {
        refuse(key, "which must be a list of texts");
    }
    for (const Json& entry : value) {
        if (!entry.is_string()) {
            refuse(key, "which must be a list of texts");
        }
        texts.push_back(entry.get<std::string>());
    }
    return texts;
}

template <class Entry>
void addOnce(std::vector<Entry>& list, Entry entry) {
    if (std::find(list.begin(), list.end(), entry) == list.end()) {
        list.push_back(std::move(entry));
    }
}

std::vector<Origin> readOrigins(const std::string& key, const Json& value) {
    std::vector<Origin> origins;
    for (const std::string& text : readTexts(key, value)) {
        std::string problem;
        std::optional<Origin> origin = Origin::read(text, problem);
        if (!origin) {
            refuse(key, "in which " + shortened(text) + ' ' + problem);
        }
        addOnce(origins, std::move(*origin));
    }
    return origins;
}

std::vector<std::string> readExtensions(const std::string& key, const Json& value) {
    std::vector<std::string> extensions;
    for (const std::string& text : readTexts(key, value)) {
        if (!isChromiumExtension(text) && !isFirefoxExtension(text)) {
            refuse(key, "in which " + shortened(text) + " is not the identifier of an extension");
        }
        addOnce(extensions, text);
    }
    return extensions;
}

unsigned readSeconds(const std::string& key, const Json& value) {
    const double number = value.is_number() ? value.get<double>() : 0;
    if (number < 1 || number > kMostCallSeconds || std::floor(number) != number) {
        refuse(key, "which must be a whole number from 1 to 600");
    }
    return static_cast<unsigned>(number);
}

void readKey(BrowserSettings& settings, SettingsScope scope, const std::string& key,
             const Json& value) {
    if (key == "module") {
        settings.module = readPath(key, value);
    } else if (key == "configuration") {
        settings.configuration = readPath(key, value);
    } else if (key == "pinentry") {
        settings.pinentry = readPath(key, value);
    } else if (key == "allow") {
        settings.allow = readOrigins(key, value);
    } else if (key == "deny") {
        settings.deny = readOrigins(key, value);
    } else if (key == "extensions") {
        settings.extensions = readExtensions(key, value);
    } else if (key == "callSeconds") {
        settings.callSeconds = readSeconds(key, value);
    } else if (key == "usersMayAllow" && scope == SettingsScope::kUser) {
        refuse(key, "which is only for the system's file");
    } else if (key == "usersMayAllow") {
        if (!value.is_boolean()) {
            refuse(key, "which must be true or false");
        }
        settings.usersMayAllow = value.get<bool>();
    } else {
        throw SettingsProblem{"has the unknown key " + shortened(key)};
    }
}

void addOrigins(nlohmann::ordered_json& object, const char* key, const std::vector<Origin>& list) {
    for (const Origin& origin : list) {
        object[key].push_back(origin.text());
    }
}

}  // namespace

bool isChromiumExtension(const std::string& id) {
    constexpr std::size_t kLetters = 32;
    return id.size() == kLetters && id.find_first_not_of("abcdefghijklmnop") == std::string::npos;
}

bool isFirefoxExtension(const std::string& id) {
    constexpr std::size_t kMost = 80;
    constexpr const char* kLetters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._";
    if (id.size() > kMost) {
        return false;
    }
    if (id.starts_with('{')) {
        const std::string_view pattern = "{hhhhhhhh-hhhh-hhhh-hhhh-hhhhhhhhhhhh}";
        return std::equal(id.begin(), id.end(), pattern.begin(), pattern.end(), [](char c, char p) {
            const bool isHex =
                std::string_view("0123456789abcdefABCDEF").find(c) != std::string_view::npos;
            return p == 'h' ? isHex : c == p;
        });
    }
    const std::size_t at = id.find('@');
    return at != std::string::npos && at + 1 < id.size() && id.find_first_not_of(kLetters) == at &&
           id.find_first_not_of(kLetters, at + 1) == std::string::npos;
}

std::optional<BrowserSettings> parseSettings(std::string_view text, SettingsScope scope,
                                             std::string& problem) {
    // Editors of Windows write it.
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (text.starts_with(kByteOrderMark)) {
        text.remove_prefix(kByteOrderMark.size());
    }
    // The file is an object with lists of texts.
    constexpr int kDepth = 2;
    const std::optional<Json> json = parseStrictJson(text, kDepth, problem);
    if (!json) {
        return std::nullopt;
    }
    if (!json->is_object()) {
        problem = "is not a JSON object";
        return std::nullopt;
    }
    BrowserSettings settings;
    try {
        for (const auto& [key, value] : json->items()) {
            readKey(settings, scope, key, value);
        }
    } catch (const SettingsProblem& found) {
        problem = found.text;
        return std::nullopt;
    }
    return settings;
}

std::string settingsText(const BrowserSettings& settings) {
    nlohmann::ordered_json object = nlohmann::ordered_json::object();
    const auto addText = [&object](const char* key, const std::optional<std::string>& text) {
        if (text) {
            object[key] = *text;
        }
    };
    addText("module", settings.module);
    addText("configuration", settings.configuration);
    addText("pinentry", settings.pinentry);
    addOrigins(object, "allow", settings.allow);
    addOrigins(object, "deny", settings.deny);
    if (!settings.extensions.empty()) {
        object["extensions"] = settings.extensions;
    }
    if (!settings.usersMayAllow) {
        object["usersMayAllow"] = false;
    }
    if (settings.callSeconds) {
        object["callSeconds"] = *settings.callSeconds;
    }
    try {
        constexpr int kIndent = 2;
        return object.dump(kIndent).append("\n");
    } catch (const Json::exception&) {
        throw commandFailure(kExitFailure, "write browser.json", "a path in it is not UTF-8",
                             "rename the file or folder");
    }
}

}  // namespace zr::host
