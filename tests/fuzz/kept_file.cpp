// The file that DeleteFile opens and keeps: found as the memory it was made in.
#include "tests/fuzz/kept_file.h"

#include <new>

#include "pkcs11/key_file.h"
#include "tests/fuzz/expect.h"

namespace {

void* s_lastFile = nullptr;

ULONG countReferences(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace

/// Replaces the standard's: what is as large as a file may be one.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        void* made = ::operator new(size);
        if (size == sizeof(KeyFile_pkcs11)) {
            s_lastFile = made;
        }
        return made;
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

namespace zr::fuzz {

HRESULT deleteFile(IKeyObject* token, BSTR name) {
    const ULONG before = countReferences(token);
    const HRESULT hr = token->DeleteFile(name);
    // A file that is kept has the token; one that could not be opened is gone.
    if (countReferences(token) > before) {
        expect(static_cast<KeyFile_pkcs11*>(s_lastFile)->Release() == 0,
               "DeleteFile keeps one reference of its file");
    } else {
        expect(FAILED(hr), "a file that is deleted is kept");
    }
    expect(countReferences(token) == before, "DeleteFile keeps nothing but its file");
    return hr;
}

}  // namespace zr::fuzz
