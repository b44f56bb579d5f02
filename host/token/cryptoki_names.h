// The results of a module for people: their names, and what to do.
#pragma once

#include <string>

#include "host/output/failure.h"
#include "host/token/cryptoki.h"

namespace zr::host {

/// Instead of a module's result: its answer cannot be right, such as a length of gigabytes.
inline constexpr CK_RV kImpossibleAnswer = ~CK_RV{0};

/// "CKR_GENERAL_ERROR (0x00000005)".
std::string resultText(CK_RV result);

/// Whether the token is no longer there.
bool isTokenGone(CK_RV result);

/// The cause of a failed call, and what to do.
/// @param function  "C_SignFinal".
Cause moduleCause(const std::string& function, CK_RV result);

}  // namespace zr::host
