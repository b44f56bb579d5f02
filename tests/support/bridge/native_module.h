// The Linux module behind the bridge.
#pragma once

#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

/// The functions of the module that ZRKEY_BRIDGE_MODULE names, else of SoftHSM2; null, with a line
/// on standard error, when it does not load. It stays loaded.
const CK_FUNCTION_LIST* nativeModule();

}  // namespace zr::bridge
