// The script engine in the test's process: a stream that fails, and the count of memory.
#include "host/script/engine.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "host/output/console.h"
#include "host/script/limits.h"
#include "host/system/system.h"
#include "tests/host/child_command.h"
#include "tests/host/redirection.h"
#include "tests/support/process_memory.h"

namespace zr::host {
namespace {

using zr::test::readFile;
using zr::test::Redirection;
using zr::test::writeFile;

using ScriptEngineTest = zr::test::ChildCommandTest;

TEST(ScriptUseTest, ReallocateCountsTheHeaderOfEachBlock) {
    ScriptLimits limits;
    limits.bytes = 1000;
    ScriptUse use(limits);
    std::vector<void*> blocks;
    while (void* const block = use.reallocate(nullptr, 1)) {
        blocks.push_back(block);
    }
    EXPECT_EQ(blocks.size(), 1000 / (1 + alignof(std::max_align_t)));
    for (void* const block : blocks) {
        use.free(block);
    }
    void* const all = use.reallocate(nullptr, 1000 - alignof(std::max_align_t));
    EXPECT_NE(all, nullptr);
    use.free(all);
}

/// Memory of the script engine that is full of a byte, and what is left of it when it is freed.
class FreedBlockTest : public testing::Test {
protected:
    static constexpr std::size_t kSize = 256;
    /// The allocator keeps its own data at the beginning of a free block.
    static constexpr std::size_t kOverwritten = 64;

    char* fillBlock() {
        void* const block = m_use.reallocate(nullptr, kSize);
        std::memset(block, 0x55, kSize);
        return static_cast<char*>(block);
    }
    /// Reads memory as another process would.
    static std::size_t countLeft(const char* block) {
        char bytes[kSize - kOverwritten] = {};
        EXPECT_EQ(sizeof bytes,
                  zr::test::readMemory(reinterpret_cast<std::size_t>(block) + kOverwritten, bytes,
                                       sizeof bytes));
        return static_cast<std::size_t>(std::count(std::begin(bytes), std::end(bytes), 0x55));
    }

    ScriptUse m_use{ScriptLimits()};
};

TEST_F(FreedBlockTest, BlockInUseHoldsItsBytes) {
    char* const block = fillBlock();
    EXPECT_EQ(kSize - kOverwritten, countLeft(block));
    m_use.free(block);
}

TEST_F(FreedBlockTest, FreedBlockHoldsNothing) {
    char* const block = fillBlock();
    m_use.free(block);
    EXPECT_EQ(0U, countLeft(block));
}

TEST_F(FreedBlockTest, BlockThatGrewLeavesNothingInItsOldPlace) {
    char* const before = fillBlock();
    // Something behind it: otherwise it could grow where it is.
    void* const behind = m_use.reallocate(nullptr, kSize);
    char* const grown = static_cast<char*>(m_use.reallocate(before, 100 * kSize));
    // Before anything else is allocated there.
    EXPECT_EQ(0U, countLeft(before));
    EXPECT_EQ(std::string(kSize, 0x55), std::string(grown, kSize));
    m_use.free(grown);
    m_use.free(behind);
}

TEST_F(FreedBlockTest, BlockThatShrankLeavesNothingBehindItsEnd) {
    char* const before = fillBlock();
    char* const shrunk = static_cast<char*>(m_use.reallocate(before, kOverwritten));
    EXPECT_EQ(0U, countLeft(before));
    EXPECT_EQ(std::string(kOverwritten, 0x55), std::string(shrunk, kOverwritten));
    m_use.free(shrunk);
}

TEST_F(ScriptEngineTest, PrintThrowsWhenStandardOutputCannotBeWritten) {
    writeFile("sealed.txt", "");
    int exitCode = 0;
    {
        std::error_code error;
        const Redirection errors(kStandardError, openForWriting("errors.txt", error));
        const Redirection output(kStandardOutput, openForReading("sealed.txt", error));
        Console console(Diagnostics::kDropped);
        exitCode = ScriptEngine(console).run({"script.js", "\nprint('lost');"});
    }
    EXPECT_EQ(1, exitCode);
    EXPECT_EQ(readFile("errors.txt"),
              "script.js:2: print failed: cannot write to standard output: Bad file descriptor\n");
}

}  // namespace
}  // namespace zr::host
