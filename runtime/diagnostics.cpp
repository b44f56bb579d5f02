// Diagnostics on the standard streams: formatted into a buffer, then written at once.
#include "runtime/diagnostics.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace zr {
namespace {

void writeText(std::FILE* stream, const char* text) {
    std::fwrite(text, 1, std::strlen(text), stream);
}

void writeFormatted(std::FILE* stream, const char* format, std::va_list arguments) {
    char line[2048];
    std::va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(line, sizeof line, format, arguments);
    if (length >= static_cast<int>(sizeof line)) {
        const std::size_t size = static_cast<std::size_t>(length) + 1;
        if (char* text = static_cast<char*>(std::malloc(size))) {
            std::vsnprintf(text, size, format, again);
            std::fwrite(text, 1, size - 1, stream);
            std::free(text);
        }
    } else if (length > 0) {
        std::fwrite(line, 1, static_cast<std::size_t>(length), stream);
    }
    va_end(again);
}

}  // namespace

void consoleOut(const char* text) {
    writeText(stdout, text);
}

void consoleOutFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    writeFormatted(stdout, format, arguments);
    va_end(arguments);
}

void consoleError(const char* text) {
    writeText(stderr, text);
}

void consoleErrorFormat(const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    writeFormatted(stderr, format, arguments);
    va_end(arguments);
}

}  // namespace zr
