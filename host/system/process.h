// Programs that the command starts, without a shell; one implementation per target.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "host/system/system.h"

namespace zr::host {

struct ProcessStart {
    /// The program, which is looked for in PATH unless it has a folder, and its arguments.
    std::vector<std::string> words;
    /// Set in its environment, which is otherwise that of this process.
    std::vector<std::pair<std::string, std::string>> variables = {};
    /// Its standard output and standard error.
    int output = kStandardOutput;
    int error = kStandardError;
    /// A descriptor that it has too, under the same number; on Linux only.
    std::optional<int> inherited = {};
};

class ChildProcess {
public:
    /// @return nullopt when it cannot be started; error says why.
    static std::optional<ChildProcess> start(const ProcessStart& start, std::error_code& error);
    ChildProcess(ChildProcess&& other) noexcept;
    ChildProcess& operator=(ChildProcess&& other) noexcept;
    // NOLINTNEXTLINE(performance-trivially-destructible): it is not on Windows.
    ~ChildProcess();

    /// @return its exit code, 128 and the number after a signal; nullopt while it runs. When it has
    ///         returned one, nothing of the process is left.
    std::optional<int> exitCode();
    /// Its ID on Linux, its handle on Windows.
    std::intptr_t id() const { return m_process; }

private:
    explicit ChildProcess(std::intptr_t process) : m_process(process) {}

    std::intptr_t m_process;  ///< its ID or its handle; 0: it has ended
    std::optional<int> m_exitCode;
};

}  // namespace zr::host
