// A provider on a real module: loading, slots, what the token tells, unloading.
#include "tests/token/soft_token.h"

namespace zr::test {
namespace {

std::string text(IKeyObject* token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    BSTR result = nullptr;
    EXPECT_HR(S_OK, (token->*getter)(&result));
    return take(result);
}

TEST_F(SoftProviderTest, TheTokenAndTheSlotForAnotherAreCounted) {
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(2, count);
}

TEST_F(SoftProviderTest, OneSlotOpensAndTheOneWithoutATokenDoesNot) {
    int opened = 0;
    int refused = 0;
    for (LONG i = 0; i < 2; ++i) {
        IKeyObject* key = nullptr;
        const HRESULT hr = provider->OpenKey(i, reinterpret_cast<void**>(&key));
        opened += hr == S_OK && key ? 1 : 0;
        refused += hr == E_FAIL && !key ? 1 : 0;
        if (key) {
            key->Release();
        }
    }
    EXPECT_EQ(1, opened);
    EXPECT_EQ(1, refused);
}

TEST_F(SoftProviderTest, AnIndexBeyondTheSlotsIsRefused) {
    void* key = nullptr;
    EXPECT_HR(E_FAIL, provider->OpenKey(2, &key));
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(-1, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(SoftProviderTest, AProviderLoadsTheModuleThatAnotherHasInitialised) {
    ITokenProvider* second = makeProvider();
    EXPECT_HR(S_OK, load(second));
    INT count = 0;
    EXPECT_HR(S_OK, second->GetKeyCount(&count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(0u, second->Release());
}

TEST_F(SoftProviderTest, AfterUnloadAnotherProviderBeginsAnew) {
    EXPECT_HR(S_OK, provider->Unload());
    ITokenProvider* second = makeProvider();
    EXPECT_HR(S_OK, load(second));
    IKeyObject* token = openToken(second);
    ASSERT_TRUE(token);
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token->Release());
    EXPECT_EQ(0u, second->Release());
}

TEST_F(SoftProviderTest, ATokenKeepsItsProvider) {
    IKeyObject* token = openToken(provider);
    ASSERT_TRUE(token);
    EXPECT_EQ(1u, provider->Release());
    provider = nullptr;
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token->Release());
}

TEST_F(SoftTokenTest, ItTellsAboutItself) {
    EXPECT_EQ("ZRKey Test", text(token, &IKeyObject::GetLabel));
    EXPECT_EQ("SoftHSM project", text(token, &IKeyObject::GetManufacturerID));
    EXPECT_EQ("SoftHSM v2", text(token, &IKeyObject::GetModelID));
    const std::string serial = text(token, &IKeyObject::GetSerialNumber);
    EXPECT_EQ(16u, serial.size());
    EXPECT_EQ(std::string::npos, serial.find_first_not_of("0123456789abcdef"));
}

TEST_F(SoftTokenTest, SizesThatItDoesNotTellAreUnavailable) {
    VARIANT size;
    VariantInit(&size);
    EXPECT_HR(S_OK, token->GetTotalSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
    VariantInit(&size);
    EXPECT_HR(S_OK, token->GetFreeSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
}

TEST_F(SoftTokenTest, TheListsOfTheConfigurationAreHandedOn) {
    EXPECT_EQ("SHA1WithRSA;SM3WithSM2", text(token, &IKeyObject::GetSignAlgo));
    EXPECT_EQ("SHA1WithRSA;SM3WithSM2", text(token, &IKeyObject::GetAlgoList));
    EXPECT_EQ("MD5", text(token, &IKeyObject::GetDigestMethod));
}

}  // namespace
}  // namespace zr::test
