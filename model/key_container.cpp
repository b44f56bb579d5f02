// KeyContainer: its reference to the token.
#include "model/key_container.h"

#include "model/key_object.h"

KeyContainer::KeyContainer(KeyObject* token) : m_pKeyObject(token) {
    if (m_pKeyObject) {
        m_pKeyObject->AddRef();
    }
}

KeyContainer::~KeyContainer() {
    if (m_pKeyObject) {
        m_pKeyObject->Release();
        m_pKeyObject = nullptr;
    }
}
