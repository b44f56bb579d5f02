// How long a PIN may be, as the token says it and as prompts state it.
#include "host/token/token_session.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

using host::PinLengths;

class PinLengthsTest : public CommandTest {
protected:
    /// What a prompt states for a token that reports these lengths.
    std::string stated(CK_ULONG shortest, CK_ULONG longest) {
        CK_TOKEN_INFO& info = module->settings().tokenInfo;
        info.ulMinPinLen = shortest;
        info.ulMaxPinLen = longest;
        return host::TokenSession(host::TokenOptions()).pinLengths().text();
    }
};

TEST_F(PinLengthsTest, LengthsOfTheTokenAreStated) {
    EXPECT_EQ(" (4 to 8 characters)", stated(4, 8));
    EXPECT_EQ(" (6 characters)", stated(6, 6));
    EXPECT_EQ(" (up to 16 characters)", stated(0, 16));
    EXPECT_EQ(" (up to 1 character)", stated(0, 1));
}

TEST_F(PinLengthsTest, NoLongerPinIsStatedThanTheCommandTakes) {
    EXPECT_EQ(" (4 to 127 characters)", stated(4, 255));
    EXPECT_EQ(" (127 characters)", stated(127, 128));
}

TEST_F(PinLengthsTest, ImpossibleLengthsAreNotStated) {
    EXPECT_EQ("", stated(0, 0));
    EXPECT_EQ("", stated(9, 8));
    EXPECT_EQ("", stated(4, CK_UNAVAILABLE_INFORMATION));
    EXPECT_EQ("", stated(CK_UNAVAILABLE_INFORMATION, CK_UNAVAILABLE_INFORMATION));
    EXPECT_EQ("", stated(200, 255));
}

TEST_F(PinLengthsTest, LengthsWithinOthersAreThoseThatBothAllow) {
    const PinLengths others = {4, 8};
    EXPECT_EQ(" (5 to 8 characters)", (PinLengths{5, 255}.within(others).text()));
    EXPECT_EQ(" (4 to 6 characters)", (PinLengths{1, 6}.within(others).text()));
    EXPECT_EQ(" (4 to 8 characters)", (PinLengths{}.within(others).text()));
    EXPECT_EQ(" (4 to 8 characters)", (PinLengths{10, 20}.within(others).text()));
}

}  // namespace
}  // namespace zr::test
