// What a piece of code writes to standard output and standard error.
//
//     ConsoleCapture console;
//     factory(...);
//     EXPECT_EQ(console.stop().out, "...");
#pragma once

#include <cstdio>
#include <string>

namespace zr::test {

class ConsoleCapture {
public:
    struct Text {
        std::string out;
        std::string error;
    };

    ConsoleCapture();
    ConsoleCapture(const ConsoleCapture&) = delete;
    ConsoleCapture& operator=(const ConsoleCapture&) = delete;
    ~ConsoleCapture();

    /// Ends the capture. Line ends are "\n" on both targets.
    Text stop();

private:
    struct Redirected {
        int descriptor;
        int saved;
        std::FILE* file;
    };

    static Redirected redirect(std::FILE* stream, int descriptor);
    static std::string restore(Redirected* redirected);

    Redirected m_out;
    Redirected m_error;
    bool m_isActive = true;
};

}  // namespace zr::test
