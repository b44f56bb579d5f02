// The export and the class factory when the object itself cannot be made.
#include "tests/allocation/allocations.h"
#include "tests/contract/library.h"
#include "tests/support/console_capture.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

TEST(EntryPointAllocationTest, AFactoryThatCannotBeMadeIsTold) {
    getFactory()->Release();
    int poison = 0;
    void* factory = &poison;
    ConsoleCapture console;
    Allocations allocations(Allocations::ofLibrary, 1);
    EXPECT_HR(E_OUTOFMEMORY, ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, &factory));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(&poison, factory);
    const auto text = console.stop();
    EXPECT_EQ("[ZCLGetClassObject] out of memory\n", text.error);
    EXPECT_EQ("", text.out);
}

TEST(EntryPointAllocationTest, AProviderThatCannotBeMadeIsNotTold) {
    IClassFactory* factory = getFactory();
    int poison = 0;
    void* provider = &poison;
    ConsoleCapture console;
    Allocations allocations(Allocations::ofLibrary, 1);
    EXPECT_HR(E_OUTOFMEMORY, factory->CreateInstance(nullptr, IID_ITokenProvider, &provider));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(&poison, provider);
    const auto text = console.stop();
    EXPECT_EQ("", text.error);
    EXPECT_EQ("", text.out);
    factory->Release();
}

}  // namespace
}  // namespace zr::test
