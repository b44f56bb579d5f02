// docs/habits.md: a child process after Load. On Linux alone: Windows has no fork.
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

class AChildOfForkInheritsTheLogin : public LoggedInSoftTokenTest {
protected:
    /// @return what the call returned in a child process, which ends without destructors.
    static HRESULT inChild(const std::function<HRESULT()>& call) {
        int ends[2] = {};
        EXPECT_EQ(0, pipe(ends));
        const pid_t child = fork();
        if (child == 0) {
            const HRESULT result = call();
            const ssize_t written = write(ends[1], &result, sizeof result);
            _exit(written == sizeof result ? 0 : 1);
        }
        close(ends[1]);
        HRESULT result = E_UNEXPECTED;
        EXPECT_EQ(static_cast<ssize_t>(sizeof result), read(ends[0], &result, sizeof result));
        close(ends[0]);
        int status = 1;
        EXPECT_EQ(child, waitpid(child, &status, 0));
        EXPECT_EQ(0, status);
        return result;
    }

    HRESULT sign(const ComRef<IKeyObject>& with) const {
        ByteArray signature;
        return with->SignData(nullptr, ByteArray("data"), certificate.get(), signature.receive());
    }

    ComRef<IKeyCertificate> certificate = openCertificate();
};

TEST_F(AChildOfForkInheritsTheLogin, SignDataInTheChildNeedsNoPin) {
    EXPECT_HR(S_OK, inChild([&] { return sign(token); }));
    EXPECT_HR(S_OK, sign(token));
}

TEST_F(AChildOfForkInheritsTheLogin, LoadInTheChildDoesNotStartAnew) {
    EXPECT_HR(S_OK, inChild([&]() -> HRESULT {
                  const ComRef<ITokenProvider> own = makeProvider();
                  const HRESULT loaded = load(own);
                  const ComRef<IKeyObject> second = openToken(own);
                  // SoftHSM2 refuses the officer as long as the user is logged in.
                  return loaded == S_OK && second &&
                                 second->VerifyPIN(Text("87654321"), 1) == E_FAIL
                             ? S_OK
                             : E_UNEXPECTED;
              }));
    EXPECT_HR(S_OK, sign(token));
}

}  // namespace
}  // namespace zr::test
