// KeyCertificate: lifetime.
#include "model/key_certificate.h"

#include "model/key_container.h"

KeyCertificate::KeyCertificate(KeyContainer* container) : m_pKeyContainer(container) {
    if (m_pKeyContainer) {
        m_pKeyContainer->AddRef();
    }
}

KeyCertificate::~KeyCertificate() {
    if (m_pKeyContainer) {
        m_pKeyContainer->Release();
        m_pKeyContainer = nullptr;
    }
}
