// What all commands but run share: their options, and the frame that runs a command and writes its
// report.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/commands/commands.h"
#include "host/crypto/hash.h"
#include "host/crypto/public_key.h"
#include "host/output/failure.h"
#include "host/output/report.h"
#include "host/token/token_options.h"

// The parser's own header is not included here: it takes many seconds to compile.
namespace CLI {
class Option;
class Validator;
}  // namespace CLI

namespace zr::host {

class Console;

/// Refuses an empty value: a variable that is not set would mean the default, unnoticed.
CLI::Validator isNotEmpty();
/// --json, -v and -q.
void addReportOptions(CLI::App& command, ReportOptions& options);
/// --config and --workdir.
void addConfigurationOptions(CLI::App& command, ModuleOptions& options);
/// --module and the two above.
void addModuleOptions(CLI::App& command, ModuleOptions& options);
/// All of the above, and --index, --label, --serial.
void addTokenOptions(CLI::App& command, TokenOptions& options);
/// --pin and --so.
void addPinOptions(CLI::App& command, PinOptions& options);
/// --last-try alone.
void addLastTryOption(CLI::App& command, PinOptions& options);
/// Adds an option that names a PIN source.
CLI::Option* addPinSource(CLI::App& command, const std::string& name,
                          std::optional<PinSource>& source, const std::string& help);
/// --cert and --cert-index.
void addCertificateOptions(CLI::App& command, CertificateChoice& choice);
/// --algorithm.
void addAlgorithmOption(CLI::App& command, std::optional<SignatureAlgorithm>& algorithm);
/// -i; the default is "-".
void addInputOption(CLI::App& command, std::string& path);
/// --signature, which is required.
void addSignatureOption(CLI::App& command, std::string& path);
/// --format.
void addFormatOption(CLI::App& command, ByteFormat& format, const std::string& help);
/// --method; its default is the value of method.
void addMethodOption(CLI::App& command, HashKind& method);
/// -o and --format; --json excludes both.
/// @param isText  set when the format is "text"; null: there is no such format.
void addByteOutput(CLI::App& command, ByteOutput& output, bool* isText = nullptr);
/// The number that names a file of the token.
/// @param last  the largest number that the command accepts.
void addFileName(CLI::App& command, std::string& name, unsigned last);

/// Opens the output before the token works. Throws a Failure when it cannot be opened, and for raw
/// bytes on a terminal.
/// @param isText  whether text takes the place of the bytes.
OpenOutput openByteOutput(const ByteOutput& output, const ReportOptions& options,
                          bool isText = false);

/// Runs a command's body and writes its report or its failure.
/// @param options  know the command's streams while it runs.
/// @return the exit code.
int runCommand(const std::string& name, ReportOptions& options,
               const std::function<Report()>& body);

/// Runs the body of a command that writes as it goes on and returns its exit code, and writes its
/// failure.
/// @return the exit code.
int runStreaming(const std::string& name, ReportOptions& options,
                 const std::function<int(Console&)>& body);

/// Makes run the action when the command is chosen.
void setAction(CLI::App& command, Action& action, const Action& run);

/// Makes a command run body and write its report.
/// @param path  the name of the command in JSON: "file read".
/// @return its options, for the addXOptions functions; Options has a member report.
template <class Options>
std::shared_ptr<Options> setBody(CLI::App& command, Action& action, const std::string& path,
                                 Report (*body)(const Options&)) {
    auto options = std::make_shared<Options>();
    setAction(command, action, [options, path, body] {
        return runCommand(path, options->report, [&] { return body(*options); });
    });
    return options;
}

}  // namespace zr::host
