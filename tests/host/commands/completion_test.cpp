// Shell completion and the manual page: each command and switch of the help pages stands in them.
#include <functional>
#include <regex>
#include <sstream>

#include "tests/host/command_test.h"

namespace zr::test {
namespace {

/// The part of a text that belongs to a command.
std::string part(const std::string& text, const std::string& begin, const std::string& end) {
    const std::size_t first = text.find(begin);
    EXPECT_NE(std::string::npos, first) << begin;
    return first == std::string::npos ? "" : text.substr(first, text.find(end, first + 1) - first);
}

class CompletionTest : public CommandTest {
protected:
    static std::string generated(const std::string& kind) {
        const CommandResult result = zrkey({"--generate", kind});
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ("", result.errors);
        return result.output;
    }

    /// All pages of the help: the name of a command with the switches in its page.
    static std::vector<std::pair<std::string, Lines>> pages() {
        std::vector<std::pair<std::string, Lines>> found;
        std::istringstream stream(readFile(ZRKEY_HELP));
        const std::regex pattern("[ ,](--?[a-z][a-z-]*)(?=[ ,])");
        const std::string mark = "$ zrkey";
        for (std::string line; std::getline(stream, line);) {
            if (line.starts_with(mark)) {
                const std::string name =
                    line.substr(mark.size(), line.find(" --help") - mark.size());
                found.push_back({name.empty() ? name : name.substr(1), {}});
            } else if (line.starts_with("  -")) {
                const std::string names = line.substr(1, 29);
                for (std::sregex_iterator match(names.begin(), names.end(), pattern), end;
                     match != end; ++match) {
                    found.back().second.push_back((*match)[1].str());
                }
            }
        }
        EXPECT_GE(found.size(), 20u);
        return found;
    }

    /// @param partOf  the part of the text that belongs to a command.
    /// @param shown   how a switch stands in it.
    static void expectAll(const std::function<std::string(const std::string&)>& partOf,
                          const std::function<std::string(const std::string&)>& shown) {
        for (const auto& [name, switches] : pages()) {
            const std::string text = partOf(name);
            EXPECT_GE(switches.size(), 2u) << name;
            for (const std::string& option : switches) {
                EXPECT_NE(std::string::npos, text.find(shown(option))) << name << ' ' << option;
            }
        }
    }
};

TEST_F(CompletionTest, BashKnowsEveryCommandAndSwitch) {
    const std::string text = generated("bash");
    expectAll(
        [&](const std::string& name) {
            const std::string words = part(text, "        '" + name + "') names='", "\n");
            return std::regex_replace(words, std::regex("'"), " ");
        },
        [](const std::string& option) { return ' ' + option + ' '; });
    for (const auto& page : pages()) {
        const std::size_t blank = page.first.rfind(' ');
        const std::string group = blank == std::string::npos ? "" : page.first.substr(0, blank);
        const std::string words = std::regex_replace(
            part(text, "        '" + group + "') names='", "\n"), std::regex("'"), " ");
        const std::string word = std::string(" ").append(page.first.substr(blank + 1)).append(" ");
        EXPECT_TRUE(page.first.empty() || words.find(word) != std::string::npos) << page.first;
    }
}

TEST_F(CompletionTest, ZshKnowsEveryCommandAndSwitch) {
    const std::string text = generated("zsh");
    expectAll(
        [&](const std::string& name) { return part(text, "        ('" + name + "')\n", ";;"); },
        [](const std::string& option) { return "'" + option + ':'; });
    for (const auto& page : pages()) {
        const std::string word = page.first.substr(page.first.rfind(' ') + 1);
        EXPECT_TRUE(word.empty() || text.find("'" + word + ':') != std::string::npos) << word;
    }
}

TEST_F(CompletionTest, FishKnowsEveryCommandAndSwitch) {
    const std::string text = generated("fish");
    const auto start = [](const std::string& name) {
        return "complete -c zrkey -n '__zrkey_is" + (name.empty() ? "" : ' ' + name) + "' ";
    };
    for (const auto& [name, switches] : pages()) {
        std::string lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines += line.starts_with(start(name)) ? line + '\n' : "";
        }
        for (const std::string& option : switches) {
            const bool isLong = option.starts_with("--");
            std::string shown = isLong ? " -l " : " -s ";
            shown.append(option.substr(isLong ? 2 : 1)).append(" ");
            EXPECT_NE(std::string::npos, lines.find(shown)) << name << ' ' << option;
        }
        const std::size_t blank = name.rfind(' ');
        std::string word = start(blank == std::string::npos ? "" : name.substr(0, blank));
        word.append("-a ").append(name.substr(blank + 1)).append(" ");
        EXPECT_TRUE(name.empty() || text.find(word) != std::string::npos) << word;
    }
}

TEST_F(CompletionTest, ManualPageKnowsEveryCommandAndSwitch) {
    const std::string text = std::regex_replace(generated("man"), std::regex("\\\\-"), "-");
    expectAll(
        [&](const std::string& name) {
            const std::string blank = name.empty() ? "" : " ";
            return part(text, ".SS \"zrkey" + blank + name + " [OPTIONS]", "\n.S");
        },
        [](const std::string& option) { return "\\fB" + option + "\\fR"; });
}

TEST_F(CompletionTest, EveryPageHasTwoExamplesOfItsCommand) {
    const std::string text = readFile(ZRKEY_HELP);
    for (const auto& [name, switches] : pages()) {
        std::string mark = "$ zrkey ";
        mark.append(name).append(name.empty() ? "--help" : " --help");
        const std::string page = part(text, mark, "\n$ zrkey");
        const std::string own = page.substr(0, page.find("Examples:"));
        std::istringstream stream(part(page, "Examples:\n", "\n\n"));
        std::string line;
        std::getline(stream, line);
        int count = 0;
        while (std::getline(stream, line) && line.starts_with("  zrkey ")) {
            ++count;
            const bool isOwn = name.empty() || line.find(name) != std::string::npos;
            EXPECT_TRUE(isOwn) << line;
            if (own.find("\nSubcommands:\n") != std::string::npos) {
                continue;
            }
            const std::regex pattern(" (--?[a-z][a-z-]*)");
            for (std::sregex_iterator match(line.begin(), line.end(), pattern), end; match != end;
                 ++match) {
                const std::string option = (*match)[1].str();
                EXPECT_TRUE(own.find("  " + option) != std::string::npos ||
                            own.find(',' + option) != std::string::npos)
                    << line;
            }
        }
        EXPECT_EQ(2, count) << name;
    }
}

TEST_F(CompletionTest, OtherKindsAreWrongUsage) {
    expectUsageError({"--generate", "other"}, "unknown option --generate", "[OPTIONS] COMMAND");
}

}  // namespace
}  // namespace zr::test
