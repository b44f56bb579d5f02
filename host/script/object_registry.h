// The objects that a script holds, each under a number. The script objects hold numbers, not
// pointers: a script that changes a number can at most reach another live object.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <utility>

namespace zr::host {

/// @tparam Reference  keeps an object alive; null by default.
template <class Reference>
class ObjectRegistry {
public:
    /// Returns a number that no object has.
    std::uint32_t newNumber() {
        do {
            ++m_lastNumber;
        } while (m_objects.count(m_lastNumber) != 0);
        return m_lastNumber;
    }
    /// Takes over the reference.
    /// @param number  from newNumber.
    void add(std::uint32_t number, Reference object) {
        m_objects.emplace(number, std::move(object));
    }
    /// @return null when no object has the number.
    Reference find(std::uint32_t number) const {
        const auto found = m_objects.find(number);
        return found != m_objects.end() ? found->second : Reference();
    }
    /// Removes the object.
    /// @return its reference; null when no object has the number.
    Reference remove(std::uint32_t number) {
        auto node = m_objects.extract(number);
        return node ? std::move(node.mapped()) : Reference();
    }

private:
    std::unordered_map<std::uint32_t, Reference> m_objects;
    std::uint32_t m_lastNumber = 0;
};

}  // namespace zr::host
