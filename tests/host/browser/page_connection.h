// A connection of a page in the test's own process: pipes, the threads of the host, and a person at the
// prompts.
#pragma once

#include <filesystem>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "host/browser/serving.h"
#include "tests/host/browser/fake_prompt.h"
#include "tests/host/browser/page_frames.h"
#include "tests/host/browser/piped_process.h"

namespace zr::test {

inline constexpr const char* kSite = "https://example.com";

class PageConnection {
public:
    /// @param state     the folder for limits and log; it exists.
    /// @param settings  of the user.
    PageConnection(const std::filesystem::path& state, const host::BrowserSettings& settings)
        : m_settings(settings),
          m_surroundings{prompt,
                         [this] {
                             const std::lock_guard lock(m_mutex);
                             return host::SitePolicy({}, m_settings);
                         },
                         [state] { return state; }, std::chrono::milliseconds(0)} {
        const auto [hostInput, toHost] = makePipe();
        const auto [fromHost, hostOutput] = makePipe();
        m_hostInput = hostInput;
        m_hostOutput = hostOutput;
        m_toHost = toHost;
        m_fromHost = fromHost;
        page = std::make_unique<PageFrames>(toHost, fromHost);
        m_serving = std::make_unique<host::Serving>(hostInput, hostOutput, m_surroundings,
                                                    [](int) { std::abort(); });
        m_worker = std::thread([this] {
            m_exitCode = m_serving->run();
            // As the end of the process does.
            host::closeDescriptor(m_hostOutput);
        });
    }
    ~PageConnection() { finish(); }
    PageConnection(const PageConnection&) = delete;
    PageConnection& operator=(const PageConnection&) = delete;

    /// Closes the input.
    /// @return the exit code.
    int finish() {
        closeInput();
        if (m_worker.joinable()) {
            m_worker.join();
            m_serving.reset();
            host::closeDescriptor(m_hostInput);
            host::closeDescriptor(m_fromHost);
        }
        return m_exitCode;
    }
    /// Changes the settings of the user.
    void change(const host::BrowserSettings& settings) {
        const std::lock_guard lock(m_mutex);
        m_settings = settings;
    }
    void closeInput() {
        if (m_toHost >= 0) {
            host::closeDescriptor(std::exchange(m_toHost, -1));
        }
    }

    FakePrompt prompt;
    std::unique_ptr<PageFrames> page;

private:
    std::mutex m_mutex;
    host::BrowserSettings m_settings;
    host::Surroundings m_surroundings;
    int m_hostInput;
    int m_hostOutput;
    int m_toHost;
    int m_fromHost;
    std::unique_ptr<host::Serving> m_serving;
    std::thread m_worker;
    int m_exitCode = -1;
};

}  // namespace zr::test
