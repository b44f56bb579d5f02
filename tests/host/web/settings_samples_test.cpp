// The texts of settings_samples.json, which the schema of browser.json is checked with too.
#include <nlohmann/json.hpp>

#include "host/system/utf8_path.h"
#include "tests/host/web/web_test.h"

namespace zr::test {
namespace {

using host::SettingsScope;

/// A sample with its full paths made those of this target.
std::string onThisTarget(std::string text) {
    const std::string drive = host::toUtf8(std::filesystem::current_path().root_name());
    const std::string begin = "\"/";
    for (std::size_t at = 0; (at = text.find(begin, at)) != std::string::npos;
         at += begin.size() + drive.size()) {
        text.insert(at + 1, drive);
    }
    return text;
}

TEST(SettingsSamplesTest, AreAcceptedAndRefusedAsTheSchemaDoes) {
    const auto samples = nlohmann::json::parse(readFile(ZRKEY_SETTINGS_SAMPLES));
    EXPECT_EQ(3u, samples.size());
    for (const auto& [kind, texts] : samples.items()) {
        EXPECT_GE(texts.size(), 8u);
        for (const auto& text : texts) {
            std::string problem;
            const bool isAccepted = host::parseSettings(onThisTarget(text.get<std::string>()),
                                                        SettingsScope::kUser, problem)
                                        .has_value();
            EXPECT_EQ(kind == "accepted", isAccepted) << text << ": " << problem;
        }
    }
}

}  // namespace
}  // namespace zr::test
