// What a module and the library need of the system, for people who look for what is wrong; one
// implementation per target.
#pragma once

#include <string>
#include <system_error>
#include <vector>

namespace zr::host {

/// A library of this process.
struct UsedLibrary {
    std::string file;     ///< without links where that is known
    std::string version;  ///< empty when only its file says it
};

UsedLibrary zrkeyLibrary();
/// The library of the automation functions.
UsedLibrary automationLibrary();

/// The service through which modules reach smart card readers.
struct ReaderService {
    bool isNeeded = false;  ///< by a module that is loaded; never on Windows
    std::string socket;
    std::error_code problem;           ///< why the socket does not answer
    std::vector<std::string> devices;  ///< readers on USB, by their names
};

/// To be called while the module is loaded.
ReaderService readerService();

}  // namespace zr::host
