// A running pinentry.
#include "host/browser/linux/pinentry_process.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <system_error>

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "host/browser/linux/pinentry_start.h"
#include "host/system/system.h"

namespace zr::host {
namespace {

using Kind = PinentryReply::Kind;

/// A program that sends more for one command is broken.
constexpr std::size_t kMostOfReply = 65536;

int milliseconds(std::chrono::steady_clock::time_point limit) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(limit - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::chrono::milliseconds::rep>(left.count(), 0, 1 << 30));
}

int hexDigit(char digit) {
    return digit >= '0' && digit <= '9'   ? digit - '0'
           : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
           : digit >= 'a' && digit <= 'f' ? digit - 'a' + 10
                                          : -1;
}

}  // namespace

AbortSignal::AbortSignal() : m_descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (m_descriptor < 0) {
        throw std::system_error(errno, std::generic_category());
    }
}

AbortSignal::~AbortSignal() {
    close(m_descriptor);
}

void AbortSignal::raise() {
    eventfd_write(m_descriptor, 1);
}

void AbortSignal::lower() {
    eventfd_t ignored = 0;
    eventfd_read(m_descriptor, &ignored);
}

bool AbortSignal::isRaised() const {
    pollfd waiting = {m_descriptor, POLLIN, 0};
    return poll(&waiting, 1, 0) > 0;
}

PinentryProcess::PinentryProcess(const std::string& program, const AbortSignal& abort)
    : m_abort(abort) {
    std::array<int, 2> sockets = {-1, -1};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) {
        return;
    }
    m_socket = sockets[0];
    m_process = startPinentry(program, sockets[1]);
    close(sockets[1]);
}

PinentryProcess::~PinentryProcess() {
    dropLine();
    secureErase(m_buffer.data(), m_buffer.size());
    if (m_socket >= 0) {
        close(m_socket);
    }
    if (m_process > 0) {
        end();
    }
}

/// The end of its input ends a pinentry that shows nothing; a window needs a signal.
void PinentryProcess::end() {
    if (m_isBroken || !hasEnded()) {
        kill(-m_process, SIGTERM);
        hasEnded();
    }
    // Its group: the program may be a script that started the real one. The system does not give the
    // number to another process before it was waited for.
    kill(-m_process, SIGKILL);
    kill(m_process, SIGKILL);
    while (waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
    }
}

/// Whether the program ends soon.
bool PinentryProcess::hasEnded() const {
    constexpr std::chrono::milliseconds kPatience{200};
    constexpr int kPause = 5;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    for (;;) {
        siginfo_t ended = {};
        if (waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) != 0 ||
            ended.si_pid != 0) {
            return true;
        }
        if (std::chrono::steady_clock::now() > end) {
            return false;
        }
        poll(nullptr, 0, kPause);
    }
}

Kind PinentryProcess::await(short events, Time limit) const {
    for (;;) {
        std::array<pollfd, 2> waiting = {
            {{m_socket, events, 0}, {m_abort.descriptor(), POLLIN, 0}}};
        const int count = poll(waiting.data(), waiting.size(), milliseconds(limit));
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (waiting[1].revents != 0) {
            return Kind::kAborted;
        }
        return count < 0 ? Kind::kBroken : count == 0 ? Kind::kTimedOut : Kind::kOk;
    }
}

Kind PinentryProcess::send(std::string_view line, Time limit) {
    while (!line.empty()) {
        if (const Kind kind = await(POLLOUT, limit); kind != Kind::kOk) {
            return kind;
        }
        const ssize_t count =
            ::send(m_socket, line.data(), line.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            line.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            return Kind::kBroken;
        }
    }
    return Kind::kOk;
}

/// Forgets the line at the start of the buffer, with its line end.
void PinentryProcess::dropLine() {
    const std::size_t size = std::min(m_lineSize + 1, m_filled);
    std::memmove(m_buffer.data(), m_buffer.data() + size, m_filled - size);
    m_filled -= size;
    m_lineSize = 0;
    secureErase(m_buffer.data() + m_filled, m_buffer.size() - m_filled);
}

