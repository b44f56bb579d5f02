// Parses JSON strictly: limited depth, and no key twice in an object.
#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>
#include <string_view>

namespace zr::host {

/// @param depth    the most lists and objects within each other; 1 for an object of plain values.
/// @param problem  set when the result is nullopt: "has the key \"allow\" twice", ...; it follows the
///                 name of the text in a message.
std::optional<nlohmann::json> parseStrictJson(std::string_view text, int depth,
                                              std::string& problem);

}  // namespace zr::host
