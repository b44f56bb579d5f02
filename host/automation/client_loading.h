// The member Load for Automation clients.
#pragma once

#include "host/objects/provider_object.h"

namespace zr::automation {

/// Loads a module by a path that may be absolute, with the configuration that the command would find.
/// The current directory is another one meanwhile; nothing else in the client's process changes.
/// Throws a Failure.
void loadForClient(host::ProviderObject& provider, const host::Arguments& arguments,
                   const host::WideText& path);

}  // namespace zr::automation
