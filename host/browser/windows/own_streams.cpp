// The streams to the browser on Windows.
#include "host/browser/own_streams.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include "host/system/system.h"

namespace zr::host {
namespace {

/// A second descriptor, which programs that a module starts do not inherit.
int duplicate(int descriptor) {
    const int copy = duplicateDescriptor(descriptor);
    if (copy >= 0) {
        SetHandleInformation(reinterpret_cast<HANDLE>(_get_osfhandle(copy)), HANDLE_FLAG_INHERIT,
                             0);
    }
    return copy;
}

/// Lets a standard handle of the process be what the descriptor of the C library is now. While the
/// reader waits for the browser's pipe, every question about its handle would wait too, such as those
/// of a module's own C library when it is loaded.
void setHandle(DWORD which, int descriptor) {
    SetStdHandle(which, reinterpret_cast<HANDLE>(_get_osfhandle(descriptor)));
}

}  // namespace

OwnStreams takeStreams() {
    holdStandardStreams();
    const OwnStreams own = {duplicate(kStandardInput), duplicate(kStandardOutput)};
    redirectDescriptor(kStandardOutput, kStandardError);
    setHandle(STD_OUTPUT_HANDLE, kStandardOutput);
    const int nothing = _wopen(L"NUL", _O_RDONLY | _O_BINARY | _O_NOINHERIT);
    if (own.input < 0 || own.output < 0 || nothing < 0) {
        // A module would read from the browser's pipe, or write to it.
        endProcess(1);
    }
    redirectDescriptor(kStandardInput, nothing);
    setHandle(STD_INPUT_HANDLE, kStandardInput);
    _close(nothing);
    // No window of the system about a drive or a DLL that is missing.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOOPENFILEERRORBOX);
    return own;
}

void noteSignals() {}

void endProcess(int exitCode) {
    // Not ExitProcess, which waits for a module that holds the loader's lock.
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(exitCode));
    __builtin_unreachable();
}

}  // namespace zr::host
