// Native handles of 64 bits as handles of 32 bits and back.
#include "tests/support/bridge/handles.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace zr::bridge {
namespace {

constexpr CK_ULONG kUpperHalf = 0x80000000;

std::mutex& mutex() {
    static std::mutex s_mutex;
    return s_mutex;
}

std::vector<CK_ULONG>& largeHandles() {
    static std::vector<CK_ULONG> s_handles;
    return s_handles;
}

}  // namespace

windows::Handle toWindows(CK_ULONG native) {
    if (native < kUpperHalf) {
        return static_cast<windows::Handle>(native);
    }
    const std::lock_guard lock(mutex());
    std::vector<CK_ULONG>& handles = largeHandles();
    const auto known = std::find(handles.begin(), handles.end(), native);
    const auto index = static_cast<CK_ULONG>(known - handles.begin());
    if (known == handles.end()) {
        handles.push_back(native);
    }
    return static_cast<windows::Handle>(kUpperHalf + index);
}

CK_ULONG toNative(windows::Handle handle) {
    const auto number = static_cast<CK_ULONG>(handle);
    if (number < kUpperHalf) {
        return number;
    }
    const std::lock_guard lock(mutex());
    const std::vector<CK_ULONG>& handles = largeHandles();
    const CK_ULONG index = number - kUpperHalf;
    // What was never given out is no handle of the module's either.
    return index < handles.size() ? handles[index] : ~CK_ULONG{0};
}

}  // namespace zr::bridge
