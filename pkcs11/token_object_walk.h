// Walking the objects on a token: one search, one object at a time, and the attributes of each.
//
//     TokenObjectWalk walk(token, search, 2);
//     walk.forEach({CKA_CLASS, CKA_ID}, [&](CK_OBJECT_HANDLE object, const TokenAttributes& read) {
//         return std::strcmp(read.text(1), id) != 0;   // false ends the walk
//     });
#pragma once

#include <cstddef>
#include <initializer_list>

#include "pkcs11/key_object.h"

/// Attributes of an object, read in two steps: first the lengths, then the values.
///
/// A module is not trusted: buffers have one zero byte more than was reported, and a length that
/// grew meanwhile is cut.
class TokenAttributes {
public:
    /// @param types  at most 4.
    explicit TokenAttributes(std::initializer_list<CK_ATTRIBUTE_TYPE> types);
    TokenAttributes(const TokenAttributes&) = delete;
    TokenAttributes& operator=(const TokenAttributes&) = delete;
    ~TokenAttributes();

    /// Asks for the lengths, with null buffers.
    CK_RV readLengths(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object);
    /// Makes zeroed buffers of those lengths.
    /// @param first  attributes before this one get none; their length is asked for once more.
    /// @return false when memory is short, or a length is not to be had or over 256 MiB.
    bool allocateValues(std::size_t first = 0);
    /// Reads the values into the buffers.
    CK_RV fetchValues(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object);
    /// Both steps; CKR_HOST_MEMORY when there are no buffers.
    CK_RV readValues(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object, std::size_t first = 0);

    const unsigned char* bytes(std::size_t index) const { return m_values[index]; }
    /// The bytes as text, up to the first zero.
    const char* text(std::size_t index) const {
        return reinterpret_cast<const char*>(m_values[index]);
    }
    CK_ULONG length(std::size_t index) const { return m_lengths[index]; }
    /// Gives the buffer up; it is the caller's, to be released with free.
    unsigned char* release(std::size_t index);

private:
    static constexpr std::size_t kMost = 4;

    void freeValues();

    CK_ATTRIBUTE m_template[kMost] = {};
    unsigned char* m_values[kMost] = {};
    CK_ULONG m_lengths[kMost] = {};
    std::size_t m_count = 0;
};

/// A search for objects, closed at the end of its life.
class TokenObjectWalk {
public:
    enum class Step { object, failed, end };

    /// Begins the search. A result of C_FindObjectsInit other than CKR_OK does not end the walk: it
    /// then goes on with the search that is open, and closes it.
    TokenObjectWalk(const KeyObject_pkcs11& token, CK_ATTRIBUTE* search, CK_ULONG count);
    TokenObjectWalk(const TokenObjectWalk&) = delete;
    TokenObjectWalk& operator=(const TokenObjectWalk&) = delete;
    ~TokenObjectWalk();

    bool hasBegun() const { return m_hasBegun; }
    /// The next object.
    Step next(CK_OBJECT_HANDLE* object);
    /// Leaves the search as it is at the end.
    void leaveOpen() { m_isLeftOpen = true; }

    /// Reads the attributes of one object after the other; the walk ends where a read fails or
    /// visit, called with handle and attributes, answers false.
    template <class Visit>
    void forEach(std::initializer_list<CK_ATTRIBUTE_TYPE> types, Visit visit) {
        CK_OBJECT_HANDLE object = 0;
        while (next(&object) == Step::object) {
            TokenAttributes attributes(types);
            if (attributes.readLengths(m_token, object) != CKR_OK ||
                attributes.readValues(m_token, object) != CKR_OK || !visit(object, attributes)) {
                return;
            }
        }
    }

private:
    const KeyObject_pkcs11& m_token;
    bool m_hasBegun;
    bool m_isLeftOpen = false;
    unsigned long m_nObjects = 0;
};

/// The one certificate walk; its order is the order and the numbering of the containers.
template <class Visit>
void walkCertificates(const KeyObject_pkcs11& token, std::initializer_list<CK_ATTRIBUTE_TYPE> types,
                      Visit visit) {
    CK_OBJECT_CLASS objectClass = CKO_CERTIFICATE;
    CK_BBOOL isOnToken = CK_TRUE;
    CK_ATTRIBUTE search[] = {{CKA_CLASS, &objectClass, sizeof objectClass},
                             {CKA_TOKEN, &isOnToken, sizeof isOnToken}};
    TokenObjectWalk(token, search, 2).forEach(types, visit);
}
