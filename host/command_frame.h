// What the compiled commands share: their options, and the frame that runs one and reports it.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "commands.h"
#include "failure.h"
#include "result_output.h"
#include "token_options.h"

namespace zr::host {

/// --json and -v.
void addReportOptions(CLI::App& command, ReportOptions& options);
/// --module and --workdir.
void addModuleOptions(CLI::App& command, ModuleOptions& options);
/// All of the above, and --index, --label, --serial.
void addTokenOptions(CLI::App& command, TokenOptions& options);
/// --pin and --so.
void addPinOptions(CLI::App& command, PinOptions& options);
/// An option that names a PIN source.
CLI::Option* addPinSource(CLI::App& command, const std::string& name,
                          std::optional<PinSource>& source, const std::string& help);
/// --cert and --cert-index.
void addCertificateOptions(CLI::App& command, CertificateChoice& choice);
/// -i, "-" when it is not given.
void addInputOption(CLI::App& command, std::string& path);
/// -o and --format; --json excludes both.
void addByteOutput(CLI::App& command, ByteOutput& output);
/// The number that names a file of the token.
/// @param last  the greatest one that the command takes.
void addFileName(CLI::App& command, std::string& name, unsigned last);

/// Runs a command's body, writes its result or its failure and gives the exit code.
int runCommand(const std::string& name, const ReportOptions& options,
               const std::function<Result()>& body);

/// Adds a command and makes its body the action when it is chosen.
/// @param path  how JSON names the command: "file read".
/// @return what addXOptions fill; Options has a member report.
template <typename Options>
std::pair<CLI::App*, std::shared_ptr<Options>> addCommand(CLI::App& parent, Action& action,
                                                          const std::string& path,
                                                          const std::string& help,
                                                          Result (*body)(const Options&)) {
    auto options = std::make_shared<Options>();
    CLI::App* command = parent.add_subcommand(path.substr(path.rfind(' ') + 1), help);
    command->callback([options, path, body, &action] {
        action = [options, path, body] {
            return runCommand(path, options->report, [&] { return body(*options); });
        };
    });
    return {command, std::move(options)};
}

}  // namespace zr::host
