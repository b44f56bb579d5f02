// A page on a real token: login, signatures, verification.
#include <gtest/gtest.h>

#include <filesystem>

#include "host/browser/base64url.h"
#include "host/crypto/hash.h"
#include "host/crypto/public_key.h"
#include "tests/host/browser/page_connection.h"
#include "tests/support/fixtures/soft_token.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

using host::PromptEnd;
using host::SignatureAlgorithm;

json bytes(const std::string& value) {
    return {{"bytes", host::toBase64Url(value)}};
}

std::string bytesIn(const json& value) {
    return host::fromBase64Url(value.value("bytes", "")).value_or("");
}

class PageTokenTest : public testing::Test {
protected:
    PageTokenTest() {
        std::string problem;
        host::BrowserSettings settings;
        settings.module = std::filesystem::absolute(fromEnvironment("ZRKEY_TEST_MODULE")).string();
        settings.allow = {*host::Origin::read(kSite, problem)};
        std::filesystem::create_directory("state");
        connection = std::make_unique<PageConnection>(std::filesystem::absolute("state"), settings);
        EXPECT_EQ(1, page().greet(kSite).value("provider", 0));
        token = page().valueOf(1, "tokens").at(0).at("object");
        certificate = page().valueOf(token, "certificates").at(0);
        certificate.erase("class");
        der = bytesIn(page().valueOf(certificate.at("object"), "GetCertData"));
    }

    PageFrames& page() { return *connection->page; }
    std::string login(const std::string& pin) {
        connection->prompt.answer(PromptEnd::kAnswered, pin);
        return page().codeOf(token, "login", json::array(), true);
    }
    bool verifies(SignatureAlgorithm algorithm, const std::string& data, const json& signature) {
        const auto key = host::PublicKey::ofCertificate(der);
        return key && key->verify(algorithm, host::hashOf(host::hashOf(algorithm), data),
                                  bytesIn(signature));
    }

    TempDir folder;
    std::unique_ptr<PageConnection> connection;
    std::uint64_t token = 0;
    json certificate;
    std::string der;
};

TEST_F(PageTokenTest, SignsAndVerifies) {
    const std::string data = "signed by a page";
    EXPECT_EQ("ok", login("1234"));
    connection->prompt.answer(PromptEnd::kAnswered);
    json signature = page().valueOf(token, "sign", {bytes(data), certificate}, true);
    EXPECT_TRUE(verifies(SignatureAlgorithm::kRsaSha256, data, signature));
    EXPECT_EQ(true, page().valueOf(token, "verify", {bytes(data), certificate, signature}));
    EXPECT_EQ(false, page().valueOf(token, "verify", {bytes("other"), certificate, signature}));
    connection->prompt.answer(PromptEnd::kAnswered);
    signature = page().valueOf(token, "sign", {bytes(data), certificate, "rsa-pss-sha256"}, true);
    EXPECT_TRUE(verifies(SignatureAlgorithm::kRsaPssSha256, data, signature));
    connection->prompt.answer(PromptEnd::kAnswered);
    signature = page().valueOf(token, "SignData", {bytes(data), certificate}, true);
    EXPECT_TRUE(verifies(SignatureAlgorithm::kRsaSha1, data, signature));
    EXPECT_EQ(true, page().valueOf(token, "VerifyData", {bytes(data), certificate, signature}));
    EXPECT_EQ("refused", page().codeOf(token, "VerifyData", {bytes("x"), certificate, signature}));
}

TEST_F(PageTokenTest, SignsAnUpload) {
    EXPECT_EQ("ok", login("1234"));
    const std::string chunk(45 * 1024, 'z');
    std::string data;
    for (int i = 0; i < 30; ++i) {
        data += chunk;
        ASSERT_EQ(true, page().valueOf(0, "upload", {1, bytes(chunk)}));
    }
    connection->prompt.answer(PromptEnd::kAnswered);
    const json signature =
        page().valueOf(token, "sign", {json{{"upload", 1}}, certificate, "rsa-sha512"}, true);
    EXPECT_TRUE(verifies(SignatureAlgorithm::kRsaSha512, data, signature));
}

TEST_F(PageTokenTest, RefusesAWrongPin) {
    EXPECT_EQ("wrong-pin", login("97531"));
    EXPECT_EQ("not-logged-in", page().codeOf(token, "sign", {bytes("x"), certificate}, true));
    EXPECT_EQ("ok", login("1234"));
}

TEST_F(PageTokenTest, SignsNothingAfterALogout) {
    EXPECT_EQ("ok", login("1234"));
    EXPECT_EQ("ok", page().codeOf(token, "logout"));
    for (const char* member : {"sign", "SignData"}) {
        EXPECT_EQ("not-logged-in", page().codeOf(token, member, {bytes("x"), certificate}, true));
    }
    EXPECT_EQ("ok", login("1234"));
    connection->prompt.answer(PromptEnd::kAnswered);
    EXPECT_EQ("ok", page().codeOf(token, "sign", {bytes("x"), certificate}, true));
}

}  // namespace
}  // namespace zr::test
