// The resources of this process.
#pragma once

#include <cstddef>

namespace zr::test {

struct ProcessUse {
    long residentKiB;
    int descriptors;
    std::size_t heapBytes;  ///< allocated by malloc and not freed
};

ProcessUse processUse();

}  // namespace zr::test
