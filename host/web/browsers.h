// The browsers that zrkey-browser can be installed for.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

enum class Browser { kChromium, kChrome, kEdge, kFirefox };

inline constexpr std::array<Browser, 4> kBrowsers = {Browser::kChromium, Browser::kChrome,
                                                     Browser::kEdge, Browser::kFirefox};

/// "chromium", "chrome", "edge" or "firefox".
constexpr const char* nameOf(Browser browser) {
    constexpr std::array<const char*, 4> kNames = {"chromium", "chrome", "edge", "firefox"};
    return kNames[static_cast<std::size_t>(browser)];
}

inline std::optional<Browser> browserNamed(std::string_view name) {
    for (const Browser browser : kBrowsers) {
        if (name == nameOf(browser)) {
            return browser;
        }
    }
    return std::nullopt;
}

}  // namespace zr::host
