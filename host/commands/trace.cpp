// zrkey trace: runs a command and shows its calls of the module, without PINs.
#include <CLI/CLI.hpp>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/commands/commands.h"
#include "host/output/failure.h"
#include "host/output/trace_filter.h"
#include "host/system/system.h"
#include "host/system/tracing.h"

namespace zr::host {
namespace {

using Words = std::vector<std::string>;

class TraceFormatter : public CLI::Formatter {
public:
    std::string make_usage(const CLI::App*, std::string name) const override {
        return "Usage: " + name + " [OPTIONS] -- COMMAND [OPTION...]\n";
    }
};

int writeFailure(const Failure& failure) {
    writeAll(kStandardError, failure.line());
    return failure.exitCode;
}

int runTrace(const Words& words) {
    const std::string asked = "trace the command";
    const std::string spy = findSpy();
    if (spy.empty()) {
        return writeFailure(
            commandFailure(kExitModule, asked, whyNoSpy().cause, whyNoSpy().advice));
    }
    TraceFilter filter;
    std::error_code error;
    const std::optional<int> exitCode = runTraced(
        spy, words, [&](std::string_view bytes) { writeAll(kStandardError, filter.add(bytes)); },
        error);
    writeAll(kStandardError, filter.finish());
    return exitCode ? *exitCode
                    : writeFailure(systemFailure(kExitFailure, asked, error,
                                                 "the system may be out of resources"));
}

}  // namespace

void addTraceCommand(CLI::App& command, Action& action) {
    const auto words = std::make_shared<Words>();
    command
        .add_option("COMMAND", *words,
                    "The command and its options, after --, such as: -- login --so")
        ->required()
        ->type_name("");
    command.formatter(std::make_shared<TraceFormatter>());
    command.callback([words, &action] { action = [words] { return runTrace(*words); }; });
}

}  // namespace zr::host
