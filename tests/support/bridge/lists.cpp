// The calls that fill lists, and calls with special arguments.
#include <algorithm>
#include <vector>

#include "tests/support/bridge/calls.h"

namespace zr::bridge {
namespace {

/// No module has longer lists; larger counts of the caller allocate no memory.
constexpr CK_ULONG kLongestList = 65536;

/// Reads a list of numbers; a null list requests its length.
template <class Item, class Get, class Convert>
Ulong fillList(Item* items, Ulong* count, Get get, Convert convert) {
    if (!count) {
        return windows::narrow(get(nullptr, nullptr));
    }
    CK_ULONG length = std::min<CK_ULONG>(*count, kLongestList);
    std::vector<CK_ULONG> list(items ? length + 1 : 0);
    const CK_ULONG room = length;
    const CK_RV rv = get(items ? list.data() : nullptr, &length);
    if (items && rv == CKR_OK) {
        for (CK_ULONG i = 0; i < length && i < room; ++i) {
            items[i] = convert(list[i]);
        }
    }
    *count = windows::narrow(length);
    return windows::narrow(rv);
}

}  // namespace

Ulong initialize(void* initArgs) {
    // Callbacks for locking would be called with the wrong calling convention.
    return initArgs ? windows::narrow(CKR_ARGUMENTS_BAD)
                    : windows::narrow(callNative<&CK_FUNCTIONS::C_Initialize>(nullptr));
}

Ulong getSlotList(CK_BBOOL tokenPresent, Handle* slots, Ulong* count) {
    return fillList(
        slots, count,
        [tokenPresent](CK_ULONG* list, CK_ULONG* length) {
            return callNative<&CK_FUNCTIONS::C_GetSlotList>(tokenPresent, list, length);
        },
        toWindows);
}

Ulong getMechanismList(Handle slot, Ulong* mechanisms, Ulong* count) {
    return fillList(
        mechanisms, count,
        [slot](CK_ULONG* list, CK_ULONG* length) {
            return callNative<&CK_FUNCTIONS::C_GetMechanismList>(toNative(slot), list, length);
        },
        windows::narrow);
}

Ulong openSession(Handle slot, Ulong flags, void* application, void*, Handle* session) {
    Argument<Handle*> opened(session);
    // Notifications would be called with the wrong calling convention; none are passed.
    const CK_RV rv = callNative<&CK_FUNCTIONS::C_OpenSession>(toNative(slot), flags, application,
                                                              nullptr, opened.native());
    opened.finish(rv);
    return windows::narrow(rv);
}

Ulong findObjects(Handle session, Handle* objects, Ulong maximum, Ulong* count) {
    if (!objects || !count) {
        return windows::narrow(CKR_ARGUMENTS_BAD);
    }
    const CK_ULONG room = std::min<CK_ULONG>(maximum, kLongestList);
    std::vector<CK_ULONG> found(room + 1);
    CK_ULONG length = 0;
    const CK_RV rv =
        callNative<&CK_FUNCTIONS::C_FindObjects>(toNative(session), found.data(), room, &length);
    if (rv == CKR_OK) {
        for (CK_ULONG i = 0; i < length && i < room; ++i) {
            objects[i] = toWindows(found[i]);
        }
        *count = windows::narrow(length);
    }
    return windows::narrow(rv);
}

}  // namespace zr::bridge
