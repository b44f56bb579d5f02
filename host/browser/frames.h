// Frames, as browsers exchange them with native messaging hosts: a length in 32 bits, in the byte order
// of the machine, then so many bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

inline constexpr std::size_t kLongestFrameIn = std::size_t{64} * 1024;
inline constexpr std::size_t kLongestFrameOut = std::size_t{1024} * 1024;

/// Reads one frame.
/// @return its message; nullopt when the input ends between two frames, or cannot be read. Throws
///         Malformed.
std::optional<std::string> readFrame(int descriptor);

/// @param message  not longer than kLongestFrameOut.
/// @return false when it could not be written whole.
bool writeFrame(int descriptor, std::string_view message);

}  // namespace zr::host
