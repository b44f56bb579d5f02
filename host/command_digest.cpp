// zrkey digest: the digest of bytes, computed by the library.
#include "command_frame.h"
#include "data_input.h"
#include "token_session.h"

namespace zr::host {
namespace {

struct DigestOptions : TokenOptions {
    std::string method = "MD5";
    std::string input = "-";
    ByteOutput output = {"-", ByteFormat::kHex};
};

Result digest(const DigestOptions& options) {
    Variant data;
    readData(options.input, data);
    const TokenSession session(options);
    Variant value;
    const HRESULT result = session->DigestData(Text(options.method).get(), data, value.receive());
    const std::string asked = "digest by " + inQuotes(options.method);
    if (result == E_INVALIDARG) {
        throw refused(kExitUsage, asked, result, "MD5 is the one method there is");
    }
    if (FAILED(result)) {
        throw refused(kExitFailure, asked, result, "look for free memory");
    }
    Result output = byteResult("digest", value.bytes(), options.output, "DIGEST");
    output.fields.push_back({"method", options.method});
    return output;
}

}  // namespace

void addDigestCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "digest", "Gives the digest of bytes", digest);
    addTokenOptions(*command, *options);
    command->add_option("--method", options->method, "The digest method")
        ->type_name("NAME")
        ->capture_default_str();
    addInputOption(*command, options->input);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
