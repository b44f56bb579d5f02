// Shows descriptors that were left open: the next one is then a higher number.
#pragma once

#include "system.h"

namespace zr::test {

inline int nextDescriptor() {
    const int descriptor = host::duplicateDescriptor(host::kStandardError);
    host::closeDescriptor(descriptor);
    return descriptor;
}

}  // namespace zr::test
