// The resources of this process, from /proc and the C library.
#include "tests/soak/process_use.h"

#include <malloc.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace zr::test {

ProcessUse processUse() {
    ProcessUse use = {};
    const struct mallinfo2 heap = mallinfo2();
    use.heapBytes = heap.uordblks + heap.hblkhd;
    long pages = 0;
    std::ifstream("/proc/self/statm") >> pages >> pages;
    use.residentKiB = pages * (sysconf(_SC_PAGESIZE) / 1024);
    // The descriptor of the listing itself is always counted.
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    use.descriptors = static_cast<int>(std::distance(begin(folder), end(folder)));
    return use;
}

}  // namespace zr::test
