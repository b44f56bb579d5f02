// The path of a module: its length, and paths that are none.
#include <filesystem>

#include "tests/contract/token.h"

namespace zr::test {
namespace {

class ModulePathTest : public ModuleTest {
protected:
    ~ModulePathTest() override { provider->Release(); }

    ITokenProvider* provider = makeProvider();
};

TEST_F(ModulePathTest, WithTheDirectory259BytesAreTheLongest) {
    // Names of both lengths, so that steps of two bytes reach every length.
    std::filesystem::copy_file(module.file(), "m.dll");
    std::filesystem::copy_file(module.file(), "mm.dll");
    const std::size_t directory = std::filesystem::current_path().string().size() + 1;
    for (const std::size_t whole : {258, 259, 260, 261}) {
        ASSERT_LT(directory + 6, whole);
        const std::size_t length = whole - directory;
        std::string path = length % 2 ? "m.dll" : "mm.dll";
        while (path.size() < length) {
            path.insert(0, "./");
        }
        EXPECT_HR(whole <= 259 ? S_OK : E_FAIL, provider->Load(Text(path))) << whole;
        provider->Unload();
    }
}

TEST_F(ModulePathTest, WithoutAPathTheDirectoryIsNotAskedFor) {
    // On Windows the loader completes the path of a directory by this name.
    std::filesystem::copy_file(module.file(), ".dll");
    EXPECT_HR(E_FAIL, provider->Load(nullptr));
    INT count = 0;
    EXPECT_HR(E_FAIL, provider->GetKeyCount(&count));
}

TEST_F(ModulePathTest, APathAboveTheRootMayLeaveAnAbsoluteOne) {
    const std::string file = std::filesystem::path(module.file()).generic_string();
    EXPECT_HR(S_OK, provider->Load(Text(aboveTheRoot(file))));
    EXPECT_EQ(Lines{"C_Initialize(null)"}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
