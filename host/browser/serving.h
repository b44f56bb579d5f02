// The threads of a connection: the reader takes frames from the browser, the worker carries out
// requests, the attendant answers those that are not carried out and ends a late call, and the watch ends
// the process when the attendant cannot.
#pragma once

#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "host/browser/connection.h"

namespace zr::host {

class Serving {
public:
    /// After the end of the input, a call of the module and the logout have so long; so has the answer
    /// to a late call.
    static constexpr std::chrono::milliseconds kGrace{700};

    /// Starts reader, attendant and watch.
    /// @param input         a descriptor; borrowed, as output and surroundings are.
    /// @param endProcess    does not return; called on any thread.
    Serving(int input, int output, const Surroundings& surroundings,
            std::function<void(int)> endProcess);
    /// Waits for the end of the input.
    ~Serving();
    Serving(const Serving&) = delete;
    Serving& operator=(const Serving&) = delete;

    /// Is the worker until the page is gone.
    /// @return the exit code of the process.
    int run();

private:
    void read(int input);
    /// @return what is wrong with the input; empty: it has ended.
    std::string readMessages(int input);
    void attend();
    void watch();
    void endLate(const LateCall& late);

    std::function<void(int)> m_endProcess;
    Replies m_replies;
    Inbox m_inbox;
    Connection m_connection;
    /// The reader has said what is wrong with the input.
    std::promise<void> m_complained;
    std::thread m_reader;
    std::thread m_attendant;
    std::thread m_watch;
};

}  // namespace zr::host
