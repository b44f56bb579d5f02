// Runs one script on the script engine, with the library's objects and a few globals at hand.
//
// The engine's errors are C++ exceptions of a type of its own: they unwind the frames between, and
// no code here catches everything.
#include "script_engine.h"

#include <duktape.h>

#include <cstdlib>
#include <memory>
#include <new>

#include "console.h"
#include "failure.h"
#include "script_object.h"
#include "text.h"

namespace zr::host {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

struct Script {
    const std::string& file;
    std::string_view source;
    const std::vector<std::string>& arguments;
};

void pushText(duk_context* script, std::string_view utf8) {
    const std::string text = toScriptText(toUtf16(utf8));
    duk_push_lstring(script, text.data(), text.size());
}

std::string utf8At(duk_context* script, duk_idx_t index) {
    duk_size_t size = 0;
    const char* text = duk_to_lstring(script, index, &size);
    return toUtf8(toUtf16({text, size}));
}

/// print(...): the arguments as texts, with blanks between, on a line of standard output.
duk_ret_t print(duk_context* script) {
    const duk_idx_t count = duk_get_top(script);
    std::string line;
    for (duk_idx_t i = 0; i < count; ++i) {
        if (i > 0) {
            line.push_back(' ');
        }
        line += utf8At(script, i);
    }
    line.push_back('\n');
    if (!contextOf(script).console.writeOutput(line)) {
        return throwError(script, DUK_ERR_ERROR, "print failed: standard output cannot be written");
    }
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

struct ErrorReport {
    const std::string& file;
    std::string text;
};

/// Describes the thrown value on top of the stack; asking it may throw again.
duk_ret_t describeError(duk_context* script, void* data) {
    ErrorReport& report = *static_cast<ErrorReport*>(data);
    std::string place = report.file;
    std::string message;
    if (duk_is_error(script, -1)) {
        duk_get_prop_string(script, -1, "fileName");
        if (duk_is_string(script, -1)) {
            place = utf8At(script, -1);
        }
        duk_get_prop_string(script, -2, "lineNumber");
        if (duk_get_uint(script, -1) > 0) {
            place.append(":").append(std::to_string(duk_get_uint(script, -1)));
        }
        duk_pop_2(script);
    } else {
        message = "uncaught ";
    }
    message += utf8At(script, -1);
    // "Error: " says nothing that standard error does not say; other kinds are kept.
    if (message.starts_with("Error: ")) {
        message.erase(0, 7);
    }
    report.text = place.append(": ").append(message);
    return 0;
}

[[noreturn]] void failEngine(void* context, const char* message) {
    static_cast<ScriptContext*>(context)->console.writeError(
        printable(std::string("zrkey: the script engine failed: ") + message) + "\n");
    std::_Exit(1);
}

}  // namespace

ScriptUse& useOf(void* context) {
    return static_cast<ScriptContext*>(context)->use;
}

ScriptEngine::ScriptEngine(Console& console, const ScriptLimits& limits)
    : m_console(console),
      m_context(std::make_unique<ScriptContext>(ScriptContext{console, ScriptUse(limits)})),
      m_heap(createLimitedHeap(m_context.get(), failEngine)) {
    if (m_heap == nullptr) {
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
    Script script{file, source, arguments};
    if (duk_safe_call(m_heap, runProtected, &script, 0, 1) == DUK_EXEC_SUCCESS) {
        return true;
    }
    ErrorReport report{file, {}};
    if (duk_safe_call(m_heap, describeError, &report, 1, 1) != DUK_EXEC_SUCCESS) {
        report.text = file + ": an error that cannot be described";
    }
    m_console.writeError(printable(report.text) + "\n");
    return false;
}

}  // namespace zr::host
