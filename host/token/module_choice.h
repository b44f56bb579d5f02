// Which module a command uses.
#pragma once

#include <string>

namespace zr::host {

struct ChosenModule {
    std::string path;    ///< of its file
    std::string origin;  ///< "--module", "ZRKEY_MODULE", "the settings" or "p11-kit"
};

/// The module by the first of these that names one: the option, the variable ZRKEY_MODULE, the
/// user's settings, the system's; else the only module of p11-kit that has a token, which a line on
/// standard error says. Throws a Failure when there is none. Modules that were asked for tokens are
/// finalised again.
/// @param option  a path, or a name that is not a file in the current folder; empty: not given.
ChosenModule chooseModule(const std::string& option);

}  // namespace zr::host
