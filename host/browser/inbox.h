// What the page sent and the host has not done yet. Three threads use it: the reader adds messages, the
// worker takes them, and the attendant answers requests that are not carried out and watches the time
// of calls.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "host/browser/messages.h"
#include "host/browser/prompt.h"

namespace zr::host {

/// A request that is answered without being carried out.
struct EarlyAnswer {
    std::uint64_t id = 0;
    std::string member;
    const char* code = "";  ///< of page_code
};

/// What becomes of an upload that a request names which is not carried out.
struct UploadChange {
    std::uint64_t number = 0;
    bool isSpoiled = false;  ///< bytes of it were refused; otherwise it has ended

    bool operator==(const UploadChange&) const = default;
};

/// The request whose call takes longer than it may.
struct LateCall {
    std::uint64_t id = 0;  ///< 0: the handshake, or the end of the connection
    std::string member;
};

/// What the attendant has to do.
struct Attention {
    std::vector<EarlyAnswer> answers;
    std::optional<LateCall> late;
    bool isFinished = false;  ///< nothing more comes
};

class Inbox {
public:
    using Clock = std::chrono::steady_clock;

    static constexpr std::size_t kMostWaiting = 16;
    /// More requests that are not carried out, and whose answers nobody reads, break the protocol.
    static constexpr std::size_t kMostEarlyAnswers = 1024;

    /// @param prompt  aborted and resumed; borrowed.
    explicit Inbox(Prompt& prompt) : m_prompt(prompt) {}

    // The reader.
    /// Throws Malformed.
    void add(PageMessage message);
    /// No message comes any more. Closes the prompt. The first exit code counts.
    void end(int exitCode);
    /// Waits until the worker has closed everything.
    /// @return false when it takes longer.
    bool awaitFinish(std::chrono::milliseconds time);

    // The worker.
    /// Waits for the handshake.
    /// @return nullopt: none came.
    std::optional<HelloMessage> takeHello();
    /// Waits for a request. The one that was taken before is done.
    /// @param changes  set to those of requests before it that were not carried out, in their order.
    /// @return nullopt after the end.
    std::optional<RequestMessage> take(std::vector<UploadChange>& changes);
    /// No request is carried out any more.
    void beginClose();
    /// Whether the request was cancelled, or the input has ended.
    bool isCancelled() const;
    bool isEnded() const;
    /// A call that waits for no person begins.
    void beginCall(std::chrono::seconds time);
    void endCall();
    /// Everything is closed.
    void finish();
    int exitCode() const;

    // The attendant.
    /// Waits until there is something to do.
    Attention attend();

    // The watch.
    /// Waits until a call is late by some time.
    /// @return false when everything is closed.
    bool awaitLate(std::chrono::milliseconds time);

private:
    struct Waiting {
        RequestMessage request;
        bool isAnswered = false;
        std::vector<UploadChange> changes;  ///< of an answered one
    };
    using Queue = std::deque<Waiting>;

    void addRequest(RequestMessage request);
    void cancel(std::uint64_t id);
    void answerEarly(const Queue::iterator& waiting, const char* code);
    bool hasAttention(Clock::time_point now) const;

    Prompt& m_prompt;
    mutable std::mutex m_mutex;
    std::condition_variable m_forWorker;
    std::condition_variable m_forAttendant;
    std::condition_variable m_forReader;
    std::condition_variable m_forWatch;

    std::optional<HelloMessage> m_hello;
    bool m_isGreeted = false;
    std::uint64_t m_lastId = 0;
    Queue m_queue;
    std::size_t m_waiting = 0;  ///< of the queue, those without an answer
    std::vector<EarlyAnswer> m_early;
    std::uint64_t m_current = 0;  ///< the request that is being carried out; 0: none
    std::string m_currentMember;
    bool m_isCurrentCancelled = false;
    Clock::time_point m_deadline = Clock::time_point::max();
    Clock::time_point m_attendantWakes = Clock::time_point::max();
    Clock::time_point m_watchWakes = Clock::time_point::max();
    bool m_isLate = false;
    bool m_isEnded = false;
    bool m_isFinished = false;
    int m_exitCode = 0;
};

}  // namespace zr::host
