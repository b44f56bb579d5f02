// zrkey info: what a token tells about itself.
#include "command_frame.h"
#include "token_fields.h"
#include "variant.h"

namespace zr::host {
namespace {

constexpr ULONG kUnavailable = 0xFFFFFFFF;

void addSize(Result& result, const std::string& name, IKeyObject& token,
             HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(VARIANT*)) {
    Variant size;
    const HRESULT answer = (token.*getter)(size.receive());
    if (FAILED(answer)) {
        throw refused(kExitFailure, "read the sizes of the token", answer,
                      "look whether it is still connected");
    }
    const ULONG bytes = size.get().ulVal;
    result.output += name + ":\t";
    if (bytes == kUnavailable) {
        result.output += "not told\n";
    } else {
        result.output += std::to_string(bytes) + '\n';
        result.fields.push_back({name, std::uint64_t{bytes}});
    }
}

void addText(Result& result, const std::string& name, const std::string& text) {
    result.output += name + ":\t" + printable(text) + '\n';
    result.fields.push_back({name, text});
}

std::string listOf(IKeyObject& token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    Text text;
    const HRESULT answer = (token.*getter)(text.receive());
    if (FAILED(answer)) {
        throw refused(kExitFailure, "read the algorithms", answer, "look at config.xml");
    }
    return text.utf8();
}

Result info(const TokenOptions& options) {
    const TokenSession session(options);
    Result result;
    for (const Field& field : tokenFields(session.row())) {
        if (const auto* text = std::get_if<std::string>(&field.value)) {
            addText(result, field.name, *text);
        } else {
            result.output += field.name + ":\t" + std::to_string(session.row().index) + '\n';
            result.fields.push_back(field);
        }
    }
    addSize(result, "totalSize", session.token(), &IKeyObject::GetTotalSize);
    addSize(result, "freeSize", session.token(), &IKeyObject::GetFreeSize);
    addText(result, "signAlgorithms", listOf(session.token(), &IKeyObject::GetSignAlgo));
    addText(result, "digestMethod", listOf(session.token(), &IKeyObject::GetDigestMethod));
    return result;
}

}  // namespace

void addInfoCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "info", "Shows what a token tells about itself", info);
    addTokenOptions(*command, *options);
}

}  // namespace zr::host
