// What single operations answer for each of their allocations that fails, by their order.
#include <functional>
#include <vector>

#include "tests/allocation/allocations.h"
#include "tests/contract/token_log.h"

namespace zr::test {
namespace {

using Codes = std::vector<HRESULT>;

/// Makes a call once for each of its allocations, and tells what it answered when that one failed.
/// @param call      answers the code.
/// @param afterEach  looks at what came of a failure, and cleans up.
Codes codesOf(
    const std::function<HRESULT()>& call,
    const std::function<void(HRESULT)>& afterEach = [](HRESULT) {}) {
    Codes codes;
    for (std::size_t number = 1;; ++number) {
        Allocations allocations(Allocations::ofLibrary, number);
        const HRESULT hr = call();
        allocations.stop();
        if (!allocations.hasFailed()) {
            EXPECT_HR(S_OK, hr);
            return codes;
        }
        codes.push_back(hr);
        afterEach(hr);
    }
}

class DocumentedCodesTest : public LoggedInTokenTest {
protected:
    /// Releases what the last call handed out.
    ~DocumentedCodesTest() override {
        if (m_out) {
            static_cast<IUnknown*>(m_out)->Release();
        }
    }

    /// Of an operation that hands out an object: nothing, when it fails.
    Codes opening(const std::function<HRESULT(void**)>& open) {
        return codesOf([&] { return open(&m_out); }, [&](HRESULT) { EXPECT_EQ(nullptr, m_out); });
    }

private:
    void* m_out = nullptr;
};

TEST_F(DocumentedCodesTest, OpenKeyTellsAMissingListFromAMissingToken) {
    EXPECT_EQ((Codes{E_FAIL, E_OUTOFMEMORY}),
              opening([&](void** out) { return provider->OpenKey(0, out); }));
}

TEST_F(LoadedProviderTest, TheSessionOfATokenThatCannotBeMadeStaysOpen) {
    void* out = nullptr;
    Allocations allocations(Allocations::ofLibrary, 2);
    EXPECT_HR(E_OUTOFMEMORY, provider->OpenKey(0, &out));
    allocations.stop();
    EXPECT_EQ(1u, module->openSessions());
    EXPECT_EQ(0u, module.count("C_CloseSession"));
}

TEST_F(DocumentedCodesTest, CreateFileTellsAMissingObject) {
    EXPECT_EQ(Codes{E_OUTOFMEMORY},
              opening([&](void** out) { return token->CreateFile(Text("7"), 0, 0, 0, 0, out); }));
}

TEST_F(DocumentedCodesTest, OpenFileTellsAMissingObjectFromMissingBuffers) {
    module.addData("6", "contents");
    EXPECT_EQ((Codes{E_OUTOFMEMORY, E_FAIL, E_FAIL}),
              opening([&](void** out) { return token->OpenFile(Text("7"), out); }));
}

TEST_F(DocumentedCodesTest, OpenContainerTellsAMissingObjectFromMissingBuffers) {
    module.addCertificate("a", "A");
    VARIANT first = {};
    first.vt = VT_I4;
    EXPECT_EQ((Codes{E_OUTOFMEMORY, E_FAIL, E_FAIL, E_FAIL}),
              opening([&](void** out) { return token->OpenContainer(first, out); }));
}

TEST_F(ModuleTest, LoadTellsAMissingTableFromEverythingElse) {
    ITokenProvider* provider = makeProvider();
    const Text path(module.path());
    Codes notStarted;
    Codes started;
    codesOf([&] { return provider->Load(path); },
            [&](HRESULT hr) {
                const bool isStarted = module.count("C_Initialize") > 0;
                INT count = 0;
                EXPECT_HR(isStarted ? S_OK : E_FAIL, provider->GetKeyCount(&count));
                (isStarted ? started : notStarted).push_back(hr);
                provider->Unload();
                module.takeCalls();
            });
    // The table is the last thing before the module starts.
    ASSERT_LT(1u, notStarted.size());
    EXPECT_HR(E_OUTOFMEMORY, notStarted.back());
    notStarted.pop_back();
    EXPECT_EQ(Codes(notStarted.size(), E_FAIL), notStarted);
    // Then the configuration alone is missing, or a buffer that can be done without.
    for (const HRESULT hr : started) {
        EXPECT_TRUE(hr == E_FAIL || hr == S_OK) << hr;
    }
    provider->Release();
}

TEST_F(LoggedInTokenTest, AReadWithoutAnArrayLeavesTheResultAndMovesOn) {
    module.addData("6", "0123456789");
    IKeyFile* file = nullptr;
    EXPECT_HR(S_OK, token->OpenFile(Text("7"), reinterpret_cast<void**>(&file)));
    VARIANT data = poisoned();
    Allocations allocations(Allocations::ofLibrary, 1);
    EXPECT_HR(S_OK, file->Read(4, &data));
    allocations.stop();
    EXPECT_EQ(VT_UI1, data.vt);
    EXPECT_EQ(poisoned().ullVal, data.ullVal);
    EXPECT_HR(S_OK, file->Read(6, &data));
    EXPECT_EQ("456789", takeBytes(&data));
    file->Release();
}

class ArrayLogTest : public TokenLogTest {
protected:
    ArrayLogTest() {
        logIn();
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        module->setAttribute(module.addKey(CKO_PUBLIC_KEY, "k"), CKA_KEY_TYPE, "a", 1);
        IKeyContainer* container = nullptr;
        const Text name("a");
        EXPECT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
        EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
        container->Release();
    }
    ~ArrayLogTest() override { certificate->Release(); }

    /// How often a line is written while each allocation of a call fails once.
    std::ptrdiff_t timesTold(const std::string& line, const std::function<HRESULT()>& call) {
        const Lines lines = told([&] {
            codesOf(call, [&](HRESULT) { VariantClear(&result); });
            VariantClear(&result);
        });
        return std::count(lines.begin(), lines.end(), line);
    }

    IKeyCertificate* certificate = nullptr;
};

TEST_F(ArrayLogTest, ASignatureWithoutAnArrayTellsWhy) {
    const Bytes data("x");
    EXPECT_LT(0, timesTold("[SignData] Error: ZSafeArrayAccessData Fail",
                           [&] { return token->SignData(nullptr, data, certificate, &result); }));
}

TEST_F(ArrayLogTest, PublicKeyDataWithoutAnArrayTellWhy) {
    EXPECT_LT(0, timesTold("[GetPubKeyData] Error: ZSafeArrayAccessData fail",
                           [&] { return token->GetPubKeyData(certificate, &result); }));
}

}  // namespace
}  // namespace zr::test
