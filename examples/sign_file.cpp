// Signs a file with the first certificate of a token, and verifies the signature. C++17.
//
//     g++ sign_file.cpp $(pkg-config --cflags --libs zrkey) -o sign_file
//     ./sign_file MODULE FILE SIGNATURE-FILE
//
// MODULE is the token maker's PKCS #11 library. Its path is always relative to the current
// directory, which must also contain "config.xml", such as the one beside this file. So name
// another folder like this: $(realpath --relative-to=. /usr/lib/softhsm/libsofthsm2.so)
//
// The first line of standard input is the user PIN. It is shown as you type, and stays in memory
// until the program ends. A token locks itself after a few wrong PINs.
// The signature is RSA with SHA-1 (PKCS #1 v1.5).
#include <zrkey/zrkey.hpp>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <stdexcept>

namespace {

void check(const std::string& operation, zrkey::Result result) {
    if (result.failed()) {
        throw std::runtime_error(operation + " failed: " + result.text());
    }
}

std::string readFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + std::string(path));
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

zrkey::ComRef<IKeyObject> openToken(ITokenProvider& provider) {
    zrkey::ComRef<IKeyObject> token;
    check("OpenKey (is there a token?)", provider.OpenKey(0, token.receive()));
    if (!token) {  // S_OK alone does not mean that one was opened
        throw std::runtime_error("no token any more");
    }
    return token;
}

void logIn(IKeyObject& token) {
    std::string pin;
    std::fputs("user PIN: ", stderr);
    if (!std::getline(std::cin, pin) || pin.empty()) {
        throw std::runtime_error("no PIN on standard input");
    }
    pin.erase(pin.find_last_not_of('\r') + 1);                       // the line may end in CR LF
    check("VerifyPIN", token.VerifyPIN(zrkey::Text(pin).get(), 0));  // 0: the user's PIN
}

/// Lists the certificates and opens the first.
zrkey::ComRef<IKeyCertificate> openCertificate(IKeyObject& token) {
    zrkey::Variant names;
    check("EnumContainer", token.EnumContainer(0, names.receive()));
    const auto texts = names.toTexts();
    if (!texts) {  // S_OK and an empty variant
        throw std::runtime_error("no certificate on the first token");
    }
    for (const std::string& name : *texts) {
        std::printf("certificate: %s\n", name.c_str());
    }
    zrkey::ComRef<IKeyContainer> container;
    zrkey::ComRef<IKeyCertificate> certificate;
    check("OpenContainer", token.OpenContainer(zrkey::Variant::fromNumber(0), container.receive()));
    check("GetKeyCert", container->GetKeyCert(true, certificate.receive()));
    return certificate;
}

void signFile(const char* module, const char* path, const char* signaturePath) {
    const zrkey::ByteArray data(readFile(path));
    zrkey::ComRef<ITokenProvider> provider;
    check("createProvider", zrkey::createProvider(provider));
    check("Load (is MODULE relative, is config.xml here?)",
          provider->Load(zrkey::Text(module).get()));
    const zrkey::ComRef<IKeyObject> token = openToken(*provider.get());
    const zrkey::ComRef<IKeyCertificate> certificate = openCertificate(*token.get());
    logIn(*token.get());

    zrkey::ByteArray signature;  // the algorithm, a null pointer here, is ignored
    check("SignData", token->SignData(nullptr, data, certificate.get(), signature.receive()));
    check("VerifyData", token->VerifyData(data, certificate.get(), nullptr, signature));
    std::ofstream file(signaturePath, std::ios::binary);
    if (!(file << signature.bytes().value_or("") << std::flush)) {
        throw std::runtime_error("cannot write " + std::string(signaturePath));
    }
    std::puts("signed and verified");
}

}  // namespace

int main(int argc, char** argv) {
#ifdef SIGPIPE
    std::signal(SIGPIPE, SIG_IGN);  // a module may talk to a server that ends
#endif
    if (argc != 4) {
        std::fputs("usage: sign_file MODULE FILE SIGNATURE-FILE\n", stderr);
        return 1;
    }
    try {
        signFile(argv[1], argv[2], argv[3]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
