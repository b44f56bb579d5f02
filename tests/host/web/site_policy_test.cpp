// What the settings of the user and of the system say together.
#include "host/web/host_names.h"
#include "tests/host/web/web_test.h"

namespace zr::test {
namespace {

using host::BrowserSettings;
using host::SitePolicy;
using host::SiteVerdict;

class SitePolicyTest : public testing::Test {
protected:
    SiteVerdict verdict(const std::string& text = "https://a.example") const {
        const SitePolicy policy(system, user);
        const SiteVerdict found = policy.verdict(origin(text));
        EXPECT_EQ(found == SiteVerdict::kAllowedBySystem || found == SiteVerdict::kAllowedByUser,
                  policy.allows(origin(text)));
        return found;
    }
    bool knows(const std::string& id) const { return SitePolicy(system, user).knowsExtension(id); }

    BrowserSettings system;
    BrowserSettings user;
    std::vector<host::Origin> site = {origin("https://a.example")};
};

TEST_F(SitePolicyTest, NothingIsAllowedAtFirst) {
    EXPECT_EQ(SiteVerdict::kNotListed, verdict());
}

TEST_F(SitePolicyTest, EitherListAllows) {
    user.allow = site;
    EXPECT_EQ(SiteVerdict::kAllowedByUser, verdict());
    system.allow = site;
    EXPECT_EQ(SiteVerdict::kAllowedBySystem, verdict());
    user.allow.clear();
    EXPECT_EQ(SiteVerdict::kAllowedBySystem, verdict());
}

TEST_F(SitePolicyTest, EitherDenialWins) {
    user.allow = system.allow = site;
    user.deny = site;
    EXPECT_EQ(SiteVerdict::kDeniedByUser, verdict());
    system.deny = site;
    EXPECT_EQ(SiteVerdict::kDeniedBySystem, verdict());
    user.deny.clear();
    EXPECT_EQ(SiteVerdict::kDeniedBySystem, verdict());
}

TEST_F(SitePolicyTest, SchemeHostAndPortMustBeTheSame) {
    user.allow = {origin("https://a.example:8443"), origin("http://localhost:8080")};
    EXPECT_EQ(SiteVerdict::kAllowedByUser, verdict("https://a.example:8443"));
    for (const char* text :
         {"https://a.example", "https://a.example:8444", "https://www.a.example:8443",
          "https://localhost:8080", "http://localhost", "http://127.0.0.1:8080"}) {
        EXPECT_EQ(SiteVerdict::kNotListed, verdict(text)) << text;
    }
}

TEST_F(SitePolicyTest, AdministratorCanLeaveTheUsersListsOut) {
    user.allow = site;
    user.extensions = {"me@example.com"};
    EXPECT_TRUE(knows("me@example.com"));
    system.usersMayAllow = false;
    EXPECT_EQ(SiteVerdict::kUsersMayNotAllow, verdict());
    EXPECT_FALSE(knows("me@example.com"));
    // What the user denies stays denied.
    system.allow = user.deny = site;
    EXPECT_EQ(SiteVerdict::kDeniedByUser, verdict());
    user.deny.clear();
    EXPECT_EQ(SiteVerdict::kAllowedBySystem, verdict());
}

TEST_F(SitePolicyTest, ExtensionsAreComparedExactly) {
    const std::string chromium = "abcdefghijklmnopabcdefghijklmnop";
    EXPECT_TRUE(knows(host::kFirefoxExtension));
    EXPECT_FALSE(knows(chromium));
    EXPECT_FALSE(knows(""));
    system.extensions = {chromium};
    EXPECT_TRUE(knows(chromium));
    EXPECT_FALSE(knows("ABCDEFGHIJKLMNOPABCDEFGHIJKLMNOP"));
    EXPECT_FALSE(knows(chromium + '/'));
}

TEST_F(SitePolicyTest, UsersValueComesBeforeTheSystems) {
    EXPECT_EQ("", SitePolicy(system, user).module());
    EXPECT_EQ("", SitePolicy(system, user).configuration());
    EXPECT_EQ("", SitePolicy(system, user).pinentry());
    EXPECT_EQ(60u, SitePolicy(system, user).callSeconds());
    system.module = system.configuration = system.pinentry = "/system";
    system.callSeconds = 10;
    EXPECT_EQ("/system", SitePolicy(system, user).module());
    EXPECT_EQ("/system", SitePolicy(system, user).configuration());
    EXPECT_EQ("/system", SitePolicy(system, user).pinentry());
    EXPECT_EQ(10u, SitePolicy(system, user).callSeconds());
    user.module = user.configuration = user.pinentry = "/user";
    user.callSeconds = 20;
    EXPECT_EQ("/user", SitePolicy(system, user).module());
    EXPECT_EQ("/user", SitePolicy(system, user).configuration());
    EXPECT_EQ("/user", SitePolicy(system, user).pinentry());
    EXPECT_EQ(20u, SitePolicy(system, user).callSeconds());
}

class SitePolicyFilesTest : public WebTest {};

TEST_F(SitePolicyFilesTest, BothFilesAreRead) {
    write(userFile(), R"({"allow": ["https://a.example", "https://b.example"]})");
    write(systemFile(), R"({"deny": ["https://b.example"]})");
    const SitePolicy policy = SitePolicy::read();
    EXPECT_TRUE(policy.allows(origin("https://a.example")));
    EXPECT_FALSE(policy.allows(origin("https://b.example")));
}

TEST_F(SitePolicyFilesTest, FileThatCannotBeReadIsAFailure) {
    // An administrator's denial must not get lost.
    write(userFile(), R"({"allow": ["https://a.example"]})");
    write(systemFile(), R"({"deny": ["https://a.example"])");
    EXPECT_NE("-", failureOf([] { SitePolicy::read(); }));
}

}  // namespace
}  // namespace zr::test
