// A list of objects. Front ends whose language has lists of its own convert it to one.
#pragma once

#include <string>
#include <vector>

#include "host/objects/library_object.h"

namespace zr::host {

class CollectionObject : public Object {
public:
    explicit CollectionObject(std::vector<ObjectRef> items)
        : Object(ObjectClass::kCollection), m_items(std::move(items)) {}

    void close() override {
        m_isClosed = true;
        m_items.clear();
    }
    bool isClosed() const override { return m_isClosed; }
    const std::vector<ObjectRef>& items() const { return m_items; }

private:
    std::vector<ObjectRef> m_items;
    bool m_isClosed = false;
};

std::span<const Member> collectionMembers();

}  // namespace zr::host
