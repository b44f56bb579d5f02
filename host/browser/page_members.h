// What a page may call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/objects/member.h"

namespace zr::host {

inline constexpr std::string_view kCloseMember = "Close";

/// A member of the table that a page may call, or one that only pages have.
/// @return null when there is none of that name.
const Member* findPageMember(ObjectClass objectClass, std::string_view name);

/// Whether any object or the connection has a member of that name that a page may call.
bool isPageName(std::string_view name);

/// The arguments of the connection's own members. Throws a PageError.
class ConnectionArguments {
public:
    /// @param list  as RequestMessage has it; borrowed.
    explicit ConnectionArguments(const nlohmann::json& list) : m_list(list) {}

    void require(std::size_t count) const;
    /// The number of an upload.
    std::uint64_t upload(std::size_t index) const;
    std::string bytes(std::size_t index) const;

private:
    const nlohmann::json& m_list;
};

}  // namespace zr::host
