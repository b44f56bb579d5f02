// Frames, read from files and written to them.
#include "host/browser/frames.h"

#include <gtest/gtest.h>

#include "host/browser/malformed.h"
#include "host/system/byte_io.h"
#include "tests/host/browser/page_frames.h"
#include "tests/support/temp_dir.h"

namespace zr::test {
namespace {

using host::kLongestFrameIn;
using host::kLongestFrameOut;
using host::Malformed;

class FramesTest : public testing::Test {
protected:
    /// The messages in some bytes, and then what ended them.
    std::vector<std::string> read(const std::string& bytes) {
        folder.write("frames", bytes);
        std::error_code error;
        const int file = host::openForReading("frames", error);
        std::vector<std::string> messages;
        try {
            while (auto message = host::readFrame(file)) {
                messages.push_back(std::move(*message));
            }
            messages.emplace_back("(end)");
        } catch (const Malformed& malformed) {
            messages.push_back(malformed.problem);
        }
        host::closeDescriptor(file);
        return messages;
    }

    static std::string written() {
        std::error_code error;
        return std::string(host::viewOf(host::readBytes("written", error)));
    }

    TempDir folder;
};

using Texts = std::vector<std::string>;

TEST_F(FramesTest, ReadsOneAfterTheOther) {
    EXPECT_EQ(Texts({"(end)"}), read(""));
    EXPECT_EQ(Texts({"{}", "x", "(end)"}), read(frameOf("{}") + frameOf("x")));
}

TEST_F(FramesTest, ReadsTheLongest) {
    const std::string longest(kLongestFrameIn, 'a');
    EXPECT_EQ(Texts({longest, "(end)"}), read(frameOf(longest)));
}

TEST_F(FramesTest, RefusesLengths) {
    EXPECT_EQ(Texts({"a frame has the length 0"}), read(lengthOf(0) + "{}"));
    EXPECT_EQ(Texts({"a frame has the length 65537"}),
              read(lengthOf(65537) + std::string(65537, 'a')));
    EXPECT_EQ(Texts({"a frame has the length 4294967295"}), read(lengthOf(0xFFFFFFFF)));
}

TEST_F(FramesTest, RefusesAnEndWithinAFrame) {
    const std::string frame = frameOf("{}");
    for (std::size_t size = 1; size < frame.size(); ++size) {
        const Texts messages = read(frame.substr(0, size));
        ASSERT_EQ(1u, messages.size());
        EXPECT_EQ(0u, messages.front().find("the input ends within ")) << size;
    }
}

TEST_F(FramesTest, WritesWhatItReads) {
    std::error_code error;
    const int file = host::openNewForWriting("written", error);
    EXPECT_TRUE(host::writeFrame(file, "{}"));
    EXPECT_TRUE(host::writeFrame(file, std::string(kLongestFrameOut, 'b')));
    host::closeDescriptor(file);
    EXPECT_EQ(frameOf("{}") + frameOf(std::string(kLongestFrameOut, 'b')), written());
    EXPECT_FALSE(host::writeFrame(-1, "{}"));
}

}  // namespace
}  // namespace zr::test
