// Where Linux looks for the dependencies of modules: the modules say it.
#include "host/system/module_search.h"

namespace zr::host {

void restrictModuleSearch() {
    // The dynamic loader looks in the current directory only when LD_LIBRARY_PATH or the module
    // itself says so.
}

void searchBesideModule(const std::string&) {
    // A module says itself where its dependencies are, by its RUNPATH.
}

}  // namespace zr::host
