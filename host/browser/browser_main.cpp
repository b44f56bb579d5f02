// zrkey-browser: the native messaging host, which browsers start for the extension.
#include <exception>
#include <string>

#include "host/browser/browser_host.h"
#include "host/browser/complaint.h"
#include "host/output/failure.h"
#include "host/system/system.h"

int main(int argc, char** argv) {
    using namespace zr::host;
    const OwnStreams streams = takeStreams();
    ignoreClosedPipes();
    int exitCode = kExitFailure;
    try {
        exitCode = runBrowserHost(commandLineArguments(argc, argv), streams);
    } catch (const Failure& failure) {
        complain(failure.line());
    } catch (const std::exception& error) {
        complain(std::string("zrkey-browser: ") + error.what() + "\n");
    }
    // The reader may still wait for the browser.
    endProcess(exitCode);
}
