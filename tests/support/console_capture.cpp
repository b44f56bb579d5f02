// What a piece of code writes to standard output and standard error, through files: under Wine the
// null device is slow and a pipe could fill.
#include "tests/support/console_capture.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <stdexcept>

#include "tests/support/environment.h"

namespace zr::test {

ConsoleCapture::ConsoleCapture() : m_out(redirect(stdout, 1)), m_error(redirect(stderr, 2)) {}

ConsoleCapture::~ConsoleCapture() {
    const Text text = stop();
    if (testing::Test::HasFailure()) {
        // The output contains the test's own report.
        std::fputs(text.out.c_str(), stdout);
        std::fputs(text.error.c_str(), stderr);
    }
}

ConsoleCapture::Text ConsoleCapture::stop() {
    if (!m_isActive) {
        return {};
    }
    m_isActive = false;
    std::fflush(stdout);
    std::fflush(stderr);
    Text text;
    text.out = restore(&m_out);
    text.error = restore(&m_error);
    return text;
}

ConsoleCapture::Redirected ConsoleCapture::redirect(std::FILE* stream, int descriptor) {
    std::fflush(stream);
    std::FILE* file = temporaryFile();
    if (!file) {
        throw std::runtime_error("no temporary file for the console");
    }
    const int saved = duplicate(descriptor);
    duplicateOnto(descriptorOf(file), descriptor);
    return {descriptor, saved, file};
}

std::string ConsoleCapture::restore(Redirected* redirected) {
    duplicateOnto(redirected->saved, redirected->descriptor);
    closeDescriptor(redirected->saved);
    std::string text;
    std::rewind(redirected->file);
    for (int c; (c = std::fgetc(redirected->file)) != EOF;) {
        if (c != '\r') {
            text += static_cast<char>(c);
        }
    }
    std::fclose(redirected->file);
    return text;
}

}  // namespace zr::test
