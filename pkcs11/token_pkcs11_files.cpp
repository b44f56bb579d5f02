// KeyObject_pkcs11: data files. A file is a data object labelled with its name.
#include <cstdio>
#include <new>

#include "model/log_scope.h"
#include "pkcs11/file_name.h"
#include "pkcs11/file_pkcs11.h"
#include "pkcs11/file_search.h"
#include "pkcs11/token_pkcs11.h"

namespace {

/// Hands a file out with its first reference.
void handOut(KeyFile_pkcs11* file, void** out) {
    *out = static_cast<IKeyFile*>(file);
    file->AddRef();
}

}  // namespace

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::FileExists(BSTR name, VARIANT* result) {
    const LogScope scope(GetLog(), "FileExists");
    if (!result) {
        return E_INVALIDARG;
    }
    const auto store = [result](LONG exists) {
        result->vt = VT_I4;
        result->lVal = exists;
    };
    const FileName fileName(name);
    char line[64];
    std::snprintf(line, sizeof line, "fileName=[%d]\n", static_cast<int>(fileName.number()));
    scope.message(line);
    store(0);
    if (!fileName.isValid()) {
        return E_FAIL;
    }
    {
        scope.message("C_FindObjectsInit begin\n");
        FileSearch search(m_session);
        if (!search.hasBegun()) {
            scope.message("C_FindObjectsInit Fail\n");
            return E_FAIL;
        }
        scope.message("C_FindObjectsInit end\n");
        CK_OBJECT_HANDLE object = 0;
        if (search.find(fileName.soughtLabel(), FileSearch::Ask::kLabel, &object)) {
            // The search stays open on a match; hosts depend on the Cryptoki calls. A walk over
            // certificates or keys closes it. Some modules refuse another search until then.
            search.leaveOpen();
            store(1);
            return scope.end(S_OK);
        }
    }
    scope.message("FileExists Fail\n");
    return E_FAIL;
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::CreateFile(BSTR name, INT, INT, INT, ULONG,
                                                       void** file) {
    const LogScope scope(GetLog(), "CreateFile");
    if (!file) {
        return E_INVALIDARG;
    }
    auto* created = new (std::nothrow) KeyFile_pkcs11(this);
    if (!created) {
        return E_OUTOFMEMORY;
    }
    VARIANT exists;
    VariantInit(&exists);
    // An existing name gets a second object.
    const bool isRefused = FAILED(FileExists(name, &exists)) && exists.lVal != 0;
    if (isRefused || !created->CreateFile(name)) {
        delete created;
        return E_FAIL;
    }
    handOut(created, file);
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::OpenFile(BSTR name, void** file) {
    const LogScope scope(GetLog(), "OpenFile");
    if (!file) {
        return E_INVALIDARG;
    }
    auto* opened = new (std::nothrow) KeyFile_pkcs11(this);
    if (!opened) {
        return E_OUTOFMEMORY;
    }
    if (!opened->OpenFile(name)) {
        scope.message("OpenFile Fail\n");
        delete opened;
        return E_FAIL;
    }
    handOut(opened, file);
    return scope.end(S_OK);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::EnumFiles(VARIANT*) {
    const LogScope scope(GetLog(), "EnumFiles");
    return scope.end(E_NOTIMPL);
}

HRESULT STDMETHODCALLTYPE KeyObject_pkcs11::DeleteFile(BSTR name) {
    const LogScope scope(GetLog(), "DeleteFile");
    void* opened = nullptr;
    if (FAILED(OpenFile(name, &opened)) || !opened) {
        return E_FAIL;
    }
    // The reference from OpenFile is not released, so the file keeps its token alive. Hosts see it
    // in the token's reference count, so this is kept.
    auto* file = static_cast<KeyFile_pkcs11*>(static_cast<IKeyFile*>(opened));
    if (file->GetObject() == 0) {
        // Cryptoki gives no object the handle 0; do not let the module guess what to destroy.
        return E_FAIL;
    }
    file->Close();
    if (m_session.Call(&CK_FUNCTIONS::C_DestroyObject, m_session.handle(), file->GetObject()) !=
        CKR_OK) {
        return E_FAIL;
    }
    return scope.end(S_OK);
}
