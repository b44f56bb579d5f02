// The search for the data object of a file.
#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "pkcs11/token_object_walk.h"

class FileSearch {
public:
    /// What is asked of each object: the operations that search differ in it.
    enum class Ask { label, classAndLabel };

    explicit FileSearch(const KeyObject_pkcs11& token)
        : m_token(token), m_walk(token, m_template, 2) {
        if (!m_walk.hasBegun()) {
            // The search that is open, if any, is not this one.
            m_walk.leaveOpen();
        }
    }

    bool hasBegun() const { return m_walk.hasBegun(); }
    /// Leaves the search as it is at the end.
    void leaveOpen() { m_walk.leaveOpen(); }

    /// Finds the first object with this label, compared up to the first zero.
    /// @param found  receives its handle, which may be any number; untouched otherwise.
    /// @return false when there is none; an object whose label cannot be read ends the search.
    bool find(const char* label, Ask ask, CK_OBJECT_HANDLE* found) {
        const std::size_t labelIndex = ask == Ask::classAndLabel ? 1 : 0;
        CK_OBJECT_HANDLE object = 0;
        while (m_walk.next(&object) == TokenObjectWalk::Step::object) {
            TokenAttributes read(
                ask == Ask::classAndLabel
                    ? std::initializer_list<CK_ATTRIBUTE_TYPE>{CKA_CLASS, CKA_LABEL}
                    : std::initializer_list<CK_ATTRIBUTE_TYPE>{CKA_LABEL});
            if (read.readLengths(m_token, object) != CKR_OK ||
                read.readValues(m_token, object, labelIndex) != CKR_OK) {
                return false;
            }
            if (std::strcmp(read.text(labelIndex), label) == 0) {
                *found = object;
                return true;
            }
        }
        return false;
    }

private:
    const KeyObject_pkcs11& m_token;
    CK_OBJECT_CLASS m_class = CKO_DATA;
    CK_BBOOL m_isOnToken = CK_TRUE;
    CK_ATTRIBUTE m_template[2] = {{CKA_CLASS, &m_class, sizeof m_class},
                                  {CKA_TOKEN, &m_isOnToken, sizeof m_isOnToken}};
    TokenObjectWalk m_walk;
};
