// Frames, as browsers exchange them with native messaging hosts.
#include "host/browser/frames.h"

#include <cstring>

#include "host/browser/malformed.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

using FrameLength = std::uint32_t;

enum class Reading { kWhole, kEnd, kCut, kFailed };

/// Reads so many bytes.
Reading readWhole(int descriptor, char* bytes, std::size_t size) {
    std::size_t have = 0;
    while (have < size) {
        std::error_code error;
        const std::size_t count = readSome(descriptor, bytes + have, size - have, error);
        if (error) {
            return Reading::kFailed;
        }
        if (count == 0) {
            return have == 0 ? Reading::kEnd : Reading::kCut;
        }
        have += count;
    }
    return Reading::kWhole;
}

}  // namespace

std::optional<std::string> readFrame(int descriptor) {
    char bytes[sizeof(FrameLength)];
    Reading reading = readWhole(descriptor, bytes, sizeof bytes);
    if (reading == Reading::kEnd || reading == Reading::kFailed) {
        return std::nullopt;
    }
    if (reading == Reading::kCut) {
        throw Malformed{"the input ends within the length of a frame"};
    }
    FrameLength length = 0;
    std::memcpy(&length, bytes, sizeof length);
    if (length == 0 || length > kLongestFrameIn) {
        throw Malformed{std::string("a frame has the length ").append(std::to_string(length))};
    }
    std::string message(length, '\0');
    reading = readWhole(descriptor, message.data(), message.size());
    if (reading == Reading::kFailed) {
        return std::nullopt;
    }
    if (reading != Reading::kWhole) {
        throw Malformed{"the input ends within a frame"};
    }
    return message;
}

bool writeFrame(int descriptor, std::string_view message) {
    const auto length = static_cast<FrameLength>(message.size());
    std::string frame(sizeof length + message.size(), '\0');
    std::memcpy(frame.data(), &length, sizeof length);
    std::memcpy(frame.data() + sizeof length, message.data(), message.size());
    return !writeAll(descriptor, frame);
}

}  // namespace zr::host
