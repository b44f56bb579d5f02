// A current directory longer than the library's buffers. Linux only: Windows has no such directory.
#include <filesystem>

#include "tests/support/fixtures/library.h"
#include "tests/support/hresult.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

TEST(LongDirectoryTest, LoadInALongDirectoryFailsAndLogsNothing) {
    const TempDir folder;
    const std::string level(100, 'd');
    for (int i = 0; i < 4; ++i) {
        std::filesystem::create_directory(level);
        std::filesystem::current_path(level);
    }
    ASSERT_GT(std::filesystem::current_path().string().size(), 400u);
    folder.enableLog();
    ComRef<ITokenProvider> provider = makeProvider();
    for (const char* path : {"", "x", "./x", "../x"}) {
        EXPECT_HR(E_FAIL, provider->Load(Text(path)));
    }
    EXPECT_EQ(0u, provider.release()->Release());
    EXPECT_TRUE(std::filesystem::is_empty(folder.home() / "log"));
}

}  // namespace
}  // namespace zr::test
