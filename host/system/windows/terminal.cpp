// Prompting on the console on Windows: CONIN$ without echo.
#include "host/system/terminal.h"

#include <windows.h>

#include <array>
#include <mutex>

#include <io.h>

#include "host/system/interruption.h"
#include "host/system/secret_memory.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

/// A handle of the console, closed on destruction.
class ConsoleHandle {
public:
    explicit ConsoleHandle(const wchar_t* name)
        : m_handle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE,
                               FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                               nullptr)) {}
    ~ConsoleHandle() {
        if (isOpen()) {
            CloseHandle(m_handle);
        }
    }
    ConsoleHandle(const ConsoleHandle&) = delete;
    ConsoleHandle& operator=(const ConsoleHandle&) = delete;

    bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle;
};

class PromptInput;
std::mutex s_prompting;
const PromptInput* s_input = nullptr;  ///< guarded by s_prompting

/// Switches the echo of the console's input off, or on, until destruction.
class PromptInput {
public:
    PromptInput(HANDLE input, DWORD echo) : m_input(input) {
        const std::lock_guard lock(s_prompting);
        m_isChanged = GetConsoleMode(input, &m_before) != 0 &&
                      SetConsoleMode(input, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT | echo) != 0;
        s_input = this;
    }
    ~PromptInput() {
        const std::lock_guard lock(s_prompting);
        s_input = nullptr;
        restore();
    }
    PromptInput(const PromptInput&) = delete;
    PromptInput& operator=(const PromptInput&) = delete;

    bool isReady() const { return m_isChanged; }
    void restore() const {
        if (m_isChanged) {
            SetConsoleMode(m_input, m_before);
        }
    }

private:
    HANDLE m_input;
    DWORD m_before = 0;
    bool m_isChanged;
};

void write(HANDLE output, const std::string& utf8) {
    std::wstring wide(utf8.size(), L'\0');
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), static_cast<int>(utf8.size()),
                                         wide.data(), static_cast<int>(wide.size()));
    DWORD written = 0;
    WriteConsoleW(output, wide.data(), static_cast<DWORD>(size), &written, nullptr);
}

PromptResult readLine(HANDLE input, const std::function<bool(char)>& take) {
    // More than any PIN has; the console cuts off what is longer.
    constexpr std::size_t kLongestLine = 256;
    std::array<wchar_t, kLongestLine> line = {};
    std::array<char, 3 * kLongestLine> bytes = {};
    const SecretMemory lineProtection(line.data(), sizeof line);
    const SecretMemory bytesProtection(bytes.data(), sizeof bytes);
    DWORD length = 0;
    const bool isRead =
        ReadConsoleW(input, line.data(), static_cast<DWORD>(line.size()), &length, nullptr) != 0;
    if (!isRead || length == 0) {
        // By Ctrl-C, which is noted on another thread.
        waitUninterrupted(std::chrono::seconds(1));
        return PromptResult::kCancelled;
    }
    const bool isWhole = length > 0 && line[length - 1] == L'\n';
    while (length > 0 && (line[length - 1] == L'\n' || line[length - 1] == L'\r')) {
        --length;
    }
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, line.data(), static_cast<int>(length), bytes.data(),
                            static_cast<int>(bytes.size()), nullptr, nullptr);
    PromptResult result = isWhole ? PromptResult::kAnswered : PromptResult::kTooLong;
    for (int i = 0; i < size; ++i) {
        if (!take(bytes[static_cast<std::size_t>(i)])) {
            result = PromptResult::kTooLong;
        }
    }
    secureErase(line.data(), line.size() * sizeof(wchar_t));
    secureErase(bytes.data(), bytes.size());
    if (!isWhole) {
        // The rest of the line must not reach another reader.
        FlushConsoleInputBuffer(input);
    }
    return result;
}

/// @param echo  ENABLE_ECHO_INPUT, or 0 for none.
PromptResult promptWith(DWORD echo, const std::string& prompt,
                        const std::function<bool(char)>& take) {
    const ConsoleHandle input(L"CONIN$");
    const ConsoleHandle output(L"CONOUT$");
    if (!input.isOpen() || !output.isOpen()) {
        return PromptResult::kNoTerminal;
    }
    const PromptInput mode(input.get(), echo);
    if (!mode.isReady()) {
        return PromptResult::kNoTerminal;
    }
    write(output.get(), prompt);
    const PromptResult result = readLine(input.get(), take);
    if (echo == 0) {
        write(output.get(), "\n");
    }
    return result;
}

HANDLE consoleOf(int descriptor) {
    return reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
}

}  // namespace

bool hasTerminal() {
    return ConsoleHandle(L"CONIN$").isOpen() && ConsoleHandle(L"CONOUT$").isOpen();
}

PromptResult promptHidden(const std::string& prompt, const std::function<bool(char)>& take) {
    return promptWith(0, prompt, take);
}

PromptResult promptVisible(const std::string& prompt, const std::function<bool(char)>& take) {
    return promptWith(ENABLE_ECHO_INPUT, prompt, take);
}

void restoreTerminal() {
    const std::lock_guard lock(s_prompting);
    if (s_input) {
        s_input->restore();
    }
}

bool isTerminal(int descriptor) {
    DWORD mode = 0;
    return GetConsoleMode(consoleOf(descriptor), &mode) != 0;
}

bool isCapableTerminal(int descriptor) {
    if (environmentVariable("TERM").value_or("") == "dumb") {
        return false;
    }
    // Consoles read escape sequences since Windows 10, when they are asked to.
    const HANDLE console = consoleOf(descriptor);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) &&
           ((mode & ENABLE_VIRTUAL_TERMINAL_PROCESSING) != 0 ||
            SetConsoleMode(console, mode | ENABLE_VIRTUAL_TERMINAL_PROCESSING));
}

}  // namespace zr::host
