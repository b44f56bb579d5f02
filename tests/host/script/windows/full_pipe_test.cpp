// Scripts on a pipe that nobody reads or writes. tests/host/script/linux has more such tests; here
// the pipe is one of Windows.
#include <windows.h>

#include <filesystem>

#include "tests/host/child_command.h"

namespace zr::test {
namespace {

constexpr DWORD kMostMilliseconds = 30000;

/// Runs "zrkey run" with all standard streams on a pipe that nobody else reads or writes.
/// @return its exit code; STILL_ACTIVE when it does not end.
DWORD runOnFullPipe(const std::wstring& script) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    HANDLE reading = nullptr;
    HANDLE writing = nullptr;
    EXPECT_TRUE(CreatePipe(&reading, &writing, &inherited, 0));
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = reading;
    start.hStdOutput = writing;
    start.hStdError = writing;
    std::wstring line = L'"' + std::filesystem::absolute(ZRKEY_COMMAND).make_preferred().wstring() +
                        L"\" run --time-limit 0.3 " + script;
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                               &start, &process));
    DWORD code = STILL_ACTIVE;
    if (WaitForSingleObject(process.hProcess, kMostMilliseconds) == WAIT_OBJECT_0) {
        GetExitCodeProcess(process.hProcess, &code);
    } else {
        TerminateProcess(process.hProcess, 1);
    }
    for (const HANDLE handle : {process.hThread, process.hProcess, reading, writing}) {
        CloseHandle(handle);
    }
    return code;
}

using FullPipeTest = ChildCommandTest;

TEST_F(FullPipeTest, BlockedPrintIsEndedWhenTheReportIsBlockedToo) {
    writeFile("script.js", "for (;;) { print('a line of a script that never ends'); }");
    EXPECT_EQ(1u, runOnFullPipe(L"script.js"));
}

TEST_F(FullPipeTest, BlockedReadLineIsEnded) {
    writeFile("script.js", "readLine();");
    EXPECT_EQ(1u, runOnFullPipe(L"script.js"));
}

}  // namespace
}  // namespace zr::test
