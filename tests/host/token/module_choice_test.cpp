// Which module a command uses: by a path, by a name, by settings, or because it alone has a token.
#include "host/token/module_choice.h"

#include <algorithm>

#include "host/system/interruption.h"
#include "host/token/module_places.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

constexpr const char* kList = "0\tLabel\tSerial\tMaker\tModel\n";

class ModuleChoiceTest : public CommandTest {
protected:
    ModuleChoiceTest() {
        setEnvironment("ZRKEY_MODULE", "");
        for (const char* path : {"user-modules", "system-modules", "libraries"}) {
            fs::create_directory(path);
            m_folders.push_back(fs::absolute(path));
        }
        host::replaceModulePlaces(
            host::ModulePlaces{{m_folders[2], file().parent_path()}, {m_folders[0], m_folders[1]}});
    }

    static fs::path file() { return fs::absolute(Recording::file()); }
    static void configure(const std::string& name, const std::string& text,
                          const std::string& folder = "system-modules") {
        writeFile(fs::path(folder) / (name + ".module"), text);
    }
    static std::string moduleLine() { return "module: " + file().generic_string() + "\n"; }
    void writeSettings(const std::string& text) const {
        const fs::path settings = configurations.userFile().parent_path();
        fs::create_directories(settings);
        writeFile(settings / "zrkey.conf", text);
    }
    /// What list writes to standard error when it uses the recording module.
    static std::string listed(std::vector<std::string> options = {}) {
        options.insert(options.begin(), "list");
        const CommandResult result = zrkey(options);
        EXPECT_EQ(0, result.exitCode) << result.errors;
        EXPECT_EQ(kList, result.output);
        return result.errors;
    }
    static void expectNone(int exitCode, const std::string& cause) {
        expectFailure({"list"}, exitCode, "load a module: no module is named" + cause);
    }

private:
    std::vector<fs::path> m_folders;
};

constexpr const char* kConnect = "; connect the token, give --module PATH or set ZRKEY_MODULE";

TEST_F(ModuleChoiceTest, NameIsLookedUpInTheFolders) {
    EXPECT_EQ("", listed({"--module", "recording_module"}));
    EXPECT_EQ("", listed({"--module", file().filename().string()}));
    setEnvironment("ZRKEY_MODULE", "recording_module");
    EXPECT_EQ("", listed());
}

TEST_F(ModuleChoiceTest, NameIsLookedUpInTheConfigurationFirst) {
    configure("recording_module", "module: " + fs::absolute("none").generic_string());
    EXPECT_EQ("", listed({"--module", "recording_module"}));
    configure("token", moduleLine());
    EXPECT_EQ("", listed({"--module", "token"}));
}

TEST_F(ModuleChoiceTest, FileOfTheCurrentFolderComesBeforeAName) {
    writeFile("recording_module", "no module");
    const CommandResult result = zrkey({"list", "--module", "recording_module"});
    EXPECT_EQ(3, result.exitCode);
    EXPECT_EQ(0u, result.errors.find("zrkey: cannot load the module \"recording_module\": "));
}

TEST_F(ModuleChoiceTest, NameThatIsNotFoundIsTakenForAPath) {
    expectFailure({"list", "--module", "nothing"}, 3,
                  "load the module \"nothing\": No such file or directory; check --module");
}

TEST_F(ModuleChoiceTest, OptionThenVariableThenSettings) {
    writeSettings("# mine\n\n module = " + file().generic_string() + " \r\n");
    EXPECT_EQ("", listed());
    setEnvironment("ZRKEY_MODULE", "missing.so");
    expectFailure({"list"}, 3,
                  "load the module \"missing.so\": No such file or directory; check --module");
    EXPECT_EQ("", listed({"--module", "recording_module"}));
}

TEST_F(ModuleChoiceTest, SettingsMayGiveAName) {
    writeSettings("module = recording_module");
    EXPECT_EQ("", listed());
    writeSettings("# nothing\n");
    expectNone(2, "; give --module PATH or set ZRKEY_MODULE");
}

TEST_F(ModuleChoiceTest, WrongSettingsAreNamed) {
    const std::string asked =
        "read the settings \"" +
        (configurations.userFile().parent_path() / "zrkey.conf").generic_string() + "\": ";
    writeSettings("\nmodule\n");
    expectFailure({"list"}, 3, asked + "line 2 is not KEY = VALUE; correct it: module = PATH");
    writeSettings("modul = x\n");
    expectFailure({"list"}, 3, asked + "unknown setting \"modul\"; the only one is module");
    writeSettings("module = here/x.so\n");
    expectFailure({"list"}, 3,
                  asked + "the path \"here/x.so\" is relative; give a full path or a name");
    EXPECT_EQ(0u, module->callCount());
}

TEST_F(ModuleChoiceTest, OnlyModuleOfP11KitWithATokenIsUsed) {
    configure("token", moduleLine());
    configure("gone", "module: " + fs::absolute("gone").generic_string());
    module.takeCalls();
    EXPECT_EQ("zrkey: using the module \"" + file().generic_string() +
                  "\" of p11-kit, the only one with a token\n",
              listed());
    const Lines calls = module.takeCalls();
    // The look at it ended before the library loaded it.
    const auto isStart = [](const std::string& call) { return call == "C_Initialize(null)"; };
    const auto isEnd = [](const std::string& call) { return call == "C_Finalize(null)"; };
    EXPECT_EQ(2, std::count_if(calls.begin(), calls.end(), isStart));
    EXPECT_EQ(2, std::count_if(calls.begin(), calls.end(), isEnd));
    const auto second = std::find_if(calls.begin() + 1, calls.end(), isStart);
    ASSERT_NE(second, calls.end());
    EXPECT_TRUE(isEnd(*(second - 1)));
}

