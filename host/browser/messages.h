// The messages to the host; docs/web-protocol.md describes them.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <nlohmann/json.hpp>

namespace zr::host {

inline constexpr std::int64_t kProtocolVersion = 1;
/// The greatest whole number that a page can count to.
inline constexpr std::uint64_t kGreatestId = (std::uint64_t{1} << 53) - 1;
inline constexpr std::size_t kMostArguments = 8;
/// No member has a longer name.
inline constexpr std::size_t kLongestMember = 64;
inline constexpr int kDeepestMessage = 8;

struct HelloMessage {
    std::int64_t protocol = 0;
    std::string origin;
    bool isCheck = false;  ///< only whether the site would be served
};

// NOLINTNEXTLINE(bugprone-exception-escape): a JSON value that is moved checks itself.
struct RequestMessage {
    std::uint64_t id = 0;
    std::uint64_t object = 0;
    std::string member;
    /// A list of null, booleans, numbers, texts and objects with one of the keys "bytes" (a text),
    /// "upload" and "object" (whole numbers).
    nlohmann::json arguments;
    bool isActive = false;
    std::chrono::steady_clock::time_point arrival = {};

    /// The numbers of the uploads that end with it.
    std::vector<std::uint64_t> uploads() const;
    /// The upload to which it appends bytes; 0: none.
    std::uint64_t appendedUpload() const;
};

struct CancelMessage {
    std::uint64_t id = 0;
};

using PageMessage = std::variant<HelloMessage, RequestMessage, CancelMessage>;

/// Throws Malformed.
PageMessage readMessage(std::string_view text);

}  // namespace zr::host
