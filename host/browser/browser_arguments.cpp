// The arguments with which browsers start the host.
#include "host/browser/browser_arguments.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "host/system/utf8_path.h"
#include "host/web/browser_settings.h"

namespace zr::host {
namespace {

constexpr std::string_view kChromiumScheme = "chrome-extension://";
constexpr std::string_view kParentWindow = "--parent-window=";

bool isDecimal(std::string_view text) {
    return !text.empty() && text.size() <= 20 &&
           std::ranges::all_of(text, [](char digit) { return digit >= '0' && digit <= '9'; });
}

std::optional<std::string> chromiumExtension(std::string_view origin) {
    if (!origin.starts_with(kChromiumScheme) || !origin.ends_with('/')) {
        return std::nullopt;
    }
    origin.remove_prefix(kChromiumScheme.size());
    origin.remove_suffix(1);
    std::string identifier(origin);
    return isChromiumExtension(identifier) ? std::optional(std::move(identifier)) : std::nullopt;
}

}  // namespace

std::optional<std::string> extensionOf(const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    const auto isParentWindow = [](const std::string& word) {
        return word.starts_with(kParentWindow) &&
               isDecimal(std::string_view(word).substr(kParentWindow.size()));
    };
    const auto window = std::ranges::find_if(words, isParentWindow);
    if (window != words.end()) {
        words.erase(window);
        return words.size() == 1 ? chromiumExtension(words.front()) : std::nullopt;
    }
    if (words.size() == 1) {
        return chromiumExtension(words.front());
    }
    const bool isFirefox = words.size() == 2 && toPath(words.front()).is_absolute() &&
                           isFirefoxExtension(words.back());
    return isFirefox ? std::optional(words.back()) : std::nullopt;
}

}  // namespace zr::host
