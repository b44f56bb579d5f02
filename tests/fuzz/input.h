// The input of a fuzzer, read as decisions. Past the end everything is zero.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace zr::fuzz {

class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    bool isAtEnd() const { return m_at == m_size; }
    std::uint8_t byte() { return isAtEnd() ? std::uint8_t{0} : m_data[m_at++]; }
    bool flag() { return (byte() & 1) != 0; }
    /// From 0 to below count; count is at most 256.
    std::size_t below(std::size_t count) { return byte() % count; }
    template <class Number>
    Number number() {
        Number value{};
        const std::string bytes = text(sizeof value);
        std::memcpy(&value, bytes.data(), bytes.size());
        return value;
    }
    /// At most that many bytes.
    std::string text(std::size_t most) {
        const std::size_t length = std::min(most, m_size - m_at);
        m_at += length;
        return {reinterpret_cast<const char*>(m_data) + m_at - length, length};
    }
    /// Bytes with their length before them.
    std::string text() { return text(byte()); }
    std::string rest() { return text(m_size - m_at); }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_at = 0;
};

}  // namespace zr::fuzz
