// Programs that the command starts, on Windows.
#include "host/system/process.h"

#include <algorithm>
#include <array>
#include <cwchar>
#include <cwctype>

#include <windows.h>

#include <io.h>

#include "host/system/utf8_path.h"

namespace zr::host {
namespace {

std::wstring toWide(const std::string& text) {
    return toPath(text).wstring();
}

/// A word as programs read it from their command line.
std::wstring quoted(const std::wstring& word) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : word) {
        // Before a quotation mark each backslash counts twice.
        text.append(unit == L'"' ? backslashes + 1 : 0, L'\\').append(1, unit);
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
    }
    return text.append(backslashes, L'\\').append(L"\"");
}

/// The program's file: as it is named, or in PATH; not in the current folder.
std::wstring findProgram(const std::string& name) {
    const std::wstring wide = toWide(name);
    if (wide.find_first_of(L"\\/:") != std::wstring::npos) {
        return wide;
    }
    const std::wstring folders = toWide(environmentVariable("PATH").value_or(""));
    std::array<wchar_t, 32768> path;
    const DWORD size = SearchPathW(folders.c_str(), wide.c_str(), L".exe",
                                   static_cast<DWORD>(path.size()), path.data(), nullptr);
    return size > 0 && size < path.size() ? std::wstring(path.data(), size) : std::wstring();
}

/// The system would start a shell for these.
bool isBatchFile(std::wstring path) {
    std::transform(path.begin(), path.end(), path.begin(),
                   [](wchar_t unit) { return static_cast<wchar_t>(std::towlower(unit)); });
    return path.ends_with(L".bat") || path.ends_with(L".cmd");
}

/// The variables of this process and the new ones, each with a zero behind it.
std::wstring environmentWith(const ProcessStart& start) {
    std::wstring block;
    wchar_t* const all = GetEnvironmentStringsW();
    for (const wchar_t* variable = all; variable && *variable;
         variable += std::wcslen(variable) + 1) {
        const std::wstring text = variable;
        const bool isReplaced =
            std::any_of(start.variables.begin(), start.variables.end(), [&](const auto& added) {
                const std::wstring name = toWide(added.first) + L'=';
                return _wcsnicmp(text.c_str(), name.c_str(), name.size()) == 0;
            });
        if (!isReplaced) {
            block.append(text).append(1, L'\0');
        }
    }
    if (all) {
        FreeEnvironmentStringsW(all);
    }
    for (const auto& [name, value] : start.variables) {
        block.append(toWide(name)).append(L"=").append(toWide(value)).append(1, L'\0');
    }
    return block.append(1, L'\0');
}

/// A second handle of a descriptor's file, which a child can have; closed on destruction.
class InheritedHandle {
public:
    explicit InheritedHandle(int descriptor) {
        const auto own = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
        if (!DuplicateHandle(GetCurrentProcess(), own, GetCurrentProcess(), &m_handle, 0, TRUE,
                             DUPLICATE_SAME_ACCESS)) {
            m_handle = nullptr;
        }
    }
    ~InheritedHandle() {
        if (m_handle) {
            CloseHandle(m_handle);
        }
    }
    InheritedHandle(const InheritedHandle&) = delete;
    InheritedHandle& operator=(const InheritedHandle&) = delete;

    HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle = nullptr;
};

}  // namespace

std::optional<ChildProcess> ChildProcess::start(const ProcessStart& start, std::error_code& error) {
    const std::wstring program = findProgram(start.words.front());
    if (program.empty() || isBatchFile(program)) {
        error = std::make_error_code(program.empty() ? std::errc::no_such_file_or_directory
                                                     : std::errc::executable_format_error);
        return std::nullopt;
    }
    std::wstring line;
    for (const std::string& word : start.words) {
        line.append(line.empty() ? L"" : L" ").append(quoted(toWide(word)));
    }
    std::wstring variables = environmentWith(start);
    const InheritedHandle input(kStandardInput);
    const InheritedHandle output(start.output);
    const InheritedHandle errors(start.error);
    STARTUPINFOW info = {};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdInput = input.get();
    info.hStdOutput = output.get();
    info.hStdError = errors.get();
    PROCESS_INFORMATION process = {};
    if (!CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                        CREATE_UNICODE_ENVIRONMENT, variables.data(), nullptr, &info, &process)) {
        const DWORD code = GetLastError();
        error = code == ERROR_FILE_NOT_FOUND || code == ERROR_PATH_NOT_FOUND
                    ? std::make_error_code(std::errc::no_such_file_or_directory)
                    : std::error_code(static_cast<int>(code), std::system_category());
        return std::nullopt;
    }
    CloseHandle(process.hThread);
    error.clear();
    return ChildProcess(reinterpret_cast<std::intptr_t>(process.hProcess));
}

ChildProcess::ChildProcess(ChildProcess&& other) noexcept
    : m_process(std::exchange(other.m_process, 0)), m_exitCode(other.m_exitCode) {}

ChildProcess& ChildProcess::operator=(ChildProcess&& other) noexcept {
    std::swap(m_process, other.m_process);
    std::swap(m_exitCode, other.m_exitCode);
    return *this;
}

ChildProcess::~ChildProcess() {
    if (m_process != 0) {
        CloseHandle(reinterpret_cast<HANDLE>(m_process));
    }
}

std::optional<int> ChildProcess::exitCode() {
    const auto process = reinterpret_cast<HANDLE>(m_process);
    DWORD code = 0;
    if (m_process != 0 && WaitForSingleObject(process, 0) == WAIT_OBJECT_0 &&
        GetExitCodeProcess(process, &code)) {
        m_exitCode = static_cast<int>(code);
        CloseHandle(process);
        m_process = 0;
    }
    return m_exitCode;
}

}  // namespace zr::host
