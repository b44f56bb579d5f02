// ZRLog: appends time-stamped lines to one file.
#include "model/zr_log.h"

#include <cstdarg>
#include <cstdio>

#include "kernel.h"
#include "runtime/bounded_text.h"

ZRLog::ZRLog() : m_szFilePath() {}

ZRLog::~ZRLog() {}

int ZRLog::SetFilePath(const char* path) {
    m_szFilePath[0] = 0;
    if (path && zr::appendText(m_szFilePath, path)) {
        if (std::FILE* file = std::fopen(m_szFilePath, "a+")) {
            std::fclose(file);
        }
    }
    return 0;
}

void ZRLog::Log(int, const char* format, ...) const {
    // One buffer for all the loggers of a thread: providers may log in threads of their own.
    static thread_local char szBuffer[81920];
    if (!m_szFilePath[0]) {
        return;
    }
    std::FILE* file = std::fopen(m_szFilePath, "a+");
    if (!file) {
        return;
    }
    std::va_list arguments;
    va_start(arguments, format);
    if (std::vsnprintf(szBuffer, sizeof szBuffer, format, arguments) < 0) {
        szBuffer[0] = 0;  // what cannot be formatted leaves the time stamp alone
    }
    va_end(arguments);
    SYSTEMTIME now;
    GetLocalTime(&now);
    std::fprintf(file, "[%02u:%02u:%02u.%03u] ", now.wHour, now.wMinute, now.wSecond,
                 now.wMilliseconds);
    std::fputs(szBuffer, file);
    std::fclose(file);
}
