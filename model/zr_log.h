// ZRLog: appends time-stamped lines to a file.
//
// The file is opened and closed for each line: no line waits in a buffer, and the file can be read
// or removed between calls.
#pragma once

class ZRLog {
public:
    ZRLog();
    ~ZRLog();
    ZRLog(const ZRLog&) = default;
    ZRLog& operator=(const ZRLog&) = default;

    /// A copy of a logger; for null, one that writes nothing. The copy can write a line after the
    /// original was destroyed.
    static ZRLog copyOf(const ZRLog* log) { return log ? *log : ZRLog(); }

    /// Turns logging on and creates the file.
    /// @param path  at most 499 bytes; null or a longer path turns logging off.
    /// @return always 0.
    int SetFilePath(const char* path);
    /// Whether lines are written.
    bool isOn() const { return m_szFilePath[0] != 0; }
    /// Appends "[hh:mm:ss.mmm] " and a message. Failures are not reported.
    /// @param level   ignored.
    /// @param format  printf format, with the line end. The message is cut after 81,919 bytes.
    [[gnu::format(printf, 3, 4)]] void Log(int level, const char* format, ...) const;

private:
    char m_szFilePath[500];
};
