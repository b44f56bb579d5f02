// Looking up members in the tables of the classes, and the placeholders of IDispatchImpl.
#include "model/key_certificate.h"
#include "model/key_object.h"
#include "model/token_provider.h"
#include "pkcs11/container_pkcs11.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

template <class Class>
void expectTable(const std::string& name, LONG id, LONG count) {
    DispatchInfo* row = Class::GetDispatchInfo(nullptr, name.c_str());
    ASSERT_TRUE(row) << name;
    EXPECT_EQ(id, LONG{row->nId});
    EXPECT_EQ(row, Class::GetDispatchInfoById(nullptr, id));
    EXPECT_EQ(nullptr, Class::GetDispatchInfo(nullptr, "Nothing"));
    EXPECT_EQ(nullptr, Class::GetDispatchInfo(nullptr, ""));
    EXPECT_EQ(nullptr, Class::GetDispatchInfo(nullptr, nullptr));
    EXPECT_TRUE(Class::GetDispatchInfoById(nullptr, count));
    EXPECT_EQ(nullptr, Class::GetDispatchInfoById(nullptr, count + 1));
    EXPECT_EQ(nullptr, Class::GetDispatchInfoById(nullptr, 0));
}

TEST(LookupsTest, GetDispatchInfoSearchesTheTableOfItsClass) {
    expectTable<TokenProvider>("OpenKey", 3, 4);
    expectTable<KeyObject>("GetSignAlgo", 30, 30);
    expectTable<KeyContainer_pkcs11>("GetKeyCert", 1, 1);
    expectTable<KeyCertificate>("GetCertData", 2, 2);
}

TEST(LookupsTest, PlaceholdersOfIDispatchAreNotImplemented) {
    IDispatchImpl<IDispatch> placeholder;
    void* face = nullptr;
    DISPID id = 7;
    EXPECT_HR(E_NOTIMPL, placeholder.QueryInterface(IID_IDispatch, &face));
    EXPECT_EQ(static_cast<ULONG>(E_NOTIMPL), placeholder.AddRef());
    EXPECT_EQ(static_cast<ULONG>(E_NOTIMPL), placeholder.Release());
    EXPECT_HR(E_NOTIMPL, placeholder.GetTypeInfoCount(nullptr));
    EXPECT_HR(E_NOTIMPL, placeholder.GetTypeInfo(0, 0, nullptr));
    EXPECT_HR(E_NOTIMPL, placeholder.GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id));
    EXPECT_HR(E_NOTIMPL, placeholder.Invoke(1, IID_NULL, 0, 0, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(nullptr, face);
    EXPECT_EQ(7, id);
}

}  // namespace
}  // namespace zr::test
