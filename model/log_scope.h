// LogScope: the trace of one operation, "Begin" on entry and "End" on its normal exit.
//
// An early return writes no End line: a failure found on the way shows by the missing line. An
// operation with one way out writes it whatever its result. The line numbers are those of the calls.
#pragma once

#include <zrkey/automation.h>

#include "model/zr_log.h"

class LogScope {
public:
    /// @param log   may be null: nothing is written then. Outlives the scope.
    /// @param name  the operation's name without its class.
    LogScope(const ZRLog* log, const char* name, unsigned int line = __builtin_LINE())
        : LogScope(log, name, NoBegin()) {
        if (m_log) {
            m_log->Log(0, "[%s:%u] Begin\n", m_name, line);
        }
    }

    /// The trace of an operation that writes messages only.
    static LogScope withoutBegin(const ZRLog* log, const char* name) {
        return LogScope(log, name, NoBegin());
    }

    void message(const char* text, unsigned int line = __builtin_LINE()) const {
        if (m_log) {
            m_log->Log(0, "[%s:%u] %s", m_name, line, text);
        }
    }

    /// Writes the End line.
    /// @return hr, so that an operation ends with "return scope.end(S_OK)".
    HRESULT end(HRESULT hr = S_OK, unsigned int line = __builtin_LINE()) const {
        if (m_log) {
            m_log->Log(0, "[%s:%u] End\n", m_name, line);
        }
        return hr;
    }

private:
    struct NoBegin {};
    LogScope(const ZRLog* log, const char* name, NoBegin) : m_log(log), m_name(name) {}

    const ZRLog* m_log;
    const char* m_name;
};
