// Where the system keeps PKCS #11 modules; one implementation per target.
#pragma once

#include <string>
#include <vector>

namespace zr::host {

/// The folders that modules are installed in, in UTF-8. They need not exist.
std::vector<std::string> moduleFolders();

/// The folders of p11-kit's configuration of modules, the most important first; none on Windows.
std::vector<std::string> moduleConfigurationFolders();

/// The names that the file of a module may have.
/// @param name  of a module: "softhsm2", or the name of its file.
std::vector<std::string> moduleFileNames(const std::string& name);

}  // namespace zr::host
