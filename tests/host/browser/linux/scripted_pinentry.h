// Tests with a scripted pinentry; on Linux only, where prompts are those of a pinentry.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "host/browser/linux/pinentry_prompt.h"
#include "tests/support/temp_dir.h"

namespace zr::test {

/// A link to the program, with its files, in a folder of the test's own.
class ScriptedPinentryTest : public testing::Test {
protected:
    ScriptedPinentryTest();

    /// What the program does from now on, in a hurry; what it was asked before is forgotten.
    void script(const std::string& actions) const;
    std::string program() const { return m_program.string(); }
    /// A prompt that takes answers at once.
    host::PinentryPrompt makePrompt(host::PinentryTimes times = {
                                        .patience = std::chrono::milliseconds(0)}) const {
        return host::PinentryPrompt(program(), times);
    }

    /// All that it was asked since.
    std::string asked() const;
    /// The arguments of each command of that name.
    std::vector<std::string> all(const std::string& command) const;
    std::string last(const std::string& command) const;
    /// The text of its last window, decoded.
    std::string description() const;

    TempDir temp;

private:
    std::string path(const char* extension) const;

    std::filesystem::path m_program;
};

}  // namespace zr::test
