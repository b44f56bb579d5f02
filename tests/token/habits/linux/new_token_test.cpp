// docs/habits.md: a token that another process makes. On Linux alone: a program of SoftHSM2 makes the
// token, which a Windows test cannot start.
#include <cstdlib>

#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

using TokensPluggedInLaterMayStayUnseen = SoftProviderTest;

TEST_F(TokensPluggedInLaterMayStayUnseen, SoftHsmShowsThemAfterTheNextLoad) {
    const std::string log = tokenFile("new-token.log");
    const std::string make =
        "softhsm2-util --init-token --free --label 'Second' --pin 1234 --so-pin 87654321 >'" + log +
        "' 2>&1";
    ASSERT_EQ(0, std::system(make.c_str()));
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(3, count);
    EXPECT_HR(S_OK, provider->Unload());
    const ComRef<ITokenProvider> other = makeProvider();
    ASSERT_HR(S_OK, load(other));
    EXPECT_HR(S_OK, other->GetKeyCount(&count));
    EXPECT_EQ(4, count);
    EXPECT_HR(S_OK, other->Unload());
    const std::string remove = "softhsm2-util --delete-token --token Second >'" + log + "' 2>&1";
    EXPECT_EQ(0, std::system(remove.c_str()));
}

}  // namespace
}  // namespace zr::test
