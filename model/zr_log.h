// ZRLog: appends time-stamped lines to one file, opened anew for each line.
//
// Every line reaches the disk at once and the file may be read or removed between calls.
#pragma once

class ZRLog {
public:
    ZRLog();
    ~ZRLog();
    ZRLog(const ZRLog&) = default;
    ZRLog& operator=(const ZRLog&) = default;

    /// Turns logging on, and makes the file.
    /// @param path  at most 499 bytes; null or a longer path turns logging off.
    /// @return 0 always.
    int SetFilePath(const char* path);
    /// Appends "[hh:mm:ss.mmm] " and the message. Nothing is reported when that fails.
    /// @param level   accepted and not looked at.
    /// @param format  printf format; the message carries its own line end and is cut at 81,919
    ///                bytes.
    [[gnu::format(printf, 3, 4)]] void Log(int level, const char* format, ...) const;

private:
    char m_szFilePath[500];
};
