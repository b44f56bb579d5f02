// KeyFile_pkcs11: creating and opening a data object, reading and seeking in its copy.
#include "pkcs11/file_pkcs11.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "model/cast_parent.h"
#include "model/log_scope.h"
#include "pkcs11/byte_array.h"
#include "pkcs11/file_name.h"
#include "pkcs11/file_search.h"
#include "pkcs11/token_pkcs11.h"

KeyFile_pkcs11::KeyFile_pkcs11(KeyObject* token) : KeyFile(token) {
    const LogScope scope(GetLog(), "KeyFile_pkcs11");
    scope.end();
}

KeyFile_pkcs11::~KeyFile_pkcs11() {
    const LogScope scope(GetLog(), "~KeyFile_pkcs11");
    scope.end();
    std::free(m_pData);
}

KeyObject_pkcs11* KeyFile_pkcs11::GetKeyObject() const {
    return zr::castParent<KeyObject_pkcs11>(GetParent());
}

bool KeyFile_pkcs11::CreateFile(BSTR name) {
    const LogScope scope(GetLog(), "CreateFile");
    const KeyObject_pkcs11* token = GetKeyObject();
    const FileName fileName(name);
    if (!token || !fileName.isValid()) {
        return false;
    }
    CK_OBJECT_CLASS objectClass = CKO_DATA;
    CK_BBOOL isOnToken = CK_TRUE;
    char empty = 0;
    char* label = const_cast<char*>(fileName.createdLabel());
    CK_ATTRIBUTE attributes[] = {
        {CKA_CLASS, &objectClass, sizeof objectClass},
        {CKA_TOKEN, &isOnToken, sizeof isOnToken},
        {CKA_LABEL, label, static_cast<CK_ULONG>(std::strlen(label))},
        {CKA_VALUE, &empty, 0},
    };
    CK_OBJECT_HANDLE object = 0;
    const Session& session = token->GetSession();
    if (session.Call(&CK_FUNCTIONS::C_CreateObject, session.handle(), attributes, CK_ULONG{4},
                     &object) != CKR_OK) {
        return false;
    }
    m_hObject = object;
    m_dwPos = 0;
    scope.end();
    return true;
}

bool KeyFile_pkcs11::OpenFile(BSTR name) {
    const LogScope scope(GetLog(), "OpenFile");
    const auto fail = [&scope](const char* text, unsigned int line = __builtin_LINE()) {
        scope.message(text, line);
        return false;
    };
    const KeyObject_pkcs11* token = GetKeyObject();
    if (!token) {
        return fail("OpenFile Fail ... 1\n");
    }
    const FileName fileName(name);
    if (fileName.number() == 0) {
        return fail("OpenFile Fail ... 2\n");
    }
    if (!fileName.isInRange()) {
        return fail("OpenFile Fail ... 3\n");
    }
    const Session& session = token->GetSession();
    bool isFound = false;
    {
        FileSearch search(session);
        if (!search.hasBegun()) {
            return fail("OpenFile Fail ... 4\n");
        }
        isFound = search.find(fileName.soughtLabel(), FileSearch::Ask::kClassAndLabel, &m_hObject);
    }
    if (!isFound) {
        return fail("OpenFile Fail ... end\n");
    }
    m_dwPos = 0;
    m_dwFileSize = 0;
    m_pData = nullptr;

    TokenAttributes value({CKA_VALUE});
    if (value.readLengths(session, m_hObject) != CKR_OK) {
        // The length cannot be read: the file opens empty.
        scope.end();
        return true;
    }
    if (value.length(0) > std::numeric_limits<DWORD>::max() || !value.allocateValues()) {
        return fail("OpenFile Fail ... 5\n");
    }
    if (value.fetchValues(session, m_hObject) != CKR_OK) {
        return fail("OpenFile Fail ... 6\n");
    }
    m_dwFileSize = static_cast<DWORD>(value.length(0));
    // An empty file has no buffer: Flush hands the token a null pointer with length 0.
    m_pData = m_dwFileSize > 0 ? value.release(0) : nullptr;
    scope.end();
    return true;
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::Close() {
    const LogScope scope(GetLog(), "Close");
    std::free(m_pData);
    m_pData = nullptr;
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::Flush() {
    const LogScope scope(GetLog(), "Flush");
    const KeyObject_pkcs11* token = GetKeyObject();
    // A closed file has no contents to write; the object keeps its value.
    if (!token || isClosed()) {
        return E_FAIL;
    }
    CK_ATTRIBUTE value = {CKA_VALUE, m_pData, m_dwFileSize};
    const Session& session = token->GetSession();
    if (session.Call(&CK_FUNCTIONS::C_SetAttributeValue, session.handle(), m_hObject, &value,
                     CK_ULONG{1}) != CKR_OK) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::Write(VARIANT) {
    // This backend cannot write to files.
    const LogScope scope(GetLog(), "Write");
    return scope.end(E_INVALIDARG);
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::Read(ULONG length, VARIANT* data) {
    const LogScope scope(GetLog(), "Read");
    if (!data) {
        return E_INVALIDARG;
    }
    // A closed file has a size, but no buffer.
    if (length > m_dwFileSize - m_dwPos || (length > 0 && !m_pData)) {
        return E_FAIL;
    }
    const unsigned char* bytes = m_pData ? m_pData + m_dwPos : nullptr;
    m_dwPos += length;
    // Elements of VT_I1 under a variant of VT_UI1. Out of memory, the result is left unset and the
    // answer is still S_OK; hosts read it that way.
    zr::storeBytes(bytes, length, VT_I1, data);
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::GetSize(VARIANT* size) {
    const LogScope scope(GetLog(), "GetSize");
    if (!size) {
        return E_INVALIDARG;
    }
    size->vt = VT_I4;
    size->lVal = static_cast<LONG>(m_dwFileSize);
    char line[64];
    std::snprintf(line, sizeof line, "m_dwFileSize=[%d]\n", static_cast<int>(m_dwFileSize));
    scope.message(line);
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyFile_pkcs11::Seek(LONG offset, INT origin) {
    const LogScope scope(GetLog(), "Seek");
    const auto distance = static_cast<DWORD>(offset);
    // A position outside the contents, their end included, changes nothing.
    const auto moveTo = [this](DWORD position) {
        if (position < m_dwFileSize) {
            m_dwPos = position;
        }
    };
    if (origin == 0 && offset >= 0) {
        moveTo(distance);
    } else if (origin == 1) {
        moveTo(m_dwPos + distance);
    } else if (origin == 2 && offset == 0) {
        // The beginning, not the end: hosts rewind this way.
        m_dwPos = 0;
    } else if (origin == 2 && offset < 0) {
        moveTo(m_dwFileSize + distance);
    }
    return scope.end(S_OK);
}
