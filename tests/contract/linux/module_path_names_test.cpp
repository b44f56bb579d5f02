// Module paths that would name another file. On Windows a backslash is always a separator, and the
// loader replaces nothing in a name.
#include <filesystem>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class ModulePathNamesTest : public ModuleTest {
protected:
    /// Loads the module as it is reached from a new folder with a configuration.
    HRESULT loadFrom(const std::string& directory) {
        std::filesystem::create_directories(directory);
        std::filesystem::copy_file("config.xml", directory + "/config.xml");
        const auto before = std::filesystem::current_path();
        std::filesystem::current_path(directory);
        const HRESULT hr = provider->Load(Text(module.path()));
        std::filesystem::current_path(before);
        return hr;
    }

    ComRef<ITokenProvider> provider = makeProvider();
};

TEST_F(ModulePathNamesTest, LoadInADirectoryWithABackslashInItsNameFails) {
    EXPECT_HR(S_OK, loadFrom("plain"));
    EXPECT_HR(E_FAIL, loadFrom("with\\backslash"));
    EXPECT_HR(E_FAIL, loadFrom("with\\backslash/below"));
}

TEST_F(ModulePathNamesTest, LoadOfAPathWithATokenOfTheLoaderFails) {
    std::filesystem::create_directory("lib");
    std::filesystem::create_directory("x86_64");
    for (const char* name : {"lib", "x86_64"}) {
        std::filesystem::copy_file(Recording::file(), std::string(name) + "/copy.so");
    }
    EXPECT_HR(S_OK, provider->Load(Text("lib/copy.so")));
    for (const char* token : {"$LIB", "${LIB}", "$PLATFORM", "${PLATFORM}"}) {
        EXPECT_HR(E_FAIL, provider->Load(Text(std::string(token) + "/copy.so"))) << token;
    }
    EXPECT_HR(E_FAIL, provider->Load(Text(aboveTheRoot("$ORIGIN/copy.so"))));
}

TEST_F(ModulePathNamesTest, LoadOfAPathWithAnotherDollarSignSucceeds) {
    std::filesystem::create_directory("a$b{c}");
    std::filesystem::copy_file(Recording::file(), "a$b{c}/copy$.so");
    EXPECT_HR(S_OK, provider->Load(Text("a$b{c}/copy$.so")));
}

}  // namespace
}  // namespace zr::test
