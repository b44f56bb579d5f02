// A provider whose current directory was removed. Linux only: Windows does not remove it.
#include <filesystem>

#include "pkcs11/provider_pkcs11.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

TEST_F(ModuleTest, LoadInARemovedDirectoryFailsAndLogsNothing) {
    const ConsoleCapture quiet;
    auto provider = makeObject<TokenProvider_pkcs11>();
    const Text path(std::filesystem::absolute(module.path()).lexically_normal().string());
    std::filesystem::create_directory("gone");
    std::filesystem::current_path("gone");
    std::filesystem::remove(folder.work() / "gone");
    folder.enableLog();
    EXPECT_EQ(0, provider->EnableLog());
    EXPECT_TRUE(std::filesystem::is_directory(folder.home() / "log"));
    EXPECT_TRUE(std::filesystem::is_empty(folder.home() / "log"));
    EXPECT_HR(E_FAIL, provider->Load(path));
    EXPECT_EQ(Lines{}, module.takeCalls());
    EXPECT_EQ(0u, provider.release()->Release());
}

}  // namespace
}  // namespace zr::test
