// Many providers, tokens, certificates and files.
#include "tests/contract/token.h"

namespace zr::test {
namespace {

constexpr int kProviders = 10000;
constexpr CK_ULONG kSlots = 1000;
constexpr int kObjects = 10000;

/// A name of its own for each of many objects.
std::string nameOf(int number) {
    return "id" + std::to_string(number);
}

TEST(LargeCountTest, TenThousandProvidersLiveSideBySide) {
    const TempDir folder;
    std::vector<ITokenProvider*> providers;
    for (int i = 0; i < kProviders; ++i) {
        providers.push_back(makeProvider());
    }
    std::sort(providers.begin(), providers.end());
    EXPECT_EQ(providers.end(), std::adjacent_find(providers.begin(), providers.end()));
    for (ITokenProvider* provider : providers) {
        ASSERT_EQ(0u, provider->Release());
    }
}

TEST_F(ModuleTest, AModuleIsLoadedByAThousandProviders) {
    std::vector<ITokenProvider*> providers;
    const Text path(module.path());
    for (int i = 0; i < 1000; ++i) {
        providers.push_back(makeProvider());
        ASSERT_HR(S_OK, providers.back()->Load(path));
    }
    for (ITokenProvider* provider : providers) {
        ASSERT_EQ(0u, provider->Release());
    }
    EXPECT_EQ(1000u, module.count("C_Finalize"));
}

TEST_F(LoadedProviderTest, EachOfAThousandTokensIsOpenedFromItsSlot) {
    module->settings().slotCount = module->settings().slotCountWhenListed = kSlots;
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(static_cast<INT>(kSlots), count);
    std::vector<IKeyObject*> tokens;
    for (CK_ULONG i = 0; i < kSlots; ++i) {
        module.takeCalls();
        IKeyObject* token = nullptr;
        ASSERT_HR(S_OK, provider->OpenKey(static_cast<LONG>(i), reinterpret_cast<void**>(&token)));
        // The recording module's slots are numbered from 10.
        const std::string call = "C_OpenSession(" + std::to_string(10 + i) + ",";
        ASSERT_EQ(0u, module.takeCalls().back().find(call));
        tokens.push_back(token);
    }
    EXPECT_EQ(kSlots, module->openSessions());
    IKeyObject* none = nullptr;
    EXPECT_HR(E_FAIL,
              provider->OpenKey(static_cast<LONG>(kSlots), reinterpret_cast<void**>(&none)));
    EXPECT_EQ(nullptr, none);
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

TEST_F(CrowdedTokenTest, EveryCertificateIsCountedAndListedInItsOrder) {
    VARIANT result;
    VariantInit(&result);
    EXPECT_HR(S_OK, token->GetContainerCount(&result));
    EXPECT_EQ(static_cast<ULONG>(kObjects), result.ulVal);
    EXPECT_HR(S_OK, token->EnumContainer(0, &result));
    ASSERT_EQ(VT_ARRAY | VT_BSTR, result.vt);
    ASSERT_EQ(static_cast<ULONG>(kObjects), result.parray->rgsabound[0].cElements);
    void* data = nullptr;
    SafeArrayAccessData(result.parray, &data);
    for (int i = 0; i < kObjects; ++i) {
        ASSERT_EQ(nameOf(i), narrow(static_cast<BSTR*>(data)[i]));
    }
    SafeArrayUnaccessData(result.parray);
    VariantClear(&result);
}

TEST_F(CrowdedTokenTest, TheLastCertificateAndTheLastFileAreOpened) {
    const Text name(nameOf(kObjects - 1));
    IKeyContainer* container = nullptr;
    ASSERT_HR(S_OK, token->OpenContainer(string(name), reinterpret_cast<void**>(&container)));
    IKeyCertificate* certificate = nullptr;
    ASSERT_HR(S_OK, container->GetKeyCert(true, reinterpret_cast<void**>(&certificate)));
    VARIANT data;
    VariantInit(&data);
    EXPECT_HR(S_OK, certificate->GetCertData(&data));
    EXPECT_EQ("certificate " + std::to_string(kObjects - 1), takeBytes(&data));
    certificate->Release();
    container->Release();

    IKeyFile* file = nullptr;
    ASSERT_HR(S_OK,
              token->OpenFile(Text(std::to_string(kObjects + 1)), reinterpret_cast<void**>(&file)));
    EXPECT_HR(S_OK, file->Read(10, &data));
    EXPECT_EQ("file 10000", takeBytes(&data));
    file->Release();
}

}  // namespace
}  // namespace zr::test
