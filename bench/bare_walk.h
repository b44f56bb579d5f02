// The calls of a search as the library makes them, with buffers on the stack and no more checks than
// a correct module needs.
#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "bench/bench_token.h"

namespace zr::bench {

/// The attributes of one object: its lengths are read first, then its values.
struct BareAttributes {
    static constexpr std::size_t kMost = 4;
    static constexpr std::size_t kMostBytes = 256;

    CK_ATTRIBUTE attributes[kMost];
    char values[kMost][kMostBytes];
    CK_ULONG count = 0;

    /// @param firstValue  index of the first attribute whose value is read.
    bool read(const BareModule& bare, CK_OBJECT_HANDLE object,
              std::initializer_list<CK_ATTRIBUTE_TYPE> types, std::size_t firstValue) {
        count = 0;
        for (const CK_ATTRIBUTE_TYPE type : types) {
            attributes[count++] = {type, nullptr, 0};
        }
        if (bare.call->C_GetAttributeValue(bare.session, object, attributes, count) != CKR_OK) {
            return false;
        }
        for (std::size_t i = firstValue; i < count; ++i) {
            if (attributes[i].ulValueLen >= kMostBytes) {
                return false;
            }
            attributes[i].pValue = values[i];
        }
        return bare.call->C_GetAttributeValue(bare.session, object, attributes, count) == CKR_OK;
    }

    bool equals(std::size_t index, const char* text, std::size_t length) const {
        return attributes[index].ulValueLen == length &&
               std::memcmp(values[index], text, length) == 0;
    }
};

/// Walks the objects of a class; visit returns false to end the walk.
template <class Visit>
void walkBare(const BareModule& bare, CK_ATTRIBUTE* search, CK_ULONG searchCount,
              std::initializer_list<CK_ATTRIBUTE_TYPE> types, std::size_t firstValue, Visit visit) {
    bare.call->C_FindObjectsInit(bare.session, search, searchCount);
    for (;;) {
        CK_OBJECT_HANDLE object = 0;
        CK_ULONG found = 0;
        BareAttributes read;
        if (bare.call->C_FindObjects(bare.session, &object, 1, &found) != CKR_OK || found != 1 ||
            !read.read(bare, object, types, firstValue) || !visit(object, read)) {
            break;
        }
    }
    bare.call->C_FindObjectsFinal(bare.session);
}

}  // namespace zr::bench