TEST_F(ModuleChoiceTest, SeveralModulesWithATokenNeedAChoice) {
    configure("token", moduleLine());
    configure("other", "module: " + fs::absolute(ZR_INSTANT_MODULE).generic_string());
    expectNone(4,
               ", and several of p11-kit's have tokens: \"other\", \"token\"; choose one with "
               "--module, or set ZRKEY_MODULE");
    EXPECT_EQ("", listed({"--module", "token"}));
}

TEST_F(ModuleChoiceTest, ModulesWithoutATokenAreListed) {
    configure("token", moduleLine());
    writeFile("none.so", "no module");
    configure("none", "module: " + fs::absolute("none.so").generic_string());
    const CommandResult found = zrkey({"list"});
    EXPECT_EQ(0, found.exitCode);
    module->settings().slotCount = 0;
    module->settings().slotCountWhenListed = 0;
    const CommandResult result = zrkey({"list"});
    EXPECT_EQ(4, result.exitCode);
    EXPECT_EQ(0u, result.errors.find("zrkey: cannot load a module: no module is named, and none of "
                                     "p11-kit's has a token: \"none\" ("))
        << result.errors;
    EXPECT_NE(std::string::npos,
              result.errors.find(std::string("), \"token\" (no token)").append(kConnect)))
        << result.errors;
}

TEST_F(ModuleChoiceTest, ModuleThatDoesNotStartIsListed) {
    configure("token", moduleLine());
    module->fail("C_Initialize", 0, CKR_GENERAL_ERROR);
    expectNone(4,
               ", and none of p11-kit's has a token: \"token\" (its C_Initialize returned "
               "CKR_GENERAL_ERROR (0x00000005))" +
                   std::string(kConnect));
    EXPECT_EQ(0u, module.count("C_Finalize"));
}

TEST_F(ModuleChoiceTest, BlankTokenIsNone) {
    configure("token", moduleLine());
    setText(module->settings().tokenInfo.label, "");
    setText(module->settings().tokenInfo.serialNumber, "0000000000000000");
    expectNone(4,
               std::string(", and none of p11-kit's has a token: \"token\" (no token)") + kConnect);
}

TEST_F(ModuleChoiceTest, ModulesThatAreNotForThisCommandAreLeftOut) {
    for (const char* line : {"disable-in: seahorse, zrkey", "enable-in: ssh seahorse",
                             "trust-policy: yes", "module:"}) {
        configure("token", moduleLine() + line);
        expectNone(2, "; give --module PATH or set ZRKEY_MODULE");
    }
    for (const char* line : {"disable-in: seahorse", "enable-in: ssh,zrkey", "trust-policy: no"}) {
        configure("token", moduleLine() + line);
        EXPECT_NE("", listed());
    }
    EXPECT_NE(0u, module->callCount());
}

TEST_F(ModuleChoiceTest, FileOfTheUserComesBeforeTheSystems) {
    configure("token", moduleLine());
    configure("token", "disable-in: zrkey\n", "user-modules");
    expectNone(2, "; give --module PATH or set ZRKEY_MODULE");
    configure("token", "module: none.so\n");
    configure("token", moduleLine(), "user-modules");
    EXPECT_NE("", listed());
}

TEST_F(ModuleChoiceTest, FileThatIsConfiguredTwiceCountsOnce) {
    configure("one", moduleLine());
    configure("two", "module: " + file().filename().string());
    EXPECT_NE("", listed());
}

TEST_F(ModuleChoiceTest, FilesThatAreNoConfigurationAreLeftOut) {
    fs::create_directory("system-modules/folder.module");
    configure("large", std::string(100000, '#') + "\n" + moduleLine());
    configure("empty", "");
    configure("bytes", std::string("\0\xff:\0\nmodule\n:x\n", 14));
    writeFile("system-modules/token.txt", moduleLine());
    expectNone(2, "; give --module PATH or set ZRKEY_MODULE");
}

TEST_F(ModuleChoiceTest, InterruptionEndsTheLook) {
    configure("token", moduleLine());
    module->callBack(
        "C_GetSlotList", [](void*) { host::noteInterruption(2); }, nullptr);
    const CommandResult result = zrkey({"list"});
    EXPECT_TRUE(host::isInterrupted());
    EXPECT_EQ(host::interruptionExitCode(), result.exitCode);
    host::forgetInterruption();
    EXPECT_EQ(1u, module.count("C_Initialize"));
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

TEST(ModuleKeysTest, LinesAreKeysAndValues) {
    int badLine = -1;
    using Keys = std::map<std::string, std::string>;
    EXPECT_EQ((Keys{{"a", "b: c"}, {"d", ""}}),
              host::parseKeys("# x: y\n\n  a :\tb: c \r\nd:\n", ':', badLine));
    EXPECT_EQ(0, badLine);
    EXPECT_EQ((Keys{{"a", "2"}}), host::parseKeys("a=1\nbad\n=3\na=2", '=', badLine));
    EXPECT_EQ(2, badLine);
    EXPECT_EQ(Keys(), host::parseKeys("", ':', badLine));
    EXPECT_EQ(0, badLine);
}

}  // namespace
}  // namespace zr::test
