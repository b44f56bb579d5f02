// Connections: the handshake, members, uploads and objects.
#include "tests/host/browser/connection_test.h"

namespace zr::test {
namespace {

TEST_F(ConnectionTest, Greets) {
    connect();
    EXPECT_EQ((json{{"protocol", 1}, {"version", ZRKEY_VERSION}, {"provider", 1}}),
              page().greet(kSite));
    EXPECT_EQ("PKCS#11", page().valueOf(1, "GetName"));
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(Lines({"connect ok", "GetName ok", "disconnect ok"}), audit());
}

TEST_F(ConnectionTest, RefusesToGreet) {
    EXPECT_EQ("unsupported", greetingCode({{"protocol", 2}, {"origin", kSite}}));
    for (const char* origin :
         {"", "null", "https://example.org", "http://example.com", "https://example.com:8443",
          "https://example.com/", "HTTPS://example.com", "https://example.com:443",
          "https://sub.example.com", "file:///x", "chrome-extension://abc"}) {
        EXPECT_EQ("not-allowed", greetingCode({{"protocol", 1}, {"origin", origin}})) << origin;
    }
    settings.deny = settings.allow;
    EXPECT_EQ("not-allowed", greetingCode({{"protocol", 1}, {"origin", kSite}}));
}

TEST_F(ConnectionTest, RefusesToGreetWithoutAModule) {
    settings.module.reset();
    EXPECT_EQ("no-module", greetingCode({{"protocol", 1}, {"origin", kSite}}));
    settings.module = std::filesystem::absolute("missing.so").string();
    EXPECT_EQ("no-module", greetingCode({{"protocol", 1}, {"origin", kSite}}));
}

TEST_F(ConnectionTest, LimitsConnections) {
    std::vector<std::unique_ptr<PageConnection>> others;
    for (int i = 0; i < host::SiteLimits::kConnectionsPerOrigin; ++i) {
        others.push_back(std::make_unique<PageConnection>(state, settings));
        EXPECT_EQ(1, others.back()->page->greet(kSite).value("provider", 0));
    }
    EXPECT_EQ("too-many", greetingCode({{"protocol", 1}, {"origin", kSite}}));
    others.pop_back();
    connect();
    EXPECT_EQ(1, page().greet(kSite).value("provider", 0));
}

TEST_F(ConnectionTest, ListsTokensAsObjects) {
    connect();
    page().greet(kSite);
    EXPECT_EQ(json::parse(R"([{"object":2,"class":"Token"}])"), page().valueOf(1, "tokens"));
    EXPECT_EQ("Label", page().valueOf(2, "GetLabel"));
    EXPECT_EQ(json::array(), page().valueOf(2, "EnumContainer"));
    EXPECT_EQ(1, page().valueOf(1, "GetKeyCount"));
}

TEST_F(ConnectionTest, RefusesMembersThatAreNotForPages) {
    const std::uint64_t token = openToken();
    for (const char* member : {"Load", "Unload", "toHex", "login", "nothing", ""}) {
        EXPECT_EQ("unknown-member", page().codeOf(1, member, {"x"})) << member;
    }
    for (const char* member : {"VerifyPIN", "ModifyPIN", "UnlockPIN", "unblockPIN", "SetLabel",
                               "CreateFile", "OpenFile", "DeleteFile", "writeFile", "getlabel"}) {
        EXPECT_EQ("unknown-member", page().codeOf(token, member, {"x"})) << member;
    }
    EXPECT_EQ("unknown-member", page().codeOf(0, "GetName"));
    EXPECT_EQ(0u, module.count("C_Login"));
}

TEST_F(ConnectionTest, ReportsArgumentsAtFault) {
    const std::uint64_t token = openToken();
    json reply = page().call(1, "OpenKey", {"x"});
    EXPECT_EQ("arguments", PageFrames::outcomeOf(reply));
    EXPECT_EQ(0, reply.at("error").at("argument"));
    EXPECT_EQ("OpenKey", reply.at("error").at("member"));
    EXPECT_EQ("arguments", page().codeOf(1, "OpenKey"));
    EXPECT_EQ("arguments", page().codeOf(token, "DigestData", {"MD5", {{"bytes", "A"}}}));
    EXPECT_EQ("arguments", page().codeOf(token, "DigestData", {"MD5", {{"upload", 1}}}));
    EXPECT_EQ("arguments", page().codeOf(token, "GetCertData", {object(99)}));
    EXPECT_EQ("arguments", page().codeOf(token, "login", {"1234"}, true));
    EXPECT_EQ(0u, prompt().opened());
}

TEST_F(ConnectionTest, DoesNotUseAnUploadWithAHole) {
    const std::uint64_t token = openToken();
    const json upload = {{"upload", 1}};
    page().valueOf(0, "upload", {1, bytes("a")});
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {1, {{"bytes", "?"}}}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {1, bytes("c")}));
    EXPECT_EQ("arguments", page().codeOf(token, "DigestData", {"MD5", upload}));
    // That request or a discard ends it.
    EXPECT_EQ(true, page().valueOf(0, "upload", {1, bytes("a")}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {1, {{"bytes", "?"}}}));
    EXPECT_EQ(true, page().valueOf(0, "discard", {1}));
    EXPECT_EQ(true, page().valueOf(0, "upload", {1, bytes("a")}));
    EXPECT_EQ("ok", page().codeOf(token, "DigestData", {"MD5", upload}));
}

