// The export and the class factory when they are out of memory for the object.
#include "tests/allocation/allocations.h"
#include "tests/support/console_capture.h"
#include "tests/support/fixtures/library.h"
#include "tests/support/hresult.h"

namespace zr::test {
namespace {

TEST(EntryPointAllocationTest, GetClassObjectOutOfMemoryPrintsAMessage) {
    getFactory();
    int poison = 0;
    void* factory = &poison;
    ConsoleCapture console;
    Allocations allocations(Allocations::kOfLibrary, 1);
    EXPECT_HR(E_OUTOFMEMORY, ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, &factory));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(&poison, factory);
    const auto text = console.stop();
    EXPECT_EQ("[ZCLGetClassObject] out of memory\n", text.error);
    EXPECT_EQ("", text.out);
}

TEST(EntryPointAllocationTest, CreateInstanceOutOfMemoryPrintsNothing) {
    const ComRef<IClassFactory> factory = getFactory();
    int poison = 0;
    void* provider = &poison;
    ConsoleCapture console;
    Allocations allocations(Allocations::kOfLibrary, 1);
    EXPECT_HR(E_OUTOFMEMORY, factory->CreateInstance(nullptr, IID_ITokenProvider, &provider));
    EXPECT_TRUE(allocations.hasFailed());
    allocations.stop();
    EXPECT_EQ(&poison, provider);
    const auto text = console.stop();
    EXPECT_EQ("", text.error);
    EXPECT_EQ("", text.out);
}

}  // namespace
}  // namespace zr::test
