// The places of the configuration, and the copy that the library reads when it is not in the working
// folder.
#include "host/token/configuration.h"

#include "host/system/system.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class ConfigurationTest : public CommandTest {
protected:
    ConfigurationTest() {
        fs::remove("config.xml");
        fs::create_directory(temporary);
        ConfigurationFolders::setTemporary(temporary.string());
    }

    static void write(const fs::path& file, const std::string& algorithms) {
        fs::create_directories(fs::absolute(file).parent_path());
        writeFile(file, "<driver><algo>" + algorithms + "</algo></driver>");
    }
    /// What the library read as the list of algorithms.
    static std::string algorithms(std::vector<std::string> options = {}) {
        options.insert(options.begin(), "info");
        const CommandResult result = zrkey(options);
        EXPECT_EQ(0, result.exitCode) << result.errors;
        const std::string name = "signAlgorithms:\t";
        const std::size_t begin = result.output.find(name) + name.size();
        return result.output.substr(begin, result.output.find('\n', begin) - begin);
    }
    /// The line of a load that failed.
    std::string notLoaded(const std::string& cause) const {
        return "load the module \"" + module.path() + "\": " + cause;
    }

    const fs::path temporary = folder.root() / "temporary";
};

TEST_F(ConfigurationTest, NoFileIsNeeded) {
    EXPECT_EQ("SHA1WithRSA", algorithms());
    EXPECT_NE(std::string::npos, zrkey({"info"}).output.find("\ndigestMethod:\tMD5\n"));
}

TEST_F(ConfigurationTest, FirstPlaceThatExistsCounts) {
    write(configurations.userFile(), "USER");
    EXPECT_EQ("USER", algorithms());
    write("config.xml", "WORK");
    EXPECT_EQ("WORK", algorithms());
    write("elsewhere/config.xml", "ELSEWHERE");
    EXPECT_EQ("ELSEWHERE", algorithms({"--workdir", "elsewhere"}));
    write("any.xml", "OPTION");
    EXPECT_EQ("OPTION", algorithms({"--config", "any.xml"}));
    EXPECT_EQ("OPTION", algorithms({"--config", "any.xml", "--workdir", "elsewhere"}));
    fs::create_directory("empty");
    EXPECT_EQ("USER", algorithms({"--workdir", "empty"}));
}

TEST_F(ConfigurationTest, SystemComesAfterTheUserAndBeforeTheBuiltInOne) {
    const fs::path none = folder.work() / "none.xml";
    const fs::path file = folder.work() / "some.xml";
    write(file, "ANY");
    using Kind = host::ConfigurationPlace::Kind;
    const auto chosen = [](const fs::path& user, const fs::path& system) {
        return host::chooseConfiguration(
                   {{Kind::kUser, user}, {Kind::kSystem, system}, {Kind::kBuiltIn, {}}})
            .kind;
    };
    EXPECT_EQ(Kind::kUser, chosen(file, file));
    EXPECT_EQ(Kind::kSystem, chosen(none, file));
    EXPECT_EQ(Kind::kBuiltIn, chosen(none, none));
}

