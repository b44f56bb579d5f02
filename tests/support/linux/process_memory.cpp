// The memory of this process on Linux, read from /proc.
#include "tests/support/process_memory.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>

namespace zr::test {
namespace {

// The sanitizers map terabytes of shadow memory, which holds no data of the program.
constexpr std::size_t kLargestRegion = std::size_t{4} << 30;

}  // namespace

void forEachWritableRegion(const std::function<void(std::size_t begin, std::size_t size)>& visit) {
    std::ifstream maps("/proc/self/maps");
    for (std::string line; std::getline(maps, line);) {
        std::size_t begin = 0;
        std::size_t end = 0;
        char rights[5] = {};
        if (std::sscanf(line.c_str(), "%zx-%zx %4s", &begin, &end, rights) == 3 &&
            rights[1] == 'w' && end - begin <= kLargestRegion) {
            visit(begin, end - begin);
        }
    }
}

std::size_t readMemory(std::size_t from, void* to, std::size_t size) {
    static const int s_memory = open("/proc/self/mem", O_RDONLY | O_CLOEXEC);
    const ssize_t read = pread(s_memory, to, size, static_cast<off_t>(from));
    return read < 0 ? 0 : static_cast<std::size_t>(read);
}

}  // namespace zr::test
