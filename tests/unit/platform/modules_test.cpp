// Loading libraries and looking up their functions.
#include <gtest/gtest.h>

#include "platform/kernel.h"

namespace {

TEST(ModuleTest, LoadLibraryOfTheAutomationPlatformIgnoresCase) {
    for (const char* name : {"OleAut32.dll", "oleaut32.dll", "OLEAUT32.DLL"}) {
        HMODULE module = LoadLibraryA(name);
        ASSERT_NE(nullptr, module) << name;
        const auto allocate = reinterpret_cast<BSTR(STDAPICALLTYPE*)(const OLECHAR*)>(
            reinterpret_cast<void*>(GetProcAddress(module, "SysAllocString")));
        ASSERT_NE(nullptr, allocate) << name;
        BSTR text = allocate(OLESTR("text"));
        EXPECT_EQ(4u, SysStringLen(text));
        SysFreeString(text);
        EXPECT_NE(0, FreeLibrary(module));
    }
}

TEST(ModuleTest, FreeLibraryOfTheAutomationPlatformKeepsItLoaded) {
    HMODULE module = LoadLibraryExA("OleAut32.dll", nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    ASSERT_NE(nullptr, module);
    EXPECT_NE(0, FreeLibrary(module));
    BSTR text = SysAllocString(OLESTR("text"));
    EXPECT_NE(nullptr, text);
    SysFreeString(text);
}

TEST(ModuleTest, LoadLibraryOfAMissingFileReturnsNull) {
    for (const char* name : {"", "no_such_library.dll", "no/such/library.dll", "."}) {
        EXPECT_EQ(nullptr, LoadLibraryA(name)) << name;
    }
    EXPECT_EQ(nullptr, LoadLibraryA(nullptr));
    EXPECT_EQ(nullptr, LoadLibraryExA("no_such_library.dll", nullptr, 0));
}

TEST(ModuleTest, GetProcAddressOfAnUnknownFunctionReturnsNull) {
    HMODULE module = LoadLibraryA("OleAut32.dll");
    ASSERT_NE(nullptr, module);
    EXPECT_EQ(nullptr, GetProcAddress(module, "NoSuchFunction"));
    EXPECT_EQ(nullptr, GetProcAddress(module, ""));
    EXPECT_EQ(nullptr, GetProcAddress(module, nullptr));
    EXPECT_EQ(nullptr, GetProcAddress(module, "sysallocstring"));
    EXPECT_NE(0, FreeLibrary(module));
}

TEST(ModuleTest, FreeLibraryOfNullFails) {
    EXPECT_EQ(0, FreeLibrary(nullptr));
}

}  // namespace
