// The path of a module: its maximum length, null paths, paths above the root.
#include <filesystem>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class ModulePathTest : public ModuleTest {
protected:
    ComRef<ITokenProvider> provider = makeProvider();
};

TEST_F(ModulePathTest, LoadOfAPathLongerThan259BytesFails) {
    // Names of two lengths, so that "./" of two bytes reaches every length.
    std::filesystem::copy_file(module.file(), "m.dll");
    std::filesystem::copy_file(module.file(), "mm.dll");
    const std::size_t directory = std::filesystem::current_path().string().size() + 1;
    for (const std::size_t total : {258, 259, 260, 261}) {
        ASSERT_LT(directory + 6, total);
        const std::size_t length = total - directory;
        std::string path = length % 2 ? "m.dll" : "mm.dll";
        while (path.size() < length) {
            path.insert(0, "./");
        }
        EXPECT_HR(total <= 259 ? S_OK : E_FAIL, provider->Load(Text(path))) << total;
        provider->Unload();
    }
}

TEST_F(ModulePathTest, LoadOfANullPathFails) {
    // On Windows the loader would complete the path of the directory to this file.
    std::filesystem::copy_file(module.file(), ".dll");
    EXPECT_HR(E_FAIL, provider->Load(nullptr));
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModulePathTest, LoadOfAPathAboveTheRootReachesAnAbsolutePath) {
    const std::string file = std::filesystem::path(module.file()).generic_string();
    EXPECT_HR(S_OK, provider->Load(Text(aboveTheRoot(file))));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
