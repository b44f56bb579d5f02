// The same as sign_file.cpp in C++11, with zrkey.h alone.
//
//     g++ -std=c++11 sign_file_plain.cpp $(pkg-config --cflags --libs zrkey) -o sign_file_plain
//     ./sign_file_plain MODULE FILE SIGNATURE-FILE
//
// For MODULE, config.xml and the PIN see sign_file.cpp. All texts are ASCII here.
#include <zrkey/zrkey.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>

void require(bool condition, const char* failure) {
    if (!condition) {
        std::fprintf(stderr, "%s\n", failure);
        std::exit(1);  // a host that goes on frees what it has
    }
}

void check(const char* operation, HRESULT result) {
    if (FAILED(result)) {
        std::fprintf(stderr, "%s failed: 0x%08X\n", operation, static_cast<unsigned>(result));
        std::exit(1);
    }
}

/// The caller frees it with SysFreeString.
BSTR newText(const std::string& ascii) {
    for (const char letter : ascii) {
        require(letter > 0, "a text is not ASCII");
    }
    const std::basic_string<OLECHAR> text(ascii.begin(), ascii.end());
    return SysAllocString(text.c_str());
}

/// The caller frees it with VariantClear.
VARIANT readFile(const char* path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    const std::streamoff size = file.tellg();
    require(size >= 0 && size < 0x7FFFFFFF, "cannot read FILE");
    SAFEARRAYBOUND bound = {static_cast<ULONG>(size), 0};
    VARIANT data;
    VariantInit(&data);
    data.vt = VT_ARRAY | VT_UI1;
    data.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    require(data.parray != nullptr, "out of memory");
    file.seekg(0);
    require(bool(file.read(static_cast<char*>(data.parray->pvData), size)), "cannot read FILE");
    return data;
}

/// Lists the certificates and opens the first.
IKeyCertificate* openCertificate(IKeyObject* token) {
    VARIANT value;
    VariantInit(&value);
    check("EnumContainer", token->EnumContainer(0, &value));
    require(value.vt == (VT_ARRAY | VT_BSTR), "no certificate on the first token");
    for (ULONG i = 0; i < value.parray->rgsabound[0].cElements; ++i) {
        const BSTR name = static_cast<BSTR*>(value.parray->pvData)[i];
        std::printf("certificate: %s\n", std::string(name, name + SysStringLen(name)).c_str());
    }
    VariantClear(&value);
    value.vt = VT_I4;
    value.lVal = 0;
    void* object = nullptr;
    check("OpenContainer", token->OpenContainer(value, &object));
    IKeyContainer* const container = static_cast<IKeyContainer*>(object);
    check("GetKeyCert", container->GetKeyCert(true, &object));
    container->Release();
    return static_cast<IKeyCertificate*>(object);
}

int main(int argc, char** argv) {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);  // a module may talk to a server that ends
#endif
    require(argc == 4, "usage: sign_file_plain MODULE FILE SIGNATURE-FILE");
    VARIANT data = readFile(argv[2]);
    void* object = nullptr;
    check("ZCLGetClassObject", ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, &object));
    IClassFactory* const factory = static_cast<IClassFactory*>(object);
    check("CreateInstance", factory->CreateInstance(nullptr, IID_ITokenProvider, &object));
    ITokenProvider* const provider = static_cast<ITokenProvider*>(object);
    BSTR text = newText(argv[1]);
    check("Load (is MODULE relative, is config.xml here?)", provider->Load(text));
    SysFreeString(text);
    object = nullptr;
    check("OpenKey (is there a token?)", provider->OpenKey(0, &object));
    require(object != nullptr, "no token any more");  // S_OK alone does not mean that there is one
    IKeyObject* const token = static_cast<IKeyObject*>(object);
    IKeyCertificate* const certificate = openCertificate(token);

    std::string pin;
    std::fputs("user PIN: ", stderr);
    require(std::getline(std::cin, pin) && !pin.empty(), "no PIN on standard input");
    pin.erase(pin.find_last_not_of('\r') + 1);  // the line may end in CR LF
    text = newText(pin);
    check("VerifyPIN", token->VerifyPIN(text, 0));  // 0: the user's PIN
    SysFreeString(text);
    VARIANT signature;
    VariantInit(&signature);
    check("SignData", token->SignData(nullptr, data, certificate, &signature));
    check("VerifyData", token->VerifyData(data, certificate, nullptr, signature));
    std::ofstream file(argv[3], std::ios::binary);
    file.write(static_cast<const char*>(signature.parray->pvData),
               static_cast<std::streamsize>(signature.parray->rgsabound[0].cElements));
    require(bool(file.flush()), "cannot write SIGNATURE-FILE");
    std::puts("signed and verified");
    VariantClear(&signature);
    VariantClear(&data);
    certificate->Release();
    token->Release();
    provider->Release();
    factory->Release();
    return 0;
}
