// What a command reports: bytes or lines of text, or one JSON object.
#pragma once

#include <zrkey/zrkey.hpp>

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "host/output/encoding.h"
#include "host/output/failure.h"
#include "host/system/output_file.h"

namespace zr::host {

/// The version of the JSON form; it grows when a member is removed or changes its meaning.
inline constexpr unsigned kJsonSchema = 1;

/// Bytes; base64 in JSON.
struct ByteValue {
    std::string bytes;
};

struct Field;
using Record = std::vector<Field>;
using Value =
    std::variant<bool, std::uint64_t, std::string, ByteValue, Record, std::vector<Record>>;

/// A member of a JSON object.
struct Field {
    std::string name;
    Value value;
};

/// Where to write bytes, and in which format.
struct ByteOutput {
    std::string path = "-";
    ByteFormat format = ByteFormat::kRaw;
};

/// A ByteOutput whose file is open.
struct OpenOutput {
    ByteFormat format = ByteFormat::kRaw;
    std::shared_ptr<OutputFile> file;  ///< null: standard output
};

/// Opens the file, so that one that cannot be written fails before the token is used. Throws a
/// Failure.
OpenOutput openOutput(const ByteOutput& output);

/// The result of a command in both forms.
struct Report {
    std::string output;                          ///< text or bytes, written without --json
    Record fields;                               ///< members of the object written with --json
    std::shared_ptr<OutputFile> file = nullptr;  ///< gets output; null: standard output
    std::string note = {};                       ///< a line for standard error; may be empty
    int exitCode = kExitOk;
};

/// Reports bytes.
/// @param name      their name in JSON.
/// @param pemLabel  see encode.
Report byteReport(const std::string& name, const std::string& bytes, const OpenOutput& output,
                  std::string_view pemLabel);

/// A result of the library: "name", unless it has none, and "hex".
Record resultFields(zrkey::Result result);

/// One line of JSON.
std::string toJson(const Record& record);

}  // namespace zr::host
