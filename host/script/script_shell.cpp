// Runs statements one after the other, as they are typed.
#include "host/script/script_shell.h"

#include <algorithm>
#include <optional>

#include "host/output/failure.h"
#include "host/script/context.h"
#include "host/script/engine_text.h"
#include "host/script/line_completion.h"
#include "host/script/line_input.h"
#include "host/script/shown_value.h"
#include "host/script/syntax.h"
#include "host/script/uncaught.h"
#include "host/script/watchdog.h"
#include "host/system/interruption.h"
#include "host/system/system.h"
#include "host/system/terminal.h"

namespace zr::host {
namespace {

constexpr const char* kPrompt = "zrkey> ";
constexpr const char* kPromptForMore = "... ";

/// A token that no statement contains, on a line of its own.
constexpr std::string_view kForeignLine = "\n#";

struct Statement {
    const std::string& name;
    std::string_view source;
    std::string shown;  ///< its result; empty when there is none
};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

std::string_view trimmed(std::string_view text) {
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(kBlanks), text.size());
    return text.substr(begin, text.find_last_not_of(kBlanks) + 1 - begin);
}

struct SyntaxProblem {
    std::string message;
    unsigned line = 0;
};

/// What the engine says of a text.
/// @return nullopt when it is a program.
std::optional<SyntaxProblem> findProblem(duk_context* script, std::string_view source) {
    std::optional<SyntaxProblem> problem;
    if (duk_pcompile_lstring(script, DUK_COMPILE_EVAL, source.data(), source.size()) != 0) {
        problem.emplace();
        duk_get_prop_string(script, -1, "message");
        problem->message = viewOf(utf8At(script, -1));
        duk_get_prop_string(script, -2, "lineNumber");
        problem->line = duk_get_uint(script, -1);
        duk_pop_2(script);
    }
    duk_pop(script);
    return problem;
}

/// The end of what begins at a quotation mark or with "//" or "/*"; begin itself when nothing does.
std::size_t skipText(std::string_view source, std::size_t begin) {
    const auto behind = [&](std::string_view end) {
        const std::size_t found = source.find(end, begin + 1);
        return found == std::string_view::npos ? source.size() : found + end.size();
    };
    const std::string_view rest = source.substr(begin);
    if (rest.starts_with("//")) {
        return behind("\n");
    }
    if (rest.starts_with("/*")) {
        return behind("*/");
    }
    if (rest.front() != '\'' && rest.front() != '"') {
        return begin;
    }
    std::size_t end = begin + 1;
    while (end < source.size() && source[end] != rest.front()) {
        end += source[end] == '\\' ? 2 : 1;
    }
    return std::min(end + 1, source.size());
}

/// Whether a bracket is closed that was not opened.
bool closesTooMuch(std::string_view source) {
    int depth = 0;
    for (std::size_t i = 0; i < source.size() && depth >= 0;) {
        const std::size_t end = skipText(source, i);
        if (end > i) {
            i = end;
            continue;
        }
        const std::string_view one = source.substr(i, 1);
        depth += contains("([{", one) ? 1 : contains(")]}", one) ? -1 : 0;
        ++i;
    }
    return depth < 0;
}

/// Whether the source is not a program yet, but can become one with more lines.
bool isIncomplete(duk_context* script, std::string_view source) {
    const std::optional<SyntaxProblem> problem = findProblem(script, source);
    if (!problem) {
        return false;
    }
    if (contains(problem->message, "unterminated string")) {
        return trimmed(source).ends_with('\\');
    }
    if (contains(problem->message, "unterminated comment")) {
        return true;
    }
    // The last two are about words that are complete, in the wrong place.
    if (!contains(problem->message, "end of input") ||
        contains(problem->message, "invalid return") ||
        contains(problem->message, "invalid label") || closesTooMuch(source)) {
        return false;
    }
    // The engine also says so when the mistake is in the last words. If it is at the end, it moves
    // with the end.
    ErasedBytes longer(source.begin(), source.end());
    longer.insert(longer.end(), kForeignLine.begin(), kForeignLine.end());
    const auto lines = static_cast<unsigned>(std::count(longer.begin(), longer.end(), '\n')) + 1;
    const std::optional<SyntaxProblem> later = findProblem(script, viewOf(longer));
    return later && later->line == lines;
}

struct Question {
    std::string_view source;
    bool isIncomplete;
};

duk_ret_t askIfIncomplete(duk_context* script, void* data) {
    Question& question = *static_cast<Question*>(data);
    question.isIncomplete = isIncomplete(script, question.source);
    return 0;
}

/// Compiles a statement; what looks like an object is one, not a block.
void compileStatement(duk_context* script, const Statement& statement) {
    const std::string_view source = trimmed(statement.source);
    if (source.starts_with('{') && source.ends_with('}')) {
        ErasedBytes expression(1, '(');
        expression.insert(expression.end(), source.begin(), source.end());
        expression.push_back(')');
        pushText(script, statement.name);
        if (duk_pcompile_lstring_filename(script, DUK_COMPILE_EVAL, expression.data(),
                                          expression.size()) == 0) {
            return;
        }
        duk_pop(script);
    }
    pushText(script, statement.name);
    compileSource(script, statement.source, DUK_COMPILE_EVAL);
}

duk_ret_t evaluate(duk_context* script, void* data) {
    Statement& statement = *static_cast<Statement*>(data);
    compileStatement(script, statement);
    duk_call(script, 0);
    // What may be a PIN is not shown.
    if (!duk_is_undefined(script, -1) && !contextOf(script).hasGivenPin) {
        statement.shown = shownValue(script, -1);
    }
    return 0;
}

struct InputLine {
    ErasedBytes& text;
    bool isEnd;
};

duk_ret_t takeInputLine(duk_context* script, void* data) {
    InputLine& line = *static_cast<InputLine*>(data);
    pushInputLine(script);
    line.isEnd = duk_is_null(script, -1) != 0;
    line.text = line.isEnd ? ErasedBytes() : utf8At(script, -1);
    return 0;
}

}  // namespace

