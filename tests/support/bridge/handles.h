// Native handles of 64 bits as handles of 32 bits and back.
//
// Small handles keep their number. A large one gets a number from the upper half, the same one as
// long as the process lives.
#pragma once

#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

windows::Handle toWindows(CK_ULONG native);
CK_ULONG toNative(windows::Handle handle);

}  // namespace zr::bridge
