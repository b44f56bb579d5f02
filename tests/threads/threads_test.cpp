// What hosts with threads may rely on: atomic reference counts, and separate providers in separate
// threads.
#include <atomic>
#include <functional>
#include <thread>
#include <vector>

#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

constexpr int kThreads = 4;
constexpr int kManyThreads = 64;
constexpr int kRounds = 50;

void inThreads(const std::function<void(int thread)>& work, int count = kThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i) {
        threads.emplace_back(work, i);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

ComRef<ITokenProvider> makeLoadedProvider() {
    ComRef<ITokenProvider> provider = makeProvider();
    EXPECT_HR(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))));
    return provider;
}

/// What a host does with a token, from its opening to its release.
void useToken(ITokenProvider* provider) {
    Variant result;
    EXPECT_HR(S_OK, invoke(provider, idOf(provider, "GetKeyCount"), {}, result.receive()));
    EXPECT_EQ(1, result.toNumber());
    ComRef<IKeyObject> token;
    ASSERT_HR(S_OK, provider->OpenKey(0, token.receive()));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(S_OK, token->EnumContainer(0, result.receive()));
    ComRef<IKeyCertificate> certificate = openCertificate(token.get(), Variant::fromNumber(0));
    EXPECT_HR(S_OK,
              token->SignData(nullptr, ByteArray("data"), certificate.get(), result.receive()));
    EXPECT_HR(S_OK, token->DigestData(Text("MD5"), ByteArray("data"), result.receive()));
    certificate.reset();
    EXPECT_EQ(0u, token.release()->Release());
}

class ThreadsTest : public testing::Test {
protected:
    ThreadsTest() { folder.writeConfig(); }

    TempDir folder;
    ConsoleCapture console;
};

TEST_F(ThreadsTest, AddRefAndReleaseInManyThreadsKeepTheCount) {
    ComRef<ITokenProvider> provider = makeProvider();
    inThreads([&](int) {
        for (int i = 0; i < 100 * kRounds; ++i) {
            provider->AddRef();
            provider->Release();
        }
    });
    EXPECT_EQ(2u, provider->AddRef());
    EXPECT_EQ(1u, provider->Release());
    EXPECT_EQ(0u, provider.release()->Release());
}

TEST_F(ThreadsTest, LastReleaseInAnyThreadDestroysTheProviderOnce) {
    for (int round = 0; round < kRounds; ++round) {
        ITokenProvider* const provider = makeProvider().release();
        for (int i = 1; i < kThreads; ++i) {
            provider->AddRef();
        }
        std::atomic<int> destroyed{0};
        inThreads([&](int) { destroyed += provider->Release() == 0 ? 1 : 0; });
        EXPECT_EQ(1, destroyed);
    }
}

TEST_F(ThreadsTest, SeparateProvidersWorkInManyThreads) {
    // Kept to the end: unloading a module ends the tokens of all providers over it.
    std::vector<ComRef<ITokenProvider>> providers(kThreads * kRounds);
    inThreads([&](int thread) {
        for (int i = 0; i < kRounds; ++i) {
            ComRef<ITokenProvider>& provider = providers[thread * kRounds + i];
            provider = makeLoadedProvider();
            useToken(provider.get());
        }
    });
    for (ComRef<ITokenProvider>& provider : providers) {
        EXPECT_EQ(0u, provider.release()->Release());
    }
}

TEST_F(ThreadsTest, EachOf64ThreadsWorksWithItsProvider) {
    std::vector<ComRef<ITokenProvider>> providers(kManyThreads);
    inThreads(
        [&](int thread) {
            providers[thread] = makeLoadedProvider();
            useToken(providers[thread].get());
        },
        kManyThreads);
    for (ComRef<ITokenProvider>& provider : providers) {
        EXPECT_EQ(0u, provider.release()->Release());
    }
}

TEST_F(ThreadsTest, UnloadBesideTokensOfOtherThreadsEndsThemWithoutACrash) {
    inThreads([](int) {
        for (int i = 0; i < kRounds; ++i) {
            ComRef<ITokenProvider> provider = makeLoadedProvider();
            ComRef<IKeyObject> token;
            // Another thread may unload the module at any time, also while this one opens a token.
            provider->OpenKey(0, token.receive());
            if (token) {
                const HRESULT hr = token->VerifyPIN(Text("1234"), 0);
                EXPECT_TRUE(hr == S_OK || hr == E_FAIL) << hr;
                EXPECT_EQ(0u, token.release()->Release());
            }
            EXPECT_EQ(0u, provider.release()->Release());
        }
    });
    const ComRef<ITokenProvider> provider = makeLoadedProvider();
    useToken(provider.get());
}

TEST_F(ThreadsTest, ProvidersInManyThreadsLog) {
    folder.enableLog();
    std::vector<ComRef<ITokenProvider>> providers(kThreads);
    inThreads([&](int thread) {
        providers[thread] = makeLoadedProvider();
        useToken(providers[thread].get());
    });
    // Providers created in one second append to one file; on Windows a line may overwrite another.
    const Lines lines = readLogLines(folder.home());
    EXPECT_LE(1, std::count(lines.begin(), lines.end(), "[SignData] End"));
}

TEST_F(ThreadsTest, ProviderWorksInAnotherThread) {
    ComRef<ITokenProvider> provider = makeProvider();
    std::thread([&] {
        EXPECT_HR(S_OK, provider->Load(Text(relativePath(ZR_INSTANT_MODULE))));
    }).join();
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(1, count);
    EXPECT_EQ(0u, provider.release()->Release());
}

}  // namespace
}  // namespace zr::test
