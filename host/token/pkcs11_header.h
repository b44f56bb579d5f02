// The constants and structures of PKCS #11, from p11-kit's header.
#pragma once

// First: p11-kit defines the macros TRUE and FALSE, where the other header has names.
// clang-format off
#include <zrkey/automation.h>
#include <p11-kit/pkcs11.h>
// clang-format on
