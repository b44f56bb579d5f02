// What is promised to hosts with threads: atomic reference counts, and separate providers in separate
// threads.
#include <atomic>
#include <functional>
#include <thread>

#include "tests/contract/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 50;

void inThreads(const std::function<void(int thread)>& work) {
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

/// What a host does with a token, from loading to the last release.
void useToken() {
    ITokenProvider* provider = makeProvider();
    ASSERT_HR(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))));
    VARIANT result = {};
    EXPECT_HR(S_OK, invoke(provider, idOf(provider, "GetKeyCount"), {}, &result));
    EXPECT_EQ(1, result.lVal);
    IKeyObject* token = nullptr;
    ASSERT_HR(S_OK, provider->OpenKey(0, reinterpret_cast<void**>(&token)));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->EnumContainer(0, &result));
    VariantClear(&result);
    IKeyContainer* container = nullptr;
    IKeyCertificate* certificate = nullptr;
    result.vt = VT_I4;
    result.lVal = 0;
    ASSERT_HR(S_OK, token->OpenContainer(result, reinterpret_cast<void**>(&container)));
    EXPECT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
    EXPECT_HR(S_OK, token->SignData(nullptr, Bytes("data"), certificate, &result));
    VariantClear(&result);
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), Bytes("data"), &result));
    VariantClear(&result);
    certificate->Release();
    container->Release();
    EXPECT_EQ(0u, token->Release());
    EXPECT_EQ(0u, provider->Release());
}

class ThreadsTest : public testing::Test {
protected:
    ThreadsTest() { folder.writeConfig(); }

    TempDir folder;
    ConsoleCapture console;
};

TEST_F(ThreadsTest, ReferencesAreCountedWholeFromManyThreads) {
    ITokenProvider* provider = makeProvider();
    inThreads([&](int) {
        for (int i = 0; i < 100 * kRounds; ++i) {
            provider->AddRef();
            provider->Release();
        }
    });
    EXPECT_EQ(2u, provider->AddRef());
    EXPECT_EQ(1u, provider->Release());
    EXPECT_EQ(0u, provider->Release());
}

TEST_F(ThreadsTest, TheLastReferenceMayGoInAnyThread) {
    for (int round = 0; round < kRounds; ++round) {
        ITokenProvider* provider = makeProvider();
        for (int i = 1; i < kThreads; ++i) {
            provider->AddRef();
        }
        std::atomic<int> destroyed{0};
        inThreads([&](int) { destroyed += provider->Release() == 0 ? 1 : 0; });
        EXPECT_EQ(1, destroyed);
    }
}

TEST_F(ThreadsTest, ProvidersOfTheirOwnAreUsedInManyThreads) {
    inThreads([](int) {
        for (int i = 0; i < kRounds; ++i) {
            useToken();
        }
    });
}

TEST_F(ThreadsTest, ProvidersMayLogAtOnce) {
    folder.enableLog();
    inThreads([](int) { useToken(); });
    // Those of one second append to one file; on Windows a line can then take another's place.
    const Lines lines = readLogLines(folder.home());
    EXPECT_LE(1, std::count(lines.begin(), lines.end(), "[SignData] End"));
}

TEST_F(ThreadsTest, AnObjectMayBeHandedToAnotherThread) {
    ITokenProvider* provider = makeProvider();
    std::thread([&] {
        EXPECT_HR(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))));
    }).join();
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(1, count);
    EXPECT_EQ(0u, provider->Release());
}

}  // namespace
}  // namespace zr::test
