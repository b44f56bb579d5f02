// Vectors whose memory is erased before it is freed, also what they leave behind when they grow.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "host/system/system.h"

namespace zr::host {

template <class T>
class ErasingAllocator {
public:
    using value_type = T;

    ErasingAllocator() = default;
    template <class Other>
    ErasingAllocator(const ErasingAllocator<Other>&) noexcept {}

    T* allocate(std::size_t count) { return std::allocator<T>().allocate(count); }
    void deallocate(T* memory, std::size_t count) noexcept {
        secureErase(memory, count * sizeof(T));
        std::allocator<T>().deallocate(memory, count);
    }
    bool operator==(const ErasingAllocator&) const = default;
};

/// Not a string: a string keeps short texts within itself, where no allocator can erase them.
template <class T>
using ErasedVector = std::vector<T, ErasingAllocator<T>>;

using ErasedBytes = ErasedVector<char>;

inline std::string_view viewOf(const ErasedBytes& bytes) {
    return {bytes.data(), bytes.size()};
}

}  // namespace zr::host
