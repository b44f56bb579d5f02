// Functions that every script has: print, printError, exit, sleep, readPin, and the object
// environment.
#include "host/script/globals.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/heap.h"
#include "host/system/interruption.h"
#include "host/system/system.h"
#include "host/token/pin_source.h"

namespace zr::host {
namespace {

/// How many bytes print collects before it writes: its arguments together can be larger than the
/// script's memory.
constexpr std::size_t kPrintedAtOnce = 1 << 16;
constexpr int kLargestExitCode = 255;
constexpr double kLongestSleep = 1e6;

/// Where a line is printed.
struct Stream {
    const char* function;
    const char* name;
    std::error_code (Console::*write)(std::string_view);
};

void writePrinted(duk_context* script, const Stream& stream, const ErasedBytes& text) {
    stopInTime(script);
    if (const std::error_code error = (contextOf(script).console.*stream.write)(viewOf(text))) {
        throwError(script, DUK_ERR_ERROR,
                   std::string(stream.function)
                       .append(" failed: cannot write to ")
                       .append(stream.name)
                       .append(": ")
                       .append(error.message()));
    }
}

/// Writes the arguments as texts, separated by blanks, as a line.
duk_ret_t printLine(duk_context* script, const Stream& stream) {
    const duk_idx_t count = duk_get_top(script);
    ErasedBytes text;
    for (duk_idx_t i = 0; i < count; ++i) {
        if (i > 0) {
            text.push_back(' ');
        }
        const ErasedBytes value = utf8At(script, i);
        text.insert(text.end(), value.begin(), value.end());
        if (text.size() >= kPrintedAtOnce) {
            writePrinted(script, stream, text);
            text = {};
        }
    }
    text.push_back('\n');
    writePrinted(script, stream, text);
    return 0;
}

duk_ret_t print(duk_context* script) {
    return printLine(script, {"print", "standard output", &Console::writeOutput});
}

duk_ret_t printError(duk_context* script) {
    return printLine(script, {"printError", "standard error", &Console::writeError});
}

/// exit(code): ends the script by an error that the engine throws again when it is caught.
duk_ret_t exitScript(duk_context* script) {
    const double code = duk_is_undefined(script, 0) ? 0 : duk_get_number_default(script, 0, -1);
    if (!(code >= 0 && code <= kLargestExitCode && code == std::floor(code))) {
        return throwError(script, DUK_ERR_RANGE_ERROR,
                          "exit: the code is not a whole number from 0 to 255");
    }
    ScriptExit& exit = contextOf(script).exit;
    if (!exit.code) {
        exit.code = static_cast<int>(code);
    }
    if (!exit.isOver) {
        exit.isStopping = true;
        zrAskSoon(script);
    }
    return throwError(script, DUK_ERR_ERROR, "exit");
}

/// sleep(seconds): until the script's time is up, or an interruption, at the latest.
duk_ret_t sleep(duk_context* script) {
    using Clock = ScriptUse::TimePoint::clock;
    const double seconds = duk_get_number_default(script, 0, -1);
    if (!(seconds >= 0 && seconds <= kLongestSleep)) {
        return throwError(script, DUK_ERR_RANGE_ERROR,
                          "sleep: the time is not a number from 0 to 1000000");
    }
    const ScriptUse::TimePoint awake = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                                          std::chrono::duration<double>(seconds));
    waitUninterrupted(std::min(awake, contextOf(script).use.end().value_or(awake)) - Clock::now());
    stopInTime(script);
    return 0;
}

/// readPin(prompt): the PIN of the command line at the first call, then what the user types.
duk_ret_t readPinForScript(duk_context* script) {
    const std::string prompt =
        duk_is_undefined(script, 0) ? "PIN: " : printable(viewOf(utf8At(script, 0)));
    stopInTime(script);
    if (!contextOf(script).noCoreDumps) {
        contextOf(script).noCoreDumps.emplace();
    }
    contextOf(script).hasGivenPin = true;
    if (std::optional<Pin> given = std::exchange(contextOf(script).pin, std::nullopt)) {
        pushText(script, given->view());
        return 1;
    }
    std::string failure;
    try {
        const Pin pin = readPin(PinSource(), prompt);
        pushText(script, pin.view());
    } catch (const Failure& caught) {
        failure = caught.cause;
    } catch (const Interrupted&) {
        failure = "interrupted";
    }
    stopInTime(script);
    return failure.empty() ? 1 : throwError(script, DUK_ERR_ERROR, "readPin failed: " + failure);
}

/// Makes the value on top of the stack the global environment.
void defineEnvironment(duk_context* script) {
    duk_push_global_object(script);
    duk_push_string(script, "environment");
    duk_dup(script, -3);
    duk_def_prop(script, -3,
                 DUK_DEFPROP_HAVE_VALUE | DUK_DEFPROP_SET_WRITABLE | DUK_DEFPROP_SET_CONFIGURABLE |
                     DUK_DEFPROP_FORCE);
    duk_pop(script);
}

/// The getter of environment: replaces itself by an object with the variables as they are now.
duk_ret_t readEnvironment(duk_context* script) {
    duk_push_bare_object(script);
    forEachVariable([script](std::string_view name, std::string_view value) {
        pushText(script, name);
        pushText(script, value);
        duk_put_prop(script, -3);
    });
    defineEnvironment(script);
    return 1;
}

/// The setter of environment: replaces the property as an assignment to any other does.
duk_ret_t replaceEnvironment(duk_context* script) {
    defineEnvironment(script);
    return 0;
}

}  // namespace

void addGlobals(duk_context* script) {
    const duk_function_list_entry functions[] = {
        {"print", print, DUK_VARARGS},    {"printError", printError, DUK_VARARGS},
        {"exit", exitScript, 1},          {"sleep", sleep, 1},
        {"readPin", readPinForScript, 1}, {nullptr, nullptr, 0}};
    duk_push_global_object(script);
    duk_put_function_list(script, -1, functions);
    duk_push_string(script, "environment");
    duk_push_c_function(script, readEnvironment, 0);
    duk_push_c_function(script, replaceEnvironment, 1);
    duk_def_prop(script, -4,
                 DUK_DEFPROP_HAVE_GETTER | DUK_DEFPROP_HAVE_SETTER | DUK_DEFPROP_SET_CONFIGURABLE);
    duk_pop(script);
}

}  // namespace zr::host
