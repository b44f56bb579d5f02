// What a command gives out: bytes or lines of text, or one JSON object.
#pragma once

#include <zrkey/automation.h>

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "encoding.h"

namespace zr::host {

/// The number of the JSON form; it grows when a member goes or changes its meaning.
inline constexpr unsigned kJsonSchema = 1;

/// Bytes, which JSON shows in base64.
struct Bytes {
    std::string bytes;
};

struct Field;
using Record = std::vector<Field>;
using Value = std::variant<bool, std::uint64_t, std::string, Bytes, Record, std::vector<Record>>;

/// A member of a JSON object.
struct Field {
    std::string name;
    Value value;
};

/// Where and in what form bytes go.
struct ByteOutput {
    std::string path = "-";
    ByteFormat format = ByteFormat::kRaw;
};

/// What a command has done.
struct Result {
    std::string output;      ///< what comes out, unless JSON is asked for
    Record fields;           ///< what JSON shows
    std::string path = "-";  ///< where output goes
};

/// Bytes as a result.
/// @param name      their name in JSON.
/// @param pemLabel  see encode.
Result byteResult(const std::string& name, const std::string& bytes, const ByteOutput& output,
                  std::string_view pemLabel);

/// A code of the library: its name, if it has one here, and its number.
Record codeFields(HRESULT code);

/// One line of JSON.
std::string toJson(const Record& record);

}  // namespace zr::host
