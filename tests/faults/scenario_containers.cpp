// A session from Load to Unload: containers, certificates and the operations with their keys.
#include "tests/faults/oracle.h"
#include "tests/faults/scenario.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

constexpr std::size_t kLongestId = 127;
constexpr std::size_t kLongestType = 63;

/// Returns the names of a list and clears it; one name "(none)" when it is not a list.
Lines takeNames(VARIANT* variant) {
    Variant names;
    names.reset(*variant);
    VariantInit(variant);
    return names.toTexts().value_or(Lines{"(none)"});
}

std::string joined(const Lines& names) {
    std::string text;
    for (const std::string& name : names) {
        text += name + ";";
    }
    return text;
}

/// The bytes of the certificate with an ID.
Values expectCertificate(Step* step, CK_SESSION_HANDLE session, const std::string& id) {
    Values certificate;
    walkCertificates(*step, session, 4,
                     [&](CK_OBJECT_HANDLE, const std::vector<std::string>& values) {
                         if (textOf(values[2]) == id) {
                             certificate = {values[3]};
                         }
                         return !certificate;
                     });
    return certificate;
}

}  // namespace

void Scenario::useContainers(const Token& token) {
    countContainers(token);
    listContainers(token);
    Container second = openContainer("OpenContainer by index", token, Variant::fromNumber(1));
    if (second.object) {
        readContainer(&second);
        releaseContainer(&second);
    }
    const Text name("beta");
    Container container = openContainer("OpenContainer by name", token, string(name));
    if (container.object) {
        readContainer(&container);
        if (container.certificate) {
            readCertificate(token, container);
            readPublicKey(token, container);
            sign(token, container);
            verify("VerifyData", token, container, 256);
            verify("VerifyData of a wrong signature", token, container, 255);
        }
        releaseContainer(&container);
    }
}

void Scenario::countContainers(const Token& token) {
    Step step(m_context, "GetContainerCount");
    VARIANT count = poisoned();
    const HRESULT hr = token.object->GetContainerCount(&count);
    ULONG expected = 0;
    walkCertificates(step, token.session, 3,
                     [&](CK_OBJECT_HANDLE, const std::vector<std::string>&) {
                         ++expected;
                         return true;
                     });
    step.expect(S_OK, hr);
    step.equal("the type", static_cast<int>(VT_UI4), static_cast<int>(count.vt));
    step.equal("the count", expected, count.ulVal);
}

void Scenario::listContainers(const Token& token) {
    Step step(m_context, "EnumContainer");
    VARIANT list = poisoned();
    const HRESULT hr = token.object->EnumContainer(0, &list);
    Lines expected;
    walkCertificates(step, token.session, 3,
                     [&](CK_OBJECT_HANDLE, const std::vector<std::string>& values) {
                         expected.push_back(textOf(values[2]));
                         return true;
                     });
    step.expect(S_OK, hr);
    if (expected.empty()) {
        step.equal("the type", static_cast<int>(VT_UI1), static_cast<int>(list.vt));
        return;
    }
    step.equal("the list", joined(expected), joined(takeNames(&list)));
}

Scenario::Container Scenario::openContainer(const char* name, const Token& token,
                                            const VARIANT& which) {
    Step step(m_context, name);
    void* const untouched = this;
    void* opened = untouched;
    const HRESULT hr = token.object->OpenContainer(which, &opened);
    Container container;
    bool isOpened = false;
    LONG index = 0;
    walkCertificates(
        step, token.session, 3, [&](CK_OBJECT_HANDLE, const std::vector<std::string>& values) {
            const std::string id = textOf(values[2]);
            const bool isMatch =
                which.vt == VT_I4 ? which.lVal == index++ : narrow(which.bstrVal) == id;
            isOpened = isMatch && id.size() <= kLongestId;
            container.id = id;
            container.type = textOf(values[1].substr(0, kLongestType));
            return !isMatch;
        });
    if (!isOpened) {
        step.expect(E_FAIL, hr);
        step.equal("the container", untouched, opened);
        return {};
    }
    step.expect(S_OK, hr);
    if (opened == untouched || !opened) {
        step.problem("handed out no container");
        return {};
    }
    container.object.reset(static_cast<IKeyContainer*>(opened));
    return container;
}

void Scenario::readContainer(Container* container) {
    Step step(m_context, "GetKeyCert");
    Text type;
    step.expect(S_OK, container->object->GetType(type.receive()));
    step.equal("the type", container->type, narrow(type));
    step.expect(S_OK, container->object->GetKeyCert(true, container->certificate.receive()));
    Text id;
    step.expect(S_OK, container->certificate->GetCertID(id.receive()));
    step.equal("the ID", container->id, narrow(id));
}

void Scenario::readCertificate(const Token& token, const Container& container) {
    for (const bool isByToken : {false, true}) {
        Step step(m_context, isByToken ? "GetCertData of the token" : "GetCertData");
        VARIANT data = poisoned();
        const HRESULT hr = isByToken ? token.object->GetCertData(container.certificate.get(), &data)
                                     : container.certificate->GetCertData(&data);
        const Values expected = expectCertificate(&step, token.session, container.id);
        step.expect(expected ? S_OK : E_FAIL, hr);
        step.equal("the certificate", expected ? expected->front() : "(none)", takeBytes(&data));
    }
}

/// The library compares the type of the key, read as text, with the ID; it returns the key's ID.
void Scenario::readPublicKey(const Token& token, const Container& container) {
    Step step(m_context, "GetPubKeyData");
    VARIANT data = poisoned();
    const HRESULT hr = token.object->GetPubKeyData(container.certificate.get(), &data);
    Values expected;
    step.call(callOf("C_FindObjectsInit", token.session) + ", {0x0=2 0x1=1})");
    walkObjects(step, token.session, 3,
                [&](CK_OBJECT_HANDLE, const std::vector<std::string>& values) {
                    if (textOf(values[1]) == container.id) {
                        expected = {values[2]};
                    }
                    return !expected;
                });
    step.call(callOf("C_FindObjectsFinal", token.session) + ")");
    step.expect(expected ? S_OK : E_FAIL, hr);
    step.equal("the data", expected ? expected->front() : "(none)", takeBytes(&data));
}

void Scenario::releaseContainer(Container* container) {
    Step step(m_context, "Release of a container");
    if (container->certificate) {
        step.equal("the certificate's count", 0UL,
                   static_cast<unsigned long>(container->certificate.release()->Release()));
    }
    step.equal("the count", 0UL,
               static_cast<unsigned long>(container->object.release()->Release()));
    *container = {};
}

}  // namespace zr::test
