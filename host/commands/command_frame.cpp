// What the compiled commands share: their options, and the frame that runs one and reports it.
#include "command_frame.h"

#include <exception>
#include <limits>
#include <new>

#include "byte_io.h"
#include "console.h"
#include "library.h"

namespace zr::host {
namespace {

/// Decimal digits alone: the parser by itself takes octal and hexadecimal numbers too.
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
                   : what + " is a number from " + std::to_string(first) + " to " +
                         std::to_string(last);
    };
    return {check, ""};
}

CLI::Validator isIndex() {
    return isDecimal(0, std::numeric_limits<LONG>::max(), "an index");
}

ByteFormat parseFormat(const std::string& name) {
    constexpr std::pair<std::string_view, ByteFormat> formats[] = {{"raw", ByteFormat::kRaw},
                                                                   {"hex", ByteFormat::kHex},
                                                                   {"base64", ByteFormat::kBase64},
                                                                   {"pem", ByteFormat::kPem}};
    for (const auto& [text, format] : formats) {
        if (name == text) {
            return format;
        }
    }
    throw CLI::ValidationError("--format", "the formats are raw, hex, base64 and pem");
}

void writeResult(Console& console, const std::string& name, const ReportOptions& options,
                 const Result& result) {
    bool isWritten = false;
    if (options.json) {
        Record record = {{"schema", std::uint64_t{kJsonSchema}},
                         {"command", name},
                         {"result", codeFields(S_OK)}};
        record.insert(record.end(), result.fields.begin(), result.fields.end());
        isWritten = console.writeOutput(toJson(record));
    } else if (result.path == kStandardStream) {
        isWritten = console.writeOutput(result.output);
    } else {
        isWritten = writeFile(result.path, result.output);
    }
    if (!isWritten) {
        const std::string place =
            result.path == kStandardStream ? "standard output" : inQuotes(result.path);
        throw failed(kExitFailure, "write to " + place, "the system refused it",
                     "the token's part is done; look for space and rights");
    }
}

int writeFailure(Console& console, const std::string& name, const ReportOptions& options,
                 const Failure& failure) {
    if (options.json) {
        Record record = {{"schema", std::uint64_t{kJsonSchema}}, {"command", name}};
        if (failure.answer) {
            record.push_back({"result", codeFields(*failure.answer)});
        }
        record.push_back({"failure", Record{{"exit", static_cast<std::uint64_t>(failure.exitCode)},
                                            {"asked", failure.asked},
                                            {"cause", failure.cause()},
                                            {"advice", failure.advice}}});
        console.writeOutput(toJson(record));
    }
    console.writeError(failure.line());
    return failure.exitCode;
}

}  // namespace

void addReportOptions(CLI::App& command, ReportOptions& options) {
    command.add_flag("--json", options.json, "Gives the result as one JSON object");
    command.add_flag("-v,--verbose", options.verbose,
                     "Shows the library's diagnostics on standard error");
}

void addModuleOptions(CLI::App& command, ModuleOptions& options) {
    command
        .add_option("--module", options.path,
                    "The PKCS #11 module; without it the variable ZRKEY_MODULE names it")
        ->type_name("PATH");
    command
        .add_option("--workdir", options.workFolder,
                    "The folder of config.xml; without it the current one")
        ->type_name("DIR");
}

void addTokenOptions(CLI::App& command, TokenOptions& options) {
    addReportOptions(command, options.report);
    addModuleOptions(command, options.module);
    CLI::Option* index =
        command.add_option("--index", options.choice.index, "Chooses the token by its index")
            ->type_name("N")
            ->check(isIndex());
    CLI::Option* label =
        command.add_option("--label", options.choice.label, "Chooses the token by its label");
    CLI::Option* serial = command.add_option("--serial", options.choice.serial,
                                             "Chooses the token by its serial number");
    index->excludes(label)->excludes(serial);
    label->excludes(serial);
}

CLI::Option* addPinSource(CLI::App& command, const std::string& name,
                          std::optional<PinSource>& source, const std::string& help) {
    // The value is not repeated in the message: it may be a PIN.
    return command
        .add_option_function<std::string>(
            name,
            [name, &source](const std::string& text) {
                source = parsePinSource(text);
                if (!source) {
                    throw CLI::ValidationError(
                        name, "a PIN is taken from prompt, env:NAME, file:PATH, fd:N or -");
                }
            },
            help + ": prompt, env:NAME, file:PATH, fd:N or - for standard input")
        ->type_name("SOURCE");
}

void addPinOptions(CLI::App& command, PinOptions& options) {
    addPinSource(command, "--pin", options.source, "Where the PIN comes from");
    command.add_flag("--so", options.securityOfficer, "The PIN is the security officer's");
}

void addCertificateOptions(CLI::App& command, CertificateChoice& choice) {
    CLI::Option* name =
        command.add_option("--cert", choice.name, "Chooses the certificate by its name");
    command.add_option("--cert-index", choice.index, "Chooses the certificate by its index")
        ->type_name("N")
        ->check(isIndex())
        ->excludes(name);
}

void addInputOption(CLI::App& command, std::string& path) {
    command.add_option("-i,--input", path, "The file to read; - is standard input")
        ->type_name("FILE")
        ->capture_default_str();
}

void addByteOutput(CLI::App& command, ByteOutput& output) {
    CLI::Option* json = command.get_option("--json");
    command.add_option("-o,--output", output.path, "The file to write; - is standard output")
        ->type_name("FILE")
        ->capture_default_str()
        ->excludes(json);
    command
        .add_option_function<std::string>(
            "--format", [&output](const std::string& name) { output.format = parseFormat(name); },
            "raw, hex, base64 or pem")
        ->type_name("FORMAT")
        ->excludes(json);
}

void addFileName(CLI::App& command, std::string& name, unsigned last) {
    command
        .add_option("NUMBER", name, "The file's name, a number from 1 to " + std::to_string(last))
        ->required()
        ->type_name("")
        ->check(isDecimal(1, last, "the name of a file"));
}

int runCommand(const std::string& name, const ReportOptions& options,
               const std::function<Result()>& body) {
    Console console(options.verbose ? Diagnostics::kOnStandardError : Diagnostics::kDropped);
    try {
        writeResult(console, name, options, body());
    } catch (const Failure& failure) {
        return writeFailure(console, name, options, failure);
    } catch (const std::bad_alloc&) {
        return writeFailure(console, name, options,
                            failed(kExitFailure, "finish " + name, "there is not enough memory",
                                   "free some, or ask for less"));
    } catch (const std::exception& error) {
        return writeFailure(console, name, options,
                            failed(kExitFailure, "finish " + name, error.what(),
                                   "nothing is known of how to mend it"));
    }
    return kExitOk;
}

}  // namespace zr::host
