// The script engine in the process: what its user sees when a stream fails; its account of memory.
#include "script_engine.h"

#include "child_command.h"
#include "console.h"
#include "script_limits.h"
#include "system.h"

namespace zr::host {
namespace {

using zr::test::readFile;
using zr::test::writeFile;

/// Leads a standard stream elsewhere while it lives.
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

TEST(ScriptUseTest, ABlockCountsWithWhatIsKeptBesideIt) {
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
        const Redirection errors(kStandardError, openForWriting("errors.txt"));
        const Redirection output(kStandardOutput, openForReading("sealed.txt"));
        Console console(Diagnostics::kDropped);
        isDone = ScriptEngine(console).run("script.js", "\nprint('lost');", {});
    }
    EXPECT_FALSE(isDone);
    EXPECT_EQ(readFile("errors.txt"),
              "script.js:2: print failed: standard output cannot be written\n");
}

}  // namespace
}  // namespace zr::host
