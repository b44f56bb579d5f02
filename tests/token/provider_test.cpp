// A provider on a real module: loading, slots, the token information, unloading.
#include "tests/support/fixtures/soft_token.h"

namespace zr::test {
namespace {

std::string text(IKeyObject* token, HRESULT (STDMETHODCALLTYPE IKeyObject::*getter)(BSTR*)) {
    Text result;
    EXPECT_HR(S_OK, (token->*getter)(result.receive()));
    return narrow(result);
}

TEST_F(SoftProviderTest, GetKeyCountCountsTheTokenAndTheEmptySlot) {
    INT count = 0;
    EXPECT_HR(S_OK, provider->GetKeyCount(&count));
    EXPECT_EQ(2, count);
}

TEST_F(SoftProviderTest, OpenKeyOfTheEmptySlotFails) {
    int opened = 0;
    int refused = 0;
    for (LONG i = 0; i < 2; ++i) {
        ComRef<IKeyObject> key;
        const HRESULT hr = provider->OpenKey(i, key.receive());
        opened += hr == S_OK && key ? 1 : 0;
        refused += hr == E_FAIL && !key ? 1 : 0;
    }
    EXPECT_EQ(1, opened);
    EXPECT_EQ(1, refused);
}

TEST_F(SoftProviderTest, OpenKeyWithAnIndexOutOfRangeFails) {
    void* key = nullptr;
    EXPECT_HR(E_FAIL, provider->OpenKey(2, &key));
    EXPECT_HR(E_INVALIDARG, provider->OpenKey(-1, &key));
    EXPECT_EQ(nullptr, key);
}

TEST_F(SoftProviderTest, LoadOfAModuleOfAnotherProviderSucceeds) {
    ComRef<ITokenProvider> second = makeProvider();
    EXPECT_HR(S_OK, load(second));
    INT count = 0;
    EXPECT_HR(S_OK, second->GetKeyCount(&count));
    EXPECT_EQ(2, count);
    EXPECT_EQ(0u, second.release()->Release());
}

TEST_F(SoftProviderTest, LoadByAnotherProviderAfterUnloadSucceeds) {
    EXPECT_HR(S_OK, provider->Unload());
    ComRef<ITokenProvider> second = makeProvider();
    EXPECT_HR(S_OK, load(second));
    ComRef<IKeyObject> token = openToken(second);
    ASSERT_TRUE(token);
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token.release()->Release());
    EXPECT_EQ(0u, second.release()->Release());
}

TEST_F(SoftProviderTest, ReleaseOfAProviderWithATokenKeepsTheProviderAlive) {
    ComRef<IKeyObject> token = openToken(provider);
    ASSERT_TRUE(token);
    EXPECT_EQ(1u, provider.release()->Release());
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
    EXPECT_EQ(0u, token.release()->Release());
}

TEST_F(SoftTokenTest, TextGettersReturnTheTokenInformation) {
    EXPECT_EQ("ZRKey Test", text(token.get(), &IKeyObject::GetLabel));
    EXPECT_EQ("SoftHSM project", text(token.get(), &IKeyObject::GetManufacturerID));
    EXPECT_EQ("SoftHSM v2", text(token.get(), &IKeyObject::GetModelID));
    const std::string serial = text(token.get(), &IKeyObject::GetSerialNumber);
    EXPECT_EQ(16u, serial.size());
    EXPECT_EQ(std::string::npos, serial.find_first_not_of("0123456789abcdef"));
}

TEST_F(SoftTokenTest, SizeGettersReturnUnavailableInformation) {
    VARIANT size = {};
    EXPECT_HR(S_OK, token->GetTotalSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
    VariantInit(&size);
    EXPECT_HR(S_OK, token->GetFreeSize(&size));
    EXPECT_EQ(VT_UI4, size.vt);
    EXPECT_EQ(0xFFFFFFFFu, size.ulVal);
}

TEST_F(SoftTokenTest, ListGettersReturnTheConfiguration) {
    EXPECT_EQ("SHA1WithRSA;SM3WithSM2", text(token.get(), &IKeyObject::GetSignAlgo));
    EXPECT_EQ("SHA1WithRSA;SM3WithSM2", text(token.get(), &IKeyObject::GetAlgoList));
    EXPECT_EQ("MD5", text(token.get(), &IKeyObject::GetDigestMethod));
}

}  // namespace
}  // namespace zr::test
