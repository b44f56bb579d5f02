// Runs one script on the script engine, with the library's objects and a few globals.
//
// The engine reports errors as C++ exceptions of its own type. They unwind the command's frames; no
// code here may catch everything.
#include "host/script/engine.h"

#include <duktape.h>

#include <cstdlib>
#include <future>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <thread>

#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/script/context.h"
#include "host/script/heap.h"
#include "host/script/members.h"
#include "host/script/script_text.h"
#include "host/script/watchdog.h"

namespace zr::host {
namespace {

/// How many bytes print collects before it writes: its arguments together can be larger than the
/// script's memory.
constexpr std::size_t kPrintedAtOnce = 1 << 16;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Script {
    const std::string& file;
    std::string_view source;
    const std::vector<std::string>& arguments;
};

void pushText(duk_context* script, std::string_view utf8) {
    const ErasedVector<OLECHAR> units = toUnits(utf8);
    const ErasedBytes text = toScriptText(units.data(), units.size());
    duk_push_lstring(script, text.data(), text.size());
}

ErasedBytes utf8At(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_to_lstring(script, index, &size);
    return toUtf8({text, size});
}

void writePrinted(duk_context* script, const ErasedBytes& text) {
    stopInTime(script);
    if (const std::error_code error = contextOf(script).console.writeOutput(viewOf(text))) {
        throwError(script, DUK_ERR_ERROR,
                   "print failed: cannot write to standard output: " + error.message());
    }
}

/// print(...): writes the arguments as texts, separated by blanks, as a line of standard output.
duk_ret_t print(duk_context* script) {
    const duk_idx_t count = duk_get_top(script);
    ErasedBytes text;
    for (duk_idx_t i = 0; i < count; ++i) {
        if (i > 0) {
            text.push_back(' ');
        }
        const ErasedBytes value = utf8At(script, i);
        text.insert(text.end(), value.begin(), value.end());
        if (text.size() >= kPrintedAtOnce) {
            writePrinted(script, text);
            text = {};
        }
    }
    text.push_back('\n');
    writePrinted(script, text);
    return 0;
}

duk_ret_t runProtected(duk_context* heap, void* data) {
    const Script& script = *static_cast<const Script*>(data);
    addObjectSupport(heap);
    duk_push_c_function(heap, print, DUK_VARARGS);
    duk_put_global_string(heap, "print");
    const duk_idx_t list = duk_push_array(heap);
    for (std::size_t i = 0; i < script.arguments.size(); ++i) {
        pushText(heap, script.arguments[i]);
        duk_put_prop_index(heap, list, static_cast<duk_uarridx_t>(i));
    }
    duk_put_global_string(heap, "arguments");

    pushText(heap, script.file);
    duk_compile_lstring_filename(heap, DUK_COMPILE_SHEBANG, script.source.data(),
                                 script.source.size());
    duk_call(heap, 0);
    return 0;
}

/// The report of a script that is out of time.
std::string timeoutReport(const std::string& place) {
    return place + ": RangeError: " + kTimeoutMessage;
}

struct ErrorReport {
    const std::string& file;
    std::string text;
};

/// Describes the thrown value on top of the stack. Its own code may run and throw again.
duk_ret_t describeError(duk_context* script, void* data) {
    ErrorReport& report = *static_cast<ErrorReport*>(data);
    std::string place = report.file;
    std::string message;
    if (duk_is_error(script, -1)) {
        duk_get_prop_string(script, -1, "fileName");
        if (duk_is_string(script, -1)) {
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
        report.text = timeoutReport(place);
        return 0;
    }
    message += viewOf(utf8At(script, -1));
    // "Error: " is left out, names of other kinds are kept.
    if (message.starts_with("Error: ")) {
        message.erase(0, 7);
    }
    report.text = place.append(": ").append(message);
    return 0;
}

/// Describes the thrown value on top of the stack and pops it.
/// @param timeout  the line when the time is up and the place is unknown.
std::string describeFailure(duk_context* script, const std::string& file,
                            const std::string& timeout) {
    ErrorReport report{file, {}};
    if (duk_safe_call(script, describeError, &report, 1, 1) == DUK_EXEC_SUCCESS) {
        return report.text;
    }
    return contextOf(script).use.wasStopped() ? timeout
                                              : file + ": an error that cannot be described";
}

[[noreturn]] void failEngine(void* context, const char* message) {
    static_cast<ScriptContext*>(context)->console.writeError(
        printable(std::string("zrkey: the script engine failed: ") + message) + "\n");
    std::_Exit(1);
}

}  // namespace

ScriptEngine::ScriptEngine(Console& console, const ScriptLimits& limits)
    : m_console(console),
      m_mayEndProcess(limits.mayEndProcess),
      m_context(new ScriptContext{console, ScriptUse(limits)}),
      m_heap(createLimitedHeap(*m_context, failEngine)) {
    if (!m_heap) {
        throw std::bad_alloc();
    }
}

ScriptEngine::~ScriptEngine() {
    duk_destroy_heap(m_heap);
}

bool ScriptEngine::run(const std::string& file, std::string_view source,
                       const std::vector<std::string>& arguments) {
    if (source.starts_with(kByteOrderMark)) {
        source.remove_prefix(kByteOrderMark.size());
    }
    ScriptUse& use = m_context->use;
    const std::string timeout = timeoutReport(file);
    std::optional<ScriptWatchdog> watchdog;
    if (m_mayEndProcess && use.end()) {
        m_context->endProcess = [this, &timeout] { endProcess(timeout); };
        watchdog.emplace(*use.end(), m_context->libraryCalls, m_context->endProcess);
    }
    Script script{file, source, arguments};
    const bool isDone = duk_safe_call(m_heap, runProtected, &script, 0, 1) == DUK_EXEC_SUCCESS;
    if (!isDone) {
        report(describeFailure(m_heap, file, timeout));
    }
    // Runs the finalizers and releases the objects, which may take too long.
    duk_destroy_heap(m_heap);
    m_heap = nullptr;
    if (use.isTimeUp()) {
        report(timeout);
    }
    return isDone && !use.isTimeUp();
}

void ScriptEngine::endProcess(const std::string& line) {
    // On another thread: nobody may read standard error.
    std::promise<void> written;
    try {
        std::thread([&] {
            report(line);
            written.set_value();
        }).detach();
        written.get_future().wait_for(kGrace);
    } catch (const std::system_error&) {
        // Without another thread the process ends without its report.
    }
    std::_Exit(kExitFailure);
}

void ScriptEngine::report(const std::string& line) {
    const std::lock_guard lock(m_reporting);
    if (!m_isReported) {
        m_isReported = true;
        m_console.writeError(printable(line) + "\n");
    }
}

}  // namespace zr::host
