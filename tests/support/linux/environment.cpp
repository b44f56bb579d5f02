// The services of a process that tests need, on Linux.
#include "tests/support/environment.h"

#include <unistd.h>

#include <cstdlib>

#include "tests/support/temp_dir.h"

/// DeleteFile leaks the file that it opened, and with it the token. Hosts depend on it.
/// The sanitizer does not recognise the loader's memory when a test replaces malloc.
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return "leak:KeyObject_pkcs11::DeleteFile\nleak:_dl_map_object_deps\n";
}

/// Defined when the program is built with the address sanitizer.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

namespace zr::test {

int processId() {
    return getpid();
}

int duplicate(int descriptor) {
    return dup(descriptor);
}

void duplicateOnto(int source, int target) {
    dup2(source, target);
}

void closeDescriptor(int descriptor) {
    close(descriptor);
}

int descriptorOf(std::FILE* file) {
    return fileno(file);
}

std::FILE* temporaryFile() {
    return std::tmpfile();
}

std::size_t allocatedBytes() {
    return __sanitizer_get_current_allocated_bytes ? __sanitizer_get_current_allocated_bytes() : 0;
}

void setEnvironment(const std::string& name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name.c_str());
    } else {
        setenv(name.c_str(), value.c_str(), 1);
    }
}

void setEmptyEnvironment(const std::string& name) {
    setenv(name.c_str(), "", 1);
}

}  // namespace zr::test
