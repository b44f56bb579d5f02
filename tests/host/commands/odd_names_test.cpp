// Names of files, tokens and certificates with every character that a system or a token allows.
#include <utf8cpp/utf8.h>

#include <algorithm>

#include "host/system/byte_io.h"
#include "host/system/utf8_path.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

struct OddName {
    std::string name;
    std::string shown;
};

const std::vector<OddName>& oddNames() {
    static const std::vector<OddName> names = {
        {"two  words", "two  words"},
        {"it's", "it's"},
        {"\"quoted\"", "\"quoted\""},
        {"two\nlines\tand a tab", "two?lines?and a tab"},
        {"\xC3\xBC\xC3\x9F \xE2\x82\xAC", "\xC3\xBC\xC3\x9F \xE2\x82\xAC"},
        {"\xF0\x9F\x94\x91", "\xF0\x9F\x94\x91"},
        {"-i", "-i"},
        {"$HOME %PATH% ;&", "$HOME %PATH% ;&"},
        {"\x1B[2J", "?[2J"},
    };
    return names;
}

class OddNamesTest : public CommandTest {
protected:
    OddNamesTest() {
        writeFile("letter.txt", "letter");
        module.addCertificate("a", "A");
    }

    /// Whether the system can have a file of this name; Windows cannot have all.
    static bool canExist(const std::string& name) { return !host::writeFile(name, "letter"); }
    static std::size_t lineCount(const std::string& text) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }
};

TEST_F(OddNamesTest, InputIsRead) {
    int count = 0;
    for (const OddName& odd : oddNames()) {
        SCOPED_TRACE(odd.shown);
        if (canExist(odd.name)) {
            expectOutput({"digest", "-i", odd.name}, zrkey({"digest", "-i", "letter.txt"}).output);
            ++count;
        }
    }
    // Wine in the C locale has no names outside ASCII, and Windows none with quotes or control characters.
    EXPECT_GE(count, 4);
}

TEST_F(OddNamesTest, OutputHasItsName) {
    for (const OddName& odd : oddNames()) {
        SCOPED_TRACE(odd.shown);
        if (canExist(odd.name)) {
            std::filesystem::remove(host::toPath(odd.name));
            expectOutput({"cert", "read", "-o", odd.name}, "");
            EXPECT_EQ("A", readFile(host::toPath(odd.name)));
            std::filesystem::remove(host::toPath(odd.name));
        }
    }
}

TEST_F(OddNamesTest, MissingInputIsShownSafely) {
    for (const OddName& odd : oddNames()) {
        SCOPED_TRACE(odd.shown);
        const CommandResult result = zrkey({"digest", "-i", odd.name});
        EXPECT_EQ(1, result.exitCode);
        EXPECT_EQ(0u, result.errors.find("zrkey: cannot read \"" + odd.shown + "\": "))
            << result.errors;
    }
}

TEST_F(OddNamesTest, ConfigurationAndFolderAreUsed) {
    const std::string text = readFile("config.xml");
    for (const OddName& odd : oddNames()) {
        SCOPED_TRACE(odd.shown);
        std::filesystem::remove("config.xml");
        if (canExist(odd.name)) {
            writeFile(host::toPath(odd.name), text);
            EXPECT_EQ(0, zrkey({"list", "--config", odd.name}).exitCode);
            std::filesystem::remove(host::toPath(odd.name));
            std::filesystem::create_directory(host::toPath(odd.name));
            const CommandResult result = zrkey({"list", "--workdir", odd.name});
            EXPECT_EQ(0, result.exitCode) << result.errors;
            std::filesystem::remove_all(host::toPath(odd.name));
        }
    }
}

TEST_F(OddNamesTest, LabelOfATokenIsOneFieldAndSelectsIt) {
    for (const OddName& odd : oddNames()) {
        SCOPED_TRACE(odd.shown);
        setText(module->settings().tokenInfo.label, odd.name);
        EXPECT_EQ("0\t" + odd.shown + "\tSerial\tMaker\tModel\n", zrkey({"list"}).output);
        const CommandResult info = zrkey({"info", "--label", odd.name});
        EXPECT_EQ(0, info.exitCode) << info.errors;
        EXPECT_NE(std::string::npos, info.output.find("label:\t" + odd.shown + "\n"));
        const std::string json = zrkey({"list", "--json"}).output;
        EXPECT_EQ(1u, lineCount(json));
        EXPECT_TRUE(utf8::is_valid(json));
    }
}

TEST_F(OddNamesTest, LabelThatIsNotUtf8IsShownSafely) {
    setText(module->settings().tokenInfo.label, "a\xFF\xC3");
    for (const CommandResult& result : {zrkey({"list"}), zrkey({"list", "--json"})}) {
        EXPECT_EQ(0, result.exitCode);
        EXPECT_TRUE(utf8::is_valid(result.output)) << result.output;
        EXPECT_EQ(1u, lineCount(result.output));
    }
}

TEST_F(OddNamesTest, CertificateIsListedInOneLineAndFoundByItsName) {
    for (const OddName& odd : oddNames()) {
        module.addCertificate(odd.name, "value of " + odd.name);
    }
    const std::string list = zrkey({"cert", "list"}).output;
    EXPECT_EQ(oddNames().size() + 1, lineCount(list));
    for (std::size_t i = 0; i < oddNames().size(); ++i) {
        const OddName& odd = oddNames()[i];
        SCOPED_TRACE(odd.shown);
        EXPECT_NE(std::string::npos, list.find(std::to_string(i + 1) + '\t' + odd.shown)) << list;
        expectOutput({"cert", "read", "--cert", odd.name, "--format", "raw"},
                     "value of " + odd.name);
    }
    const CommandResult missing = zrkey({"cert", "read", "--cert", "none"});
    EXPECT_EQ(4, missing.exitCode);
    EXPECT_EQ(1u, lineCount(missing.errors));
}

}  // namespace
}  // namespace zr::test
