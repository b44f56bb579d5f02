// Native handles of 64 bits as handles of 32 bits and back.
//
// Small handles keep their number. A large handle gets a number from the upper half, the same for
// the life of the process.
#pragma once

#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

windows::Handle toWindows(CK_ULONG native);
CK_ULONG toNative(windows::Handle handle);

}  // namespace zr::bridge
