// Modules that are really loaded and unloaded in one thread, beside providers in other threads.
#include <atomic>
#include <functional>
#include <memory>
#include <thread>
#include <vector>

#include "tests/support/fixtures/token.h"
#include "tests/support/stateful/stateful.h"

namespace zr::test {
namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 25;

class StatefulThreadsTest : public testing::Test {
protected:
    StatefulThreadsTest() { folder.writeConfig(); }

    static void inThreads(const std::function<void(int thread)>& work) {
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back(work, i);
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    static ComRef<ITokenProvider> load(const Stateful& module) {
        ComRef<ITokenProvider> provider = makeProvider();
        EXPECT_HR(S_OK, provider->Load(Text(module.path())));
        return provider;
    }

    /// What a host does with a token that nobody else unloads.
    static void useToken(const Stateful& module, ITokenProvider* provider, CK_ULONG slot) {
        ComRef<IKeyObject> token;
        ASSERT_HR(S_OK, provider->OpenKey(static_cast<LONG>(slot), token.receive()));
        ASSERT_TRUE(token);
        EXPECT_HR(S_OK, token->VerifyPIN(Text(module.pin(slot)), 0));
        ComRef<IKeyCertificate> certificate = openCertificate(token.get(), Variant::fromNumber(0));
        ByteArray signature;
        EXPECT_HR(S_OK, token->SignData(nullptr, ByteArray("data"), certificate.get(),
                                        signature.receive()));
        EXPECT_EQ(module.signature(slot, "data"), signature.bytes());
        ComRef<IKeyFile> file;
        EXPECT_HR(S_OK, token->OpenFile(Text("7"), file.receive()));
        EXPECT_HR(S_OK, file->Flush());
    }

    TempDir folder;
    ConsoleCapture console;
};

TEST_F(StatefulThreadsTest, EachThreadLoadsAndUnloadsItsOwnModule) {
    std::vector<std::unique_ptr<Stateful>> modules;
    for (int i = 0; i < kThreads; ++i) {
        modules.push_back(std::make_unique<Stateful>(static_cast<char>('a' + i)));
    }
    inThreads([&](int thread) {
        Stateful& module = *modules[static_cast<std::size_t>(thread)];
        for (int i = 0; i < kRounds; ++i) {
            const ComRef<ITokenProvider> provider = load(module);
            ComRef<IKeyObject> dead;
            EXPECT_HR(S_OK, provider->OpenKey(0, dead.receive()));
            useToken(module, provider.get(), 1);
            EXPECT_HR(S_OK, provider->Unload());
            EXPECT_FALSE(module.isLoaded());
            Text label;
            EXPECT_HR(E_FAIL, dead->GetLabel(label.receive()));
            EXPECT_HR(E_FAIL, dead->VerifyPIN(Text(module.pin(0)), 0));
        }
        EXPECT_EQ(Lines{}, module.takeMisuses());
    });
}

TEST_F(StatefulThreadsTest, UnloadLeavesTokensOfAnotherModuleInOtherThreadsAlive) {
    Stateful unloaded('a');
    Stateful kept('b', kThreads);
    std::atomic<int> working{kThreads - 1};
    inThreads([&](int thread) {
        if (thread == 0) {
            while (working > 0) {
                useToken(unloaded, load(unloaded).get(), 0);
            }
            return;
        }
        ComRef<ITokenProvider> provider = load(kept);
        for (int i = 0; i < kRounds; ++i) {
            useToken(kept, provider.get(), static_cast<CK_ULONG>(thread));
        }
        // Unloads the module for all, so only when all have finished.
        --working;
        while (working > 0) {
            std::this_thread::yield();
        }
    });
    EXPECT_FALSE(unloaded.isLoaded());
    EXPECT_FALSE(kept.isLoaded());
    EXPECT_EQ(Lines{}, unloaded.takeMisuses());
    EXPECT_EQ(Lines{}, kept.takeMisuses());
}

TEST_F(StatefulThreadsTest, UnloadBesideTokensOfTheSameModuleInOtherThreadsEndsThem) {
    Stateful module('a', kThreads);
    inThreads([&](int thread) {
        const auto slot = static_cast<CK_ULONG>(thread);
        for (int i = 0; i < kRounds; ++i) {
            const ComRef<ITokenProvider> provider = load(module);
            ComRef<IKeyObject> token;
            // Another thread may finalise the module at any time, also while this one opens a token.
            provider->OpenKey(thread, token.receive());
            if (!token) {
                continue;
            }
            const HRESULT opened = token->VerifyPIN(Text(module.pin(slot)), 0);
            EXPECT_TRUE(opened == S_OK || opened == E_FAIL) << opened;
            ComRef<IKeyFile> file;
            const HRESULT found = token->OpenFile(Text("7"), file.receive());
            EXPECT_TRUE(found == S_OK || found == E_FAIL) << found;
            if (file) {
                file->Flush();
            }
            EXPECT_HR(S_OK, provider->Unload());
            Text label;
            EXPECT_HR(E_FAIL, token->GetLabel(label.receive()));
        }
    });
    EXPECT_FALSE(module.isLoaded());
    module.reset();
    const ComRef<ITokenProvider> provider = load(module);
    useToken(module, provider.get(), 0);
    EXPECT_EQ(Lines{}, module.takeMisuses());
}

}  // namespace
}  // namespace zr::test
