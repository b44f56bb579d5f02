// What a command gives out: bytes or lines of text, or one JSON object.
#include "result_output.h"

#include <nlohmann/json.hpp>

#include "library.h"

namespace zr::host {
namespace {

using Json = nlohmann::ordered_json;

Json convert(const Record& record);

struct Converter {
    Json operator()(const Bytes& value) const { return toBase64(value.bytes); }
    Json operator()(const Record& value) const { return convert(value); }
    Json operator()(const std::vector<Record>& value) const {
        Json list = Json::array();
        for (const Record& record : value) {
            list.push_back(convert(record));
        }
        return list;
    }
    template <typename Plain>
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

Result byteResult(const std::string& name, const std::string& bytes, const ByteOutput& output,
                  std::string_view pemLabel) {
    return {encode(bytes, output.format, pemLabel), {{name, Bytes{bytes}}}, output.path};
}

Record codeFields(HRESULT code) {
    Record fields;
    if (const std::string name = resultName(code); !name.empty()) {
        fields.push_back({"name", name});
    }
    fields.push_back({"hex", resultNumber(code)});
    return fields;
}

std::string toJson(const Record& record) {
    // Names of files may hold bytes that are no UTF-8.
    return convert(record).dump(-1, ' ', false, Json::error_handler_t::replace) + '\n';
}

}  // namespace zr::host
