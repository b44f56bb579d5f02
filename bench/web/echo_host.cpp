// What page_message.mjs compares zrkey-browser with: a native messaging host that reads a frame and
// answers it, and does nothing else. It answers the handshake of docs/web-protocol.md and then each
// request with the same value, so that extension and page library do the same work for both.
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace {

bool readAll(char* to, std::size_t length) {
    while (length > 0) {
        const ssize_t count = read(STDIN_FILENO, to, length);
        if (count <= 0) {
            return false;
        }
        to += count;
        length -= static_cast<std::size_t>(count);
    }
    return true;
}

bool writeFrame(const std::string& text) {
    const std::uint32_t length = static_cast<std::uint32_t>(text.size());
    std::string frame(sizeof length, '\0');
    std::memcpy(frame.data(), &length, sizeof length);
    frame.append(text);
    return write(STDOUT_FILENO, frame.data(), frame.size()) == static_cast<ssize_t>(frame.size());
}

/// The number behind `"id":`, as text; empty when there is none.
std::string idOf(const std::string& message) {
    const std::string key = "\"id\":";
    const std::size_t at = message.find(key);
    if (at == std::string::npos) {
        return {};
    }
    const std::size_t begin = at + key.size();
    return message.substr(begin, message.find_first_not_of("0123456789", begin) - begin);
}

}  // namespace

int main() {
    std::uint32_t length = 0;
    std::string message;
    while (readAll(reinterpret_cast<char*>(&length), sizeof length) && length <= 65536) {
        message.resize(length);
        if (!readAll(message.data(), length)) {
            return 1;
        }
        const std::string id = idOf(message);
        std::string answer;
        if (id.empty()) {
            answer = "{\"hello\":{\"protocol\":1,\"version\":\"1.0.0\",\"provider\":1}}";
        } else {
            answer.append("{\"id\":").append(id).append(",\"ok\":true,\"value\":\"PKCS#11\"}");
        }
        if (!writeFrame(answer)) {
            return 1;
        }
    }
    return 0;
}
