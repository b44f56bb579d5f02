// The streams to the browser on Linux.
#include "host/browser/own_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include "host/system/interruption.h"
#include "host/system/system.h"

namespace zr::host {

OwnStreams takeStreams() {
    holdStandardStreams();
    const OwnStreams own = {duplicateDescriptor(kStandardInput),
                            duplicateDescriptor(kStandardOutput)};
    redirectDescriptor(kStandardOutput, kStandardError);
    const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
    if (own.input < 0 || own.output < 0 || nothing < 0) {
        // A module would read from the browser's pipe, or write to it.
        endProcess(1);
    }
    redirectDescriptor(kStandardInput, nothing);
    close(nothing);
    return own;
}

void noteSignals() {
    // Until the process ends, which destroys nothing: the reader uses what it notes.
    static const InterruptionGuard guard;
}

void endProcess(int exitCode) {
    _exit(exitCode);
}

}  // namespace zr::host
