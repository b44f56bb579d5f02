// Input without an end, and more input than memory should take. On Linux only, which has /dev/zero
// and counts the memory that a process used at most.
#include <sys/resource.h>

#include "host/commands/byte_arrays.h"
#include "host/output/failure.h"
#include "tests/host/command_test.h"

namespace zr::test {
namespace {

class LargeInputTest : public CommandTest {
protected:
    static long peakKibibytes() {
        rusage usage = {};
        getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    }
};

TEST_F(LargeInputTest, EndlessInputIsRefusedWhenItPassesTheLimit) {
    try {
        host::readInput("/dev/zero", 100000);
        FAIL() << "all of it was read";
    } catch (const host::Failure& failure) {
        EXPECT_EQ(
            "zrkey: cannot use \"/dev/zero\": it has more than 100000 bytes; give at most "
            "100000 bytes\n",
            failure.line());
        EXPECT_EQ(host::kExitFailure, failure.exitCode);
    }
}

TEST_F(LargeInputTest, EndlessSignatureIsRefused) {
    writeFile("data.bin", "data");
    expectFailure(withPin({"verify", "-i", "data.bin", "--signature", "/dev/zero"}), 1,
                  "use \"/dev/zero\": it has more than 1048576 bytes; give at most 1048576 bytes");
}

TEST_F(LargeInputTest, DigestOf1GiBNeedsLittleMemory) {
    writeFile("large.bin", "");
    std::filesystem::resize_file("large.bin", std::uintmax_t{1} << 30);
    const long before = peakKibibytes();
    // As md5sum computes it.
    expectOutput({"digest", "-i", "large.bin"}, "cd573cfaace07e7949bc0c46028904ff\n");
    EXPECT_GT(before + 64 * 1024, peakKibibytes());
}

}  // namespace
}  // namespace zr::test
