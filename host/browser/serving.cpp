// The threads of a connection.
#include "host/browser/serving.h"

#include <exception>
#include <string>
#include <utility>

#include "host/browser/complaint.h"
#include "host/browser/frames.h"
#include "host/browser/malformed.h"
#include "host/browser/page_error.h"

namespace zr::host {
namespace {

constexpr int kExitMalformed = 1;
constexpr int kExitLate = 1;

const char* messageOf(const char* code) {
    return std::string_view(code) == page_code::kTooMany ? "too many requests wait"
                                                         : "the request was cancelled";
}

}  // namespace

Serving::Serving(int input, int output, const Surroundings& surroundings,
                 std::function<void(int)> endProcess)
    : m_endProcess(std::move(endProcess)),
      m_replies(output),
      m_inbox(surroundings.prompt),
      m_connection(m_inbox, m_replies, surroundings),
      m_reader([this, input] { read(input); }),
      m_attendant([this] { attend(); }),
      m_watch([this] { watch(); }) {}

Serving::~Serving() {
    m_reader.join();
    m_attendant.join();
    m_watch.join();
}

int Serving::run() {
    m_connection.run();
    const int exitCode = m_inbox.exitCode();
    if (exitCode == kExitMalformed) {
        // The process ends after this.
        m_complained.get_future().wait();
    }
    return exitCode;
}

std::string Serving::readMessages(int input) {
    try {
        while (const std::optional<std::string> frame = readFrame(input)) {
            m_inbox.add(readMessage(*frame));
        }
    } catch (const Malformed& malformed) {
        return malformed.problem;
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

void Serving::read(int input) {
    const std::string problem = readMessages(input);
    // Before the complaint, which may have to wait.
    m_inbox.end(problem.empty() ? 0 : kExitMalformed);
    if (!problem.empty()) {
        complain(std::string("zrkey-browser: ").append(problem).append("\n"));
    }
    m_complained.set_value();
    if (!m_inbox.awaitFinish(kGrace)) {
        // A call of the module still runs.
        m_endProcess(m_inbox.exitCode());
    }
}

void Serving::attend() {
    for (;;) {
        const Attention attention = m_inbox.attend();
        for (const EarlyAnswer& answer : attention.answers) {
            m_replies.refuse(answer.id, answer.member, {answer.code, messageOf(answer.code)});
        }
        if (attention.late) {
            endLate(*attention.late);
            return;
        }
        if (attention.isFinished) {
            return;
        }
    }
}

void Serving::watch() {
    // The attendant may wait for a browser that does not read.
    if (m_inbox.awaitLate(kGrace)) {
        m_endProcess(kExitLate);
    }
}

void Serving::endLate(const LateCall& late) {
    const PageError error(page_code::kDeadline, "the module did not return in time");
    if (late.id != 0) {
        m_connection.noteLate(late.member);
        m_replies.refuse(late.id, late.member, error);
    } else if (m_replies.isGreeted()) {
        // The connection is being closed: nobody waits for an answer.
        m_connection.noteLate("disconnect");
    } else {
        m_connection.noteLate("connect");
        m_replies.refuseGreeting(error);
    }
    complain("zrkey-browser: the module did not return in time\n");
    m_endProcess(kExitLate);
}

}  // namespace zr::host
