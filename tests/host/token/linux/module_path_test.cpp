// Paths that the library or the dynamic loader would change. On Linux only: on Windows a backslash
// separates folders, and the system's loader replaces nothing.
#include "host/system/system.h"
#include "tests/host/command_test.h"

namespace fs = std::filesystem;

namespace zr::test {
namespace {

constexpr const char* kSeparator = " contains \"\\\", which the library reads as a separator; ";
constexpr const char* kRename = "rename it, or load it through a link with another path";

class ModulePathTest : public CommandTest {
protected:
    static std::string place(const std::string& name) {
        return '"' + (fs::current_path() / name).string() + '"';
    }
    /// Lists the tokens of a module, which must be refused without a look at it.
    void expectRefused(const std::string& path, const std::string& line) {
        const std::string whole = "load the module \"" + path + "\": " + line;
        expectFailure({"list", "--module", path}, 3, whole);
        setEnvironment("ZRKEY_MODULE", path);
        expectFailure({"list"}, 3, whole);
        EXPECT_EQ(0u, module.count("C_Initialize"));
    }
};

TEST_F(ModulePathTest, ModuleWithABackslashIsRefused) {
    // Without the refusal the library would load it: "folder/module.so".
    fs::create_directory("folder");
    fs::create_symlink(Recording::file(), "folder/module.so");
    expectRefused("folder\\module.so",
                  "its path " + place("folder\\module.so") + kSeparator + kRename);
}

TEST_F(ModulePathTest, ModuleWithATokenOfTheLoaderIsRefused) {
    for (const std::string token :
         {"$ORIGIN", "${ORIGIN}", "$LIB", "${LIB}", "$PLATFORM", "${PLATFORM}"}) {
        fs::create_directory(token);
        fs::create_symlink(Recording::file(), token + "/module.so");
        const std::string path = token + "/module.so";
        expectRefused(path, "its path " + place(path) + " contains " + token +
                                ", which the dynamic loader replaces by a folder; " + kRename);
    }
}

TEST_F(ModulePathTest, OtherUsesOfADollarAreNoProblem) {
    fs::create_directory("$HOME");
    fs::create_symlink(Recording::file(), "$HOME/$.so");
    EXPECT_EQ(0, zrkey({"list", "--module", "$HOME/$.so"}).exitCode);
    EXPECT_EQ("", host::pathProblem("/ORIGIN/${LIB/$", host::PathUse::kModule));
    EXPECT_EQ("", host::pathProblem("/srv/$LIB", host::PathUse::kFolder));
}

TEST_F(ModulePathTest, LinkToAModuleWithABackslashLoads) {
    fs::create_symlink(Recording::file(), "mod\\ule.so");
    fs::create_symlink("mod\\ule.so", "module.so");
    EXPECT_EQ(0, zrkey({"list", "--module", "module.so"}).exitCode);
}

TEST_F(ModulePathTest, WorkFolderWithABackslashIsRefused) {
    fs::create_directory("wo\\rk");
    fs::copy_file("config.xml", "wo\\rk/config.xml");
    const std::string line = "load the module \"" + Recording::file() + "\": the working folder " +
                             place("wo\\rk") + kSeparator + "choose another --workdir";
    setEnvironment("ZRKEY_MODULE", Recording::file());
    expectFailure({"list", "--workdir", "wo\\rk"}, 3, line);
    fs::current_path("wo\\rk");
    expectFailure({"list"}, 3,
                  "load the module \"" + Recording::file() + "\": the working folder \"" +
                      fs::current_path().string() + '"' + kSeparator + "choose another --workdir");
    EXPECT_EQ(0, zrkey({"list", "--workdir", ".."}).exitCode);
    fs::current_path("..");
}

TEST_F(ModulePathTest, MissingDependencyIsNamed) {
    fs::copy_file(ZRKEY_DEPENDENT_MODULE, "dependent.so");
    expectFailure({"list", "--module", "dependent.so"}, 3,
                  "load the module \"dependent.so\": module_dependency.so: cannot open shared "
                  "object file: No such file or directory; check that the module is whole and that "
                  "the libraries it needs are installed");
}

TEST_F(ModulePathTest, FileThatCannotBeOpenedShowsTheSystemsError) {
    fs::create_symlink("loop.so", "loop.so");
    expectFailure({"list", "--module", "loop.so"}, 3,
                  "load the module \"loop.so\": Too many levels of symbolic links; check --module");
}

}  // namespace
}  // namespace zr::test
