// Loading a library that depends on another one in its folder. Windows only: on Linux the loader
// does not search there.
#include <gtest/gtest.h>

#include <string>

#include "runtime/path_utils.h"

namespace zr::test {
namespace {

/// The absolute path of the library, in a separate folder next to the test.
std::string libraryBeside() {
    char folder[300] = {};
    ZGetModulePath(folder, sizeof folder);
    std::string path = std::string(folder) + "beside/beside_library.dll";
    for (char& c : path) {
        c = c == '/' ? '\\' : c;
    }
    return path;
}

TEST(LoadBesideTest, LoadLibraryExFindsADependencyInTheFolderOfTheLibrary) {
    EXPECT_EQ(nullptr, ZLoadLibrary(libraryBeside().c_str()));
    const HMODULE module = ZLoadLibraryEx(libraryBeside().c_str());
    ASSERT_TRUE(module);
    const auto call = reinterpret_cast<int (*)()>(
        reinterpret_cast<void*>(ZGetProcAddress(module, "numberOfTheOther")));
    ASSERT_TRUE(call);
    EXPECT_EQ(42, call());
    EXPECT_NE(0, ZFreeLibrary(module));
}

}  // namespace
}  // namespace zr::test
