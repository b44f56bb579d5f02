// The results of single operations when each of their allocations fails in turn.
#include <functional>
#include <vector>

#include "tests/allocation/allocations.h"
#include "tests/support/fixtures/token_log.h"

namespace zr::test {
namespace {

using Codes = std::vector<HRESULT>;

/// Repeats a call while each of its allocations fails in turn; returns the results in order.
/// @param call       returns the result.
/// @param afterEach  checks the state after a failure, and cleans up.
Codes codesOf(
    const std::function<HRESULT()>& call,
    const std::function<void(HRESULT)>& afterEach = [](HRESULT) {}) {
    Codes codes;
    for (std::size_t number = 1;; ++number) {
        Allocations allocations(Allocations::kOfLibrary, number);
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
    /// The codes of an operation that hands out an object; a failure hands out none.
    static Codes opening(const std::function<HRESULT(void**)>& open) {
        ComRef<IUnknown> out;
        return codesOf([&] { return open(out.receive()); }, [&](HRESULT) { EXPECT_FALSE(out); });
    }
};

TEST_F(DocumentedCodesTest, OpenKeyOutOfMemoryForListAndTokenReturnsDifferentCodes) {
    EXPECT_EQ((Codes{E_FAIL, E_OUTOFMEMORY}),
              opening([&](void** out) { return provider->OpenKey(0, out); }));
}

TEST_F(LoadedProviderTest, OpenKeyOutOfMemoryForTheTokenLeavesTheSessionOpen) {
    void* out = nullptr;
    Allocations allocations(Allocations::kOfLibrary, 2);
    EXPECT_HR(E_OUTOFMEMORY, provider->OpenKey(0, &out));
    allocations.stop();
    EXPECT_EQ(1u, module->openSessions());
    EXPECT_EQ(0u, module.count("C_CloseSession"));
}

TEST_F(DocumentedCodesTest, CreateFileOutOfMemoryForTheObjectReturnsOutOfMemory) {
    EXPECT_EQ(Codes{E_OUTOFMEMORY},
              opening([&](void** out) { return token->CreateFile(Text("7"), 0, 0, 0, 0, out); }));
}

TEST_F(DocumentedCodesTest, OpenFileOutOfMemoryForObjectAndBuffersReturnsDifferentCodes) {
    // The walk passes a label that is too long for the object that reads it.
    module.addData(std::string(100, 'x'), "other");
    module.addData("6", "contents");
    EXPECT_EQ((Codes{E_OUTOFMEMORY, E_FAIL, E_FAIL}),
              opening([&](void** out) { return token->OpenFile(Text("7"), out); }));
}

TEST_F(DocumentedCodesTest, OpenContainerOutOfMemoryForObjectAndBuffersReturnsDifferentCodes) {
    // Only a long ID has a buffer that is allocated.
    module.addCertificate(std::string(100, 'a'), "A");
    const Variant first = Variant::fromNumber(0);
    EXPECT_EQ((Codes{E_OUTOFMEMORY, E_FAIL}),
              opening([&](void** out) { return token->OpenContainer(first, out); }));
}

TEST_F(ModuleTest, LoadOutOfMemoryForModuleAndTableOnlyReturnsOutOfMemory) {
    const ComRef<ITokenProvider> provider = makeProvider();
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
    // The object of the module and its table are the last allocations before C_Initialize.
    ASSERT_LT(2u, notStarted.size());
    for (int i = 0; i < 2; ++i) {
        EXPECT_HR(E_OUTOFMEMORY, notStarted.back());
        notStarted.pop_back();
    }
    EXPECT_EQ(Codes(notStarted.size(), E_FAIL), notStarted);
    // After that, only the configuration fails, or a buffer that is optional.
    for (const HRESULT hr : started) {
        EXPECT_TRUE(hr == E_FAIL || hr == S_OK) << hr;
    }
}

TEST_F(LoggedInTokenTest, ReadOutOfMemoryForTheArrayLeavesTheResultAndAdvances) {
    module.addData("6", "0123456789");
    ComRef<IKeyFile> file;
    EXPECT_HR(S_OK, token->OpenFile(Text("7"), file.receive()));
    VARIANT data = poisoned();
    Allocations allocations(Allocations::kOfLibrary, 1);
    EXPECT_HR(S_OK, file->Read(4, &data));
    allocations.stop();
    EXPECT_EQ(VT_UI1, data.vt);
    EXPECT_EQ(poisoned().ullVal, data.ullVal);
    EXPECT_HR(S_OK, file->Read(6, &data));
    EXPECT_EQ("456789", takeBytes(&data));
}

class ArrayLogTest : public TokenLogTest {
protected:
    ArrayLogTest() {
        logIn();
        module.addCertificate("a", "A");
        module.addKey(CKO_PRIVATE_KEY, "a");
        module->setAttribute(module.addKey(CKO_PUBLIC_KEY, "k"), CKA_KEY_TYPE, "a", 1);
        certificate = openCertificate(token.get(), Variant::fromText(Text("a")));
    }

    /// How often a line is written while each allocation of a call fails once.
    std::ptrdiff_t timesLogged(const std::string& line, const std::function<HRESULT()>& call) {
        const Lines lines = logged([&] { codesOf(call); });
        return std::count(lines.begin(), lines.end(), line);
    }

    ComRef<IKeyCertificate> certificate;
};

TEST_F(ArrayLogTest, SignDataOutOfMemoryForTheArrayLogsTheReason) {
    const ByteArray data("x");
    EXPECT_LT(0, timesLogged("[SignData] Error: ZSafeArrayAccessData Fail", [&] {
                  return token->SignData(nullptr, data, certificate.get(), result.receive());
              }));
}

TEST_F(ArrayLogTest, GetPubKeyDataOutOfMemoryForTheArrayLogsTheReason) {
    EXPECT_LT(0, timesLogged("[GetPubKeyData] Error: ZSafeArrayAccessData fail", [&] {
                  return token->GetPubKeyData(certificate.get(), result.receive());
              }));
}

}  // namespace
}  // namespace zr::test
