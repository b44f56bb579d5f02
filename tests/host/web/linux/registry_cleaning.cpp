// On Linux there is no registry to clean.
#include "tests/host/web/replaced_places.h"

namespace zr::test {

void removeRegistryKey(const std::string&) {}

}  // namespace zr::test
