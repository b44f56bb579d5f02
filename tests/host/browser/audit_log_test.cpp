// The log of what sites did, written by several processes.
#include "host/browser/audit_log.h"

#include <nlohmann/json.hpp>

#include <map>
#include <regex>

#include "tests/host/browser/state_test.h"
#include "tests/support/console_capture.h"

namespace zr::test {
namespace {

using host::AuditLog;
using nlohmann::json;

class AuditLogTest : public StateTest {
protected:
    std::vector<json> lines(const std::string& name = "audit.jsonl") const {
        std::vector<json> all;
        std::istringstream text(read(name));
        for (std::string line; std::getline(text, line);) {
            all.push_back(json::parse(line));
        }
        return all;
    }
};

TEST_F(AuditLogTest, LineSaysWhoDidWhat) {
    AuditLog log(folder, "https://shop.example");
    log.note("sign", "cancelled");
    log.note("GetLabel", "ok");
    ASSERT_EQ(2U, lines().size());
    const json first = lines().front();
    EXPECT_EQ("https://shop.example", first["origin"]);
    EXPECT_EQ("sign", first["member"]);
    EXPECT_EQ("cancelled", first["outcome"]);
    EXPECT_EQ(host::processNumber(), first["process"]);
    EXPECT_EQ(5U, first.size());
    EXPECT_TRUE(std::regex_match(first["time"].get<std::string>(),
                                 std::regex(R"(2\d{3}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z)")))
        << first["time"];
    EXPECT_EQ("GetLabel", lines().back()["member"]);
}

TEST_F(AuditLogTest, OddTextStaysOnItsLine) {
    AuditLog log(folder, "https://shop.example");
    log.note("si\ngn\"}\x01", "\xFF\xC3\xBC");
    log.note("next", "ok");
    ASSERT_EQ(2U, lines().size());
    EXPECT_EQ("si\ngn\"}\x01", lines().front()["member"]);
    EXPECT_EQ("\xEF\xBF\xBD\xC3\xBC", lines().front()["outcome"]);
}

TEST_F(AuditLogTest, LargeFilesAreRenamed) {
    const std::string filler = std::string(AuditLog::kMostBytes, ' ') + '\n';
    for (int i = 1; i <= 6; ++i) {
        write("audit.jsonl", "{\"file\":" + std::to_string(i) + "}" + filler);
        AuditLog(folder, "x").note("sign", "ok");
        EXPECT_EQ(1U, lines().size());
    }
    EXPECT_EQ(6, lines("audit.1.jsonl").front()["file"]);
    EXPECT_EQ(5, lines("audit.2.jsonl").front()["file"]);
    EXPECT_EQ(4, lines("audit.3.jsonl").front()["file"]);
    EXPECT_FALSE(std::filesystem::exists(folder / "audit.4.jsonl"));
}

TEST_F(AuditLogTest, FileOfTheMostBytesStays) {
    const std::string full(AuditLog::kMostBytes - 1, ' ');
    write("audit.jsonl", full + "\n");
    AuditLog(folder, "x").note("sign", "ok");
    EXPECT_FALSE(std::filesystem::exists(folder / "audit.1.jsonl"));
    EXPECT_GT(read("audit.jsonl").size(), AuditLog::kMostBytes);
}

TEST_F(AuditLogTest, HalfALineIsEnded) {
    write("audit.jsonl", "{\"time\":");
    AuditLog(folder, "x").note("sign", "ok");
    EXPECT_TRUE(read("audit.jsonl").starts_with("{\"time\":\n{\"time\""));
}

TEST_F(AuditLogTest, SeveralProcessesWriteAndRenameAtOnce) {
    constexpr int kProcesses = 4;
    constexpr int kLines = 60;
    // Soon full.
    write("audit.jsonl", std::string(AuditLog::kMostBytes - 4000, '\n'));
    std::vector<std::optional<host::ChildProcess>> children;
    for (int i = 0; i < kProcesses; ++i) {
        children.push_back(startUser(kLines));
    }
    for (auto& child : children) {
        wait(child);
    }
    std::map<std::pair<unsigned long, std::string>, int> seen;
    for (const char* name : {"audit.jsonl", "audit.1.jsonl"}) {
        std::istringstream text(read(name));
        for (std::string line; std::getline(text, line);) {
            if (!line.empty()) {
                const json entry = json::parse(line);
                ++seen[{entry["process"].get<unsigned long>(), entry["outcome"]}];
            }
        }
    }
    EXPECT_EQ(static_cast<std::size_t>(kProcesses * kLines), seen.size());
    EXPECT_GT(lines().size(), 50U);
    EXPECT_FALSE(std::filesystem::exists(folder / "audit.2.jsonl"));
}

TEST_F(AuditLogTest, FailureIsReportedOnce) {
    AuditLog log(folder / "nowhere", "x");
    ConsoleCapture capture;
    log.note("sign", "ok");
    log.note("sign", "ok");
    const std::string text = capture.stop().error;
    EXPECT_TRUE(text.starts_with("zrkey-browser: cannot write the log: ")) << text;
    EXPECT_EQ(text.size() - 1, text.find('\n')) << text;
}

TEST_F(AuditLogTest, FolderInPlaceOfTheFileIsReported) {
    for (const char* name : {"audit.jsonl", "audit.lock"}) {
        std::filesystem::remove(folder / name);
        std::filesystem::create_directory(folder / name);
        AuditLog log(folder, "x");
        ConsoleCapture capture;
        log.note("sign", "ok");
        EXPECT_NE("", capture.stop().error) << name;
        std::filesystem::remove(folder / name);
    }
}

}  // namespace
}  // namespace zr::test
