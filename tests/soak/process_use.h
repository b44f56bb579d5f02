// What this process uses.
#pragma once

#include <cstddef>

namespace zr::test {

struct ProcessUse {
    long residentKiB;
    int descriptors;
    std::size_t heapBytes;  ///< handed out by malloc and not given back
};

ProcessUse processUse();

}  // namespace zr::test
