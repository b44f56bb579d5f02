// Cleans the registry after a test. On Windows alone, which has one.
#include <windows.h>

#include "tests/host/web/replaced_places.h"

namespace zr::test {

void removeRegistryKey(const std::string& key) {
    for (const HKEY root : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
        RegDeleteTreeA(root, key.c_str());
    }
}

}  // namespace zr::test
