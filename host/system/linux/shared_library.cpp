// Shared libraries on Linux: the dynamic loader.
#include "host/system/shared_library.h"

#include <dlfcn.h>

namespace zr::host {

std::string_view ownPlatform() {
    return "Linux x86-64";
}

SharedLibrary::SharedLibrary(const std::string& path)
    : m_handle(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (!m_handle) {
        const char* text = dlerror();
        m_problem = text ? text : "";
    }
}

SharedLibrary::~SharedLibrary() {
    if (m_handle) {
        dlclose(m_handle);
    }
}

void* SharedLibrary::find(const char* function) const {
    return m_handle ? dlsym(m_handle, function) : nullptr;
}

}  // namespace zr::host
