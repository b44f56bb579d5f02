// Any script in the script host, with limits of time and memory.
#include <fcntl.h>
#include <unistd.h>

#include "console.h"
#include "script_engine.h"
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace {

/// A console whose every stream leads nowhere; the fuzzer's own reports still go where they went.
zr::host::Console& quietConsole() {
    const int report = dup(STDERR_FILENO);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDERR_FILENO);
    static zr::host::Console console(zr::host::Diagnostics::kDropped);
    dup2(report, STDERR_FILENO);
    close(report);
    close(nowhere);
    return console;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static zr::host::Console& console = quietConsole();
    static const bool isPrepared = (zr::fuzz::writeConfig("<driver><algo>a</algo></driver>"), true);
    zr::fuzz::expect(isPrepared);
    const std::string path = zr::fuzz::modulePath();
    zr::fuzz::answerFrom(nullptr);
    zr::host::ScriptLimits limits;
    limits.time = std::chrono::milliseconds(300);
    limits.bytes = 16 << 20;
    zr::host::ScriptEngine engine(console, limits);
    engine.run("fuzz.js", {reinterpret_cast<const char*>(data), size}, {path});
    return 0;
}
