// A host that tries what the library can do with the token "ZRKey Test" of a module, and prints the
// results for tests/tokens/check_tokens: one line for each row of the table in docs/tokens.md, with a
// tab before "yes" or "no".
// usage: try_module MODULE                       the user PIN is 1234; file 12 has a content
//        try_module MODULE wait [ignore-sigpipe] logs in after a line of standard input, and prints
//                                                the result
#include <zrkey/zrkey.hpp>

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

namespace {

using zrkey::ByteArray;
using zrkey::ComRef;
using zrkey::Text;
using zrkey::Variant;

constexpr const char* kPin = "1234";
constexpr const char* kOtherPin = "5678";

void report(const std::string& row, const std::string& result) {
    std::cout << row << '\t' << result << '\n';
}

void report(const std::string& row, bool works) {
    report(row, std::string(works ? "yes" : "no"));
}

/// The library takes paths relative to the working directory, which holds config.xml.
ComRef<ITokenProvider> load(const std::string& module) {
    std::ofstream("config.xml") << "<driver><algo>RSA</algo><digest>MD5</digest></driver>\n";
    const std::filesystem::path here = std::filesystem::current_path();
    const std::string path = std::filesystem::path(module).lexically_relative(here).string();
    ComRef<ITokenProvider> provider;
    if (FAILED(zrkey::createProvider(provider)) || FAILED(provider->Load(Text(path).get()))) {
        provider.reset();
    }
    return provider;
}

ComRef<IKeyObject> openToken(ITokenProvider& provider) {
    INT count = 0;
    provider.GetKeyCount(&count);
    for (LONG i = 0; i < count; ++i) {
        ComRef<IKeyObject> token;
        Text label;
        if (SUCCEEDED(provider.OpenKey(i, token.receive())) && token &&
            token->GetLabel(label.receive()) == S_OK && label.utf8() == "ZRKey Test") {
            return token;
        }
    }
    return {};
}

class Trial {
public:
    explicit Trial(IKeyObject& token) : m_token(token) {}

    void tryPins() const {
        report("`VerifyPIN`", logsIn(kPin));
        report("`VerifyPIN` refuses a wrong PIN", !logsIn("97531"));
        // Not one wrong PIN more: a TPM locks after the third.
        report("`ModifyPIN`", changesPin(kPin, kOtherPin) && logsIn(kOtherPin) &&
                                  changesPin(kOtherPin, kPin) && logsIn(kPin));
    }

    void tryFiles() const {
        ComRef<IKeyFile> made;
        report("`CreateFile`",
               SUCCEEDED(m_token.CreateFile(Text("7").get(), 0, 0, 0, 0, made.receive())));
        // File 12 was written by the command.
        report("`FileExists`", exists("12"));
        report("`FileExists` again, after it found a file", exists("12"));
        closeSearch();
        ComRef<IKeyFile> file;
        const bool isOpen = SUCCEEDED(m_token.OpenFile(Text("12").get(), file.receive())) && file;
        ByteArray content;
        report("`OpenFile`, `Read`", isOpen && SUCCEEDED(file->Read(9, content.receive())) &&
                                         content.bytes() == "a letter\n");
        report("`Flush`", isOpen && SUCCEEDED(file->Flush()));
        if (isOpen) {
            file->Close();
        }
        report("`DeleteFile`", SUCCEEDED(m_token.DeleteFile(Text("12").get())) && !exists("12"));
        if (made) {
            m_token.DeleteFile(Text("8").get());
        }
    }

    void tryContainers() {
        Variant count;
        ByteArray bytes;
        report("`GetContainerCount`, `OpenContainer`, `GetCertData`",
               SUCCEEDED(m_token.GetContainerCount(count.receive())) && count.toNumber() == 1 &&
                   openCertificate() && SUCCEEDED(m_certificate->GetCertData(bytes.receive())) &&
                   bytes.bytes() && !bytes.bytes()->empty());
    }

