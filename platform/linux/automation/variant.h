// Which type tags are variant types: used by all variant functions.
#pragma once

#include <zrkey/automation.h>

namespace zr {

/// @retval S_OK               a type that a variant may have.
/// @retval DISP_E_BADVARTYPE  any other tag.
HRESULT validateType(VARTYPE type);

}  // namespace zr
