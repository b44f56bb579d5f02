// A provider in a current directory that was removed. Linux only: Windows keeps it.
#include <filesystem>

#include "pkcs11/token_provider.h"
#include "tests/contract/token.h"

namespace zr::test {
namespace {

TEST_F(ModuleTest, InARemovedDirectoryNothingIsLoggedOrLoaded) {
    const ConsoleCapture quiet;
    auto* provider = new TokenProvider_pkcs11();
    provider->AddRef();
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
    EXPECT_EQ(0u, provider->Release());
}

}  // namespace
}  // namespace zr::test
