// LoadLibraryA of names in which dlopen would replace a token. Windows' loader replaces nothing.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/kernel.h"

namespace {

namespace fs = std::filesystem;

bool loads(const std::string& name) {
    const HMODULE module = LoadLibraryA(name.c_str());
    FreeLibrary(module);
    return module != nullptr;
}

TEST(ModulesTokenTest, LoadLibraryWithATokenOfTheLoaderReturnsNull) {
    const fs::path library(ZR_WRAPPED_LIBRARY);
    const fs::path folder = fs::read_symlink("/proc/self/exe").parent_path();
    const std::string fromOrigin = fs::relative(library, folder).string();
    ASSERT_TRUE(loads(library.string()));
    EXPECT_FALSE(loads("$ORIGIN/" + fromOrigin));
    EXPECT_FALSE(loads("${ORIGIN}/" + fromOrigin));
    EXPECT_FALSE(loads("/usr/$LIB/libc.so.6"));
    EXPECT_FALSE(loads("$PLATFORM/library.so"));
}

TEST(ModulesTokenTest, LoadLibraryWithAnotherDollarSignLoads) {
    for (const char* name : {"a$.so", "a$b.so", "$$LI.so", "${.so"}) {
        const fs::path copy = fs::current_path() / name;
        fs::copy_file(ZR_WRAPPED_LIBRARY, copy, fs::copy_options::overwrite_existing);
        EXPECT_TRUE(loads(copy.string())) << name;
        fs::remove(copy);
    }
}

}  // namespace
