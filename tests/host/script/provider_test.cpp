// The global provider of scripts: the module of --module or of the environment, loaded with the
// configuration that the other commands find.
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

class ProviderTest : public CommandTest {
protected:
    ProviderTest() { fs::remove("config.xml"); }

    static std::vector<std::string> run(std::vector<std::string> options, const std::string& code) {
        options.insert(options.begin(), "run");
        options.insert(options.end(), {"-e", code});
        return options;
    }
    void useModuleOfTheOption() {
        setEnvironment("ZRKEY_MODULE", "");
        m_options = {"--module", module.path()};
    }

    std::vector<std::string> m_options;
};

TEST_F(ProviderTest, OptionNamesTheModuleAndNoConfigurationIsNeeded) {
    useModuleOfTheOption();
    expectOutput(run(m_options, "print(provider.OpenKey(0).GetLabel(), provider.GetKeyCount())"),
                 "Label 1\n");
    EXPECT_EQ(1u, module.count("C_Initialize"));
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

TEST_F(ProviderTest, OptionsMayStandBeforeTheCommand) {
    useModuleOfTheOption();
    expectOutput({"--module", module.path(), "run", "-e", "print(provider.GetKeyCount())"}, "1\n");
}

TEST_F(ProviderTest, ConfigurationOfTheOptionIsRead) {
    writeFile("other.xml", "<driver><algo>Other</algo><digest>MD5</digest></driver>");
    expectOutput(run({"--config", "other.xml"}, "print(provider.OpenKey(0).GetSignAlgo())"),
                 "Other\n");
}

TEST_F(ProviderTest, WorkingFolderHoldsTheConfigurationAndNotTheScript) {
    fs::create_directory("work");
    writeFile("work/config.xml", "<driver><algo>Work</algo><digest>MD5</digest></driver>");
    writeFile("script.js", "print(provider.OpenKey(0).GetSignAlgo())");
    expectOutput({"run", "--workdir", "work", "script.js"}, "Work\n");
}

TEST_F(ProviderTest, ModuleOfTheEnvironmentIsLoadedAtTheFirstUse) {
    expectOutput(run({}, "print('ran')"), "ran\n");
    EXPECT_EQ(0u, module.count("C_Initialize"));
    expectOutput(run({}, "print(provider === provider, provider.GetKeyCount())"), "true 1\n");
    EXPECT_EQ(1u, module.count("C_Initialize"));
}

TEST_F(ProviderTest, NamedModuleThatDoesNotLoadEndsTheCommandBeforeTheScript) {
    expectFailure(run({"--module", "missing.so"}, "print('ran')"), 3,
                  "load the module \"missing.so\": No such file or directory; check --module");
}

TEST_F(ProviderTest, ConfigurationWithoutAModuleIsWrongUsage) {
    setEnvironment("ZRKEY_MODULE", "");
    expectFailure(run({"--config", "other.xml"}, "print('ran')"), 2,
                  "load a module: no module is named; give --module PATH or set ZRKEY_MODULE");
}

TEST_F(ProviderTest, ModuleOfTheEnvironmentThatDoesNotLoadIsAnErrorOfTheScript) {
    setEnvironment("ZRKEY_MODULE", "missing.so");
    const std::string error =
        "cannot load the module \"missing.so\": No such file or directory; check --module";
    expectOutput(run({}, "try { provider } catch (error) { print(error.message) }"), error + "\n");
    const CommandResult result = zrkey(run({}, "provider"));
    EXPECT_EQ(1, result.exitCode);
    EXPECT_EQ("command line:1: " + error + "\n", result.errors);
}

TEST_F(ProviderTest, ScriptMayDeclareAProviderOfItsOwn) {
    for (const char* word : {"var", "const", ""}) {
        expectOutput(run({}, std::string(word) +
                                 " provider = new TokenProvider(); print(provider.Unload())"),
                     "true\n");
    }
    EXPECT_EQ(0u, module.count("C_Initialize"));
}

TEST_F(ProviderTest, ModuleThatTheScriptUnloadsStaysUnloaded) {
    expectOutput(
        run({}, "provider.Unload(); try { provider.GetKeyCount() } catch (e) { print(e) }"),
        "Error: GetKeyCount failed: E_FAIL (0x80004005)\n");
    EXPECT_EQ(1u, module.count("C_Finalize"));
}

}  // namespace
}  // namespace zr::test
