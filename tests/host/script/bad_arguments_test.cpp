// Every member with bad input, called by a script; the expected answers are in a file.
#include "tests/host/certificate_command_test.h"

namespace zr::test {
namespace {

class BadArgumentsTest : public CertificateCommandTest {
protected:
    BadArgumentsTest() {
        // Found by the texts and numbers that the script takes for good ones.
        addCertificate("1234", kRsaCertificate);
        setSignature(sample(kRsaSha256));
        module.addData("1233", "content");
    }
};

TEST_F(BadArgumentsTest, EveryMemberAnswersAsExpected) {
    expectOutput({"run", ZRKEY_SCRIPTS "/bad_arguments.js", ZRKEY_EXPECTED_ANSWERS, module.path(),
                  "1234", "12345678", "values"},
                 "0 differences in 3100 calls\n");
}

}  // namespace
}  // namespace zr::test
