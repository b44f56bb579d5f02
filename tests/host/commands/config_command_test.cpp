// zrkey config, to the last character.
#include "host/system/system.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

constexpr const char* kBuiltIn =
    "<driver>\n  <algo>SHA1WithRSA</algo>\n  <digest>MD5</digest>\n</driver>\n";

class ConfigCommandTest : public CommandTest {
protected:
    std::string userFile() const { return configurations.userFile().generic_string(); }
    /// A file of the working folder as messages show it.
    static std::string here(const std::string& name) {
        return (fs::current_path() / name).generic_string();
    }
    std::string systemFile() const {
        const fs::path root = host::systemConfigurationFolder();
        return (root / "zrkey" / "config.xml").generic_string();
    }
};

TEST_F(ConfigCommandTest, ShowNamesThePlaceAndItsContent) {
    const std::string text = "<driver><algo>SHA1WithRSA</algo><digest>MD5</digest></driver>";
    expectOutput({"config", "show"},
                 "place:\tworking folder\nfile:\t" + here("config.xml") + "\n" + text + "\n");
    expectJson({"config", "show"}, "config show",
               R"("place":"working folder","file":")" + here("config.xml") + R"(","content":")" +
                   text + '"');
}

TEST_F(ConfigCommandTest, ShowMakesAFileSafeToShow) {
    writeFile("other.xml", "<a>\r\n\x1b[31m\n");
    expectOutput({"config", "show", "--config", "other.xml"},
                 "place:\toption\nfile:\t" + here("other.xml") + "\n<a>\n?[31m\n");
}

TEST_F(ConfigCommandTest, ShowWithoutAFileShowsTheBuiltInConfiguration) {
    if (fs::exists(systemFile())) {
        GTEST_SKIP() << "this system has a configuration of its own";
    }
    fs::remove("config.xml");
    expectOutput({"config", "show"}, std::string("place:\tbuilt-in\n").append(kBuiltIn));
}

TEST_F(ConfigCommandTest, ShowOfAMissingFileFails) {
    expectFailure({"config", "show", "--config", "none.xml"}, 3,
                  "read the configuration \"" + here("none.xml") +
                      "\": No such file or directory; check --config and the permissions; zrkey "
                      "config path shows the places of the configuration");
}

TEST_F(ConfigCommandTest, PathListsThePlacesInTheirOrder) {
    const std::string system = systemFile();
    const std::string systemState = fs::exists(system) ? "exists" : "missing";
    const std::string rest = "user\t" + userFile() + "\tmissing\nsystem\t" + system + '\t' +
                             systemState + "\nbuilt-in\t-\texists\n";
    expectOutput({"config", "path"}, "working folder\t" + here("config.xml") + "\tused\n" + rest);
    expectOutput({"config", "path", "--config", "none.xml", "--workdir", "other"},
                 "option\t" + here("none.xml") + "\tmissing\nworking folder\t" +
                     here("other/config.xml") + "\tmissing\n" + rest);
}

TEST_F(ConfigCommandTest, PathInJson) {
    ConfigurationFolders::forgetUser();
    const std::string system = systemFile();
    expectJson({"config", "path"}, "config path",
               R"("places":[{"place":"working folder","file":")" + here("config.xml") +
                   R"(","exists":true,"used":true},{"place":"system","file":")" + system +
                   R"(","exists":)" + (fs::exists(system) ? "true" : "false") +
                   R"(,"used":false},{"place":"built-in","exists":true,"used":false}])");
}

TEST_F(ConfigCommandTest, InitWritesTheUsersFileOnce) {
    expectOutput({"config", "init"}, "wrote " + userFile() + '\n');
    EXPECT_EQ(kBuiltIn, readFile(configurations.userFile()));
    writeFile(configurations.userFile(), "<driver><algo>MINE</algo></driver>");
    expectFailure({"config", "init"}, 1,
                  "write the user's configuration \"" + userFile() +
                      "\": File exists; edit it, or remove it first");
    fs::remove("config.xml");
    EXPECT_NE(std::string::npos, zrkey({"info"}).output.find("signAlgorithms:\tMINE\n"));
    fs::remove(configurations.userFile());
    expectJson({"config", "init"}, "config init", R"("file":")" + userFile() + '"');
}

TEST_F(ConfigCommandTest, InitFailsWhereNoFolderCanBe) {
    writeFile(configurations.userFile().parent_path().parent_path(), "a file");
    const CommandResult result = zrkey({"config", "init"});
    EXPECT_EQ(1, result.exitCode);
    EXPECT_NE(std::string::npos, result.errors.find("; check free space and permissions\n"))
        << result.errors;
    ConfigurationFolders::forgetUser();
    expectFailure(
        {"config", "init"}, 1,
        "write the user's configuration: the environment names no folder for it; set HOME "
        "or XDG_CONFIG_HOME, on Windows APPDATA");
}

}  // namespace
}  // namespace zr::test
