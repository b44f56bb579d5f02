// Detects descriptors that were left open: the next one then has a higher number.
#pragma once

#include "host/system/system.h"

namespace zr::test {

inline int nextDescriptor() {
    const int descriptor = host::duplicateDescriptor(host::kStandardError);
    host::closeDescriptor(descriptor);
    return descriptor;
}

}  // namespace zr::test
