// Native handles of 64 bits as handles of 32 bits and back.
#include "tests/support/bridge/handles.h"

#include <mutex>
#include <unordered_map>
#include <vector>

namespace zr::bridge {
namespace {

constexpr CK_ULONG kUpperHalf = 0x80000000;

std::mutex& mutex() {
    static std::mutex s_mutex;
    return s_mutex;
}

/// The large handles in the order of their conversion, and the index of each.
struct LargeHandles {
    std::vector<CK_ULONG> list;
    std::unordered_map<CK_ULONG, CK_ULONG> places;
};

LargeHandles& largeHandles() {
    static LargeHandles s_handles;
    return s_handles;
}

}  // namespace

windows::Handle toWindows(CK_ULONG native) {
    if (native < kUpperHalf) {
        return static_cast<windows::Handle>(native);
    }
    const std::lock_guard lock(mutex());
    LargeHandles& handles = largeHandles();
    const auto [known, isNew] = handles.places.try_emplace(native, handles.list.size());
    if (isNew) {
        handles.list.push_back(native);
    }
    return static_cast<windows::Handle>(kUpperHalf + known->second);
}

CK_ULONG toNative(windows::Handle handle) {
    const auto number = static_cast<CK_ULONG>(handle);
    if (number < kUpperHalf) {
        return number;
    }
    const std::lock_guard lock(mutex());
    const std::vector<CK_ULONG>& handles = largeHandles().list;
    const CK_ULONG index = number - kUpperHalf;
    // A number that was never handed out is no handle of the module.
    return index < handles.size() ? handles[index] : ~CK_ULONG{0};
}

}  // namespace zr::bridge
