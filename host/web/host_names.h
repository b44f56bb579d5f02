// The names by which browsers, extension and native messaging host know each other.
#pragma once

namespace zr::host {

/// The native messaging host, in manifests and in the extension.
inline constexpr const char* kBrowserHostName = "zrkey.browser";
/// Its program, beside the zrkey command; ".exe" is added on Windows.
inline constexpr const char* kBrowserHostProgram = "zrkey-browser";
/// The extension for Chromium and the browsers made from it, loaded from the sources: browsers make
/// it from the "key" in its manifest.
inline constexpr const char* kChromiumExtension = "fgifepjllfdomojcnbomceknplpjeemp";
/// The extension for Firefox.
inline constexpr const char* kFirefoxExtension = "zrkey@zrkey.example";

}  // namespace zr::host
