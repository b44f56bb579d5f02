// A call of the recording module and its answer.
#pragma once

#include <array>
#include <string>
#include <utility>

#include "tests/support/recording/recording_fault.h"

class RecordedCall {
public:
    explicit RecordedCall(std::string line) : m_line(std::move(line)) {}

    void setResult(CK_RV result) { m_answer.result = result; }
    void setCount(CK_ULONG count, CK_ULONG handle) {
        m_answer.count = count;
        m_answer.handle = handle;
    }
    void setTokenInfo(const CK_TOKEN_INFO& info) { m_answer.tokenInfo = info; }
    /// @param buffer  the caller's, room bytes; may be null.
    void addValue(CK_ULONG length, const void* buffer, CK_ULONG room) {
        if (m_answer.valueCount == RecordingAnswer::kMostValues) {
            return;
        }
        RecordingAnswer::Value& value = m_answer.values[m_answer.valueCount];
        value.length = length;
        value.room = buffer ? room : 0;
        m_hasBuffer[m_answer.valueCount] = buffer != nullptr;
        if (buffer) {
            m_bytes[m_answer.valueCount].assign(static_cast<const char*>(buffer), room);
        }
        ++m_answer.valueCount;
    }

    const std::string& line() const { return m_line; }
    RecordingAnswer answer() const {
        RecordingAnswer answer = m_answer;
        for (std::size_t i = 0; i < answer.valueCount; ++i) {
            answer.values[i].bytes = m_hasBuffer[i]
                                         ? reinterpret_cast<const unsigned char*>(m_bytes[i].data())
                                         : nullptr;
        }
        return answer;
    }

private:
    std::string m_line;
    RecordingAnswer m_answer = {};
    std::array<std::string, RecordingAnswer::kMostValues> m_bytes;
    std::array<bool, RecordingAnswer::kMostValues> m_hasBuffer = {};
};
