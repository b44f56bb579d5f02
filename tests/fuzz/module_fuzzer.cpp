// A whole session over a module that answers as the input says.
#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"

namespace zr::fuzz {
namespace {

void useCertificate(IKeyObject* token, IKeyContainer* container) {
    Ref<IKeyCertificate> certificate;
    expect(container->GetKeyCert(true, certificate.out()) == S_OK);
    Variant data;
    Variant result;
    data.setBytes("data");
    if (certificate->GetCertData(result.get()) == S_OK) {
        expect(result->vt == (VT_ARRAY | VT_UI1));
        VariantClear(result.get());
    }
    if (token->SignData(nullptr, data, certificate.get(), result.get()) == S_OK) {
        expect(result->parray->rgsabound[0].cElements <= 1024);
        token->VerifyData(data, certificate.get(), nullptr, result);
        VariantClear(result.get());
    }
    token->GetPubKeyData(certificate.get(), result.get());
}

void useFiles(IKeyObject* token, Input& input) {
    const String name = String::ascii(std::to_string(input.byte()));
    Variant result;
    const HRESULT exists = token->FileExists(name, result.get());
    expect(result->vt == VT_I4 && (result->lVal == 1) == (exists == S_OK));
    Ref<IKeyFile> created;
    expect((token->CreateFile(name, 0, 0, 0, 0, created.out()) == S_OK) == bool(created));
    Ref<IKeyFile> file;
    expect((token->OpenFile(name, file.out()) == S_OK) == bool(file));
    if (file) {
        Variant size;
        file->GetSize(size.get());
        file->Seek(input.number<LONG>(), static_cast<INT>(input.below(4)));
        Variant contents;
        if (file->Read(input.byte(), contents.get()) == S_OK && contents->vt != VT_EMPTY) {
            expect(contents->parray->rgsabound[0].cElements <= size->ulVal);
        }
        file->Flush();
    }
    token->DeleteFile(name);
}

void useToken(IKeyObject* token, Input& input) {
    BSTR text = nullptr;
    if (token->GetLabel(&text) == S_OK) {
        SysFreeString(text);
    }
    Variant size;
    token->GetFreeSize(size.get());
    token->VerifyPIN(String::ascii("1234"), static_cast<INT>(input.below(2)));
    token->ModifyPIN(String::ascii("1234"), String::ascii("4321"), 0);
    Variant count;
    expect(token->GetContainerCount(count.get()) == S_OK && count->vt == VT_UI4);
    Variant names;
    token->EnumContainer(0, names.get());
    Variant which;
    which->vt = VT_I4;
    which->lVal = static_cast<LONG>(input.below(4));
    Ref<IKeyContainer> container;
    expect((token->OpenContainer(which, container.out()) == S_OK) == bool(container));
    if (container) {
        useCertificate(token, container.get());
    }
    useFiles(token, input);
}

}  // namespace
}  // namespace zr::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    static const bool isPrepared = (writeConfig("<driver><algo>a</algo></driver>"), true);
    expect(isPrepared);
    const String path = String::ascii(modulePath());
    Input input(data, size);
    answerFrom(&input);
    Ref<ITokenProvider> provider;
    makeProvider(&provider);
    provider->Load(path);
    INT count = 7;
    if (provider->GetKeyCount(&count) != S_OK) {
        expect(count == 0);
    }
    {
        Ref<IKeyObject> token;
        provider->OpenKey(static_cast<LONG>(input.below(3)), token.out());
        if (token) {
            useToken(token.get(), input);
            if (input.flag()) {
                provider->Unload();
                useToken(token.get(), input);
            }
        }
    }
    provider->Unload();
    return 0;
}