ScriptShell::ScriptShell(duk_context* script, const std::string& name, LineEditor* editor)
    : m_script(script),
      m_name(name),
      m_editor(editor),
      m_isInteractive(editor || isTerminal(kStandardInput)) {
    if (m_editor) {
        m_editor->setCompletion(
            [this](std::string_view text) { return completeLine(m_script, text); });
    }
}

int ScriptShell::run() {
    const ScriptContext& context = contextOf(m_script);
    bool isGood = true;
    ErasedBytes statement;
    while (!context.exit.code && readStatement(statement) && goesOn()) {
        const bool isBlank = trimmed(viewOf(statement)).empty();
        isGood = (isBlank || runStatement(viewOf(statement))) && isGood;
        if (!goesOn()) {
            break;
        }
    }
    return isGood || m_isInteractive ? kExitOk : kExitFailure;
}

bool ScriptShell::goesOn() {
    constexpr int kCtrlC = 130;
    if (isInterrupted() && m_editor && interruptionExitCode() == kCtrlC) {
        forgetInterruption();
    }
    return !isInterrupted();
}

bool ScriptShell::readStatement(ErasedBytes& statement) {
    contextOf(m_script).use.stopTime();
    statement.clear();
    Question question = {{}, true};
    while (question.isIncomplete) {
        ErasedBytes line;
        const LineResult result = readLine(statement.empty() ? kPrompt : kPromptForMore, line);
        if (result == LineResult::kCancelled) {
            statement.clear();
            return true;
        }
        if (result == LineResult::kEnd) {
            // What is there shows why it is not complete.
            return !statement.empty();
        }
        if (!statement.empty()) {
            statement.push_back('\n');
        }
        statement.insert(statement.end(), line.begin(), line.end());
        question = {viewOf(statement), false};
        duk_safe_call(m_script, askIfIncomplete, &question, 0, 1);
        duk_pop(m_script);
    }
    return true;
}

LineResult ScriptShell::readLine(const char* prompt, ErasedBytes& line) {
    if (m_editor) {
        return m_editor->read(prompt, line);
    }
    Console& console = contextOf(m_script).console;
    if (m_isInteractive) {
        console.writeError(prompt);
    }
    InputLine input = {line, false};
    if (duk_safe_call(m_script, takeInputLine, &input, 0, 1) != DUK_EXEC_SUCCESS) {
        console.writeError(describeFailure(m_script, m_name, {}) + "\n");
        return LineResult::kEnd;
    }
    duk_pop(m_script);
    return input.isEnd ? LineResult::kEnd : LineResult::kLine;
}

bool ScriptShell::runStatement(std::string_view source) {
    ScriptContext& context = contextOf(m_script);
    Statement statement = {m_name, source, {}};
    context.hasGivenPin = false;
    context.use.startTime();
    std::optional<ScriptWatchdog> watchdog;
    if (context.endProcess && context.use.end()) {
        watchdog.emplace(*context.use.end(), context.libraryCalls, context.endProcess);
    }
    const bool isDone = duk_safe_call(m_script, evaluate, &statement, 0, 1) == DUK_EXEC_SUCCESS;
    if (isDone) {
        duk_pop(m_script);
        if (!statement.shown.empty()) {
            context.console.writeOutput(statement.shown + "\n");
        }
    } else if (isInterrupted()) {
        duk_pop(m_script);
        // Nothing can be written before the interruption is forgotten.
        if (goesOn()) {
            context.console.writeError("shell: interrupted\n");
        }
    } else if (!context.exit.code) {
        context.console.writeError(describeFailure(m_script, m_name, timeoutReport(m_name)) + "\n");
    } else {
        duk_pop(m_script);
    }
    return isDone || context.exit.code;
}

}  // namespace zr::host
