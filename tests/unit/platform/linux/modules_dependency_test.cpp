// Looking up functions that a dependency of a module defines. Linux only: Windows searches only the
// module itself.
#include <gtest/gtest.h>

#include "platform/kernel.h"

namespace {

TEST(WrappingModuleTest, GetProcAddressOfADependencysFunctionReturnsIt) {
    const HMODULE module = LoadLibraryA(ZR_WRAPPING_LIBRARY);
    ASSERT_NE(nullptr, module);
    const auto function = reinterpret_cast<int (*)()>(
        reinterpret_cast<void*>(GetProcAddress(module, "zrWrappedFunction")));
    ASSERT_NE(nullptr, function);
    EXPECT_EQ(7, function());
    EXPECT_NE(nullptr, GetProcAddress(module, "zrWrapper"));
    EXPECT_NE(0, FreeLibrary(module));
}

TEST(WrappingModuleTest, GetProcAddressOfAnotherModulesFunctionReturnsNull) {
    const HMODULE wrapping = LoadLibraryA(ZR_WRAPPING_LIBRARY);
    const HMODULE wrapped = LoadLibraryA(ZR_WRAPPED_LIBRARY);
    ASSERT_NE(nullptr, wrapping);
    ASSERT_NE(nullptr, wrapped);
    // The wrapper is loaded, but it is not a dependency of the wrapped library.
    EXPECT_EQ(nullptr, GetProcAddress(wrapped, "zrWrapper"));
    EXPECT_EQ(nullptr, GetProcAddress(wrapping, "zrNoSuchFunction"));
    EXPECT_NE(0, FreeLibrary(wrapped));
    EXPECT_NE(0, FreeLibrary(wrapping));
}

}  // namespace