TEST_F(ConnectionTest, DoesNotUseAnUploadWithAHoleByACancelledRequest) {
    const std::uint64_t token = openToken();
    page().ask(token, "login", json::array(), true);
    prompt().awaitOpened(1);
    page().ask(0, "upload", {1, bytes("a")});
    page().write({{"cancel", page().ask(0, "upload", {1, bytes("b")})}});
    EXPECT_EQ("aborted", PageFrames::outcomeOf(page().read()));
    page().ask(0, "upload", {1, bytes("c")});
    page().ask(token, "DigestData", {"MD5", {{"upload", 1}}});
    prompt().answer(PromptEnd::kAnswered, "1234");
    for (const char* outcome : {"ok", "ok", "arguments", "arguments"}) {
        EXPECT_EQ(outcome, PageFrames::outcomeOf(page().read()));
    }
}

TEST_F(ConnectionTest, ChecksASiteWithoutServingIt) {
    connect();
    EXPECT_EQ((json{{"protocol", 1}, {"version", ZRKEY_VERSION}}), page().check(kSite));
    EXPECT_TRUE(page().read().is_null());
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(0u, module.count("C_Initialize"));
    EXPECT_TRUE(std::filesystem::is_empty(state));
    EXPECT_EQ(
        "not-allowed",
        greetingCode({{"protocol", 1}, {"origin", "https://other.example"}, {"check", true}}));
    EXPECT_EQ("unsupported", greetingCode({{"protocol", 2}, {"origin", kSite}, {"check", true}}));
    EXPECT_TRUE(std::filesystem::is_empty(state));
}

TEST_F(ConnectionTest, LogsRefusedHandshakes) {
    greetingCode({{"protocol", 1}, {"origin", "\n{}"}});
    greetingCode({{"protocol", 2}, {"origin", kSite}});
    EXPECT_EQ(Lines({"connect not-allowed", "connect unsupported"}), audit());
    std::ifstream file(state / "audit.jsonl");
    std::string line;
    std::getline(file, line);
    EXPECT_EQ("(invalid)", json::parse(line).at("origin"));
}

TEST_F(ConnectionTest, EndsWhenItsSiteIsDenied) {
    const std::uint64_t token = openToken();
    EXPECT_EQ("Label", page().valueOf(token, "GetLabel"));
    settings.deny = settings.allow;
    connection().change(settings);
    EXPECT_EQ("not-allowed", page().codeOf(token, "GetLabel"));
    EXPECT_TRUE(page().read().is_null());
    EXPECT_EQ(0, connection().finish());
    EXPECT_EQ(0u, module->openSessions());
    EXPECT_EQ(
        Lines({"connect ok", "OpenKey ok", "GetLabel ok", "GetLabel not-allowed", "disconnect ok"}),
        audit());
}

