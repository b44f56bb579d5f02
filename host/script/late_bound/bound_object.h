// Objects of the library as script objects.
//
// The script holds a JavaScript Proxy. When the engine collects the Proxy, the reference to the
// library's object is released. The handler of all Proxies decides what a script reads from them:
// see host/script/late_bound/members.h.
#pragma once

#include <duktape.h>
#include <zrkey/zrkey.hpp>

namespace zr::host {

/// Makes the value on top of the stack the handler of every Proxy, and pops it.
void setObjectHandler(duk_context* script);

/// Pushes a new script object that owns the reference.
void pushLateBound(duk_context* script, zrkey::ComRef<IDispatch> object);

/// The object behind a script value.
/// @return null when the value is not such an object, or its reference was released.
zrkey::ComRef<IDispatch> lateBoundAt(duk_context* script, duk_idx_t index);

}  // namespace zr::host
