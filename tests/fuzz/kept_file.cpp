// Finds the file object that DeleteFile leaks, by its memory.
#include "tests/fuzz/kept_file.h"

#include <new>

#include "pkcs11/file_pkcs11.h"
#include "tests/fuzz/expect.h"

namespace {

void* s_lastFile = nullptr;

ULONG countReferences(IUnknown* object) {
    object->AddRef();
    return object->Release();
}

}  // namespace

/// Replaces operator new: a block of the size of a file object may be one.
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
    // A leaked file holds the token; a file that could not be opened is already destroyed.
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
