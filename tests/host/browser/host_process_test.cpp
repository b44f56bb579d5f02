// zrkey-browser as a browser starts it: a process with pipes, whatever is written to them.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

#include "host/browser/base64url.h"
#include "tests/host/browser/page_frames.h"
#include "tests/host/browser/piped_process.h"
#include "tests/host/configuration_folders.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

namespace fs = std::filesystem;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr const char* kPageSite = "https://example.com";
constexpr const char* kGecko = "zrkey@zrkey.example";
/// How long a process may take to end on a busy machine; a second is what users have.
constexpr seconds kSoon{20};

class HostProcessTest : public testing::Test {
protected:
    HostProcessTest() {
        host::ignoreClosedPipes();
        writeSettings({{"module", module()}, {"allow", {kPageSite}}, {"callSeconds", 1}});
        setEnvironment("XDG_STATE_HOME", (m_folder.root() / "state").string());
        setEnvironment("LOCALAPPDATA", (m_folder.root() / "state").string());
        setEnvironment("ZRKEY_INSTANT_LOG", (m_folder.root() / "calls").string());
    }
    ~HostProcessTest() override {
        for (const char* variable :
             {"XDG_STATE_HOME", "LOCALAPPDATA", "ZRKEY_INSTANT_LOG", "ZRKEY_INSTANT_INFO_TIME",
              "ZRKEY_INSTANT_NOISE", "ZRKEY_INSTANT_CLOSE_TIME"}) {
            setEnvironment(variable, "");
        }
    }

    void writeSettings(const json& settings) const {
        const fs::path file = m_configurations.userFile().parent_path() / "browser.json";
        fs::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << settings.dump();
    }
    void start(std::vector<std::string> arguments = {manifest(), kGecko}) {
        arguments.insert(arguments.begin(), fs::path(ZRKEY_BROWSER).make_preferred().string());
        m_process = std::make_unique<PipedProcess>(arguments, errorFile().string());
        m_page = std::make_unique<PageFrames>(m_process->input(), m_process->output());
    }
    void startAndGreet() {
        start();
        EXPECT_EQ(1, m_page->greet(kPageSite).value("provider", 0)) << errors();
    }
    PageFrames& page() { return *m_page; }
    PipedProcess& process() { return *m_process; }
    /// What is left of the output, up to its end.
    std::string rest() const {
        std::string bytes;
        char piece[4096];
        for (;;) {
            std::error_code error;
            const std::size_t count =
                host::readSome(m_process->output(), piece, sizeof piece, error);
            if (count == 0) {
                return bytes;
            }
            bytes.append(piece, count);
        }
    }
    /// Sends bytes and ends the input.
    /// @return the exit code.
    int endWith(const std::string& bytes) {
        page().writeBytes(bytes);
        process().closeInput();
        rest();
        return exitCode();
    }
    fs::path workFolder() const {
        for (const fs::path& entry : fs::recursive_directory_iterator(m_folder.root() / "state")) {
            if (entry.filename() == "work") {
                return entry;
            }
        }
        return {};
    }
    int exitCode() { return process().exitCode(kSoon).value_or(-1); }
    std::string errors() const { return read(errorFile()); }
    /// The logins and logouts that the module saw, and its end.
    std::string calls() const { return read(m_folder.root() / "calls"); }
    static std::string module() { return fs::absolute(ZR_INSTANT_MODULE).string(); }
    static std::string manifest() {
        return fs::absolute("zrkey.browser.json").make_preferred().string();
    }
    static std::string hello(const std::string& origin = kPageSite) {
        return frameOf(json{{"hello", {{"protocol", 1}, {"origin", origin}}}}.dump());
    }

    static std::string read(const fs::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

private:
    fs::path errorFile() const { return m_folder.root() / "errors"; }

    TempDir m_folder;
    ConfigurationFolders m_configurations{m_folder.root()};
    std::unique_ptr<PipedProcess> m_process;
    std::unique_ptr<PageFrames> m_page;
};

TEST_F(HostProcessTest, SaysItsVersion) {
    start({"--version"});
    EXPECT_EQ(std::string("zrkey-browser ") + ZRKEY_VERSION + "\n", rest());
    EXPECT_EQ(0, exitCode());
    EXPECT_EQ("", errors());
}

TEST_F(HostProcessTest, RefusesOtherArguments) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{}, {"--help"}, {manifest()}, {"https://example.com/"}}) {
        start(arguments);
        EXPECT_EQ("", rest());
        EXPECT_EQ(2, exitCode());
        EXPECT_NE("", errors());
    }
}

TEST_F(HostProcessTest, RefusesOtherExtensions) {
    for (const std::vector<std::string>& arguments :
         {std::vector<std::string>{manifest(), "other@example.com"},
          {"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/"},
          {"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/", "--parent-window=0"}}) {
        start(arguments);
        page().writeBytes(hello());
        EXPECT_EQ("", rest());
        EXPECT_EQ(2, exitCode());
        EXPECT_NE(std::string::npos, errors().find("is not known"));
    }
}

