// Searches the memory of this process in pieces that overlap by the length of the searched bytes.
#include "tests/support/process_memory.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace zr::test {
namespace {

constexpr unsigned char kMask = 0xA5;
constexpr std::size_t kPieceSize = 1 << 20;

unsigned char s_piece[kPieceSize];

}  // namespace

MaskedBytes::MaskedBytes(const void* bytes, std::size_t size) {
    for (std::size_t i = 0; i < size; ++i) {
        m_masked += static_cast<const unsigned char*>(bytes)[i] ^ kMask;
    }
}

std::size_t MaskedBytes::countIn(const unsigned char* bytes, std::size_t size) const {
    if (size < m_masked.size()) {
        return 0;
    }
    // One unmasked byte reveals nothing, and memchr skips the long empty parts quickly.
    const int first = m_masked[0] ^ kMask;
    const unsigned char* const end = bytes + size - m_masked.size() + 1;
    std::size_t count = 0;
    const auto next = [&](const unsigned char* from) {
        return static_cast<const unsigned char*>(
            std::memchr(from, first, static_cast<std::size_t>(end - from)));
    };
    for (const unsigned char* at = next(bytes); at; at = next(at + 1)) {
        const bool isMatch = std::equal(
            m_masked.begin(), m_masked.end(), at,
            [](unsigned char masked, unsigned char byte) { return (byte ^ kMask) == masked; });
        count += isMatch ? 1 : 0;
    }
    return count;
}

std::size_t MaskedBytes::countInRange(std::size_t begin, std::size_t end) const {
    const std::size_t step = kPieceSize - m_masked.size() + 1;
    std::size_t count = 0;
    for (std::size_t at = begin; at < end; at += step) {
        count += countIn(s_piece, readMemory(at, s_piece, std::min(kPieceSize, end - at)));
    }
    return count;
}

std::size_t MaskedBytes::countInMemory() const {
    const auto piece = reinterpret_cast<std::size_t>(s_piece);
    std::size_t count = 0;
    forEachWritableRegion([&](std::size_t begin, std::size_t size) {
        const std::size_t end = begin + size;
        // The piece itself contains a copy of the memory: skip it.
        count += countInRange(begin, std::clamp(piece, begin, end));
        count += countInRange(std::clamp(piece + kPieceSize, begin, end), end);
    });
    std::fill(std::begin(s_piece), std::end(s_piece), static_cast<unsigned char>(0));
    return count;
}

}  // namespace zr::test
