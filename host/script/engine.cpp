// Runs one script on the script engine, with the library's objects and the globals of scripts.
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
#include <utility>

#include "host/output/console.h"
#include "host/output/failure.h"
#include "host/output/printable.h"
#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/globals.h"
#include "host/script/heap.h"
#include "host/script/late_bound/members.h"
#include "host/script/line_input.h"
#include "host/script/provider.h"
#include "host/script/script_files.h"
#include "host/script/script_modules.h"
#include "host/script/script_objects.h"
#include "host/script/script_shell.h"
#include "host/script/syntax.h"
#include "host/script/uncaught.h"
#include "host/script/watchdog.h"
#include "host/system/interruption.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

/// Makes the globals.
duk_ret_t prepareProtected(duk_context* heap, void* data) {
    const Script& script = *static_cast<const Script*>(data);
    if (script.isLateBound) {
        addLateBoundObjects(heap);
    } else {
        addObjectModel(heap);
    }
    addGlobals(heap);
    addFileFunctions(heap);
    addLineInput(heap);
    addProvider(heap);
    addModules(heap, script.origin == ScriptOrigin::kFile ? script.name : std::string());
    const duk_idx_t list = duk_push_array(heap);
    for (std::size_t i = 0; i < script.arguments.size(); ++i) {
        pushText(heap, script.arguments[i]);
        duk_put_prop_index(heap, list, static_cast<duk_uarridx_t>(i));
    }
    duk_put_global_string(heap, "arguments");
    return 0;
}

duk_ret_t runProtected(duk_context* heap, void* data) {
    const Script& script = *static_cast<const Script*>(data);
    prepareProtected(heap, data);
    pushText(heap, script.name);
    compileSource(heap, script.source, DUK_COMPILE_SHEBANG);
    duk_call(heap, 0);
    return 0;
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

int ScriptEngine::run(Script script) {
    if (script.source.starts_with(kByteOrderMark)) {
        script.source.remove_prefix(kByteOrderMark.size());
    }
    take(script);
    ScriptUse& use = m_context->use;
    ScriptExit& exit = m_context->exit;
    const std::string timeout = printable(timeoutReport(script.name));
    std::optional<ScriptWatchdog> watchdog;
    if (m_mayEndProcess && use.end()) {
        m_context->endProcess = [this, &timeout] { endProcess(timeout); };
        watchdog.emplace(*use.end(), m_context->libraryCalls, m_context->endProcess);
    }
    const bool isDone =
        duk_safe_call(m_heap, runProtected, &script, 0, 1) == DUK_EXEC_SUCCESS || exit.code;
    exit.isStopping = false;
    exit.isOver = true;
    if (!isDone && !isInterrupted()) {
        report(describeFailure(m_heap, script.name, timeout));
    }
    close();
    if (isInterrupted()) {
        return interruptionExitCode();
    }
    if (use.isTimeUp()) {
        report(timeout);
        return kExitFailure;
    }
    return isDone ? exit.code.value_or(kExitOk) : kExitFailure;
}

int ScriptEngine::converse(Script script, LineEditor* editor) {
    const InterruptionGuard interruptions;
    take(script);
    ScriptUse& use = m_context->use;
    const std::string timeout = printable(timeoutReport(script.name));
    if (m_mayEndProcess && use.end()) {
        m_context->endProcess = [this, &timeout] { endProcess(timeout); };
    }
    if (duk_safe_call(m_heap, prepareProtected, &script, 0, 1) != DUK_EXEC_SUCCESS) {
        report(describeFailure(m_heap, script.name, timeout));
        return kExitFailure;
    }
    duk_pop(m_heap);
    const int code = ScriptShell(m_heap, script.name, editor).run();
    ScriptExit& exit = m_context->exit;
    exit.isStopping = false;
    exit.isOver = true;
    close();
    return isInterrupted() ? interruptionExitCode() : exit.code.value_or(code);
}

void ScriptEngine::take(Script& script) {
    m_context->pin = std::exchange(script.pin, std::nullopt);
    m_context->moduleOptions = std::move(script.moduleOptions);
    m_context->module = std::move(script.module);
    m_context->isLateBound = script.isLateBound;
    m_context->input.wasTheScript = script.origin == ScriptOrigin::kStandardInput;
}

void ScriptEngine::close() {
    // This may take too long.
    duk_destroy_heap(m_heap);
    m_heap = nullptr;
}

void ScriptEngine::endProcess(const std::string& text) {
    // On another thread: nobody may read standard error.
    std::promise<void> written;
    try {
        std::thread([&] {
            report(text);
            written.set_value();
        }).detach();
        written.get_future().wait_for(kGrace);
    } catch (const std::system_error&) {
        // Without another thread the process ends without its report.
    }
    restoreTerminal();
    std::_Exit(kExitFailure);
}

void ScriptEngine::report(const std::string& text) {
    const std::lock_guard lock(m_reporting);
    if (!m_isReported) {
        m_isReported = true;
        m_console.writeError(text + "\n");
    }
}

}  // namespace zr::host
