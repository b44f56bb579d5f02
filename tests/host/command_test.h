// A fixture for the commands of zrkey in the test's own process, over the recording module: a test
// chooses what the module returns, and compares every text as a whole.
#pragma once

#include "host/commands/command_line.h"
#include "host/token/module_places.h"
#include "tests/host/child_command.h"
#include "tests/host/configuration_folders.h"
#include "tests/host/web/replaced_places.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {

/// Fills a field of a token with a text and blanks.
template <std::size_t size>
void setText(unsigned char (&field)[size], const std::string& text) {
    std::fill_n(field, size, static_cast<unsigned char>(' '));
    std::copy(text.begin(), text.end(), field);
}

class CommandTest : public ModuleTest {
protected:
    CommandTest() {
        // The modules of the machine that runs the tests are not looked at.
        host::replaceModulePlaces(host::ModulePlaces());
        folder.writeConfig("SHA1WithRSA", "MD5");
        CK_TOKEN_INFO& info = module->settings().tokenInfo;
        setText(info.label, "Label");
        setText(info.serialNumber, "Serial");
        setText(info.manufacturerID, "Maker");
        setText(info.model, "Model");
        setEnvironment("ZRKEY_MODULE", module.path());
        setEnvironment("TEST_PIN", "1234");
        setEnvironment("TEST_WRONG_PIN", "97531");
    }
    ~CommandTest() override {
        setEnvironment("ZRKEY_MODULE", "");
        host::replaceModulePlaces(std::nullopt);
    }

    static CommandResult zrkey(const std::vector<std::string>& words) {
        ConsoleCapture console;
        const int exitCode = host::runCommandLine(words);
        const ConsoleCapture::Text text = console.stop();
        return {exitCode, text.out, text.error};
    }
    static std::vector<std::string> withPin(std::vector<std::string> words) {
        words.insert(words.end(), {"--pin", "env:TEST_PIN"});
        return words;
    }

    static void expectOutput(const std::vector<std::string>& words, const std::string& output) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(0, result.exitCode);
        EXPECT_EQ(output, result.output);
        EXPECT_EQ("", result.errors);
    }
    /// @param members  the members of the JSON object after those that all commands have.
    static void expectJson(std::vector<std::string> words, const std::string& command,
                           const std::string& members) {
        words.emplace_back("--json");
        expectOutput(words, R"({"schema":1,"command":")" + command +
                                R"(","result":{"name":"S_OK","hex":"0x00000000"},)" + members +
                                "}\n");
    }
    /// @param line  the text after "zrkey: cannot ".
    static void expectFailure(const std::vector<std::string>& words, int exitCode,
                              const std::string& line) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(exitCode, result.exitCode);
        EXPECT_EQ("", result.output);
        EXPECT_EQ("zrkey: cannot " + line + "\n", result.errors);
    }
    /// @param line   the text between "zrkey: " and the usage.
    /// @param usage  without "zrkey ": "file read [OPTIONS] NUMBER".
    static void expectUsageError(const std::vector<std::string>& words, const std::string& line,
                                 const std::string& usage) {
        const CommandResult result = zrkey(words);
        EXPECT_EQ(2, result.exitCode);
        EXPECT_EQ("", result.output);
        const std::string command = usage.substr(0, usage.find('['));
        std::string text = "zrkey: ";
        text.append(line).append("; usage: zrkey ").append(usage);
        text.append("; zrkey help ").append(command).append("shows more\n");
        EXPECT_EQ(text, result.errors);
    }

    ConfigurationFolders configurations{folder.root()};
    /// The same folders.
    WebPlacesReplacement web{folder.root()};
};

}  // namespace zr::test
