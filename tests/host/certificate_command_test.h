// A fixture for commands that use certificates: real ones, and signatures by their keys, of "abc".
#pragma once

#include "host/crypto/public_key.h"
#include "tests/host/command_test.h"
#include "tests/host/crypto/samples.h"

namespace zr::test {

class CertificateCommandTest : public CommandTest {
protected:
    CertificateCommandTest() { writeFile("data.bin", "abc"); }

    /// A certificate with a private and a public key, of a sample.
    CK_OBJECT_HANDLE addCertificate(const std::string& id, const char* certificate,
                                    CK_KEY_TYPE type = CKK_RSA) {
        for (const CK_OBJECT_CLASS keyClass : {CKO_PRIVATE_KEY, CKO_PUBLIC_KEY}) {
            const CK_OBJECT_HANDLE key = module.addKey(keyClass, id);
            module->setAttribute(key, CKA_KEY_TYPE, &type, sizeof type);
            (keyClass == CKO_PRIVATE_KEY ? privateKey : publicKey) = key;
        }
        return module.addCertificate(id, sample(certificate));
    }
    /// What the keys of the token make; verify accepts it.
    void setSignature(const std::string& bytes) {
        m_signature = bytes;
        module->settings().signature = reinterpret_cast<const CK_BYTE*>(m_signature.data());
        module->settings().signatureLength = static_cast<CK_ULONG>(m_signature.size());
    }
    void setMechanisms(const std::vector<CK_MECHANISM_TYPE>& types) {
        module->settings().mechanismCount = static_cast<CK_ULONG>(types.size());
        std::copy(types.begin(), types.end(), module->settings().mechanisms);
    }
    /// The calls of a command that do something: signatures, logins, changes of objects.
    std::vector<std::string> takeDeeds() {
        std::vector<std::string> deeds;
        for (const std::string& call : module.takeCalls()) {
            for (const char* name : {"C_Sign", "C_Verify", "C_Login", "C_InitPIN", "C_CreateObject",
                                     "C_DestroyObject", "C_SetAttributeValue", "C_CopyObject"}) {
                if (call.starts_with(name)) {
                    deeds.push_back(call);
                }
            }
        }
        return deeds;
    }

    CK_OBJECT_HANDLE privateKey = 0;
    CK_OBJECT_HANDLE publicKey = 0;

private:
    std::string m_signature;
};

}  // namespace zr::test
