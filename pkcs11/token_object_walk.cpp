// Walking the objects on a token.
#include "pkcs11/token_object_walk.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <cstring>

namespace {

// A module that never stops finding objects must not hang the host.
constexpr unsigned long kMostObjects = 1UL << 20;

// No token holds such a value; do not allocate memory for an impossible length.
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

CK_RV TokenAttributes::readLengths(const Session& session, CK_OBJECT_HANDLE object) {
    for (std::size_t i = 0; i < m_count; ++i) {
        m_template[i].pValue = nullptr;
        m_template[i].ulValueLen = 0;
    }
    const CK_RV rv = session.Call(&CK_FUNCTIONS::C_GetAttributeValue, session.handle(), object,
                                  m_template, static_cast<CK_ULONG>(m_count));
    for (std::size_t i = 0; i < m_count; ++i) {
        m_lengths[i] = m_template[i].ulValueLen;
    }
    return rv;
}

/// A buffer for the reported length and a zero byte; null when out of memory.
unsigned char* TokenAttributes::zeroedBuffer(std::size_t index) {
    const std::size_t size = static_cast<std::size_t>(m_lengths[index]) + 1;
    if (size > kShortSize || m_template[index].type == CKA_VALUE) {
        return static_cast<unsigned char*>(std::calloc(size, 1));
    }
    std::memset(m_short[index], 0, kShortSize);
    return m_short[index];
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
        m_values[i] = zeroedBuffer(i);
        if (!m_values[i]) {
            return false;
        }
        m_template[i].pValue = m_values[i];
        m_template[i].ulValueLen = m_lengths[i];
    }
    return true;
}

CK_RV TokenAttributes::fetchValues(const Session& session, CK_OBJECT_HANDLE object) {
    const CK_RV rv = session.Call(&CK_FUNCTIONS::C_GetAttributeValue, session.handle(), object,
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

CK_RV TokenAttributes::readValues(const Session& session, CK_OBJECT_HANDLE object,
                                  std::size_t first) {
    return allocateValues(first) ? fetchValues(session, object) : CKR_HOST_MEMORY;
}

unsigned char* TokenAttributes::release(std::size_t index) {
    unsigned char* value = m_values[index];
    m_values[index] = nullptr;
    return value;
}

void TokenAttributes::freeValues() {
    for (std::size_t i = 0; i < m_count; ++i) {
        if (m_values[i] != m_short[i]) {
            std::free(m_values[i]);
        }
        m_values[i] = nullptr;
    }
}

TokenObjectWalk::TokenObjectWalk(const Session& session, CK_ATTRIBUTE* search, CK_ULONG count)
    : m_session(session),
      m_hasBegun(session.Call(&CK_FUNCTIONS::C_FindObjectsInit, session.handle(), search, count) ==
                 CKR_OK) {}

TokenObjectWalk::~TokenObjectWalk() {
    if (!m_isLeftOpen) {
        m_session.Call(&CK_FUNCTIONS::C_FindObjectsFinal, m_session.handle());
    }
}

TokenObjectWalk::Step TokenObjectWalk::next(CK_OBJECT_HANDLE* object) {
    if (m_nObjects++ >= kMostObjects) {
        return Step::kEnd;
    }
    // Check the result first: a failing call may leave the count at 1.
    CK_ULONG found = 0;
    if (m_session.Call(&CK_FUNCTIONS::C_FindObjects, m_session.handle(), object, CK_ULONG{1},
                       &found) != CKR_OK) {
        return Step::kFailed;
    }
    return found == 1 ? Step::kObject : Step::kEnd;
}
