// The zrkey command: prepares the process, then runs the command line.
#include <exception>
#include <string>

#include "host/commands/command_line.h"
#include "host/output/failure.h"
#include "host/system/interruption.h"
#include "host/system/module_search.h"
#include "host/system/system.h"

int main(int argc, char** argv) {
    using namespace zr::host;
    holdStandardStreams();
    ignoreClosedPipes();
    try {
        restrictModuleSearch();
        const int exitCode = runCommandLine(commandLineArguments(argc, argv));
        if (isInterrupted()) {
            endInterrupted();
        }
        return exitCode;
    } catch (const std::exception& error) {
        writeAll(kStandardError, std::string("zrkey: ") + error.what() + "\n");
        return kExitFailure;
    }
}
