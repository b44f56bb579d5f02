// Addresses in the hosts of origins, in the one form that browsers write.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// Whether a text is four numbers from 0 to 255, without zeros before them.
bool isIpv4Address(std::string_view text);

/// An IPv6 address as browsers write it: hexadecimal in small letters, the longest run of zeros left
/// out. nullopt when the text is not one, also when its end is an IPv4 address.
/// @param text  without brackets, in small letters.
std::optional<std::string> ipv6Address(std::string_view text);

}  // namespace zr::host
