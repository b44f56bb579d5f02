// What a command reports: bytes or lines of text, or one JSON object.
#include "host/output/report.h"

#include <nlohmann/json.hpp>

#include <system_error>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"

namespace zr::host {
namespace {

using Json = nlohmann::ordered_json;

Json convert(const Record& record);

struct Converter {
    Json operator()(const ByteValue& value) const { return toBase64(value.bytes); }
    Json operator()(const Record& value) const { return convert(value); }
    Json operator()(const std::vector<Record>& value) const {
        Json list = Json::array();
        for (const Record& record : value) {
            list.push_back(convert(record));
        }
        return list;
    }
    template <class Plain>
    Json operator()(const Plain& value) const {
        return value;
    }
};

Json convert(const Record& record) {
    Json object = Json::object();
    for (const Field& field : record) {
        object[field.name] = std::visit(Converter(), field.value);
    }
    return object;
}

}  // namespace

OpenOutput openOutput(const ByteOutput& output) {
    OpenOutput open = {output.format, nullptr};
    if (output.path != kStandardStream) {
        std::error_code error;
        open.file = std::make_shared<OutputFile>(output.path, error);
        if (error) {
            throw systemFailure(kExitFailure, "write to " + inQuotes(output.path), error,
                                "nothing was done; check the path and its permissions");
        }
    }
    return open;
}

Report byteReport(const std::string& name, const std::string& bytes, const OpenOutput& output,
                  std::string_view pemLabel) {
    return {encode(bytes, output.format, pemLabel), {{name, ByteValue{bytes}}}, output.file};
}

Record resultFields(zrkey::Result result) {
    Record fields;
    if (const std::string_view name = result.name(); !name.empty()) {
        fields.push_back({"name", std::string(name)});
    }
    fields.push_back({"hex", result.hex()});
    return fields;
}

std::string toJson(const Record& record) {
    // File names may contain bytes that are not UTF-8.
    return convert(record).dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace zr::host
