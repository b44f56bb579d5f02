// zrkey info: the properties of a token.
#include "host/commands/command_frame.h"
#include "host/commands/token_fields.h"
#include "host/output/printable.h"

namespace zr::host {
namespace {

/// The size of a token that does not report it.
constexpr long long kUnavailable = 0xFFFFFFFF;

void addSize(Report& report, const std::string& name, IKeyObject& token,
             HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(VARIANT*)) {
    zrkey::Variant size;
    const HRESULT result = (token.*getter)(size.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "read the sizes of the token", result,
                             "check that it is still connected");
    }
    const long long bytes = size.toNumber().value();
    report.output += name + ":\t";
    if (bytes == kUnavailable) {
        report.output += "not reported\n";
    } else {
        report.output += std::to_string(bytes) + '\n';
        report.fields.push_back({name, static_cast<std::uint64_t>(bytes)});
    }
}

void addText(Report& report, const std::string& name, const std::string& text) {
    report.output += name + ":\t" + printable(text) + '\n';
    report.fields.push_back({name, text});
}

std::string listOf(IKeyObject& token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    zrkey::Text text;
    const HRESULT result = (token.*getter)(text.receive());
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, "read the algorithms", result, "check config.xml");
    }
    return text.utf8();
}

Report info(const TokenOptions& options) {
    const TokenSession session(options);
    Report report;
    for (const Field& field : tokenFields(session.row())) {
        if (const auto* text = std::get_if<std::string>(&field.value)) {
            addText(report, field.name, *text);
        } else {
            report.output += field.name + ":\t" + std::to_string(session.row().index) + '\n';
            report.fields.push_back(field);
        }
    }
    addSize(report, "totalSize", session.token(), &IKeyObject::GetTotalSize);
    addSize(report, "freeSize", session.token(), &IKeyObject::GetFreeSize);
    addText(report, "signAlgorithms", listOf(session.token(), &IKeyObject::GetSignAlgo));
    addText(report, "digestMethod", listOf(session.token(), &IKeyObject::GetDigestMethod));
    return report;
}

}  // namespace

void addInfoCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "info", info);
    addTokenOptions(command, *options);
}

}  // namespace zr::host
