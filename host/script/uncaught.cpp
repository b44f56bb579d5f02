// The report of a script that ended with an error.
#include "host/script/uncaught.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include "host/output/printable.h"
#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/syntax.h"

namespace zr::host {
namespace {

constexpr std::string_view kIndent = "    ";

struct ErrorReport {
    const std::string& file;
    std::string place;
    std::string line;
    std::vector<std::string> below;
};

/// A frame of the script in the engine's list of callers.
struct Frame {
    std::string_view function;
    std::string_view place;
};

bool removeSuffix(std::string_view& text, std::string_view suffix) {
    const bool isThere = text.ends_with(suffix);
    if (isThere) {
        text.remove_suffix(suffix.size());
    }
    return isThere;
}

/// Reads a line of the engine's list, "at NAME (FILE:LINE)" and marks.
/// @return false for a function that is not the script's.
bool readFrame(std::string_view line, Frame& frame) {
    constexpr std::string_view kBegin = "at ";
    constexpr std::string_view kMarks[] = {" strict", " tailcall", " construct", " directeval",
                                           " preventsyield"};
    while (std::any_of(std::begin(kMarks), std::end(kMarks),
                       [&](std::string_view mark) { return removeSuffix(line, mark); })) {
    }
    const std::size_t place = line.find(" (");
    // Those of the engine have another mark behind the parenthesis.
    if (!line.starts_with(kBegin) || place == std::string_view::npos || !removeSuffix(line, ")")) {
        return false;
    }
    frame = {line.substr(kBegin.size(), place - kBegin.size()), line.substr(place + 2)};
    return true;
}

std::vector<std::string> describeFrames(std::string_view stack, const std::string& place) {
    std::vector<std::string> lines;
    bool isPlaceOnly = true;
    while (!stack.empty()) {
        const std::size_t end = std::min(stack.find('\n'), stack.size());
        std::string_view line = stack.substr(0, end);
        stack.remove_prefix(std::min(end + 1, stack.size()));
        Frame frame;
        if (!line.starts_with(kIndent)) {
            continue;
        }
        line.remove_prefix(kIndent.size());
        if (!readFrame(line, frame)) {
            continue;
        }
        isPlaceOnly = lines.empty() && frame.place == place;
        std::string text = "at ";
        if (frame.function == "global" || frame.function == "[anon]") {
            text.append(frame.place);
        } else {
            text.append(frame.function).append(" (").append(frame.place).append(")");
        }
        lines.push_back(std::move(text));
    }
    // Nothing that the first line does not say.
    return isPlaceOnly ? std::vector<std::string>() : lines;
}

/// Describes the thrown value on top of the stack. Its own code may run and throw again.
duk_ret_t describeError(duk_context* script, void* data) {
    ErrorReport& report = *static_cast<ErrorReport*>(data);
    std::string place = report.file;
    std::string message;
    if (duk_is_error(script, -1)) {
        duk_get_prop_string(script, -1, "fileName");
        if (isText(script, -1)) {
            place = viewOf(utf8At(script, -1));
        }
        duk_get_prop_string(script, -2, "lineNumber");
        if (duk_get_uint(script, -1) > 0) {
            place.append(":").append(std::to_string(duk_get_uint(script, -1)));
        }
        duk_pop_2(script);
    } else {
        message = "uncaught ";
    }
    if (contextOf(script).use.wasStopped()) {
        // Do not convert the thrown value to text: that may call the script again.
        report.line = timeoutReport(place);
        return 0;
    }
    duk_dup_top(script);
    message += viewOf(utf8At(script, -1));
    duk_pop(script);
    // "Error: " is left out, names of other kinds are kept.
    if (message.starts_with("Error: ")) {
        message.erase(0, 7);
    }
    report.place = place;
    report.line = place.append(": ").append(message);
    return 0;
}

/// Adds what is shown below the line. The script may have replaced the list of callers by a
/// function.
duk_ret_t describeMore(duk_context* script, void* data) {
    ErrorReport& report = *static_cast<ErrorReport*>(data);
    if (!duk_is_error(script, -1) || contextOf(script).use.wasStopped()) {
        return 0;
    }
    if (const std::string explanation = explanationAt(script, -1); !explanation.empty()) {
        report.below.push_back(explanation);
    }
    duk_get_prop_string(script, -1, "stack");
    if (isText(script, -1)) {
        const ErasedBytes stack = utf8At(script, -1);
        std::vector<std::string> frames = describeFrames(viewOf(stack), report.place);
        report.below.insert(report.below.end(), frames.begin(), frames.end());
    }
    return 0;
}

}  // namespace

std::string timeoutReport(const std::string& place) {
    return place + ": RangeError: " + kTimeoutMessage;
}

std::string describeFailure(duk_context* script, const std::string& file,
                            const std::string& timeout) {
    ErrorReport report{file, {}, {}, {}};
    duk_dup_top(script);
    if (duk_safe_call(script, describeError, &report, 1, 1) != DUK_EXEC_SUCCESS) {
        report.line = contextOf(script).use.wasStopped()
                          ? timeout
                          : file + ": an error that cannot be described";
    } else {
        duk_dup(script, -2);
        duk_safe_call(script, describeMore, &report, 1, 1);
        duk_pop(script);
    }
    duk_pop_2(script);
    std::string text = printable(report.line);
    for (const std::string& line : report.below) {
        text.append("\n").append(kIndent).append(printable(line));
    }
    return text;
}

}  // namespace zr::host
