// The messages from the host. Used by several threads.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include <nlohmann/json.hpp>

#include "host/browser/page_error.h"

namespace zr::host {

class Replies {
public:
    static constexpr std::size_t kLongestReply = std::size_t{64} << 20;

    /// @param output  a descriptor; borrowed.
    explicit Replies(int output) : m_output(output) {}

    /// @param provider  the number of the provider; 0: the handshake was a check.
    void greet(std::uint64_t provider);
    void refuseGreeting(const PageError& error);
    /// In parts when it is larger than a frame; the error too-large when it is larger than a reply.
    /// @return the code of the error that was sent instead; null: none.
    const char* answer(std::uint64_t id, const std::string& member, nlohmann::json value);
    void refuse(std::uint64_t id, const std::string& member, const PageError& error);
    /// Whether the handshake was answered.
    bool isGreeted() const { return m_isGreeted; }
    /// Whether a message could not be written: the reader is gone.
    bool isBroken() const { return m_isBroken; }

private:
    void send(const nlohmann::json& message);
    void sendParts(std::uint64_t id, std::string_view reply);
    void write(const nlohmann::json& message);

    int m_output;
    std::mutex m_mutex;
    std::atomic<bool> m_isBroken = false;
    std::atomic<bool> m_isGreeted = false;
};

}  // namespace zr::host
