// The browser's side of a connection: writes frames and reads them.
#pragma once

#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <nlohmann/json.hpp>

#include "host/system/system.h"

namespace zr::test {

using nlohmann::json;

/// The length of a frame as it is sent.
inline std::string lengthOf(std::uint32_t length) {
    std::string bytes(sizeof length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    return bytes;
}

inline std::string frameOf(std::string_view message) {
    return lengthOf(static_cast<std::uint32_t>(message.size())).append(message);
}

class PageFrames {
public:
    PageFrames(int toHost, int fromHost) : m_toHost(toHost), m_fromHost(fromHost) {}

    bool writeBytes(std::string_view bytes) const { return !host::writeAll(m_toHost, bytes); }
    bool write(const json& message) const { return writeBytes(frameOf(message.dump())); }

    /// @return nullopt at the end of the output.
    std::optional<std::string> readText() const {
        const std::string length = readBytes(sizeof(std::uint32_t));
        if (length.size() < sizeof(std::uint32_t)) {
            return std::nullopt;
        }
        std::uint32_t size = 0;
        std::memcpy(&size, length.data(), sizeof size);
        return readBytes(size);
    }
    /// Null at the end of the output.
    json read() const {
        const std::optional<std::string> text = readText();
        return text ? json::parse(*text) : json();
    }

    json greet(const std::string& origin) const {
        write({{"hello", {{"protocol", 1}, {"origin", origin}}}});
        return read().value("hello", json());
    }
    /// Asks only whether the site would be served.
    json check(const std::string& origin) const {
        write({{"hello", {{"protocol", 1}, {"origin", origin}, {"check", true}}}});
        return read().value("hello", json());
    }
    /// Sends a request with the next number.
    std::uint64_t ask(std::uint64_t object, const std::string& member,
                      json arguments = json::array(), bool isActive = false) {
        json request = {{"id", ++m_last},
                        {"object", object},
                        {"member", member},
                        {"arguments", std::move(arguments)}};
        if (isActive) {
            request["active"] = true;
        }
        write(request);
        return m_last;
    }
    /// Sends a request and reads its reply.
    json call(std::uint64_t object, const std::string& member, json arguments = json::array(),
              bool isActive = false) {
        const std::uint64_t id = ask(object, member, std::move(arguments), isActive);
        json reply = read();
        return reply.value("id", json()) == id ? reply : json();
    }
    /// The value of a reply; null when it failed.
    json valueOf(std::uint64_t object, const std::string& member, json arguments = json::array(),
                 bool isActive = false) {
        return call(object, member, std::move(arguments), isActive).value("value", json());
    }
    /// The code of a reply; "ok" when it succeeded.
    std::string codeOf(std::uint64_t object, const std::string& member,
                       json arguments = json::array(), bool isActive = false) {
        return outcomeOf(call(object, member, std::move(arguments), isActive));
    }
    static std::string outcomeOf(const json& reply) {
        if (!reply.is_object()) {
            return "no reply";
        }
        return reply.value("ok", false) ? "ok" : reply.at("error").at("code").get<std::string>();
    }

private:
    std::string readBytes(std::size_t size) const {
        std::string bytes(size, '\0');
        std::size_t have = 0;
        while (have < size) {
            std::error_code error;
            const std::size_t count =
                host::readSome(m_fromHost, bytes.data() + have, size - have, error);
            if (count == 0) {
                break;
            }
            have += count;
        }
        bytes.resize(have);
        return bytes;
    }

    int m_toHost;
    int m_fromHost;
    std::uint64_t m_last = 0;
};

}  // namespace zr::test
