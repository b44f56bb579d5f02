// The script engine in the test's process: a stream that fails, and the count of memory.
#include "host/script/engine.h"

#include "host/output/console.h"
#include "host/script/limits.h"
#include "host/system/system.h"
#include "tests/host/child_command.h"

namespace zr::host {
namespace {

using zr::test::readFile;
using zr::test::writeFile;

/// Redirects a standard stream until destruction.
class Redirection {
public:
    Redirection(int stream, int descriptor)
        : m_stream(stream), m_before(duplicateDescriptor(stream)) {
        redirectDescriptor(stream, descriptor);
        closeDescriptor(descriptor);
    }
    ~Redirection() {
        redirectDescriptor(m_stream, m_before);
        closeDescriptor(m_before);
    }
    Redirection(const Redirection&) = delete;
    Redirection& operator=(const Redirection&) = delete;

private:
    int m_stream;
    int m_before;
};

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

TEST_F(ScriptEngineTest, PrintThrowsWhenStandardOutputCannotBeWritten) {
    writeFile("sealed.txt", "");
    bool isDone = true;
    {
        std::error_code error;
        const Redirection errors(kStandardError, openForWriting("errors.txt", error));
        const Redirection output(kStandardOutput, openForReading("sealed.txt", error));
        Console console(Diagnostics::kDropped);
        isDone = ScriptEngine(console).run("script.js", "\nprint('lost');", {});
    }
    EXPECT_FALSE(isDone);
    EXPECT_EQ(readFile("errors.txt"),
              "script.js:2: print failed: cannot write to standard output: Bad file descriptor\n");
}

}  // namespace
}  // namespace zr::host
