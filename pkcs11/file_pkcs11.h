// KeyFile_pkcs11: a data object of a token, its value held in memory.
#pragma once

#include "model/key_file.h"
#include "pkcs11/cryptoki_types.h"

class KeyObject_pkcs11;

class KeyFile_pkcs11 : public KeyFile {
public:
    explicit KeyFile_pkcs11(KeyObject* token);
    ~KeyFile_pkcs11() override;

    /// Frees the contents; nothing is written back.
    HRESULT STDMETHODCALLTYPE Close() override;
    /// Replaces the value of the token's object with the contents.
    HRESULT STDMETHODCALLTYPE Flush() override;
    HRESULT STDMETHODCALLTYPE Write(VARIANT data) override;
    HRESULT STDMETHODCALLTYPE Read(ULONG length, VARIANT* data) override;
    HRESULT STDMETHODCALLTYPE GetSize(VARIANT* size) override;
    HRESULT STDMETHODCALLTYPE Seek(LONG offset, INT origin) override;

    /// Makes an empty data object on the token.
    bool CreateFile(BSTR name);
    /// Finds the data object of a name and reads its value.
    bool OpenFile(BSTR name);

    CK_OBJECT_HANDLE GetObject() const { return m_hObject; }
    /// The owning token; null when there is none or it is of another kind.
    KeyObject_pkcs11* GetKeyObject() const;

private:
    /// Whether Close freed the contents.
    bool isClosed() const { return !m_pData && m_dwFileSize > 0; }

    DWORD m_dwPos = 0;
    unsigned char* m_pData = nullptr;
    DWORD m_dwFileSize = 0;
    CK_OBJECT_HANDLE m_hObject = 0;
};
