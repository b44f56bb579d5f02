// A host that takes any steps: the steps of tokens and what is opened from them.
#include "tests/fuzz/kept_file.h"
#include "tests/fuzz/sequence.h"
#include "tests/fuzz/sequence_call.h"

namespace zr::fuzz {

void Sequence::useToken(const Token& used) {
    const Held<Token> token(*this, used);
    switch (m_input.below(16)) {
        case 0:
        case 1:
            readLabel(token);
            break;
        case 2:
        case 3:
            verifyPin(token);
            break;
        case 4:
            modifyPin(token);
            break;
        case 5:
            createFile(token);
            break;
        case 6:
        case 7:
            openFile(token);
            break;
        case 8:
            removeFile(token);
            break;
        case 9:
        case 10:
        case 11:
            openContainer(token);
            break;
        case 12:
            countContainers(token);
            break;
        default:
            sign(token);
    }
}

void Sequence::readLabel(const Held<Token>& token) {
    const Call call(*this, token->life);
    Text label;
    const HRESULT hr = token->object->GetLabel(label.receive());
    expect(hr == (call.isAlive() ? S_OK : E_FAIL), "a live token has a label");
    expect(hr != S_OK || label.utf8() == token->life->ofModule().label(token->life->slot),
           "the label is that of the token");
}

void Sequence::verifyPin(const Held<Token>& token) {
    const std::string right = token->life->ofModule().currentPin(token->life->slot);
    const bool isRight = m_input.byte() < 200;
    const Call call(*this, token->life);
    const HRESULT hr = token->object->VerifyPIN(Text(isRight ? right : "other").get(), 0);
    expect(call.isAlive() || hr == E_FAIL, "nobody logs in to a dead token");
    expect(!call.isCertain() || hr == (call.wasAlive() && isRight ? S_OK : E_FAIL),
           "the PIN of the token logs in, and no other");
}

void Sequence::modifyPin(const Held<Token>& token) {
    Stateful& module = token->life->ofModule();
    const std::string before = module.currentPin(token->life->slot);
    const std::string after = m_input.flag() ? "11111" : "22222";
    const Call call(*this, token->life);
    const HRESULT hr = token->object->ModifyPIN(Text(before).get(), Text(after).get(), 0);
    expect(call.isAlive() || hr == E_FAIL, "a dead token keeps its PIN");
    expect(!call.isCertain() || !call.wasAlive() ||
               (hr == S_OK && module.currentPin(token->life->slot) == after),
           "the PIN of the token is changed");
}

void Sequence::createFile(const Held<Token>& token) {
    Stateful& module = token->life->ofModule();
    const std::size_t before = module.contents(token->life->slot).size();
    Child<IKeyFile> file;
    {
        const Call call(*this, token->life);
        const HRESULT hr =
            token->object->CreateFile(Text("2").get(), 0, 0, 0, 0, file.object.receive());
        expect(SUCCEEDED(hr) == static_cast<bool>(file.object));
        expect(call.isAlive() || hr == E_FAIL, "nothing is made on a dead token");
        expect(!call.isCertain() ||
                   module.contents(token->life->slot).size() == before + (hr == S_OK ? 1 : 0),
               "a file is made on the token");
    }
    if (file.object) {
        file.life = token->life;
        keep(m_files, std::move(file));
    }
}

void Sequence::openFile(const Held<Token>& token) {
    Child<IKeyFile> file;
    {
        const Text name(m_input.flag() ? "7" : "3");
        const Call call(*this, token->life);
        const HRESULT hr = token->object->OpenFile(name.get(), file.object.receive());
        expect(SUCCEEDED(hr) == static_cast<bool>(file.object));
        expect(call.wasAlive() || hr == E_FAIL, "nothing is opened on a dead token");
    }
    if (file.object) {
        file.life = token->life;
        keep(m_files, std::move(file));
    }
}

void Sequence::removeFile(const Held<Token>& token) {
    if (m_input.flag()) {
        const Text name(m_input.flag() ? "7" : "3");
        const Call call(*this, token->life);
        Variant exists;
        const HRESULT hr = token->object->FileExists(name.get(), exists.receive());
        expect(exists.type() == VT_I4 && (hr == S_OK) == (exists.toNumber() == 1));
        expect(call.wasAlive() || hr == E_FAIL, "a dead token has no files");
        return;
    }
    // The file that DeleteFile keeps is found among those that were made meanwhile.
    const Call call(*this, token->life, Call::kLoadsOnly);
    const HRESULT hr = deleteFile(token->object.get(), Text(m_input.flag() ? "7" : "3").get());
    expect(call.wasAlive() || hr == E_FAIL, "nothing is deleted on a dead token");
}

void Sequence::openContainer(const Held<Token>& token) {
    Child<IKeyContainer> container;
    {
        const Variant which =
            m_input.flag() ? Variant::fromText(Text("id")) : Variant::fromNumber(0);
        const Call call(*this, token->life);
        const HRESULT hr = token->object->OpenContainer(which, container.object.receive());
        expect(SUCCEEDED(hr) == static_cast<bool>(container.object));
        expect(call.wasAlive() || hr == E_FAIL, "nothing is opened on a dead token");
    }
    if (container.object) {
        container.life = token->life;
        keep(m_containers, std::move(container));
    }
}

void Sequence::countContainers(const Held<Token>& token) {
    const Call call(*this, token->life);
    Variant count;
    expect(token->object->GetContainerCount(count.receive()) == S_OK);
    expect(call.wasAlive() || count.toNumber() == 0, "a dead token has no containers");
    Variant names;
    expect(token->object->EnumContainer(0, names.receive()) == S_OK);
    expect(call.wasAlive() || names.type() == VT_EMPTY, "a dead token names no containers");
}

void Sequence::sign(const Held<Token>& token) {
    // The host keeps the certificate for the time of the call, as it keeps the token.
    Child<IKeyCertificate> none;
    const Child<IKeyCertificate>* const chosen = any(m_certificates);
    const Held<Child<IKeyCertificate>> certificate(*this, chosen ? *chosen : none);
    ComRef<IKeyCertificate> used = certificate->object;
    if (m_input.byte() >= 128) {
        used.reset(new HostCertificate([this] { return answerAsProxy(); }));
        used->AddRef();
    }
    const TokenLife& life = *token->life;
    const std::string signature = life.ofModule().signature(life.slot, "data");
    const bool isVerified = m_input.flag();
    const Call call(*this, token->life);
    if (isVerified) {
        const HRESULT hr =
            token->object->VerifyData(ByteArray("data"), used.get(), nullptr, ByteArray(signature));
        expect(call.isAlive() || hr != S_OK, "a dead token verifies nothing");
        return;
    }
    ByteArray made;
    const HRESULT hr =
        token->object->SignData(nullptr, ByteArray("data"), used.get(), made.receive());
    expect(call.isAlive() || hr != S_OK, "a dead token signs nothing");
    expect(hr != S_OK || made.bytes() == signature, "the signature is that of the token's key");
}

void Sequence::useFile(const Child<IKeyFile>& used) {
    const Held<Child<IKeyFile>> file(*this, used);
    const std::size_t calls = callCount();
    if (m_input.flag()) {
        const Call call(*this, file->life);
        const HRESULT hr = file->object->Flush();
        expect(call.isAlive() || hr == E_FAIL, "nothing is written to a dead token");
        return;
    }
    const Call call(*this, file->life, Call::kQuiet);
    Variant size;
    expect(file->object->GetSize(size.receive()) == S_OK);
    ByteArray contents;
    const auto length = static_cast<ULONG>(size.toNumber().value_or(0));
    if (file->object->Seek(0, 2) == S_OK &&
        file->object->Read(length, contents.receive()) == S_OK) {
        const TokenLife& life = *file->life;
        const std::string bytes = contents.bytes().value_or("");
        expect(bytes.empty() || bytes == life.ofModule().file(life.slot),
               "a file holds what is on its own token");
    }
    if (m_input.byte() >= 230) {
        expect(file->object->Close() == S_OK);
    }
    expect(calls == callCount(), "an open file is read without the module");
}

void Sequence::useContainer(const Child<IKeyContainer>& used) {
    const Held<Child<IKeyContainer>> container(*this, used);
    Child<IKeyCertificate> certificate;
    {
        const Call call(*this, container->life, Call::kQuiet);
        expect(container->object->GetKeyCert(true, certificate.object.receive()) == S_OK);
    }
    certificate.life = container->life;
    keep(m_certificates, std::move(certificate));
}

void Sequence::useCertificate(const Child<IKeyCertificate>& used) {
    const Held<Child<IKeyCertificate>> certificate(*this, used);
    const TokenLife& life = *certificate->life;
    const Call call(*this, certificate->life);
    Text id;
    expect(certificate->object->GetCertID(id.receive()) == S_OK && id.utf8() == "id");
    ByteArray data;
    const HRESULT hr = certificate->object->GetCertData(data.receive());
    expect(call.wasAlive() || hr == E_FAIL, "a dead token has no certificates");
    expect(hr != S_OK || data.bytes() == life.ofModule().certificate(life.slot),
           "a certificate is that of its token");
}

}  // namespace zr::fuzz
