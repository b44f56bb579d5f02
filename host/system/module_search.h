// Where the system looks for the dependencies of modules, in the process of the command; one
// implementation per target.
#pragma once

#include <string>

namespace zr::host {

/// Keeps the system from looking for the dependencies of modules in the current directory. To be
/// called once, before the first module is loaded.
void restrictModuleSearch();

/// Lets the dependencies of a module be found beside it.
/// @param module  its path in UTF-8, absolute or relative to the current directory.
void searchBesideModule(const std::string& module);

}  // namespace zr::host
