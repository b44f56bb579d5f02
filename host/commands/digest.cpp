// zrkey digest: the digest of data. It needs no token and no module.
#include "host/commands/byte_arrays.h"
#include "host/commands/command_frame.h"
#include "host/crypto/hash.h"

namespace zr::host {
namespace {

struct DigestOptions {
    ReportOptions report;
    HashKind method = HashKind::kMd5;
    std::string input = "-";
    ByteOutput output = {"-", ByteFormat::kHex};
};

Report digest(const DigestOptions& options) {
    const OpenOutput output = openByteOutput(options.output, options.report);
    Hash hash(options.method);
    readInPieces(options.input, "digest", *options.report.console,
                 [&hash](std::string_view piece) { hash.add(piece); });
    Report report = byteReport("digest", hash.finish(), output, "DIGEST");
    report.fields.push_back({"method", nameOf(options.method)});
    return report;
}

}  // namespace

void addDigestCommand(CLI::App& command, Action& action) {
    const auto options = setBody(command, action, "digest", digest);
    addReportOptions(command, options->report);
    addMethodOption(command, options->method);
    addInputOption(command, options->input);
    addByteOutput(command, options->output);
}

}  // namespace zr::host
