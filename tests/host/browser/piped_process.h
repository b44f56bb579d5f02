// A program whose standard input and output are pipes of the test; one implementation per target.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace zr::test {

/// Two descriptors of this process: what is written to the second one is read from the first one.
std::pair<int, int> makePipe();

class PipedProcess {
public:
    /// @param words  the program, with its folder, and its arguments, which contain no quotes.
    /// @param errors  the file to which its standard error goes.
    PipedProcess(const std::vector<std::string>& words, const std::string& errors);
    /// Ends the program if it still runs.
    ~PipedProcess();
    PipedProcess(const PipedProcess&) = delete;
    PipedProcess& operator=(const PipedProcess&) = delete;

    /// The test's ends of the pipes; -1 when closed.
    int input() const { return m_input; }
    int output() const { return m_output; }
    void closeInput();
    void closeOutput();
    /// Asks the program to end, as the system does: on Linux by a signal, on Windows at once.
    void terminate() const;
    /// @return nullopt when it still runs then.
    std::optional<int> exitCode(std::chrono::milliseconds time);

private:
    std::intptr_t m_process = 0;
    int m_input = -1;
    int m_output = -1;
    std::optional<int> m_exitCode;
};

}  // namespace zr::test
