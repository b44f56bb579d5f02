// A browser that does not read standard error. On Windows a write that waits keeps the descriptor locked, so
// a test in this process could not take standard error back.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "host/browser/complaint.h"
#include "host/system/system.h"
#include "tests/host/browser/piped_process.h"

namespace zr::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using std::chrono::steady_clock;

/// Standard error is a pipe that is full, until destruction.
class FullErrors {
public:
    FullErrors() {
        const auto [read, write] = makePipe();
        m_read = read;
        m_saved = host::duplicateDescriptor(host::kStandardError);
        host::redirectDescriptor(host::kStandardError, write);
        m_filler = std::thread([this, write = write] {
            while (!m_isEnding) {
                host::writeAll(write, std::string(4096, '-'));
                ++m_written;
            }
            host::closeDescriptor(write);
        });
        int before = -1;
        while (m_written == 0 || m_written != before) {
            before = m_written;
            std::this_thread::sleep_for(milliseconds(50));
        }
    }
    ~FullErrors() {
        m_isEnding = true;
        host::redirectDescriptor(host::kStandardError, m_saved);
        host::closeDescriptor(m_saved);
        std::error_code error;
        char piece[65536];
        while (host::readSome(m_read, piece, sizeof piece, error) != 0) {
        }
        m_filler.join();
        host::closeDescriptor(m_read);
    }
    FullErrors(const FullErrors&) = delete;
    FullErrors& operator=(const FullErrors&) = delete;

private:
    int m_read;
    int m_saved;
    std::atomic<bool> m_isEnding = false;
    std::atomic<int> m_written = 0;
    std::thread m_filler;
};

TEST(FullErrorsTest, ComplaintThatNobodyReadsIsLeftOut) {
    std::atomic<bool> isDone = false;
    std::thread complainer;
    {
        const FullErrors full;
        complainer = std::thread([&] {
            for (int i = 0; i < 20; ++i) {
                host::complain("nobody reads this\n");
            }
            isDone = true;
        });
        const auto end = steady_clock::now() + seconds(5);
        while (!isDone && steady_clock::now() < end) {
            std::this_thread::sleep_for(milliseconds(10));
        }
        EXPECT_TRUE(isDone);
    }
    complainer.join();
}

}  // namespace
}  // namespace zr::test
