// A session from Load to Unload with every operation that reaches the module. Each step states its
// expected result; after a fault, the expected results depend on the state that the fault left.
#pragma once

#include <string>

#include "tests/faults/step.h"
#include "tests/support/fixtures/library.h"

namespace zr::test {

/// Prepares the module for a run: two slots, three files, three certificates with keys.
void fillModule(Recording* module);

class Scenario {
public:
    /// @param factory  borrowed.
    /// @param module   its path, relative to the current directory.
    Scenario(RunContext& context, IClassFactory* factory, const std::string& module);
    Scenario(const Scenario&) = delete;
    Scenario& operator=(const Scenario&) = delete;

    void run();

    /// The tokens that DeleteFile keeps alive.
    unsigned int keptTokens() const { return m_keptTokens; }

private:
    /// A token and its expected state.
    struct Token {
        ComRef<IKeyObject> object;
        CK_SLOT_ID slot = 0;
        CK_SESSION_HANDLE session = 0;
        bool isLoggedIn = false;
    };
    /// A file and its expected state.
    struct File {
        ComRef<IKeyFile> object;
        CK_OBJECT_HANDLE handle = 0;
        std::string contents;
        std::size_t position = 0;
    };
    /// A container and its certificate.
    struct Container {
        ComRef<IKeyContainer> object;
        ComRef<IKeyCertificate> certificate;
        std::string id;
        std::string type;
    };

    // scenario.cpp
    void load();
    void countTokens();
    Token openToken(LONG index);
    void releaseToken(Token* token, bool isKept);
    void unload();
    void useToken(Token& token);

    // scenario_token.cpp
    void readInformation(const Token& token);
    void readText(const char* name, const Token& token, HRESULT (IKeyObject::*getter)(BSTR*),
                  std::string (*field)(const CK_TOKEN_INFO&));
    void readSize(const char* name, const Token& token, HRESULT (IKeyObject::*getter)(VARIANT*),
                  CK_ULONG (*field)(const CK_TOKEN_INFO&));
    void verifyPin(Token* token, const std::string& pin);
    void modifyPin(Token* token, const std::string& from, const std::string& to);
    void sign(const Token& token, const Container& container);
    void verify(const char* name, const Token& token, const Container& container,
                std::size_t length);
    void digest(const Token& token);

    // scenario_files.cpp
    void useFiles(Token& token);
    void createFile(const Token& token, const std::string& name);
    void findFile(const Token& token, const std::string& name, const std::string& label);
    File openFile(const char* name, const Token& token, const std::string& fileName,
                  const std::string& label);
    void readFile(File* file, ULONG length);
    void seekFile(File* file, LONG offset, INT origin, std::size_t position);
    void checkSize(const File& file);
    void flushFile(const Token& token, const File& file);
    void closeFile(File* file);
    void releaseFile(File* file);
    void deleteFile(const std::string& name, const std::string& label);

    // scenario_containers.cpp
    void useContainers(const Token& token);
    void countContainers(const Token& token);
    void listContainers(const Token& token);
    Container openContainer(const char* name, const Token& token, const VARIANT& which);
    void readContainer(Container* container);
    void readCertificate(const Token& token, const Container& container);
    void readPublicKey(const Token& token, const Container& container);
    void releaseContainer(Container* container);

    RunContext& m_context;
    std::string m_modulePath;
    ComRef<ITokenProvider> m_provider;
    std::size_t m_openSessions = 0;
    unsigned int m_keptTokens = 0;
};

}  // namespace zr::test
