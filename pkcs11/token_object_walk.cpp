// Walking the objects on a token.
#include "pkcs11/token_object_walk.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace {

// A module that never stops finding objects must not hang the host.
constexpr unsigned long kMostObjects = 1UL << 20;

// A value no token holds: memory is not spent on a length that cannot be true.
constexpr CK_ULONG kLongestValue = 256UL << 20;

}  // namespace

TokenAttributes::TokenAttributes(std::initializer_list<CK_ATTRIBUTE_TYPE> types) {
    assert(types.size() <= kMost);
    for (const CK_ATTRIBUTE_TYPE type : types) {
        m_template[m_count++] = {type, nullptr, 0};
    }
}

TokenAttributes::~TokenAttributes() {
    freeValues();
}

CK_RV TokenAttributes::readLengths(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object) {
    for (std::size_t i = 0; i < m_count; ++i) {
        m_template[i].pValue = nullptr;
        m_template[i].ulValueLen = 0;
    }
    const CK_RV rv = token.Call(&CK_FUNCTIONS::C_GetAttributeValue, token.GetSession(), object,
                                m_template, static_cast<CK_ULONG>(m_count));
    for (std::size_t i = 0; i < m_count; ++i) {
        m_lengths[i] = m_template[i].ulValueLen;
    }
    return rv;
}

bool TokenAttributes::allocateValues(std::size_t first) {
    freeValues();
    for (std::size_t i = 0; i < first; ++i) {
        m_template[i].pValue = nullptr;  // whatever the module wrote there
        m_template[i].ulValueLen = 0;
    }
    for (std::size_t i = first; i < m_count; ++i) {
        if (m_lengths[i] > kLongestValue) {
            return false;
        }
        m_values[i] =
            static_cast<unsigned char*>(std::calloc(static_cast<std::size_t>(m_lengths[i]) + 1, 1));
        if (!m_values[i]) {
            return false;
        }
        m_template[i].pValue = m_values[i];
        m_template[i].ulValueLen = m_lengths[i];
    }
    return true;
}

CK_RV TokenAttributes::fetchValues(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object) {
    const CK_RV rv = token.Call(&CK_FUNCTIONS::C_GetAttributeValue, token.GetSession(), object,
                                m_template, static_cast<CK_ULONG>(m_count));
    if (rv != CKR_OK) {
        return rv;
    }
    for (std::size_t i = 0; i < m_count; ++i) {
        if (!m_values[i]) {
            continue;
        }
        if (m_template[i].ulValueLen == CK_UNAVAILABLE_INFORMATION) {
            return CKR_GENERAL_ERROR;
        }
        m_lengths[i] = std::min(m_template[i].ulValueLen, m_lengths[i]);
        m_values[i][m_lengths[i]] = 0;
    }
    return CKR_OK;
}

CK_RV TokenAttributes::readValues(const KeyObject_pkcs11& token, CK_OBJECT_HANDLE object,
                                  std::size_t first) {
    return allocateValues(first) ? fetchValues(token, object) : CKR_HOST_MEMORY;
}

unsigned char* TokenAttributes::release(std::size_t index) {
    unsigned char* value = m_values[index];
    m_values[index] = nullptr;
    return value;
}

void TokenAttributes::freeValues() {
    for (unsigned char*& value : m_values) {
        std::free(value);
        value = nullptr;
    }
}

TokenObjectWalk::TokenObjectWalk(const KeyObject_pkcs11& token, CK_ATTRIBUTE* search,
                                 CK_ULONG count)
    : m_token(token),
      m_hasBegun(token.Call(&CK_FUNCTIONS::C_FindObjectsInit, token.GetSession(), search, count) ==
                 CKR_OK) {}

TokenObjectWalk::~TokenObjectWalk() {
    if (!m_isLeftOpen) {
        m_token.Call(&CK_FUNCTIONS::C_FindObjectsFinal, m_token.GetSession());
    }
}

TokenObjectWalk::Step TokenObjectWalk::next(CK_OBJECT_HANDLE* object) {
    if (m_nObjects++ >= kMostObjects) {
        return Step::end;
    }
    // A failing call may leave the count at 1: the result is looked at first.
    CK_ULONG found = 0;
    if (m_token.Call(&CK_FUNCTIONS::C_FindObjects, m_token.GetSession(), object, CK_ULONG{1},
                     &found) != CKR_OK) {
        return Step::failed;
    }
    return found == 1 ? Step::object : Step::end;
}
