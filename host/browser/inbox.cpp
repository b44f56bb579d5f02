// What the page sent and the host has not done yet.
#include "host/browser/inbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "host/browser/malformed.h"
#include "host/browser/page_error.h"

namespace zr::host {
namespace {

std::vector<UploadChange> changesBy(const RequestMessage& request) {
    std::vector<UploadChange> changes;
    for (const std::uint64_t number : request.uploads()) {
        changes.push_back({number, false});
    }
    if (const std::uint64_t number = request.appendedUpload()) {
        changes.push_back({number, true});
    }
    return changes;
}

}  // namespace

void Inbox::add(PageMessage message) {
    const std::lock_guard lock(m_mutex);
    auto* const hello = std::get_if<HelloMessage>(&message);
    if ((hello != nullptr) == m_isGreeted) {
        throw Malformed{m_isGreeted ? "a second handshake" : "a message before the handshake"};
    }
    if (hello) {
        m_isGreeted = true;
        m_hello = std::move(*hello);
        m_forWorker.notify_one();
    } else if (auto* const request = std::get_if<RequestMessage>(&message)) {
        addRequest(std::move(*request));
    } else {
        cancel(std::get<CancelMessage>(message).id);
    }
}

void Inbox::addRequest(RequestMessage request) {
    if (request.id <= m_lastId) {
        throw Malformed{"the number of a request is not greater than those before"};
    }
    m_lastId = request.id;
    request.arrival = Clock::now();
    m_queue.push_back({std::move(request), false, {}});
    if (m_waiting == kMostWaiting) {
        answerEarly(std::prev(m_queue.end()), page_code::kTooMany);
        return;
    }
    ++m_waiting;
    m_forWorker.notify_one();
}

void Inbox::cancel(std::uint64_t id) {
    if (id == m_current) {
        m_isCurrentCancelled = true;
        m_prompt.abort();
        return;
    }
    const auto found = std::ranges::find_if(m_queue, [id](const Waiting& waiting) {
        return waiting.request.id == id && !waiting.isAnswered;
    });
    if (found != m_queue.end()) {
        --m_waiting;
        answerEarly(found, page_code::kAborted);
    }
}

void Inbox::answerEarly(const Queue::iterator& waiting, const char* code) {
    if (std::max(m_early.size(), m_queue.size()) > kMostEarlyAnswers) {
        throw Malformed{"too many requests whose answers are not read"};
    }
    RequestMessage& request = waiting->request;
    waiting->changes = changesBy(request);
    m_early.push_back({request.id, std::move(request.member), code});
    m_forAttendant.notify_one();
    waiting->isAnswered = true;
    // Nothing else of it is needed, and many may come.
    request = {};
    if (waiting->changes.empty()) {
        m_queue.erase(waiting);
    }
}

void Inbox::end(int exitCode) {
    const std::lock_guard lock(m_mutex);
    if (!m_isEnded) {
        m_isEnded = true;
        m_exitCode = exitCode;
    }
    m_prompt.abort();
    m_forWorker.notify_one();
}

bool Inbox::awaitFinish(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    return m_forReader.wait_for(lock, time, [this] { return m_isFinished; });
}

std::optional<HelloMessage> Inbox::takeHello() {
    std::unique_lock lock(m_mutex);
    m_forWorker.wait(lock, [this] { return m_hello || m_isEnded; });
    return std::exchange(m_hello, std::nullopt);
}

std::optional<RequestMessage> Inbox::take(std::vector<UploadChange>& changes) {
    std::unique_lock lock(m_mutex);
    m_current = 0;
    for (;;) {
        m_forWorker.wait(lock, [this] { return !m_queue.empty() || m_isEnded; });
        if (m_isEnded) {
            return std::nullopt;
        }
        Waiting next = std::move(m_queue.front());
        m_queue.pop_front();
        if (!next.isAnswered) {
            --m_waiting;
            m_current = next.request.id;
            m_currentMember = next.request.member;
            m_isCurrentCancelled = false;
            m_prompt.resume();
            return std::move(next.request);
        }
        changes.insert(changes.end(), next.changes.begin(), next.changes.end());
    }
}

void Inbox::beginClose() {
    const std::lock_guard lock(m_mutex);
    m_current = 0;
}

bool Inbox::isCancelled() const {
    const std::lock_guard lock(m_mutex);
    return m_isCurrentCancelled || m_isEnded;
}

bool Inbox::isEnded() const {
    const std::lock_guard lock(m_mutex);
    return m_isEnded;
}

void Inbox::beginCall(std::chrono::seconds time) {
    const std::lock_guard lock(m_mutex);
    m_deadline = Clock::now() + time;
    // The attendant wakes by itself at the end of an earlier call's time.
    if (m_deadline < m_attendantWakes) {
        m_forAttendant.notify_one();
    }
    if (m_deadline < m_watchWakes) {
        m_forWatch.notify_one();
    }
}

void Inbox::endCall() {
    std::unique_lock lock(m_mutex);
    // The attendant has answered the request, and ends the process; or the watch does.
    m_forWorker.wait(lock, [this] { return !m_isLate; });
    m_deadline = Clock::time_point::max();
}

void Inbox::finish() {
    const std::lock_guard lock(m_mutex);
    m_isFinished = true;
    m_forAttendant.notify_one();
    m_forReader.notify_one();
    m_forWatch.notify_one();
}

int Inbox::exitCode() const {
    const std::lock_guard lock(m_mutex);
    return m_exitCode;
}

bool Inbox::hasAttention(Clock::time_point now) const {
    return !m_early.empty() || m_isFinished || now >= m_deadline;
}

Attention Inbox::attend() {
    std::unique_lock lock(m_mutex);
    while (!hasAttention(Clock::now())) {
        m_attendantWakes = m_deadline;
        if (m_deadline == Clock::time_point::max()) {
            m_forAttendant.wait(lock);
        } else {
            m_forAttendant.wait_until(lock, m_attendantWakes);
        }
    }
    m_isLate = Clock::now() >= m_deadline;
    Attention attention = {std::exchange(m_early, {}), std::nullopt, m_isFinished};
    if (m_isLate) {
        attention.late = {m_current, m_currentMember};
    }
    return attention;
}

bool Inbox::awaitLate(std::chrono::milliseconds time) {
    std::unique_lock lock(m_mutex);
    while (!m_isFinished) {
        m_watchWakes = m_deadline;
        if (m_deadline == Clock::time_point::max()) {
            m_forWatch.wait(lock);
        } else if (Clock::now() >= m_deadline + time) {
            return true;
        } else {
            m_forWatch.wait_until(lock, m_deadline + time);
        }
    }
    return false;
}

}  // namespace zr::host
