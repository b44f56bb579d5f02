// The time that a call of the module may take.
#pragma once

#include <chrono>

#include "host/browser/inbox.h"

namespace zr::host {

/// Begins a call and ends it on destruction. When it takes longer, the process ends.
class CallTime {
public:
    CallTime(Inbox& inbox, std::chrono::seconds most) : m_inbox(inbox) { inbox.beginCall(most); }
    ~CallTime() { m_inbox.endCall(); }
    CallTime(const CallTime&) = delete;
    CallTime& operator=(const CallTime&) = delete;

private:
    Inbox& m_inbox;
};

/// Makes calls of the module, none of which waits for a person.
class TimedCalls {
public:
    TimedCalls(Inbox& inbox, std::chrono::seconds most) : m_inbox(inbox), m_most(most) {}

    template <class Function>
    auto operator()(Function function) const {
        const CallTime time(m_inbox, m_most);
        return function();
    }

private:
    Inbox& m_inbox;
    std::chrono::seconds m_most;
};

}  // namespace zr::host
