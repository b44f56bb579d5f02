// Where a PIN comes from: never the command line itself.
#include "host/token/pin_source.h"

#include <utf8cpp/utf8.h>

#include <algorithm>
#include <charconv>
#include <system_error>
#include <utility>

#include "host/output/printable.h"
#include "host/system/interruption.h"
#include "host/system/system.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

/// The three bytes that editors on Windows put at the start of a UTF-8 file.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

enum class ReadStatus { kRead, kTooLong, kNotSet, kFailed };

/// Reads the next line of a descriptor. Stops at the first byte that does not fit: a device may
/// never send the end of the line.
ReadStatus readLine(int descriptor, bool skipByteOrderMark, Pin& line, std::error_code& error) {
    char byte = 0;
    ReadStatus status = ReadStatus::kRead;
    while (status == ReadStatus::kRead && readSome(descriptor, &byte, 1, error) == 1 &&
           byte != '\n') {
        if (!line.append(byte)) {
            status = ReadStatus::kTooLong;
        } else if (skipByteOrderMark && line.view() == kByteOrderMark) {
            line = Pin();
            skipByteOrderMark = false;
        }
    }
    secureErase(&byte, 1);
    return error ? ReadStatus::kFailed : status;
}

ReadStatus readVariable(const std::string& name, Pin& pin) {
    std::optional<std::string> found = environmentVariable(name);
    if (!found) {
        return ReadStatus::kNotSet;
    }
    std::string& value = *found;
    const SecretMemory protection(value.data(), value.size());
    const bool fits =
        std::all_of(value.begin(), value.end(), [&](char byte) { return pin.append(byte); });
    secureErase(value.data(), value.size());
    return fits ? ReadStatus::kRead : ReadStatus::kTooLong;
}

ReadStatus readFileLine(const std::string& path, Pin& pin, std::error_code& error) {
    const int descriptor = openForReading(path, error);
    if (error) {
        return ReadStatus::kFailed;
    }
    const ReadStatus status = readLine(descriptor, true, pin, error);
    closeDescriptor(descriptor);
    return status;
}

ReadStatus readDescriptor(const PinSource& source, Pin& pin, std::error_code& error) {
    if (!source.isOpen) {
        error = std::make_error_code(std::errc::bad_file_descriptor);
        return ReadStatus::kFailed;
    }
    return readLine(source.descriptor, false, pin, error);
}

ReadStatus readPrompt(const std::string& prompt, Pin& pin) {
    switch (promptHidden(prompt, [&](char byte) { return pin.append(byte); })) {
        case PromptResult::kAnswered:
            return ReadStatus::kRead;
        case PromptResult::kTooLong:
            return ReadStatus::kTooLong;
        case PromptResult::kCancelled:
            stopIfInterrupted();
            throw commandFailure(kExitUsage, "ask for the PIN", "the prompt was cancelled",
                                 "enter the PIN, or give another source");
        case PromptResult::kNoTerminal:
            break;
    }
    throw noTerminal();
}

ReadStatus readSource(const PinSource& source, const std::string& prompt, Pin& pin,
                      std::error_code& error) {
    switch (source.kind) {
        case PinSource::Kind::kEnvironment:
            return readVariable(source.name, pin);
        case PinSource::Kind::kFile:
            return readFileLine(source.name, pin, error);
        case PinSource::Kind::kDescriptor:
            return readDescriptor(source, pin, error);
        case PinSource::Kind::kPrompt:
            break;
    }
    return readPrompt(prompt, pin);
}

/// "read the PIN from ..."
std::string describeReading(const PinSource& source) {
    const std::string from = "read the PIN from ";
    switch (source.kind) {
        case PinSource::Kind::kEnvironment:
            return from + "the variable " + source.name;
        case PinSource::Kind::kFile:
            return from + inQuotes(source.name);
        case PinSource::Kind::kDescriptor:
            return from + (source.descriptor == kStandardInput
                               ? "standard input"
                               : "descriptor " + std::to_string(source.descriptor));
        case PinSource::Kind::kPrompt:
            break;
    }
    return from + "the terminal";
}

/// Drops the carriage return at the end of a line written on Windows.
Pin withoutReturn(Pin line) {
    std::string_view bytes = line.view();
    if (!bytes.ends_with('\r')) {
        return line;
    }
    bytes.remove_suffix(1);
    Pin shorter;
    for (const char byte : bytes) {
        shorter.append(byte);
    }
    return shorter;
}

/// Whether the library's conversions keep every byte of the PIN.
bool isConvertible(const Pin& pin) {
    return utf8::is_valid(pin.view()) && pin.view().find('\0') == std::string_view::npos;
}

}  // namespace

Pin promptNewPin(const std::string& name, const std::string& lengths, const std::string& asked) {
    const PinSource terminal;
    Pin pin = readPin(terminal, name + lengths + ": ");
    if (readPin(terminal, name + " again: ").view() != pin.view()) {
        throw commandFailure(kExitUsage, asked, "the two new PINs differ",
                             "enter the same PIN twice");
    }
    return pin;
}

Failure noTerminal() {
    return commandFailure(kExitUsage, "ask for the PIN", "there is no terminal",
                          "give env:NAME, file:PATH, fd:N or - as its source");
}

std::optional<PinSource> parsePinSource(std::string_view text) {
    const auto rest = [&](std::string_view prefix) {
        return std::string(text.starts_with(prefix) ? text.substr(prefix.size()) : "");
    };
    if (text == "prompt") {
        return PinSource{};
    }
    if (text == "-") {
        return PinSource{PinSource::Kind::kDescriptor, {}, kStandardInput};
    }
    if (std::string name = rest("env:"); !name.empty() && name.find('=') == std::string::npos) {
        return PinSource{PinSource::Kind::kEnvironment, name, 0};
    }
    if (std::string path = rest("file:"); !path.empty()) {
        return PinSource{PinSource::Kind::kFile, path, 0};
    }
    if (const std::string digits = rest("fd:"); !digits.empty()) {
        int number = -1;
        const char* end = digits.data() + digits.size();
        const auto [parsed, error] = std::from_chars(digits.data(), end, number);
        if (error == std::errc() && parsed == end && number >= 0) {
            return PinSource{PinSource::Kind::kDescriptor, {}, number, isDescriptorOpen(number)};
        }
    }
    return std::nullopt;
}

Pin readPin(const PinSource& source, const std::string& prompt) {
    Pin line;
    std::error_code error;
    const ReadStatus status = readSource(source, prompt, line, error);
    const std::string asked = describeReading(source);
    if (status == ReadStatus::kFailed) {
        throw systemFailure(kExitUsage, asked, error, "check that it exists and can be read");
    }
    if (status == ReadStatus::kNotSet) {
        throw commandFailure(kExitUsage, asked, "it is not set", "set it, or give another source");
    }
    if (status == ReadStatus::kTooLong) {
        throw commandFailure(kExitUsage, asked, "the line is longer than 127 bytes",
                             "check that it contains only the PIN");
    }
    Pin pin = withoutReturn(std::move(line));
    if (pin.view().empty()) {
        throw commandFailure(kExitUsage, asked, "the PIN is empty",
                             "give the PIN; no retry was used");
    }
    if (!isConvertible(pin)) {
        throw commandFailure(kExitUsage, asked, "the PIN is not valid UTF-8 text",
                             "give the PIN in UTF-8; no retry was used");
    }
    return pin;
}

}  // namespace zr::host
