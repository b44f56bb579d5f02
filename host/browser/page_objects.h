// The objects of a connection, by their numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>

#include "host/objects/token_object.h"
#include "host/token/token_table.h"

namespace zr::host {

/// What the host keeps of a token that a page opened.
struct PageToken {
    std::shared_ptr<TokenObject> object;
    TokenRow row;  ///< as the token was when it was opened; without the library's object
    bool isLoggedIn = false;

    /// Whether the module says that it was removed.
    bool isRemoved() const { return object->readPin(row) == PinState::kTokenRemoved; }
};

struct PageObject {
    ObjectRef object;
    /// The token, or that of a container or certificate; null for a provider.
    std::shared_ptr<PageToken> token;
};

class PageObjects {
public:
    static constexpr std::size_t kMost = 10000;

    /// Throws a PageError when there are too many.
    /// @param origin  the object that it came from; null: none.
    std::uint64_t add(const ObjectRef& object, const PageObject* origin);
    /// Throws a PageError when there is none, or none any more, of that number.
    const PageObject& find(std::uint64_t number) const;
    /// The token that an object came from; null: none.
    std::shared_ptr<PageToken> tokenOf(const Object& object) const;
    bool wasClosed(std::uint64_t number) const;
    /// After the Close of an object.
    void remove(std::uint64_t number);
    /// The number of the object that was added last; 0: none was.
    std::uint64_t last() const { return m_last; }
    /// Releases all objects.
    void clear();

private:
    std::map<std::uint64_t, PageObject> m_objects;
    std::uint64_t m_last = 0;
};

}  // namespace zr::host
