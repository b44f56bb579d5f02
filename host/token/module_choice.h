// Which module a command uses.
#pragma once

#include <string>

namespace zr::host {

/// The module by the first of these that names one: the option, the variable ZRKEY_MODULE, the
/// user's settings, the system's; else the only module of p11-kit that has a token, which a line on
/// standard error says. Throws a Failure when there is none. Makes no difference to a module: those
/// that are asked for tokens are finalised.
/// @param option  a path, or a name that is no file in the current folder; empty: not given.
/// @return the path of its file.
std::string chooseModule(const std::string& option);

}  // namespace zr::host
