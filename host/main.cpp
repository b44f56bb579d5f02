// The zrkey command: its surroundings, around what its command line asks for.
#include <exception>
#include <string>

#include "command_line.h"
#include "failure.h"
#include "system.h"

int main(int argc, char** argv) {
    using namespace zr::host;
    holdStandardStreams();
    try {
        return runCommandLine(commandLineArguments(argc, argv));
    } catch (const std::exception& error) {
        writeAll(kStandardError, std::string("zrkey: ") + error.what() + "\n");
        return kExitFailure;
    }
}
