// Where the command finds the libraries that a module needs. On Windows only: there the system by
// itself looks in the current directory too.
#include <filesystem>

#include "tests/host/child_command.h"
#include "tests/support/temp_dir.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

/// A folder "modules" with a module that needs another library. The current folder is another one.
class ModuleDependencyTest : public ChildCommandTest {
protected:
    void SetUp() override {
        ChildCommandTest::SetUp();
        writeFile("config.xml", "<driver/>");
        fs::create_directory("modules");
        fs::copy_file(ZRKEY_DEPENDENT_MODULE, "modules/module.dll");
        writeFile("script.js", "print(new TokenProvider().Load('modules/module.dll'));");
    }
    void TearDown() override {
        setEnvironment("PATH", m_path);
        ChildCommandTest::TearDown();
    }

    static void putDependencyInto(const fs::path& folder) {
        fs::create_directories(folder);
        fs::copy_file(ZRKEY_DEPENDENCY, folder / fs::path(ZRKEY_DEPENDENCY).filename());
    }
    void addToPath(const std::string& folder) { setEnvironment("PATH", m_path + ';' + folder); }

    static void expectLoad(bool isLoaded) {
        EXPECT_EQ(isLoaded ? 0 : 3, zrkey({"list", "--module", "modules/module.dll"}).exitCode);
        EXPECT_EQ(isLoaded ? "true\n" : "", zrkey({"run", "script.js"}).output);
    }

private:
    std::string m_path = std::getenv("PATH");
};

TEST_F(ModuleDependencyTest, MissingDependencyFailsTheLoad) {
    expectLoad(false);
}

TEST_F(ModuleDependencyTest, DependencyIsFoundBesideTheModule) {
    putDependencyInto("modules");
    expectLoad(true);
}

TEST_F(ModuleDependencyTest, DependencyIsFoundInAnAbsoluteFolderOfPath) {
    putDependencyInto("elsewhere");
    addToPath(fs::absolute("elsewhere").string());
    expectLoad(true);
}

TEST_F(ModuleDependencyTest, DependencyInTheCurrentFolderIsNotTaken) {
    putDependencyInto(".");
    expectLoad(false);
}

TEST_F(ModuleDependencyTest, DependencyInARelativeFolderOfPathIsNotTaken) {
    putDependencyInto("elsewhere");
    addToPath(".;elsewhere");
    putDependencyInto(".");
    expectLoad(false);
}

}  // namespace
}  // namespace zr::test
