// Bytes that a page sends in pieces before the request that needs them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace zr::host {

class Uploads {
public:
    static constexpr std::size_t kMostBytes = std::size_t{8} << 20;
    static constexpr std::uint64_t kMostUploads = 16;

    /// Throws a PageError when all uploads together would be too large, or the upload is spoiled.
    /// @param number  from 1 to kMostUploads.
    void append(std::uint64_t number, std::string_view bytes);
    /// Ends an upload.
    /// @return nullopt when it does not exist, or is spoiled.
    std::optional<std::string> take(std::uint64_t number);

    /// Some bytes of an upload were refused. It has a hole, so the rest of it must not be used.
    void spoil(std::uint64_t number);

private:
    std::map<std::uint64_t, std::string> m_uploads;
    std::set<std::uint64_t> m_spoiled;
    std::size_t m_size = 0;
};

}  // namespace zr::host
