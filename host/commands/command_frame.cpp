// What all commands but run share: their options, and the frame that runs a command and writes its
// report.
#include "host/commands/command_frame.h"

#include <CLI/CLI.hpp>

#include <exception>
#include <limits>
#include <new>

#include "host/output/console.h"
#include "host/output/printable.h"
#include "host/system/byte_io.h"
#include "host/system/interruption.h"
#include "host/token/signing.h"

namespace zr::host {
namespace {

/// Accepts decimal digits only: the parser by itself accepts octal and hexadecimal numbers too.
CLI::Validator isDecimal(unsigned long long first, unsigned long long last,
                         const std::string& what) {
    const auto check = [=](const std::string& text) -> std::string {
        constexpr std::size_t kMostDigits = 10;
        const bool isNumber = !text.empty() && text.size() <= kMostDigits &&
                              (text == "0" || text.front() != '0') &&
                              text.find_first_not_of("0123456789") == std::string::npos;
        const unsigned long long number = isNumber ? std::stoull(text) : 0;
        return isNumber && number >= first && number <= last
                   ? ""
                   : what + " must be a number from " + std::to_string(first) + " to " +
                         std::to_string(last);
    };
    return {check, ""};
}

CLI::Validator isIndex() {
    return isDecimal(0, std::numeric_limits<LONG>::max(), "an index");
}

ByteFormat parseFormat(const std::string& name) {
    constexpr std::pair<std::string_view, ByteFormat> kFormats[] = {{"raw", ByteFormat::kRaw},
                                                                    {"hex", ByteFormat::kHex},
                                                                    {"base64", ByteFormat::kBase64},
                                                                    {"pem", ByteFormat::kPem}};
    for (const auto& [text, format] : kFormats) {
        if (name == text) {
            return format;
        }
    }
    throw CLI::ValidationError("--format", "the format must be raw, hex, base64 or pem");
}

void writeReport(Console& console, const std::string& name, const ReportOptions& options,
                 const Report& report) {
    std::error_code error;
    if (options.json) {
        Record record = {{"schema", std::uint64_t{kJsonSchema}},
                         {"command", name},
                         {"result", resultFields(S_OK)}};
        record.insert(record.end(), report.fields.begin(), report.fields.end());
        error = console.writeOutput(toJson(record));
    } else if (report.file) {
        error = report.file->write(report.output);
    } else {
        error = console.writeOutput(report.output);
    }
    if (error) {
        const std::string place = report.file ? inQuotes(report.file->path()) : "standard output";
        throw systemFailure(
            kExitFailure, "write to " + place, error,
            "the work is done, but its result is not written; check free space and permissions");
    }
    if (!options.quiet) {
        console.writeError(report.note);
    }
}

int writeFailure(Console& console, const std::string& name, const ReportOptions& options,
                 const Failure& failure) {
    if (options.json) {
        Record record = {{"schema", std::uint64_t{kJsonSchema}}, {"command", name}};
        if (failure.result) {
            record.push_back({"result", resultFields(*failure.result)});
        }
        record.push_back({"failure", Record{{"exit", static_cast<std::uint64_t>(failure.exitCode)},
                                            {"asked", failure.asked},
                                            {"cause", failure.cause},
                                            {"advice", failure.advice}}});
        console.writeOutput(toJson(record));
    }
    console.writeFailure(failure.line());
    return failure.exitCode;
}

}  // namespace

CLI::Validator isNotEmpty() {
    return {[](const std::string& text) -> std::string {
                return text.empty() ? "the value is empty" : "";
            },
            ""};
}

void addReportOptions(CLI::App& command, ReportOptions& options) {
    command.add_flag("--json", options.json, "Writes the result as one JSON object");
    command.add_flag("-v,--verbose", options.verbose,
                     "Shows the library's diagnostics on standard error");
    command.add_flag("-q,--quiet", options.quiet, "Shows nothing but failures on standard error");
}

void addConfigurationOptions(CLI::App& command, ModuleOptions& options) {
    command
        .add_option("--workdir", options.workFolder,
                    "The working folder; the default is the current folder")
        ->type_name("DIR")
        ->check(isNotEmpty());
    command
        .add_option("--config", options.configuration,
                    "The configuration; the default is the first that \"zrkey config path\" finds")
        ->type_name("FILE")
        ->check(isNotEmpty());
}

void addModuleOptions(CLI::App& command, ModuleOptions& options) {
    command
        .add_option("--module", options.path,
                    "The PKCS #11 module, a path or a name; the default is ZRKEY_MODULE, then "
                    "zrkey.conf, then p11-kit")
        ->type_name("PATH")
        ->check(isNotEmpty());
    addConfigurationOptions(command, options);
}

void addTokenOptions(CLI::App& command, TokenOptions& options) {
    addReportOptions(command, options.report);
    addModuleOptions(command, options.module);
    CLI::Option* index =
        command.add_option("--index", options.choice.index, "Selects the token by its index")
            ->type_name("N")
            ->check(isIndex());
    CLI::Option* label =
        command.add_option("--label", options.choice.label, "Selects the token by its label");
    CLI::Option* serial = command.add_option("--serial", options.choice.serial,
                                             "Selects the token by its serial number");
    index->excludes(label)->excludes(serial);
    label->excludes(serial);
}

CLI::Option* addPinSource(CLI::App& command, const std::string& name,
                          std::optional<PinSource>& source, const std::string& help) {
    // The message does not repeat the value, which may be a PIN.
    return command
        .add_option_function<std::string>(
            name,
            [name, &source](const std::string& text) {
                source = parsePinSource(text);
                if (!source) {
                    throw CLI::ValidationError(
                        name, "the source must be prompt, env:NAME, file:PATH, fd:N or -");
                }
            },
            help + ": prompt, env:NAME, file:PATH, fd:N or - (standard input)")
        ->type_name("SOURCE");
}

void addPinOptions(CLI::App& command, PinOptions& options) {
    addPinSource(command, "--pin", options.source, "Where to read the PIN");
    command.add_flag("--so", options.securityOfficer,
                     "The PIN is the security officer's, not the user's");
    addLastTryOption(command, options);
}

void addLastTryOption(CLI::App& command, PinOptions& options) {
    command.add_flag("--last-try", options.lastTry,
                     "Uses the last try that is left for the PIN without asking");
}

void addCertificateOptions(CLI::App& command, CertificateChoice& choice) {
    const auto take = [&choice](const std::string& text) {
        const std::string id = "id:";
        const std::string index = "index:";
        if (text.starts_with(id)) {
            choice.id = decode(text.substr(id.size()), ByteFormat::kHex);
            if (!choice.id) {
                throw CLI::ValidationError("--cert", "what follows id: must be hexadecimal");
            }
        } else if (text.starts_with(index)) {
            std::string number = text.substr(index.size());
            const std::string problem = isIndex()(number);
            if (!problem.empty()) {
                throw CLI::ValidationError("--cert", problem);
            }
            choice.index = static_cast<LONG>(std::stol(number));
        } else {
            choice.name = text;
        }
    };
    CLI::Option* name = command.add_option_function<std::string>(
        "--cert", take, "Selects the certificate by its name, its common name, id:HEX or index:N");
    command.add_option("--cert-index", choice.index, "Selects the certificate by its index")
        ->type_name("N")
        ->check(isIndex())
        ->excludes(name);
}

void addAlgorithmOption(CLI::App& command, std::optional<SignatureAlgorithm>& algorithm) {
    command
        .add_option_function<std::string>(
            "--algorithm",
            [&algorithm](const std::string& name) {
                algorithm = algorithmNamed(name);
                if (!algorithm) {
                    throw CLI::ValidationError("--algorithm",
                                               "the algorithm must be one of " + algorithmNames());
                }
            },
            "The algorithm of the signature: " + algorithmNames())
        ->type_name("ALGORITHM")
        ->default_str(nameOf(kLibraryAlgorithm));
}

void addInputOption(CLI::App& command, std::string& path) {
    command.add_option("-i,--input", path, "The file to read; - is standard input")
        ->type_name("FILE")
        ->capture_default_str();
}

void addSignatureOption(CLI::App& command, std::string& path) {
    command.add_option("--signature", path, "The file that contains the signature")
        ->type_name("FILE")
        ->required();
}

void addFormatOption(CLI::App& command, ByteFormat& format, const std::string& help) {
    command
        .add_option_function<std::string>(
            "--format", [&format](const std::string& name) { format = parseFormat(name); },
            help + ": raw, hex, base64 or pem")
        ->type_name("FORMAT");
}

void addMethodOption(CLI::App& command, HashKind& method) {
    command
        .add_option_function<std::string>(
            "--method",
            [&method](const std::string& name) {
                const std::optional<HashKind> kind = hashNamed(name);
                if (!kind) {
                    throw CLI::ValidationError(
                        "--method", "the method must be MD5, SHA1, SHA256, SHA384 or SHA512");
                }
                method = *kind;
            },
            "The digest method: MD5, SHA1, SHA256, SHA384 or SHA512")
        ->type_name("METHOD")
        ->default_str(nameOf(method));
}

void addByteOutput(CLI::App& command, ByteOutput& output, bool* isText) {
    CLI::Option* json = command.get_option("--json");
    command.add_option("-o,--output", output.path, "The file to write; - is standard output")
        ->type_name("FILE")
        ->capture_default_str()
        ->excludes(json);
    const auto take = [&output, isText](const std::string& name) {
        if (isText && name == "text") {
            *isText = true;
        } else {
            output.format = parseFormat(name);
        }
    };
    command
        .add_option_function<std::string>("--format", take,
                                          isText ? "The format of the bytes: raw, hex, base64 or "
                                                   "pem; or text, for people"
                                                 : "The format of the bytes: raw, hex, base64 or "
                                                   "pem")
        ->type_name(isText ? "CERT-FORMAT" : "FORMAT")
        ->excludes(json);
}

void addFileName(CLI::App& command, std::string& name, unsigned last) {
    command
        .add_option("NUMBER", name, "The file's name, a number from 1 to " + std::to_string(last))
        ->required()
        ->type_name("")
        ->check(isDecimal(1, last, "the name of a file"));
}

OpenOutput openByteOutput(const ByteOutput& output, const ReportOptions& options, bool isText) {
    const bool isRaw = output.format == ByteFormat::kRaw && !options.json && !isText;
    if (isRaw && output.path == kStandardStream && options.console->isOutputTerminal()) {
        throw commandFailure(kExitUsage, "write raw bytes to a terminal", "they are not text",
                             "give -o FILE, or --format hex, base64 or pem");
    }
    return openOutput(output);
}

namespace {

/// Runs a body and writes its failure.
int runBody(Console& console, const std::string& name, const ReportOptions& options,
            const std::function<int()>& body) {
    try {
        return body();
    } catch (const Interrupted&) {
        // The caller knows.
    } catch (const Failure& failure) {
        return writeFailure(console, name, options, failure);
    } catch (const std::bad_alloc&) {
        return writeFailure(console, name, options,
                            commandFailure(kExitFailure, "finish " + name, "out of memory",
                                           "free some memory, or use less data"));
    } catch (const std::exception& error) {
        return writeFailure(console, name, options,
                            commandFailure(kExitFailure, "finish " + name,
                                           std::string("unexpected error: ") + error.what(),
                                           "run it again with --verbose"));
    }
    return kExitOk;
}

}  // namespace

int runCommand(const std::string& name, ReportOptions& options,
               const std::function<Report()>& body) {
    return runStreaming(name, options, [&](Console& console) {
        const Report report = body();
        if (isInterrupted()) {
            console.writeFailure("zrkey: interrupted: " + name +
                                 " is complete, but its result is not written\n");
        } else {
            writeReport(console, name, options, report);
        }
        return report.exitCode;
    });
}

int runStreaming(const std::string& name, ReportOptions& options,
                 const std::function<int(Console&)>& body) {
    Console console(options.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    options.console = &console;
    if (options.quiet || options.json) {
        console.hideProgress();
    }
    if (options.quiet) {
        console.hideNotes();
    }
    const int exitCode = runBody(console, name, options, [&] { return body(console); });
    return isInterrupted() ? interruptionExitCode() : exitCode;
}

void setAction(CLI::App& command, Action& action, const Action& run) {
    command.callback([&action, run] { action = run; });
}

}  // namespace zr::host
