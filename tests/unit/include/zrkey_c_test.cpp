// The structures of zrkey_c.h against the classes of zrkey.h: every function reaches the operation
// of its name, with its arguments, and none is missing.
#include <gtest/gtest.h>

#include <cstring>

#include "tests/unit/include/recording_objects.h"

namespace zr::test {
namespace {

constexpr int kArguments = 8;
constexpr int kCallsAhead = 32;
/// Somewhere to point to; nothing is read or written there.
alignas(16) char s_memory[16 * (kArguments + 1) * kCallsAhead];

/// A class whose first own operation has the slot after the last one of an interface.
template <class Interface>
class OneMore : public Interface {
public:
    virtual void next() = 0;
};

/// The number of operations of an interface. Both compilers use the Itanium C++ ABI, which stores
/// the slot of an operation in the pointer to the member.
template <class Interface>
std::size_t slotsOf() {
    const auto next = &OneMore<Interface>::next;
    std::uintptr_t words[2] = {};
    static_assert(sizeof next == sizeof words);
    std::memcpy(words, &next, sizeof words);
    return (words[0] - 1) / sizeof(void*);
}

template <class Interface, class Object>
void expectEverySlot(std::size_t (*callFromC)(Interface*)) {
    Object object;
    CallNotes::instance().clear();
    EXPECT_EQ(slotsOf<Interface>(), callFromC(&object));
    EXPECT_EQ(slotsOf<Interface>(), CallNotes::instance().differentNames());
}

TEST(ZrkeyCTest, FunctionsOfTheAutomationInterfacesReachTheirOperations) {
    expectEverySlot<IUnknown, RecordingUnknown<IUnknown>>(callUnknown);
    expectEverySlot<IDispatch, RecordingDispatch<IDispatch>>(callDispatch);
    expectEverySlot<IClassFactory, RecordingClassFactory>(callClassFactory);
    expectEverySlot<ISupportErrorInfo, RecordingSupportErrorInfo>(callSupportErrorInfo);
}

TEST(ZrkeyCTest, FunctionsOfTheProviderReachTheirOperations) {
    expectEverySlot<ITokenProvider, RecordingTokenProvider>(callTokenProvider);
}

TEST(ZrkeyCTest, FunctionsOfTheTokenReachTheirOperations) {
    expectEverySlot<IKeyObject, RecordingKeyObject>(callKeyObject);
}

TEST(ZrkeyCTest, FunctionsOfTheFileReachTheirOperations) {
    expectEverySlot<IKeyFile, RecordingKeyFile>(callKeyFile);
}

TEST(ZrkeyCTest, FunctionsOfTheContainerReachTheirOperations) {
    expectEverySlot<IKeyContainer, RecordingKeyContainer>(callKeyContainer);
}

TEST(ZrkeyCTest, FunctionsOfTheCertificateReachTheirOperations) {
    expectEverySlot<IKeyCertificate, RecordingKeyCertificate>(callKeyCertificate);
}

}  // namespace
}  // namespace zr::test

using zr::test::CallNotes;

void beginCall() {
    CallNotes::instance().begin();
}

int numberArgument(int position) {
    return CallNotes::instance().number() * (zr::test::kArguments + 1) + position;
}

void* pointerArgument(int position) {
    const int number = numberArgument(position);
    return zr::test::s_memory + 16 * (number % (sizeof zr::test::s_memory / 16));
}

bool flagArgument(int position) {
    return numberArgument(position) % 2 != 0;
}

void endCall(const char* name, int argumentCount, unsigned int result) {
    std::string expected = std::string(name) + "(";
    for (int position = 1; position <= argumentCount; ++position) {
        expected += std::to_string(position);
    }
    EXPECT_EQ(expected + ")", CallNotes::instance().last());
    EXPECT_EQ(static_cast<unsigned int>(CallNotes::instance().number()), result) << name;
}
