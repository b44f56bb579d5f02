// TokenProvider: the path of its log file.
//
// The folder is the log home from the environment, "log" and the last two components of the current
// directory. There is no log in a current directory with fewer than two components.
#include <cstdio>
#include <cstring>
#include <string_view>

#include "model/log_scope.h"
#include "model/token_provider.h"
#include "platform/kernel.h"

namespace {

constexpr std::size_t kPathSize = 260;

// A text with a full-width comma of code page 936. Readers of the logs look for exactly these
// bytes.
constexpr char kTips[] =
    "Tips: VARIANT_TRUE can not is 0xffff\xA3\xAC"
    "must is ((HRESULT)-1) can be used by 64-bits platform, do you fix it???\n";

/// A path of at most 259 bytes. Text that does not fit is not appended.
class LogPath {
public:
    bool append(std::string_view text) {
        if (m_length + text.size() >= sizeof m_text) {
            return false;
        }
        std::memcpy(m_text + m_length, text.data(), text.size());
        m_length += text.size();
        return true;
    }
    bool appendComponent(std::string_view name) {
        return append(std::string_view(&zr::kPathSeparator, 1)) && append(name);
    }
    std::string_view text() const { return {m_text, m_length}; }
    const char* c_str() const { return m_text; }

private:
    char m_text[kPathSize] = {};
    std::size_t m_length = 0;
};

/// Removes the last component from path and returns it; nothing without a separator before it.
std::string_view takeLastComponent(std::string_view* path) {
    const std::size_t separator = path->rfind(zr::kPathSeparator);
    if (separator == path->npos) {
        return {};
    }
    const std::string_view component = path->substr(separator + 1);
    *path = path->substr(0, separator);
    return component;
}

/// The text in a buffer of kPathSize after a kernel call; empty when the call failed or the text
/// did not fit.
std::string_view written(const char* buffer, DWORD length) {
    return length < kPathSize ? std::string_view(buffer, length) : std::string_view();
}

/// Creates the folder of the log file.
/// @return false when logging stays off.
bool makeLogDirectory(LogPath* directory) {
    char home[kPathSize] = {};
    const std::string_view homeText =
        written(home, GetEnvironmentVariableA("ZRKEY_HOME_X64", home, sizeof home));
    if (homeText.empty() || !directory->append(homeText)) {
        return false;
    }
    const bool isMade = homeText.back() == zr::kPathSeparator ? directory->append("log")
                                                              : directory->appendComponent("log");
    if (!isMade) {
        return false;
    }
    CreateDirectoryA(directory->c_str(), nullptr);

    char current[kPathSize] = {};
    std::string_view path = written(current, GetCurrentDirectoryA(sizeof current, current));
    if (!path.empty() && path.back() == zr::kPathSeparator) {
        path.remove_suffix(1);
    }
    const std::string_view last = takeLastComponent(&path);
    const std::string_view secondLast = takeLastComponent(&path);
    if (last.empty() || secondLast.empty()) {
        return false;
    }
    for (const std::string_view component : {secondLast, last}) {
        if (!directory->appendComponent(component)) {
            return false;
        }
        CreateDirectoryA(directory->c_str(), nullptr);
    }
    return true;
}

}  // namespace

int TokenProvider::EnableLog() {
    LogPath path;
    if (!makeLogDirectory(&path)) {
        return 0;
    }
    SYSTEMTIME now;
    GetLocalTime(&now);
    char name[40];
    std::snprintf(name, sizeof name, "TokenProvider_%02u%02u%02u.log", now.wHour, now.wMinute,
                  now.wSecond);
    if (!path.appendComponent(name) || !m_pLog) {
        return 0;
    }
    if (m_pLog->SetFilePath(path.c_str()) != 0) {
        delete m_pLog;
        m_pLog = nullptr;
        return 0;
    }
    const LogScope scope = LogScope::withoutBegin(m_pLog, "EnableLog");
    scope.message("============ this is new log file ============\n");
    scope.message(kTips);
    return 1;
}
