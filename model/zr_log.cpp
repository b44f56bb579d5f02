// ZRLog: appends time-stamped lines to one file.
#include "model/zr_log.h"

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <new>

#include "platform/files.h"
#include "platform/kernel.h"
#include "runtime/bounded_text.h"

namespace {

constexpr std::size_t kMessageSize = 81920;

}  // namespace

ZRLog::ZRLog() : m_szFilePath() {}

ZRLog::~ZRLog() {}

int ZRLog::SetFilePath(const char* path) {
    m_szFilePath[0] = 0;
    if (path && zr::appendText(m_szFilePath, path)) {
        if (std::FILE* file = zr::openLogFile(m_szFilePath)) {
            std::fclose(file);
        }
    }
    return 0;
}

void ZRLog::Log(int, const char* format, ...) const {
    if (!isOn()) {
        return;
    }
    const std::unique_ptr<char[]> message(new (std::nothrow) char[kMessageSize]);
    std::FILE* file = message ? zr::openLogFile(m_szFilePath) : nullptr;
    if (!file) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(message.get(), kMessageSize, format, arguments) < 0) {
        message[0] = 0;  // a message that cannot be formatted is empty
    }
    va_end(arguments);
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::fprintf(file, "[%02u:%02u:%02u.%03u] ", now.wHour, now.wMinute, now.wSecond,
                 now.wMilliseconds);
    std::fputs(message.get(), file);
    std::fclose(file);
}