TEST_F(HostProcessTest, KnowsTheExtensionsOfTheSettings) {
    writeSettings({{"module", module()},
                   {"allow", {kPageSite}},
                   {"extensions", {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa"}}});
    start({"chrome-extension://aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa/", "--parent-window=0"});
    EXPECT_EQ(1, page().greet(kPageSite).value("provider", 0));
}

TEST_F(HostProcessTest, ServesAPage) {
    startAndGreet();
    EXPECT_EQ("Instant",
              page().valueOf(page().valueOf(1, "tokens").at(0).at("object"), "GetLabel"));
    process().closeInput();
    EXPECT_EQ("", rest());
    EXPECT_EQ(0, exitCode());
    EXPECT_EQ("", errors());
    EXPECT_NE(std::string::npos, calls().find("C_Finalize\n"));
}

TEST_F(HostProcessTest, ReportsSettingsThatCannotBeRead) {
    writeSettings({{"unknown", 1}});
    start();
    EXPECT_EQ("settings", page().greet(kPageSite).at("error").at("code"));
    EXPECT_EQ("", rest());
    EXPECT_EQ(0, exitCode());
    EXPECT_NE(std::string::npos, errors().find("browser.json"));
}

TEST_F(HostProcessTest, JoinsAndSplitsFrames) {
    start();
    const std::string request =
        frameOf(R"({"id":1,"object":1,"member":"GetName","arguments":[]})") +
        frameOf(R"({"id":2,"object":1,"member":"GetName","arguments":[]})");
    for (const char byte : hello()) {
        page().writeBytes(std::string(1, byte));
    }
    EXPECT_EQ(1, page().read().at("hello").at("provider"));
    page().writeBytes(request.substr(0, request.size() - 3));
    EXPECT_EQ(1, page().read().at("id"));
    page().writeBytes(request.substr(request.size() - 3));
    EXPECT_EQ(2, page().read().at("id"));
}

TEST_F(HostProcessTest, EndsAtMalformedInput) {
    const std::string ask = R"({"id":1,"object":1,"member":"GetName","arguments":[)";
    const std::string malformed[] = {
        lengthOf(0),
        lengthOf(65537) + std::string(65537, ' '),
        lengthOf(0xFFFFFFFF),
        lengthOf(0x01000000) + "{}",
        lengthOf(100) + "{}",
        std::string("\x05"),
        frameOf("\xFF\xFE"),
        frameOf("{}"),
        frameOf("[]"),
        frameOf(ask + "\"\xC3\"]}"),
        frameOf(ask + std::string(30000, '[') + std::string(30000, ']') + "]}"),
        frameOf(ask + "[[[[[[[[1]]]]]]]]]}"),
        frameOf(ask + "]}") + frameOf(ask + "]}"),
        hello("https://other.example"),
        hello()};
    for (const std::string& bytes : malformed) {
        startAndGreet();
        EXPECT_EQ(1, endWith(bytes)) << bytes.substr(0, 100);
        EXPECT_EQ(0u, errors().find("zrkey-browser: ")) << errors();
    }
}

TEST_F(HostProcessTest, NeedsTheHandshakeFirst) {
    start();
    EXPECT_EQ(1, endWith(frameOf(R"({"id":1,"object":1,"member":"GetName","arguments":[]})")));
    start();
    EXPECT_EQ(1, endWith(frameOf(R"({"cancel":1})")));
}

TEST_F(HostProcessTest, EndsWithItsInput) {
    start();
    EXPECT_EQ(0, endWith(""));
    // The handshake is answered all the same.
    start();
    EXPECT_EQ(0, endWith(hello()));
    startAndGreet();
    EXPECT_EQ(0, endWith(""));
}

TEST_F(HostProcessTest, EndsWhenNobodyReadsItsOutput) {
    start();
    process().closeOutput();
    page().writeBytes(hello());
    EXPECT_EQ(0, exitCode());
    startAndGreet();
    process().closeOutput();
    page().ask(1, "GetName");
    EXPECT_EQ(0, exitCode());
}

TEST_F(HostProcessTest, KeepsItsStreamsFromAModuleThatPrintsAndReads) {
    setEnvironment("ZRKEY_INSTANT_NOISE", "1");
    startAndGreet();
    const std::uint64_t token = page().valueOf(1, "tokens").at(0).at("object");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ("Instant", page().valueOf(token, "GetLabel"));
    }
    process().closeInput();
    EXPECT_EQ("", rest());
    EXPECT_EQ(0, exitCode());
    EXPECT_NE(std::string::npos, errors().find("noise after 0 bytes of input"));
}

TEST_F(HostProcessTest, EndsACallThatTakesTooLong) {
    setEnvironment("ZRKEY_INSTANT_INFO_TIME", "600000");
    startAndGreet();
    const json reply = page().call(1, "tokens");
    EXPECT_EQ("deadline", PageFrames::outcomeOf(reply));
    EXPECT_EQ("tokens", reply.at("error").at("member"));
    EXPECT_EQ("", rest());
    EXPECT_EQ(1, exitCode());
    EXPECT_EQ("zrkey-browser: the module did not return in time\n", errors());
}

TEST_F(HostProcessTest, EndsALateCallOfABrowserThatDoesNotRead) {
    setEnvironment("ZRKEY_INSTANT_INFO_TIME", "600000");
    startAndGreet();
    // Their answers are more than a pipe takes.
    for (int i = 0; i < 900; ++i) {
        page().ask(1, "tokens");
    }
    EXPECT_EQ(1, exitCode());
    EXPECT_EQ("", errors());
}

TEST_F(HostProcessTest, AnswersNoSecondTimeWhenItsEndIsLate) {
    setEnvironment("ZRKEY_INSTANT_CLOSE_TIME", "600000");
    startAndGreet();
    page().call(1, "tokens");
    writeSettings({{"module", module()}, {"deny", {kPageSite}}});
    // The lists are read again after two seconds.
    std::this_thread::sleep_for(milliseconds(2100));
    EXPECT_EQ("not-allowed", page().codeOf(1, "GetName"));
    EXPECT_EQ("", rest());
    EXPECT_EQ(1, exitCode());
    const fs::path log = workFolder().parent_path() / "audit.jsonl";
    const std::string lines = read(log);
    EXPECT_NE(std::string::npos, lines.find(R"("disconnect","outcome":"deadline")")) << lines;
}

TEST_F(HostProcessTest, DoesNotWaitForACallAfterTheEndOfItsInput) {
    writeSettings({{"module", module()}, {"allow", {kPageSite}}, {"callSeconds", 600}});
    setEnvironment("ZRKEY_INSTANT_INFO_TIME", "600000");
    startAndGreet();
    page().ask(1, "tokens");
    std::this_thread::sleep_for(milliseconds(300));
    const auto begin = std::chrono::steady_clock::now();
    process().closeInput();
    EXPECT_EQ(0, exitCode());
    EXPECT_LT(std::chrono::steady_clock::now() - begin, seconds(5));
    EXPECT_EQ(std::string::npos, calls().find("C_Finalize"));
}

TEST_F(HostProcessTest, EndsAlsoWhenTheLogoutHangs) {
    setEnvironment("ZRKEY_INSTANT_CLOSE_TIME", "600000");
    startAndGreet();
    page().call(1, "tokens");
    process().closeInput();
    EXPECT_EQ(0, exitCode());
}

TEST_F(HostProcessTest, AnswersTenThousandRequests) {
    startAndGreet();
    constexpr int kRequests = 10000;
    constexpr int kAtOnce = 10;
    for (int i = 0; i < kRequests; i += kAtOnce) {
        for (int j = 0; j < kAtOnce; ++j) {
            page().ask(1, "GetName");
        }
        for (int j = 0; j < kAtOnce; ++j) {
            const json reply = page().read();
            ASSERT_EQ(i + j + 1, reply.at("id"));
            ASSERT_EQ("ok", PageFrames::outcomeOf(reply));
        }
    }
}

TEST_F(HostProcessTest, AnswersAFloodOfRequestsInTheEnd) {
    startAndGreet();
    constexpr int kRequests = 900;
    std::thread writer([this] {
        for (int i = 0; i < kRequests; ++i) {
            page().ask(1, "tokens");
        }
    });
    int answered = 0;
    while (answered < kRequests && !page().read().is_null()) {
        ++answered;
    }
    writer.join();
    EXPECT_EQ(kRequests, answered);
}

TEST_F(HostProcessTest, SendsLargeRepliesInParts) {
    setEnvironment("ZRKEY_INSTANT_CERTIFICATES", "100000");
    writeSettings({{"module", module()}, {"allow", {kPageSite}}, {"callSeconds", 60}});
    startAndGreet();
    const std::uint64_t token = page().valueOf(1, "tokens").at(0).at("object");
    const std::uint64_t id = page().ask(token, "EnumContainer");
    std::string text;
    int parts = 0;
    for (bool isLast = false; !isLast; ++parts) {
        const json part = page().read();
        ASSERT_EQ(id, part.value("id", json())) << part.dump().substr(0, 200);
        text.append(host::fromBase64Url(part.at("part").get<std::string>()).value());
        isLast = part.at("last").get<bool>();
    }
    setEnvironment("ZRKEY_INSTANT_CERTIFICATES", "");
    EXPECT_EQ(2, parts);
    const json reply = json::parse(text);
    EXPECT_EQ(id, reply.at("id"));
    EXPECT_EQ(100000u, reply.at("value").size());
}

TEST_F(HostProcessTest, WorksInAPrivateFolder) {
    startAndGreet();
    const fs::path folder = workFolder();
    EXPECT_TRUE(fs::is_directory(folder)) << folder;
    EXPECT_TRUE(fs::is_empty(folder));
}

}  // namespace
}  // namespace zr::test
