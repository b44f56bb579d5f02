// A running pinentry, which answers commands of the Assuan protocol line by line.
#pragma once

#include <sys/types.h>

#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <string_view>

#include "host/system/secret_memory.h"

namespace zr::host {

/// A descriptor that becomes readable when a prompt is to close; any thread may do that.
class AbortSignal {
public:
    AbortSignal();
    ~AbortSignal();
    AbortSignal(const AbortSignal&) = delete;
    AbortSignal& operator=(const AbortSignal&) = delete;

    void raise();
    void lower();
    bool isRaised() const;
    int descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

struct PinentryReply {
    enum class Kind {
        kOk,
        kError,     ///< the program refused: see code
        kBroken,    ///< it ended, or did not follow the protocol
        kTimedOut,  ///< it did not answer
        kAborted
    };
    Kind kind = Kind::kBroken;
    unsigned code = 0;  ///< without the part that says which program it is from

    bool isOk() const { return kind == Kind::kOk; }
};

/// Ends the program on destruction.
class PinentryProcess {
public:
    /// An Assuan line, without its line end.
    static constexpr std::size_t kMostOfLine = 1000;

    PinentryProcess(const std::string& program, const AbortSignal& abort);
    ~PinentryProcess();
    PinentryProcess(const PinentryProcess&) = delete;
    PinentryProcess& operator=(const PinentryProcess&) = delete;

    /// What it says when it has started.
    PinentryReply greeting(std::chrono::milliseconds limit);
    /// Sends a command and waits for the reply.
    /// @param take  gets each byte of data; empty: data is not expected. When it returns false the
    ///              rest is dropped.
    PinentryReply command(std::string_view line, std::chrono::milliseconds limit,
                          const std::function<bool(char)>& take = {});

private:
    using Time = std::chrono::steady_clock::time_point;

    void end();
    bool hasEnded() const;
    PinentryReply::Kind await(short events, Time limit) const;
    PinentryReply::Kind send(std::string_view line, Time limit);
    PinentryReply::Kind readLine(Time limit);
    PinentryReply readReply(Time limit, const std::function<bool(char)>& take);
    bool takeData(std::string_view data, const std::function<bool(char)>& take) const;
    void dropLine();

    const AbortSignal& m_abort;
    int m_socket = -1;
    pid_t m_process = -1;
    bool m_isBroken = false;
    std::array<char, kMostOfLine + 2> m_buffer = {};  ///< may contain a PIN
    SecretMemory m_protection{m_buffer.data(), m_buffer.size()};
    std::size_t m_filled = 0;
    std::size_t m_lineSize = 0;  ///< of the line at its start, without the line end
};

}  // namespace zr::host
