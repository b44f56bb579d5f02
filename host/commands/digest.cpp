// zrkey digest: the digest of data, computed by the library.
#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/output/printable.h"
#include "host/token/token_session.h"

namespace zr::host {
namespace {

struct DigestOptions : TokenOptions {
    std::string method = "MD5";
    std::string input = "-";
    ByteOutput output = {"-", ByteFormat::kHex};
};

Report digest(const DigestOptions& options) {
    const zrkey::ByteArray data = readInput(options.input);
    const OpenOutput output = openOutput(options.output);
    const TokenSession session(options);
    zrkey::ByteArray value;
    const HRESULT result =
        session->DigestData(zrkey::Text(options.method).get(), data, value.receive());
    const std::string asked = "compute a digest with " + inQuotes(options.method);
    if (result == E_INVALIDARG) {
        throw libraryFailure(kExitUsage, asked, result, "MD5 is the only method");
    }
    if (FAILED(result)) {
        throw libraryFailure(kExitFailure, asked, result, "the system may be out of memory");
    }
    Report report = byteReport("digest", takeBytes(value), output, "DIGEST");
    report.fields.push_back({"method", options.method});
    return report;
}

}  // namespace

void addDigestCommand(CLI::App& parent, Action& action) {
    const auto [command, options] =
        addCommand(parent, action, "digest", "Computes the digest of data", digest);
    addTokenOptions(*command, *options);
    addMethodOption(*command, options->method);
    addInputOption(*command, options->input);
    addByteOutput(*command, options->output);
}

}  // namespace zr::host
