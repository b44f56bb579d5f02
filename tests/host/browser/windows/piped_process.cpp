// A program whose standard input and output are pipes of the test, on Windows.
#include "tests/host/browser/piped_process.h"

#include <filesystem>

#include <windows.h>

#include <fcntl.h>
#include <io.h>

namespace zr::test {
namespace {

HANDLE toHandle(std::intptr_t value) {
    return reinterpret_cast<HANDLE>(value);
}

/// The end of a pipe that the program inherits.
HANDLE inheritable(int descriptor) {
    const HANDLE handle = toHandle(_get_osfhandle(descriptor));
    SetHandleInformation(handle, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle;
}

HANDLE openErrors(const std::string& file) {
    SECURITY_ATTRIBUTES inherited = {sizeof inherited, nullptr, TRUE};
    return CreateFileW(std::filesystem::path(file).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                       &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

}  // namespace

std::pair<int, int> makePipe() {
    int ends[2] = {-1, -1};
    return _pipe(ends, 65536, _O_BINARY | _O_NOINHERIT) == 0 ? std::pair(ends[0], ends[1])
                                                             : std::pair(-1, -1);
}

PipedProcess::PipedProcess(const std::vector<std::string>& words, const std::string& errors) {
    const auto [childInput, input] = makePipe();
    const auto [output, childOutput] = makePipe();
    m_input = input;
    m_output = output;
    STARTUPINFOW start = {};
    start.cb = sizeof start;
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = inheritable(childInput);
    start.hStdOutput = inheritable(childOutput);
    start.hStdError = openErrors(errors);
    std::wstring line;
    for (const std::string& word : words) {
        line.append(line.empty() ? L"\"" : L" \"");
        line.append(std::filesystem::path(word).wstring()).append(L"\"");
    }
    PROCESS_INFORMATION process = {};
    if (CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start,
                       &process)) {
        CloseHandle(process.hThread);
        m_process = reinterpret_cast<std::intptr_t>(process.hProcess);
    }
    CloseHandle(start.hStdError);
    _close(childInput);
    _close(childOutput);
}

PipedProcess::~PipedProcess() {
    closeInput();
    closeOutput();
    if (m_process != 0) {
        TerminateProcess(toHandle(m_process), 99);
        CloseHandle(toHandle(m_process));
    }
}

void PipedProcess::closeInput() {
    if (m_input >= 0) {
        _close(std::exchange(m_input, -1));
    }
}

void PipedProcess::closeOutput() {
    if (m_output >= 0) {
        _close(std::exchange(m_output, -1));
    }
}

void PipedProcess::terminate() const {
    TerminateProcess(toHandle(m_process), 143);
}

std::optional<int> PipedProcess::exitCode(std::chrono::milliseconds time) {
    if (WaitForSingleObject(toHandle(m_process), static_cast<DWORD>(time.count())) ==
        WAIT_OBJECT_0) {
        DWORD code = 0;
        GetExitCodeProcess(toHandle(m_process), &code);
        m_exitCode = static_cast<int>(code);
    }
    return m_exitCode;
}

}  // namespace zr::test
