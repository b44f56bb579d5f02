// The search for the data object of a file.
#pragma once

#include <cstddef>
#include <cstring>
#include <initializer_list>

#include "pkcs11/token_object_walk.h"

class FileSearch {
public:
    /// The attributes to ask each object for; they depend on the operation that searches.
    enum class Ask { kLabel, kClassAndLabel };

    explicit FileSearch(const Session& session)
        : m_session(session), m_walk(session, m_template, 2) {
        if (!m_walk.hasBegun()) {
            // Our search did not start; do not close someone else's.
            m_walk.leaveOpen();
        }
    }

    bool hasBegun() const { return m_walk.hasBegun(); }
    /// Keeps the destructor from closing the search.
    void leaveOpen() { m_walk.leaveOpen(); }

    /// Finds the first object with this label, compared up to the first zero.
    /// @param found  receives its handle, which may be 0; untouched when nothing is found.
    /// @return false when nothing is found; an object whose label cannot be read ends the search.
    bool find(const char* label, Ask ask, CK_OBJECT_HANDLE* found) {
        const std::size_t labelIndex = ask == Ask::kClassAndLabel ? 1 : 0;
        CK_OBJECT_HANDLE object = 0;
        while (m_walk.next(&object) == TokenObjectWalk::Step::kObject) {
            TokenAttributes read(
                ask == Ask::kClassAndLabel
                    ? std::initializer_list<CK_ATTRIBUTE_TYPE>{CKA_CLASS, CKA_LABEL}
                    : std::initializer_list<CK_ATTRIBUTE_TYPE>{CKA_LABEL});
            if (read.readLengths(m_session, object) != CKR_OK ||
                read.readValues(m_session, object, labelIndex) != CKR_OK) {
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
    const Session& m_session;
    CK_OBJECT_CLASS m_class = CKO_DATA;
    CK_BBOOL m_isOnToken = CK_TRUE;
    CK_ATTRIBUTE m_template[2] = {{CKA_CLASS, &m_class, sizeof m_class},
                                  {CKA_TOKEN, &m_isOnToken, sizeof m_isOnToken}};
    TokenObjectWalk m_walk;
};
