// One call of a module; for the files that wrap its functions.
#pragma once

#include "host/token/cryptoki.h"
#include "host/token/pkcs11_header.h"

namespace zr::host {

/// Calls an entry point: callModule<&CK_FUNCTION_LIST::C_Logout>(module, session).
/// @return CKR_FUNCTION_NOT_SUPPORTED when the module lacks it.
template <auto entry, class... Arguments>
CK_RV callModule(const Cryptoki& module, Arguments... arguments) {
    const auto* list = static_cast<const CK_FUNCTION_LIST*>(module.functions());
    const auto function = list ? list->*entry : nullptr;
    return function ? function(arguments...) : CKR_FUNCTION_NOT_SUPPORTED;
}

}  // namespace zr::host
