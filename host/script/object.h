// Objects of the library as script objects.
//
// The script holds a proxy. The engine releases the reference behind it when it collects the proxy.
// What the script reads from a proxy is decided by the handler, see host/script/members.h.
#pragma once

#include <duktape.h>
#include <zrkey/zrkey.hpp>

namespace zr::host {

/// Makes the value on top of the stack, which is popped, the handler of every proxy.
void setObjectHandler(duk_context* script);

/// Pushes a new script object that owns the reference.
void pushObject(duk_context* script, zrkey::ComRef<IDispatch> object);

/// The object behind a script value.
/// @return null when the value is not such an object, or its reference was released.
zrkey::ComRef<IDispatch> objectAt(duk_context* script, duk_idx_t index);

}  // namespace zr::host