Kind PinentryProcess::readLine(Time limit) {
    for (;;) {
        const char* const end = m_buffer.data() + m_filled;
        const char* const found = std::find(static_cast<const char*>(m_buffer.data()), end, '\n');
        if (found != end) {
            m_lineSize = static_cast<std::size_t>(found - m_buffer.data());
            return Kind::kOk;
        }
        if (m_filled == m_buffer.size()) {
            return Kind::kBroken;
        }
        if (const Kind kind = await(POLLIN, limit); kind != Kind::kOk) {
            return kind;
        }
        const ssize_t count =
            recv(m_socket, m_buffer.data() + m_filled, m_buffer.size() - m_filled, MSG_DONTWAIT);
        if (count == 0 || (count < 0 && errno != EINTR && errno != EAGAIN)) {
            return Kind::kBroken;
        }
        m_filled += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

bool PinentryProcess::takeData(std::string_view data, const std::function<bool(char)>& take) const {
    bool isTaken = true;
    for (std::size_t i = 0; i < data.size(); ++i) {
        char byte = data[i];
        if (byte == '%') {
            const int high = i + 2 < data.size() ? hexDigit(data[i + 1]) : -1;
            const int low = i + 2 < data.size() ? hexDigit(data[i + 2]) : -1;
            if (high < 0 || low < 0) {
                return false;
            }
            byte = static_cast<char>(high * 16 + low);
            i += 2;
        }
        isTaken = isTaken && take(byte);
        secureErase(&byte, 1);
    }
    return true;
}

PinentryReply PinentryProcess::readReply(Time limit, const std::function<bool(char)>& take) {
    for (std::size_t size = 0; size < kMostOfReply; size += m_lineSize + 1, dropLine()) {
        if (const Kind kind = readLine(limit); kind != Kind::kOk) {
            return {kind, 0};
        }
        const std::string_view line(m_buffer.data(), m_lineSize);
        if (line == "OK" || line.starts_with("OK ")) {
            dropLine();
            return {Kind::kOk, 0};
        }
        if (line.starts_with("ERR ")) {
            constexpr unsigned kCode = 0xFFFF;
            unsigned number = 0;
            std::from_chars(line.data() + 4, line.data() + line.size(), number);
            dropLine();
            return {Kind::kError, number & kCode};
        }
        const bool isData = line.starts_with("D ") && take && takeData(line.substr(2), take);
        // Nobody has entered a PIN that comes from a store.
        const bool isStored = line.starts_with("S PASSWORD_FROM_CACHE");
        if (isStored || (!isData && !line.starts_with("S ") && !line.starts_with("#"))) {
            break;
        }
    }
    return {Kind::kBroken, 0};
}

PinentryReply PinentryProcess::greeting(std::chrono::milliseconds limit) {
    if (m_process <= 0) {
        return {Kind::kBroken, 0};
    }
    const PinentryReply reply = readReply(std::chrono::steady_clock::now() + limit, {});
    m_isBroken = !reply.isOk();
    return reply;
}

PinentryReply PinentryProcess::command(std::string_view line, std::chrono::milliseconds limit,
                                       const std::function<bool(char)>& take) {
    const Time end = std::chrono::steady_clock::now() + limit;
    // A reply that comes before its command is not a reply.
    pollfd early = {m_socket, POLLIN, 0};
    const bool isEarly = m_filled > 0 || poll(&early, 1, 0) > 0;
    Kind kind = m_isBroken || isEarly || line.size() > kMostOfLine ? Kind::kBroken : Kind::kOk;
    if (kind == Kind::kOk) {
        kind = send(std::string(line).append("\n"), end);
    }
    const PinentryReply reply = kind == Kind::kOk ? readReply(end, take) : PinentryReply{kind, 0};
    m_isBroken = !reply.isOk() && reply.kind != Kind::kError;
    return reply;
}

}  // namespace zr::host