    /// Needs tryContainers.
    /// @return the signature.
    std::string trySignatures() const {
        ByteArray result;
        const bool isSigned = SUCCEEDED(m_token.SignData(Text("RSA").get(), ByteArray("a letter"),
                                                         m_certificate.get(), result.receive())) &&
                              result.bytes();
        report("`SignData`", isSigned);
        const std::string good = isSigned ? *result.bytes() : std::string();
        std::string wrong = good;
        if (!wrong.empty()) {
            wrong.back() = static_cast<char>(wrong.back() ^ 1);
        }
        report("`VerifyData`", verifies(good));
        report("`VerifyData` after a wrong signature", !verifies(wrong) && verifies(good));
        report("`VerifyData` after an empty signature", !verifies("") && verifies(good));
        return good;
    }

    /// The same on a token that was opened later.
    void tryAgain(const std::string& signature) {
        report("`Load` after `Unload`", logsIn(kPin));
        report("`VerifyData` after that", openCertificate() && verifies(signature));
    }

private:
    bool openCertificate() {
        ComRef<IKeyContainer> container;
        return SUCCEEDED(m_token.OpenContainer(Variant::fromText(Text("container1")),
                                               container.receive())) &&
               SUCCEEDED(container->GetKeyCert(true, m_certificate.receive()));
    }
    bool logsIn(const char* pin) const { return SUCCEEDED(m_token.VerifyPIN(Text(pin).get(), 0)); }
    bool changesPin(const char* from, const char* to) const {
        return SUCCEEDED(m_token.ModifyPIN(Text(from).get(), Text(to).get(), 0));
    }
    bool exists(const char* name) const {
        Variant found;
        return m_token.FileExists(Text(name).get(), found.receive()) == S_OK;
    }
    void closeSearch() const {
        Variant ignored;
        m_token.GetContainerCount(ignored.receive());
    }
    bool verifies(const std::string& signature) const {
        return SUCCEEDED(m_token.VerifyData(ByteArray("a letter"), m_certificate.get(), nullptr,
                                            ByteArray(signature)));
    }

    IKeyObject& m_token;
    ComRef<IKeyCertificate> m_certificate;
};

int tryAll(const std::string& module) {
    std::string signature;
    {
        const ComRef<ITokenProvider> provider = load(module);
        report("`Load`", static_cast<bool>(provider));
        INT slots = 0;
        if (!provider || FAILED(provider->GetKeyCount(&slots))) {
            return 1;
        }
        report("slots that `GetKeyCount` counts", std::to_string(slots));
        const ComRef<IKeyObject> token = openToken(*provider.get());
        if (!token) {
            return 1;
        }
        Trial trial(*token.get());
        trial.tryPins();
        trial.tryFiles();
        trial.tryContainers();
        signature = trial.trySignatures();
        provider->Unload();
    }
    const ComRef<ITokenProvider> again = load(module);
    const ComRef<IKeyObject> token = again ? openToken(*again.get()) : ComRef<IKeyObject>();
    if (token) {
        Trial(*token.get()).tryAgain(signature);
    }
    return 0;
}

/// What a host gets whose server is gone by the time of the call.
int logInLater(const std::string& module) {
    const ComRef<ITokenProvider> provider = load(module);
    const ComRef<IKeyObject> token = provider ? openToken(*provider.get()) : ComRef<IKeyObject>();
    if (!token) {
        return 1;
    }
    std::cout << "ready" << std::endl;
    std::string line;
    std::getline(std::cin, line);
    const zrkey::Result result = token->VerifyPIN(Text(kPin).get(), 0);
    std::cout << result.text() << std::endl;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return 2;
    }
    if (argc > 3) {
        std::signal(SIGPIPE, SIG_IGN);
    }
    return argc > 2 ? logInLater(argv[1]) : tryAll(argv[1]);
}
