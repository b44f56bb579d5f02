// The Linux module behind the bridge.
#pragma once

#include "tests/support/bridge/windows_layout.h"

namespace zr::bridge {

/// The functions of the module named by ZRKEY_BRIDGE_MODULE, by default SoftHSM2; null, with a line
/// on standard error, when it does not load. It stays loaded.
const CK_FUNCTION_LIST* nativeModule();

/// Calls an entry point of that module; CKR_FUNCTION_NOT_SUPPORTED when its list lacks it.
template <auto entry, class... Arguments>
CK_RV callNative(Arguments... arguments) {
    const auto function = nativeModule()->functions.*entry;
    return function ? function(arguments...) : CKR_FUNCTION_NOT_SUPPORTED;
}

}  // namespace zr::bridge