TEST_F(ConfigurationTest, FileThatIsNamedMustExist) {
    expectFailure({"list", "--config", "none.xml"}, 3,
                  "read the configuration \"" + (fs::current_path() / "none.xml").generic_string() +
                      "\": No such file or directory; check --config and the permissions; zrkey "
                      "config path shows the places of the configuration");
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(ConfigurationTest, InvalidFileIsNamed) {
    fs::create_directories(configurations.userFile().parent_path());
    const std::string reason =
        "\" is not valid; it needs a <driver> element, and lists shorter than 500 bytes";
    for (const std::string& text :
         {std::string("<other/>"), std::string("<driver/>") + std::string(1 << 20, ' ')}) {
        writeFile(configurations.userFile(), text);
        expectFailure({"list"}, 3,
                      notLoaded("the module was loaded, but the configuration \"" +
                                configurations.userFile().generic_string() + reason));
    }
}

TEST_F(ConfigurationTest, LibraryFindsTheCopyInAPrivateFolderDuringLoadOnly) {
    struct Seen {
        fs::path folder;
        std::string text;
        fs::perms others{};
    } seen;
    module->callBack(
        "C_Initialize",
        [](void* argument) {
            auto& here = *static_cast<Seen*>(argument);
            here.folder = fs::current_path();
            here.text = readFile("config.xml");
            here.others =
                fs::status(".").permissions() & (fs::perms::group_all | fs::perms::others_all);
        },
        &seen);
    EXPECT_EQ(0, zrkey({"list"}).exitCode);
    EXPECT_EQ(host::kBuiltInConfiguration, seen.text);
    EXPECT_TRUE(fs::equivalent(temporary, seen.folder.parent_path())) << seen.folder;
    // On Windows the folder inherits the permissions of the user's folder, which are not modes.
    if (fs::path::preferred_separator == '/') {
        EXPECT_EQ(fs::perms::none, seen.others);
    }
    EXPECT_FALSE(fs::exists(seen.folder));
    EXPECT_TRUE(fs::equivalent(folder.work(), fs::current_path()));
}

TEST_F(ConfigurationTest, SecondStartForTheCauseIsInTheFolderOfTheFirst) {
    struct Starts {
        RecordingModule& module;
        std::vector<fs::path> folders;

        /// A module calls back once.
        void awaitNext() { module.callBack("C_Initialize", note, this); }
        static void note(void* argument) {
            auto& starts = *static_cast<Starts*>(argument);
            starts.folders.push_back(fs::current_path());
            starts.awaitNext();
        }
    } starts{*module.operator->(), {}};
    starts.awaitNext();
    module->fail("C_Initialize", 0, CKR_GENERAL_ERROR);
    EXPECT_EQ(3, zrkey({"list"}).exitCode);
    module->reset();
    ASSERT_EQ(2u, starts.folders.size());
    EXPECT_EQ(starts.folders.front(), starts.folders.back());
    EXPECT_NE(fs::current_path(), starts.folders.back());
    EXPECT_TRUE(fs::is_empty(temporary));
}

TEST_F(ConfigurationTest, NoCopyRemainsAfterFailures) {
    writeFile("other.xml", "<other/>");
    EXPECT_EQ(3, zrkey({"list", "--config", "other.xml"}).exitCode);
    EXPECT_EQ(3, zrkey({"list", "--module", "missing.so"}).exitCode);
    EXPECT_EQ(3, zrkey({"list", "--module", module.noListPath()}).exitCode);
    EXPECT_TRUE(fs::is_empty(temporary));
    EXPECT_TRUE(fs::equivalent(folder.work(), fs::current_path()));
}

TEST_F(ConfigurationTest, WorkingFolderNamesTheFolderOfTheLog) {
    folder.enableLog();
    EXPECT_EQ(0, zrkey({"list"}).exitCode);
    EXPECT_FALSE(fs::is_empty(folder.home() / "log" / "level" / "work"));
    fs::create_directory("other");
    EXPECT_EQ(0, zrkey({"list", "--workdir", "other"}).exitCode);
    EXPECT_FALSE(fs::is_empty(folder.home() / "log" / "work" / "other"));
}

TEST_F(ConfigurationTest, OverlongFolderForTemporaryFilesIsNamed) {
    // Windows does not allow a current folder of the library's whole limit.
    ASSERT_LT(temporary.string().size(), 180u);
    const fs::path deep = temporary / std::string(210 - temporary.string().size(), 'd');
    fs::create_directory(deep);
    ConfigurationFolders::setTemporary(deep.string());
    expectFailure(
        {"list"}, 3,
        notLoaded("the folder for temporary files and the module path together are longer "
                  "than 259 bytes; choose a shorter one, or put config.xml into the "
                  "working folder"));
    write("config.xml", "WORK");
    EXPECT_EQ("WORK", algorithms());
}

}  // namespace
}  // namespace zr::test
