// The identifiers by which the host knows our extension are those that browsers give it.
#include "host/web/extension_ids.h"

#include <nlohmann/json.hpp>

#include <algorithm>

#include "host/crypto/hash.h"
#include "host/output/encoding.h"
#include "host/web/host_names.h"
#include "tests/host/web/web_test.h"

namespace zr::test {
namespace {

nlohmann::json extensionManifest() {
    return nlohmann::json::parse(readFile(ZRKEY_EXTENSION "/manifest.json"));
}

TEST(ExtensionIdsTest, ChromiumMakesTheIdentifierFromTheKey) {
    const std::string key = extensionManifest().at("key").get<std::string>();
    const std::optional<std::string> bytes = host::decode(key, host::ByteFormat::kBase64);
    ASSERT_TRUE(bytes);
    // The first half of the hash, with the letters a to p as digits.
    std::string id = host::toHex(host::hashOf(host::HashKind::kSha256, *bytes)).substr(0, 32);
    std::transform(id.begin(), id.end(), id.begin(), [](char c) {
        return static_cast<char>('a' + (c <= '9' ? c - '0' : c - 'a' + 10));
    });
    EXPECT_EQ(id, host::kChromiumExtension);
}

TEST(ExtensionIdsTest, FirefoxReadsTheIdentifierFromTheManifest) {
    const nlohmann::json manifest = extensionManifest();
    EXPECT_EQ(host::kFirefoxExtension,
              manifest.at("browser_specific_settings").at("gecko").at("id").get<std::string>());
}

TEST(ExtensionIdsTest, ExtensionStartsThisHost) {
    const std::string source = readFile(ZRKEY_EXTENSION "/connections.js");
    EXPECT_NE(
        std::string::npos,
        source.find(std::string("kHostName = \"").append(host::kBrowserHostName).append("\"")));
}

TEST(ExtensionIdsTest, OwnOnesAreOfAFormThatBrowsersKnow) {
    EXPECT_TRUE(host::isChromiumExtension(host::kChromiumExtension));
    EXPECT_TRUE(host::isFirefoxExtension(host::kFirefoxExtension));
    const std::vector<std::string> own = host::ownExtensions();
    EXPECT_GE(own.size(), 2u);
    for (const std::string& id : own) {
        EXPECT_TRUE(host::isChromiumExtension(id) || host::isFirefoxExtension(id)) << id;
    }
}

}  // namespace
}  // namespace zr::test
