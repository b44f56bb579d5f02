// Many providers, tokens, certificates and files.
#include <algorithm>

#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

constexpr int kProviders = 10000;
constexpr CK_ULONG kSlots = 1000;
constexpr int kObjects = 10000;

/// A different name for each object.
std::string nameOf(int number) {
    return "id" + std::to_string(number);
}

TEST(LargeCountTest, CreateInstanceOf10000ProvidersReturnsDistinctObjects) {
    const TempDir folder;
    std::vector<ITokenProvider*> providers;
    for (int i = 0; i < kProviders; ++i) {
        providers.push_back(makeProvider().release());
    }
    std::sort(providers.begin(), providers.end());
    EXPECT_EQ(providers.end(), std::adjacent_find(providers.begin(), providers.end()));
    for (ITokenProvider* provider : providers) {
        ASSERT_EQ(0u, provider->Release());
    }
}

TEST_F(ModuleTest, LoadOfOneModuleBy1000ProvidersSucceeds) {
    std::vector<ITokenProvider*> providers;
    const Text path(module.path());
    for (int i = 0; i < 1000; ++i) {
        providers.push_back(makeProvider().release());
        ASSERT_HR(S_OK, providers.back()->Load(path));
    }
    for (ITokenProvider* provider : providers) {
        ASSERT_EQ(0u, provider->Release());
    }
    EXPECT_EQ(1000u, module.count("C_Finalize"));
}

TEST_F(LoadedProviderTest, OpenKeyOf1000TokensOpensEachSlot) {
    module->settings().slotCount = module->settings().slotCountWhenListed = kSlots;
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(static_cast<INT>(kSlots), count);
    std::vector<IKeyObject*> tokens;
    for (CK_ULONG i = 0; i < kSlots; ++i) {
        module.takeCalls();
        ComRef<IKeyObject> token;
        ASSERT_HR(S_OK, provider->OpenKey(static_cast<LONG>(i), token.receive()));
        // The recording module's slots are numbered from 10.
        const std::string call = "C_OpenSession(" + std::to_string(10 + i) + ",";
        ASSERT_EQ(0u, module.takeCalls().back().find(call));
        tokens.push_back(token.release());
    }
    EXPECT_EQ(kSlots, module->openSessions());
    ComRef<IKeyObject> none;
    EXPECT_HR(E_FAIL, provider->OpenKey(static_cast<LONG>(kSlots), none.receive()));
    EXPECT_FALSE(none);
    for (IKeyObject* token : tokens) {
        EXPECT_EQ(0u, token->Release());
    }
    EXPECT_EQ(0u, module->openSessions());
}

class CrowdedTokenTest : public LoggedInTokenTest {
protected:
    CrowdedTokenTest() {
        for (int i = 0; i < kObjects; ++i) {
            module.addCertificate(nameOf(i), "certificate " + std::to_string(i));
            module.addData(std::to_string(i + 1), "file " + std::to_string(i + 1));
        }
    }
};

TEST_F(CrowdedTokenTest, EnumContainerOf10000CertificatesKeepsTheOrder) {
    VARIANT count = {};
    EXPECT_HR(S_OK, token->GetContainerCount(&count));
    EXPECT_EQ(static_cast<ULONG>(kObjects), count.ulVal);
    Variant names;
    EXPECT_HR(S_OK, token->EnumContainer(0, names.receive()));
    Lines expected;
    for (int i = 0; i < kObjects; ++i) {
        expected.push_back(nameOf(i));
    }
    EXPECT_TRUE(expected == names.toTexts());
}

TEST_F(CrowdedTokenTest, OpenContainerAndOpenFileFindTheLastOf10000) {
    const ComRef<IKeyCertificate> certificate =
        openCertificate(token.get(), Variant::fromText(Text(nameOf(kObjects - 1))));
    ASSERT_TRUE(certificate);
    ByteArray data;
    EXPECT_HR(S_OK, certificate->GetCertData(data.receive()));
    EXPECT_EQ("certificate " + std::to_string(kObjects - 1), data.bytes());

    ComRef<IKeyFile> file;
    ASSERT_HR(S_OK, token->OpenFile(Text(std::to_string(kObjects + 1)), file.receive()));
    EXPECT_HR(S_OK, file->Read(10, data.receive()));
    EXPECT_EQ("file 10000", data.bytes());
}

}  // namespace
}  // namespace zr::test
