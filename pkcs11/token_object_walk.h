// Walking the objects on a token: one search, one object at a time, and the attributes of each.
//
//     TokenObjectWalk walk(session, search, 2);
//     walk.forEach({CKA_CLASS, CKA_ID}, [&](CK_OBJECT_HANDLE object, const TokenAttributes& read) {
//         return std::strcmp(read.text(1), id) != 0;   // false ends the walk
//     });
#pragma once

#include <cstddef>
#include <initializer_list>

#include "pkcs11/session.h"

/// Attributes of an object, read in two steps: first the lengths, then the values.
///
/// A module is not trusted: buffers are one zero byte longer than reported, and a length that grows
/// between the two steps is cut.
///
/// Labels, IDs and numbers are short and are read for every object of a walk, so they are kept in
/// the object. Longer values and every CKA_VALUE have a block of their own.
class TokenAttributes {
public:
    /// @param types  at most 4.
    explicit TokenAttributes(std::initializer_list<CK_ATTRIBUTE_TYPE> types);
    TokenAttributes(const TokenAttributes&) = delete;
    TokenAttributes& operator=(const TokenAttributes&) = delete;
    ~TokenAttributes();

    /// Asks for the lengths, with null buffers.
    CK_RV readLengths(const Session& session, CK_OBJECT_HANDLE object);
    /// Makes zeroed buffers of those lengths.
    /// @param first  index of the first attribute with a buffer; the ones before it are asked for
    ///               their lengths once more.
    /// @return false when out of memory, or when a length is unavailable or over 256 MiB.
    bool allocateValues(std::size_t first = 0);
    /// Reads the values into the buffers.
    CK_RV fetchValues(const Session& session, CK_OBJECT_HANDLE object);
    /// Both steps; CKR_HOST_MEMORY when there are no buffers.
    CK_RV readValues(const Session& session, CK_OBJECT_HANDLE object, std::size_t first = 0);

    const unsigned char* bytes(std::size_t index) const { return m_values[index]; }
    /// The bytes as text, up to the first zero.
    const char* text(std::size_t index) const {
        return reinterpret_cast<const char*>(m_values[index]);
    }
    CK_ULONG length(std::size_t index) const { return m_lengths[index]; }
    /// Gives the block of a CKA_VALUE up to the caller, who frees it with free.
    unsigned char* release(std::size_t index);

private:
    static constexpr std::size_t kMost = 4;
    static constexpr std::size_t kShortSize = 64;

    unsigned char* zeroedBuffer(std::size_t index);
    void freeValues();

    CK_ATTRIBUTE m_template[kMost] = {};
    unsigned char* m_values[kMost] = {};
    CK_ULONG m_lengths[kMost] = {};
    std::size_t m_count = 0;
    unsigned char m_short[kMost][kShortSize];
};

/// A search for objects, closed by the destructor.
class TokenObjectWalk {
public:
    enum class Step { kObject, kFailed, kEnd };

    /// Begins the search. A failure of C_FindObjectsInit does not end the walk: it then uses the
    /// search that is already open in the session, and closes that search.
    TokenObjectWalk(const Session& session, CK_ATTRIBUTE* search, CK_ULONG count);
    TokenObjectWalk(const TokenObjectWalk&) = delete;
    TokenObjectWalk& operator=(const TokenObjectWalk&) = delete;
    ~TokenObjectWalk();

    bool hasBegun() const { return m_hasBegun; }
    /// The next object.
    Step next(CK_OBJECT_HANDLE* object);
    /// Keeps the destructor from closing the search.
    void leaveOpen() { m_isLeftOpen = true; }

    /// Reads the attributes of one object after the other. The walk ends when a read fails or when
    /// visit, called with handle and attributes, returns false.
    template <class Visit>
    void forEach(std::initializer_list<CK_ATTRIBUTE_TYPE> types, Visit visit) {
        CK_OBJECT_HANDLE object = 0;
        while (next(&object) == Step::kObject) {
            TokenAttributes attributes(types);
            if (attributes.readLengths(m_session, object) != CKR_OK ||
                attributes.readValues(m_session, object) != CKR_OK || !visit(object, attributes)) {
                return;
            }
        }
    }

private:
    const Session& m_session;
    bool m_hasBegun;
    bool m_isLeftOpen = false;
    unsigned long m_nObjects = 0;
};

/// The one certificate walk; it defines the order and the numbering of the containers.
template <class Visit>
void walkCertificates(const Session& session, std::initializer_list<CK_ATTRIBUTE_TYPE> types,
                      Visit visit) {
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken}};
    TokenObjectWalk(session, search, 2).forEach(types, visit);
}