TEST_F(ConnectionTest, LogsRequestsWithoutTheUserOnce) {
    const std::uint64_t token = openToken();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(true, page().valueOf(token, "logout"));
        EXPECT_EQ("no-activation", login(token, false));
        EXPECT_EQ("arguments", page().codeOf(token, "sign"));
    }
    for (int i = 0; i < 2; ++i) {
        prompt().answer(PromptEnd::kAnswered, "1234");
        EXPECT_EQ("ok", login(token));
        EXPECT_EQ(true, page().valueOf(token, "logout"));
        EXPECT_EQ(true, page().valueOf(token, "logout"));
    }
    connection().finish();
    EXPECT_EQ(
        Lines({"connect ok", "OpenKey ok", "logout ok", "login no-activation", "sign arguments",
               "login ok", "logout ok", "login ok", "logout ok", "disconnect ok"}),
        audit());
}

TEST_F(ConnectionTest, ForgetsClosedObjects) {
    const std::uint64_t token = openToken();
    EXPECT_EQ(true, page().valueOf(token, "Close"));
    EXPECT_EQ(true, page().valueOf(token, "Close"));
    EXPECT_EQ("closed", page().codeOf(token, "GetLabel"));
    EXPECT_EQ("closed", page().codeOf(99, "GetLabel"));
    EXPECT_EQ("closed", page().codeOf(99, "Close"));
    EXPECT_EQ(3, page().valueOf(1, "OpenKey", {0}).value("object", 0));
}

TEST_F(ConnectionTest, TakesUploads) {
    const std::uint64_t token = openToken();
    EXPECT_EQ(true, page().valueOf(0, "upload", {1, bytes("ab")}));
    EXPECT_EQ(true, page().valueOf(0, "upload", {1, bytes("c")}));
    const json upload = {{"upload", 1}};
    EXPECT_EQ(page().valueOf(token, "DigestData", {"MD5", bytes("abc")}),
              page().valueOf(token, "DigestData", {"MD5", upload}));
    // It ended.
    EXPECT_EQ("arguments", page().codeOf(token, "DigestData", {"MD5", upload}));
    page().valueOf(0, "upload", {1, bytes("x")});
    EXPECT_EQ("unknown-member", page().codeOf(token, "nothing", {upload}));
    EXPECT_EQ("arguments", page().codeOf(token, "DigestData", {"MD5", upload}));
    page().valueOf(0, "upload", {16, bytes("x")});
    EXPECT_EQ(true, page().valueOf(0, "discard", {16}));
    EXPECT_EQ(true, page().valueOf(0, "discard", {16}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {17, bytes("x")}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {0, bytes("x")}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {1, "x"}));
    EXPECT_EQ("arguments", page().codeOf(0, "upload", {1}));
    EXPECT_EQ("arguments", page().codeOf(0, "discard", {1.5}));
}

TEST(UploadsTest, LimitsTheirSize) {
    host::Uploads uploads;
    uploads.append(1, "a");
    uploads.append(2, std::string(host::Uploads::kMostBytes - 1, 'b'));
    const auto codeOf = [&](std::size_t size) -> std::string {
        try {
            uploads.append(3, std::string(size, 'c'));
            return "ok";
        } catch (const host::PageError& error) {
            return error.code();
        }
    };
    EXPECT_EQ("too-large", codeOf(1));
    EXPECT_EQ("ok", codeOf(0));
    EXPECT_EQ("a", uploads.take(1));
    EXPECT_EQ(std::nullopt, uploads.take(1));
    EXPECT_EQ("too-large", codeOf(2));
    EXPECT_EQ("ok", codeOf(1));
    EXPECT_EQ("c", uploads.take(3));
}

TEST(PageObjectsTest, LimitsTheirNumber) {
    std::shared_ptr<host::ProviderObject> provider;
    ASSERT_HR(S_OK, host::ProviderObject::create(provider));
    host::PageObjects objects;
    for (std::size_t i = 1; i <= host::PageObjects::kMost; ++i) {
        EXPECT_EQ(i, objects.add(provider, nullptr));
    }
    EXPECT_THROW(objects.add(provider, nullptr), host::PageError);
    objects.remove(7);
    EXPECT_TRUE(objects.wasClosed(7));
    EXPECT_EQ(host::PageObjects::kMost + 1, objects.add(provider, nullptr));
    EXPECT_FALSE(objects.wasClosed(host::PageObjects::kMost + 2));
}

}  // namespace
}  // namespace zr::test
