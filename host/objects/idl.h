// The classes and interfaces of zrkeycom.dll, in the language of type libraries.
#pragma once

#include <string>

namespace zr::host {

/// The whole file host/automation/zrkey.idl.
std::string automationIdl();

}  // namespace zr::host
