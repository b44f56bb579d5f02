// zrkey watch: the tokens that are put in and taken out.
#include <CLI/CLI.hpp>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/commands/command_frame.h"
#include "host/output/console.h"
#include "host/output/printable.h"
#include "host/system/interruption.h"
#include "host/system/process.h"
#include "host/token/cryptoki.h"
#include "host/token/module_loading.h"
#include "host/token/token_watch.h"

namespace zr::host {
namespace {

constexpr std::chrono::seconds kInterval{1};

struct WatchOptions {
    ReportOptions report;
    ModuleOptions module;
    std::string program;
};

std::string lineOf(const TokenChange& change) {
    std::string line = change.name();
    line.append("\t").append(std::to_string(change.slot));
    for (const std::string* text : {&change.token.label, &change.token.serial,
                                    &change.token.manufacturer, &change.token.model}) {
        line.append("\t").append(printable(*text));
    }
    return line.append("\n");
}

std::string jsonOf(const TokenChange& change) {
    return toJson({{"schema", std::uint64_t{kJsonSchema}},
                   {"command", std::string("watch")},
                   {"event", std::string(change.name())},
                   {"slot", std::uint64_t{change.slot}},
                   {"label", change.token.label},
                   {"serial", change.token.serial},
                   {"manufacturer", change.token.manufacturer},
                   {"model", change.token.model}});
}

/// The program of --exec, started for each change.
class ChangeProgram {
public:
    ChangeProgram(Console& console, std::string program, std::string module)
        : m_console(console), m_program(std::move(program)), m_module(std::move(module)) {}

    void start(const TokenChange& change) {
        if (m_program.empty()) {
            return;
        }
        const TokenFacts& token = change.token;
        std::error_code error;
        std::optional<ChildProcess> child =
            ChildProcess::start({{m_program},
                                 {{"ZRKEY_EVENT", change.name()},
                                  {"ZRKEY_SLOT", std::to_string(change.slot)},
                                  {"ZRKEY_LABEL", token.label},
                                  {"ZRKEY_SERIAL", token.serial},
                                  {"ZRKEY_MANUFACTURER", token.manufacturer},
                                  {"ZRKEY_MODEL", token.model},
                                  {"ZRKEY_MODULE", m_module}},
                                 m_console.outputDescriptor(),
                                 m_console.errorDescriptor()},
                                error);
        if (!child) {
            m_console.writeError(
                systemFailure(kExitFailure, "start " + inQuotes(m_program), error, "check --exec")
                    .line());
            return;
        }
        m_children.emplace_back(std::move(*child), lineOf(change));
    }

    /// Takes the exit codes of the programs that ended, and reports failures.
    void reap() {
        std::erase_if(m_children, [this](auto& running) {
            const std::optional<int> code = running.first.exitCode();
            if (code && *code != 0) {
                std::string text = "zrkey: " + inQuotes(m_program) + " ended with exit code " +
                                   std::to_string(*code) + " for: ";
                m_console.writeError(text.append(running.second));
            }
            return code.has_value();
        });
    }

private:
    Console& m_console;
    std::string m_program;
    std::string m_module;
    std::vector<std::pair<ChildProcess, std::string>> m_children;
};

void show(Console& console, const WatchOptions& options, const TokenChange& change) {
    const std::error_code error =
        console.writeOutput(options.report.json ? jsonOf(change) : lineOf(change));
    if (error && !isInterrupted()) {
        throw systemFailure(kExitFailure, "write to standard output", error, "check what reads it");
    }
}

int watch(const WatchOptions& options, Console& console) {
    const LoadedModule module(options.module);
    TokenWatch tokens(module.calls());
    ChangeProgram program(console, options.program, module.file());
    std::vector<TokenChange> changes = tokens.start();
    while (!isInterrupted()) {
        for (const TokenChange& change : changes) {
            show(console, options, change);
            program.start(change);
        }
        console.drainDiagnostics();
        waitUninterrupted(kInterval);
        program.reap();
        changes = isInterrupted() ? std::vector<TokenChange>() : tokens.look();
    }
    return kExitOk;
}

}  // namespace

void addWatchCommand(CLI::App& command, Action& action) {
    const auto options = std::make_shared<WatchOptions>();
    setAction(command, action, [options] {
        return runStreaming("watch", options->report,
                            [&](Console& console) { return watch(*options, console); });
    });
    addReportOptions(command, options->report);
    addModuleOptions(command, options->module);
    command
        .add_option(
            "--exec", options->program,
            "Starts this program for each line, with the token's data in environment variables")
        ->type_name("PROGRAM");
}

}  // namespace zr::host
