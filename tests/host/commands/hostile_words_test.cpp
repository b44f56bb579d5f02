// Every command with words that make no sense: what it says is one line, and the token is left alone.
#include <utf8cpp/utf8.h>

#include <algorithm>

#include "tests/host/command_pages.h"
#include "tests/host/command_test.h"
#include "tests/host/redirection.h"

namespace zr::test {
namespace {

/// Commands that go on until somebody interrupts them.
bool isEndless(const CommandPage& page) {
    return page.name() == "watch";
}

/// Runs scripts or other commands, whose errors are their own.
bool runsOthers(const CommandPage& page) {
    return page.name() == "run" || page.name() == "shell" || page.name() == "trace";
}

/// Its result is what does not work.
bool reportsFailures(const CommandPage& page) {
    return page.name() == "doctor" || page.name() == "browser status";
}

class HostileWordsTest : public CommandTest {
protected:
    HostileWordsTest() {
        writeFile("data.bin", "data");
        writeFile("empty.bin", "");
        writeFile("script.js", "print(1);");
        std::filesystem::create_directory("a folder");
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        module.addKey(CKO_PUBLIC_KEY, "a");
        module.addData("6", "content");
        std::error_code error;
        m_input.emplace(host::kStandardInput, host::openForReading("empty.bin", error));
    }

    static std::vector<CommandPage> pages() {
        return commandPages([](const Words& words) { return zrkey(words); });
    }
    /// The commands that can be run.
    static std::vector<CommandPage> commands() {
        std::vector<CommandPage> found = pages();
        found.erase(
            std::remove_if(found.begin(), found.end(),
                           [](const CommandPage& page) { return page.isGroup || isEndless(page); }),
            found.end());
        return found;
    }

