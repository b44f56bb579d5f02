// Where a PIN comes from: never the command line itself.
#include "pin_source.h"

#include <algorithm>
#include <charconv>

#include "failure.h"
#include "system.h"
#include "terminal.h"
#include "text.h"

namespace zr::host {
namespace {

enum class Line { kRead, kTooLong, kFailed };

Failure noPin(const std::string& reason, const std::string& advice) {
    return failed(kExitUsage, "get a PIN", reason, advice);
}

/// The three bytes that editors of Windows begin a file of UTF-8 with.
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

enum class Mark { kKept, kDropped };

/// Of a line that is too long no more is read than shows it: a device's may have no end.
Line readLine(int descriptor, Mark mark, Secret& line) {
    Line result = Line::kRead;
    char byte = 0;
    std::ptrdiff_t count = 0;
    while (result == Line::kRead && (count = readSome(descriptor, &byte, 1)) == 1 && byte != '\n') {
        if (!line.append(byte)) {
            result = Line::kTooLong;
        } else if (mark == Mark::kDropped && line.view() == kByteOrderMark) {
            line = Secret();
            mark = Mark::kKept;
        }
    }
    wipe(&byte, 1);
    return count < 0 ? Line::kFailed : result;
}

Line readEnvironment(const std::string& name, Secret& pin) {
    std::optional<std::string> value = environmentVariable(name);
    if (!value) {
        return Line::kFailed;
    }
    const bool fits =
        std::all_of(value->begin(), value->end(), [&](char byte) { return pin.append(byte); });
    wipe(value->data(), value->size());
    return fits ? Line::kRead : Line::kTooLong;
}

Line readFileLine(const std::string& path, Secret& pin) {
    const int descriptor = openForReading(path);
    if (descriptor < 0) {
        return Line::kFailed;
    }
    const Line result = readLine(descriptor, Mark::kDropped, pin);
    closeDescriptor(descriptor);
    return result;
}

Line readPrompt(const std::string& prompt, Secret& pin) {
    switch (askSecret(prompt, pin)) {
        case Asked::kAnswered:
            return Line::kRead;
        case Asked::kTooLong:
            return Line::kTooLong;
        case Asked::kCancelled:
            throw noPin("the prompt was left", "answer it, or give --pin");
        case Asked::kNoTerminal:
            break;
    }
    throw noTerminal();
}

Line readSource(const PinSource& source, const std::string& prompt, Secret& pin) {
    switch (source.kind) {
        case PinSource::Kind::kEnvironment:
            return readEnvironment(source.name, pin);
        case PinSource::Kind::kFile:
            return readFileLine(source.name, pin);
        case PinSource::Kind::kDescriptor:
            return !source.isOpen ? Line::kFailed : readLine(source.descriptor, Mark::kKept, pin);
        case PinSource::Kind::kPrompt:
            break;
    }
    return readPrompt(prompt, pin);
}

std::string describe(const PinSource& source) {
    switch (source.kind) {
        case PinSource::Kind::kEnvironment:
            return "the variable " + source.name;
        case PinSource::Kind::kFile:
            return "the file " + inQuotes(source.name);
        case PinSource::Kind::kDescriptor:
            return source.descriptor == kStandardInput
                       ? "standard input"
                       : "descriptor " + std::to_string(source.descriptor);
        case PinSource::Kind::kPrompt:
            break;
    }
    return "the terminal";
}

/// Without the carriage return that a line written on Windows ends with.
Secret withoutReturn(Secret line) {
    std::string_view bytes = line.view();
    if (!bytes.ends_with('\r')) {
        return line;
    }
    bytes.remove_suffix(1);
    Secret shorter;
    for (const char byte : bytes) {
        shorter.append(byte);
    }
    return shorter;
}

/// Whether the library's conversions leave it as it is.
bool isPlainUtf8(const Secret& pin) {
    return isUtf8(pin.view()) && pin.view().find('\0') == std::string_view::npos;
}

}  // namespace

Failure noTerminal() {
    return noPin("there is no terminal to ask on",
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

Secret readPin(const PinSource& source, const std::string& prompt) {
    Secret line;
    const Line result = readSource(source, prompt, line);
    const std::string place = describe(source);
    if (result == Line::kFailed) {
        throw noPin(place + " cannot be read", "look whether it is there");
    }
    if (result == Line::kTooLong) {
        throw noPin(place + " gives more than 127 bytes", "give the PIN alone on its line");
    }
    Secret pin = withoutReturn(std::move(line));
    if (pin.view().empty()) {
        throw noPin(place + " gives an empty one", "no try was used up; give the PIN");
    }
    if (!isPlainUtf8(pin)) {
        throw noPin(place + " gives no UTF-8 text", "give the PIN in UTF-8");
    }
    return pin;
}

}  // namespace zr::host
