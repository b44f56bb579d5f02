// The resources of this process.
#pragma once

#include <cstddef>

namespace zr::test {

struct ProcessUse {
    long residentKiB;
    int descriptors;        ///< on Windows handles
    std::size_t heapBytes;  ///< allocated and not freed
};

ProcessUse processUse();

}  // namespace zr::test
