// What the variant functions share: which type tags are variant types.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// @retval S_OK               a type a variant may have.
/// @retval DISP_E_BADVARTYPE  any other tag.
HRESULT validateType(VARTYPE type);

}  // namespace zr
