// Loads DLLs without a window of the system about a drive or a DLL that is missing.
#pragma once

#include <windows.h>

namespace zr::automation {

/// Until destruction the system shows no such window for this thread; the loads fail instead.
class NoErrorWindows {
public:
    NoErrorWindows() {
        SetThreadErrorMode(GetThreadErrorMode() | SEM_FAILCRITICALERRORS, &m_earlier);
    }
    ~NoErrorWindows() { SetThreadErrorMode(m_earlier, nullptr); }
    NoErrorWindows(const NoErrorWindows&) = delete;
    NoErrorWindows& operator=(const NoErrorWindows&) = delete;

private:
    DWORD m_earlier = 0;
};

}  // namespace zr::automation