    /// A failure is one line of text that begins with "zrkey: ".
    static void expectOneLine(const CommandResult& result) {
        EXPECT_EQ("", result.output);
        EXPECT_EQ(0u, result.errors.find("zrkey: ")) << result.errors;
        EXPECT_EQ(result.errors.size() - 1, result.errors.find('\n')) << result.errors;
        expectSafe(result.errors);
    }
    /// Nothing in it can confuse a terminal.
    static void expectSafe(const std::string& text) {
        EXPECT_TRUE(utf8::is_valid(text)) << text;
        EXPECT_TRUE(std::none_of(text.begin(), text.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t';
        })) << text;
    }
    static CommandResult expectRefused(const Words& words) {
        const CommandResult result = zrkey(words);
        EXPECT_NE(0, result.exitCode);
        EXPECT_LE(result.exitCode, 8);
        expectOneLine(result);
        return result;
    }
    static void expectUsageOf(const CommandPage& page, const CommandResult& result) {
        EXPECT_EQ(2, result.exitCode);
        EXPECT_NE(std::string::npos, result.errors.find("; usage: zrkey " + page.name() + " "))
            << result.errors;
    }

private:
    std::optional<Redirection> m_input;
};

TEST_F(HostileWordsTest, NoArgumentsAndNoTokenAreOneLine) {
    module->settings().slotCount = 0;
    module->settings().emptySlotCount = 0;
    for (const CommandPage& page : pages()) {
        SCOPED_TRACE(page.name());
        if (isEndless(page)) {
            continue;
        }
        const CommandResult result = zrkey(page.path);
        if (reportsFailures(page)) {
            EXPECT_EQ(4, result.exitCode);
        } else if (page.isGroup) {
            expectOneLine(result);
            expectUsageOf(page, result);
        } else if (result.exitCode != 0) {
            expectOneLine(result);
        }
    }
    EXPECT_EQ(0u, module.count("C_OpenSession"));
}

TEST_F(HostileWordsTest, UnknownOptionIsNamedWithoutItsValue) {
    for (const CommandPage& page : pages()) {
        SCOPED_TRACE(page.name());
        for (const std::string option : {"--no-such-option=4711", "-Z4711"}) {
            const CommandResult result = expectRefused(joined(page.path, {option}));
            expectUsageOf(page, result);
            const std::string name = option.substr(0, option.find_first_of("=4"));
            EXPECT_NE(std::string::npos, result.errors.find("unknown option " + name))
                << result.errors;
            EXPECT_EQ(std::string::npos, result.errors.find("4711")) << result.errors;
        }
    }
}

TEST_F(HostileWordsTest, SwitchWithoutItsValueIsNamed) {
    for (const CommandPage& page : pages()) {
        for (const PageRow& row : page.rows) {
            if (!row.isSwitch() || row.value.empty()) {
                continue;
            }
            SCOPED_TRACE(page.name() + ' ' + row.names.back());
            const CommandResult result = expectRefused(joined(page.path, {row.names.back()}));
            expectUsageOf(page, result);
            EXPECT_NE(std::string::npos, result.errors.find(row.names.back())) << result.errors;
        }
    }
}

TEST_F(HostileWordsTest, FolderInsteadOfAFileIsNamedBeforeTheTokenWorks) {
    int count = 0;
    for (const CommandPage& page : commands()) {
        for (const PageRow& row : page.rows) {
            const bool isFile = row.isSwitch() && (row.value == "FILE" || row.value == "PATH");
            const bool isSource = row.isSwitch() && row.value == "SOURCE";
            // config path only lists the places.
            if ((!isFile && !isSource) || page.name() == "config path" || reportsFailures(page)) {
                continue;
            }
            const std::string& name = row.names.back();
            SCOPED_TRACE(page.name() + ' ' + name);
            const Words words = usualWords(page, {name, isSource ? "file:a folder" : "a folder"});
            const CommandResult result = expectRefused(words);
            EXPECT_NE(std::string::npos, result.errors.find("a folder\"")) << result.errors;
            ++count;
        }
    }
    expectRefused({"run", "a folder"});
    EXPECT_GE(count, 30);
    EXPECT_EQ(0u, module.count("C_Login"));
    EXPECT_TRUE(std::filesystem::is_empty("a folder"));
}

TEST_F(HostileWordsTest, FileInsteadOfAFolderIsNamed) {
    for (const CommandPage& page : commands()) {
        if (page.has("--workdir") && page.name() != "config path" && page.name() != "config show" &&
            !reportsFailures(page)) {
            SCOPED_TRACE(page.name());
            const CommandResult result = expectRefused(usualWords(page, {"--workdir", "data.bin"}));
            EXPECT_NE(std::string::npos, result.errors.find("data.bin\"")) << result.errors;
        }
    }
}

TEST_F(HostileWordsTest, EmptyModuleAndConfigurationAreWrongUsage) {
    for (const CommandPage& page : commands()) {
        for (const char* name : {"--module", "--config", "--workdir"}) {
            if (page.has(name)) {
                SCOPED_TRACE(page.name() + ' ' + name);
                const CommandResult result = expectRefused(usualWords(page, {name, ""}));
                EXPECT_EQ(2, result.exitCode);
                EXPECT_NE(std::string::npos,
                          result.errors.find(std::string(name).append(": the value is empty")))
                    << result.errors;
            }
        }
    }
}

/// Values that break programs: of quotes, lines, formats, other encodings, and a long one.
const Words& hostileValues() {
    static const Words values = {"",
                                 "two words, \"quoted\" and it's\n\ttwo lines",
                                 "\xC3\xBC\xE2\x82\xAC\xF0\x9F\x94\x91",
                                 "\x1B[2J\xC2\x9B",
                                 "not UTF-8: \xFF\xC3",
                                 "%s%n$HOME`id`;&|<>*?",
                                 "--",
                                 "18446744073709551616",
                                 std::string(70000, 'x')};
    return values;
}

TEST_F(HostileWordsTest, EveryValueOfEverySwitchSucceedsOrIsOneLine) {
    for (const CommandPage& page : commands()) {
        for (const PageRow& row : page.rows) {
            if (!row.isSwitch() || row.value.empty() || runsOthers(page)) {
                continue;
            }
            for (const std::string& value : hostileValues()) {
                const std::string& name = row.names.back();
                SCOPED_TRACE(page.name() + ' ' + name + ' ' + value.substr(0, 50));
                const CommandResult result = zrkey(usualWords(page, {name, value}));
                EXPECT_LE(result.exitCode, 8);
                if (result.exitCode != 0 && result.output.empty()) {
                    expectOneLine(result);
                }
                EXPECT_TRUE(result.exitCode == 0 || result.output.empty() || reportsFailures(page))
                    << result.output;
            }
        }
    }
}

TEST_F(HostileWordsTest, EveryWordInPlaceOfACommandOrNumberIsOneLine) {
    for (const std::string& value : hostileValues()) {
        expectRefused({value});
        for (const CommandPage& page : pages()) {
            if (!runsOthers(page) && !isEndless(page)) {
                SCOPED_TRACE(page.name() + ' ' + value.substr(0, 50));
                const CommandResult result = zrkey(joined(page.path, {value}));
                EXPECT_LE(result.exitCode, 8);
                if (result.exitCode != 0 && !reportsFailures(page)) {
                    expectOneLine(result);
                }
            }
        }
    }
}

}  // namespace
}  // namespace zr::test
