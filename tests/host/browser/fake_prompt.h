// A person who answers prompts as a test says.
#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "host/browser/prompt.h"

namespace zr::test {

/// Used by the thread of the test and those of the connection.
class FakePrompt : public host::Prompt {
public:
    /// The next answer; without one the prompt stays open until it is aborted.
    void answer(host::PromptEnd end, std::string pin = {}) {
        const std::lock_guard lock(m_mutex);
        m_answers.push_back({end, std::move(pin)});
        m_changed.notify_all();
    }
    /// The person is as quick as the end: prompts count as answered when they are aborted.
    void answerAfterAbort() {
        const std::lock_guard lock(m_mutex);
        m_whenAborted = host::PromptEnd::kAnswered;
    }
    /// Waits until so many prompts were opened.
    void awaitOpened(std::size_t count) {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_opened >= count; });
    }
    std::size_t opened() {
        const std::lock_guard lock(m_mutex);
        return m_opened;
    }
    std::vector<host::PinQuestion> questions() {
        const std::lock_guard lock(m_mutex);
        return m_questions;
    }
    std::vector<host::Confirmation> confirmations() {
        const std::lock_guard lock(m_mutex);
        return m_confirmations;
    }

    host::PromptEnd askPin(const host::PinQuestion& question, host::Pin& pin) override {
        std::unique_lock lock(m_mutex);
        m_questions.push_back(question);
        const Answer answer = await(lock);
        for (const char byte : answer.pin) {
            pin.append(byte);
        }
        return answer.end;
    }
    host::PromptEnd confirm(const host::Confirmation& confirmation) override {
        std::unique_lock lock(m_mutex);
        m_confirmations.push_back(confirmation);
        return await(lock).end;
    }
    void abort() override {
        const std::lock_guard lock(m_mutex);
        m_isAborted = true;
        m_changed.notify_all();
    }
    void resume() override {
        const std::lock_guard lock(m_mutex);
        m_isAborted = false;
    }

private:
    struct Answer {
        host::PromptEnd end = host::PromptEnd::kAborted;
        std::string pin;
    };

    Answer await(std::unique_lock<std::mutex>& lock) {
        ++m_opened;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isAborted || !m_answers.empty(); });
        if (m_isAborted) {
            return {m_whenAborted, {}};
        }
        Answer answer = std::move(m_answers.front());
        m_answers.pop_front();
        return answer;
    }

    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<Answer> m_answers;
    std::size_t m_opened = 0;
    bool m_isAborted = false;
    host::PromptEnd m_whenAborted = host::PromptEnd::kAborted;
    std::vector<host::PinQuestion> m_questions;
    std::vector<host::Confirmation> m_confirmations;
};

}  // namespace zr::test
