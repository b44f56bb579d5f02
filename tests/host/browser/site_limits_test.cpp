// The limits of all connections of a user, within a process and between processes.
#include "host/browser/site_limits.h"

#include <chrono>

#include "tests/host/browser/state_test.h"

namespace zr::test {
namespace {

using host::SiteLimits;
using std::chrono::milliseconds;
using std::chrono::seconds;

class SiteLimitsTest : public StateTest {
protected:
    /// The moment as the files have it.
    static milliseconds now() {
        return std::chrono::duration_cast<milliseconds>(
            std::chrono::steady_clock::now().time_since_epoch());
    }
    static std::string line(milliseconds time, const std::string& origin) {
        return std::to_string(time.count()) + " " + origin + "\n";
    }
};

TEST_F(SiteLimitsTest, SiteHasFourConnections) {
    std::vector<std::unique_ptr<SiteLimits>> all;
    for (int i = 0; i < 4; ++i) {
        all.push_back(connected());
        ASSERT_TRUE(all.back());
    }
    EXPECT_FALSE(connected());
    // Another port is another site.
    EXPECT_TRUE(connected("https://shop.example:8443"));
    all.erase(all.begin() + 1);
    EXPECT_TRUE(connected());
}

TEST_F(SiteLimitsTest, UserHasSixteenConnections) {
    std::vector<std::unique_ptr<SiteLimits>> all;
    for (int i = 0; i < 16; ++i) {
        all.push_back(connected("https://shop" + std::to_string(i) + ".example"));
        ASSERT_TRUE(all.back()) << i;
    }
    EXPECT_FALSE(connected());
    all.pop_back();
    EXPECT_TRUE(connected());
}

TEST_F(SiteLimitsTest, PlaceOfALongerNameLeavesNothingBehind) {
    connected("https://a-much-longer-name.shop.example");
    const auto first = connected();
    EXPECT_EQ("https://shop.example\n", read("connection-0"));
}

TEST_F(SiteLimitsTest, OnePromptIsOpenAtATime) {
    SiteLimits first = limits();
    SiteLimits second = limits("https://other.example");
    std::unique_ptr<host::HeldLock> turn = first.takePrompt();
    ASSERT_TRUE(turn);
    EXPECT_FALSE(second.takePrompt());
    EXPECT_FALSE(first.takePrompt());
    turn.reset();
    EXPECT_TRUE(second.takePrompt());
}

TEST_F(SiteLimitsTest, ProcessGivesBackWhatItHeldWhenItEnds) {
    for (int i = 0; i < 6; ++i) {
        auto child = startUser(0);
        EXPECT_EQ(0, wait(child)) << i;
    }
    EXPECT_TRUE(connected("https://other.example"));
    EXPECT_TRUE(limits().takePrompt());
}

TEST_F(SiteLimitsTest, OtherProcessesSeeWhatIsHeld) {
    const std::unique_ptr<host::HeldLock> turn = limits().takePrompt();
    auto child = startUser(0);
    EXPECT_EQ(1, wait(child));
}

TEST_F(SiteLimitsTest, SiteWaitsAfterItsPromptWasCancelled) {
    SiteLimits here = limits();
    EXPECT_EQ(std::nullopt, here.waitAfterCancel());
    here.noteCancelled();
    EXPECT_EQ(seconds(30), here.waitAfterCancel());
    // In another connection too, and no other site.
    EXPECT_EQ(seconds(30), limits().waitAfterCancel());
    EXPECT_EQ(std::nullopt, limits("https://other.example").waitAfterCancel());
    EXPECT_EQ(std::nullopt, limits("https://shop.example:8443").waitAfterCancel());
}

TEST_F(SiteLimitsTest, SiteWaitsShortlyAfterItClosedItsPrompt) {
    limits().noteAborted();
    EXPECT_EQ(seconds(5), limits().waitAfterCancel());
    EXPECT_EQ(std::nullopt, limits("https://other.example").waitAfterCancel());
    // It does not make a longer wait shorter.
    SiteLimits here = limits();
    here.noteCancelled();
    here.noteAborted();
    limits().noteAborted();
    EXPECT_EQ(seconds(30), here.waitAfterCancel());
    EXPECT_EQ(seconds(30), limits().waitAfterCancel());
}

TEST_F(SiteLimitsTest, WaitEnds) {
    write("cancelled", line(now() - seconds(20), "https://shop.example") +
                           line(now() - seconds(31), "https://other.example"));
    const std::optional<seconds> left = limits().waitAfterCancel();
    ASSERT_TRUE(left);
    EXPECT_LE(*left, seconds(10));
    EXPECT_GE(*left, seconds(8));
    EXPECT_EQ(std::nullopt, limits("https://other.example").waitAfterCancel());
}

TEST_F(SiteLimitsTest, TimeToComeIsFromBeforeTheLastStart) {
    write("cancelled", line(now() + seconds(5), "https://shop.example"));
    EXPECT_EQ(std::nullopt, limits().waitAfterCancel());
    limits().noteCancelled();
    EXPECT_EQ(seconds(30), limits().waitAfterCancel());
}

TEST_F(SiteLimitsTest, LinesThatAreNotOursAreLeftOut) {
    const std::string now30 = line(now(), "https://shop.example");
    for (const std::string& text :
         {std::string("x https://shop.example\n"), std::string("\n\n \n"),
          std::string("99999999999999999999 https://shop.example\n"),
          std::string("-1 https://shop.example\n"), std::string("1x https://shop.example\n"),
          std::string(100000, 'x'), std::string(40000, '\0')}) {
        write("cancelled", text);
        EXPECT_EQ(std::nullopt, limits().waitAfterCancel()) << text.substr(0, 60);
        write("cancelled", text.substr(0, 100) + "\n" + now30);
        EXPECT_TRUE(limits().waitAfterCancel()) << text.substr(0, 60);
    }
}

TEST_F(SiteLimitsTest, WaitsOfManySitesFit) {
    for (int i = 0; i < 100; ++i) {
        limits("https://shop" + std::to_string(i) + ".example").noteCancelled();
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_TRUE(limits("https://shop" + std::to_string(i) + ".example").waitAfterCancel()) << i;
    }
    EXPECT_EQ(16384U, read("cancelled").size());
}

TEST_F(SiteLimitsTest, FolderThatIsGoneIsAFailure) {
    folder /= "nowhere";
    SiteLimits here = limits();
    EXPECT_THROW(here.takeConnection(), host::Failure);
    EXPECT_THROW(here.takePrompt(), host::Failure);
    // The wait holds in the connection at least.
    here.noteCancelled();
    folder = folder.parent_path();
    host::makeOwnFolder(folder / "nowhere");
    EXPECT_EQ(seconds(30), here.waitAfterCancel());
}

TEST_F(SiteLimitsTest, FolderInPlaceOfAFileIsAFailure) {
    for (const char* name : {"limits.lock", "connection-3", "cancelled", "prompt.lock"}) {
        std::filesystem::remove(folder / name);
        std::filesystem::create_directory(folder / name);
        SiteLimits here = limits();
        EXPECT_THROW(here.takeConnection() && here.takePrompt(), host::Failure) << name;
        std::filesystem::remove(folder / name);
    }
}

}  // namespace
}  // namespace zr::test
