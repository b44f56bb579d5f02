// LogScope: the log lines of one operation, "Begin" on entry and "End" on its normal exit.
//
// An early return writes no End line: the missing line shows that a step failed. An operation with
// a single exit writes it with any result. Each line carries the source line of the call that
// writes it.
#pragma once

#include <zrkey/automation.h>

#include "model/zr_log.h"

class LogScope {
public:
    /// Writes the Begin line.
    /// @param log   the logger, which must outlive the scope; null writes nothing.
    /// @param name  the name of the operation without its class.
    LogScope(const ZRLog* log, const char* name, unsigned int line = __builtin_LINE())
        : LogScope(log, name, NoBegin()) {
        if (isOn()) {
            m_log->Log(0, "[%s:%u] Begin\n", m_name, line);
        }
    }

    /// A trace without a Begin line, for operations that write messages only.
    static LogScope withoutBegin(const ZRLog* log, const char* name) {
        return LogScope(log, name, NoBegin());
    }

    /// Writes a message.
    /// @param text  the message with its line end.
    void message(const char* text, unsigned int line = __builtin_LINE()) const {
        if (isOn()) {
            m_log->Log(0, "[%s:%u] %s", m_name, line, text);
        }
    }

    /// Writes a message that ends in a reference count.
    /// @param text  the message before the count.
    void count(const char* text, ULONG references, unsigned int line = __builtin_LINE()) const {
        if (isOn()) {
            m_log->Log(0, "[%s:%u] %s%lu\n", m_name, line, text,
                       static_cast<unsigned long>(references));
        }
    }

    /// Writes the End line.
    /// @return hr, so that an operation can end with "return scope.end(S_OK)".
    HRESULT end(HRESULT hr = S_OK, unsigned int line = __builtin_LINE()) const {
        if (isOn()) {
            m_log->Log(0, "[%s:%u] End\n", m_name, line);
        }
        return hr;
    }

    /// Writes the End line unless hr is a failure, which is an early return.
    /// @return hr.
    HRESULT endOnSuccess(HRESULT hr, unsigned int line = __builtin_LINE()) const {
        return FAILED(hr) ? hr : end(hr, line);
    }

private:
    struct NoBegin {};
    LogScope(const ZRLog* log, const char* name, NoBegin) : m_log(log), m_name(name) {}

    /// Asked for each line: an operation may turn logging on. Without logging, no line is formatted or
    /// even handed over.
    bool isOn() const { return m_log && m_log->isOn(); }

    const ZRLog* m_log;
    const char* m_name;
};
