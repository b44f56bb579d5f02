// Containers and certificates.
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

class TokenContainersTest : public TokenTest {
protected:
    Lines list(INT reserved = 0) {
        VARIANT result = poisoned();
        EXPECT_HR(S_OK, token->EnumContainer(reserved, &result));
        Lines names;
        if (result.vt == (VT_ARRAY | VT_BSTR)) {
            void* data = nullptr;
            SafeArrayAccessData(result.parray, &data);
            for (ULONG i = 0; i < result.parray->rgsabound[0].cElements; ++i) {
                names.push_back(narrow(static_cast<BSTR*>(data)[i]));
            }
            SafeArrayUnaccessData(result.parray);
            VariantClear(&result);
        } else {
            EXPECT_EQ(VT_UI1, result.vt);
        }
        return names;
    }

    ULONG count() {
        VARIANT result = poisoned();
        EXPECT_HR(S_OK, token->GetContainerCount(&result));
        EXPECT_EQ(VT_UI4, result.vt);
        return result.ulVal;
    }

    ComRef<IKeyContainer> open(const VARIANT& which) {
        ComRef<IKeyContainer> container;
        EXPECT_HR(S_OK, token->OpenContainer(which, container.receive()));
        return container;
    }

    void expectNotOpened(const VARIANT& which) {
        ComRef<IKeyContainer> container;
        EXPECT_HR(E_FAIL, token->OpenContainer(which, container.receive()));
        EXPECT_FALSE(container);
    }

    static VARIANT index(LONG value, VARTYPE type = VT_I4) {
        VARIANT variant = {};
        variant.vt = type;
        variant.lVal = value;
        return variant;
    }

    std::string typeOf(const VARIANT& which) {
        Text text;
        EXPECT_HR(S_OK, open(which)->GetType(text.receive()));
        return narrow(text);
    }

    std::optional<std::string> certificateOf(const VARIANT& which) {
        ComRef<IKeyCertificate> certificate;
        EXPECT_HR(S_OK, open(which)->GetKeyCert(false, certificate.receive()));
        ByteArray data;
        EXPECT_HR(S_OK, token->GetCertData(certificate.get(), data.receive()));
        return data.bytes();
    }
};

TEST_F(TokenContainersTest, TokenWithoutCertificatesHasNoContainer) {
    EXPECT_EQ(0u, count());
    EXPECT_EQ(Lines{}, list());
    expectNotOpened(index(0));
}

TEST_F(TokenContainersTest, GetContainerCountReadsOneCertificateAtATime) {
    module.addCertificate("a", "A");
    module.takeCalls();
    EXPECT_EQ(1u, count());
    EXPECT_EQ((Lines{"C_FindObjectsInit(1, {0x0=1 0x1=1})", "C_FindObjects(1, 1)",
                     "C_GetAttributeValue(1, 1, {0x0 0x80 0x102})",
                     "C_GetAttributeValue(1, 1, {0x0=0 0x80[] 0x102[]})", "C_FindObjects(1, 1)",
                     "C_FindObjectsFinal(1)"}),
              module.takeCalls());
}

TEST_F(TokenContainersTest, EnumContainerOf100CertificatesKeepsTheOrder) {
    Lines expected;
    for (int i = 0; i < 100; ++i) {
        expected.push_back("container " + std::to_string(i));
        module.addCertificate(expected.back(), "x");
    }
    EXPECT_EQ(expected, list());
    EXPECT_EQ(100u, count());
}

TEST_F(TokenContainersTest, NamesOfAnyLengthAreListedWholeAndOpenTheirCertificate) {
    // Short values are kept in the object that reads them, longer ones in a block of their own.
    Lines names;
    for (const std::size_t length : {0, 1, 62, 63, 64, 65, 127}) {
        names.emplace_back(length, static_cast<char>('a' + names.size()));
        module.addCertificate(names.back(), "value of " + names.back());
    }
    EXPECT_EQ(names, list());
    for (LONG i = 0; i < static_cast<LONG>(names.size()); ++i) {
        EXPECT_EQ("value of " + names[static_cast<std::size_t>(i)], certificateOf(index(i)));
    }
}

TEST_F(TokenContainersTest, EnumContainerEndsNamesAtTheFirstZero) {
    module.addCertificate(std::string("ab\0cd", 5), "first");
    module.addCertificate("", "second");
    EXPECT_EQ((Lines{"ab", ""}), list());
    EXPECT_EQ("first", certificateOf(string(Text("ab"))));
    EXPECT_EQ("second", certificateOf(string(Text(""))));
}

TEST_F(TokenContainersTest, OpenContainerByNameOrIndexOpensTheCertificate) {
    module.addCertificate("a", "first");
    module.addCertificate("b", "second");
    EXPECT_EQ("first", certificateOf(string(Text("a"))));
    EXPECT_EQ("second", certificateOf(string(Text("b"))));
    EXPECT_EQ("first", certificateOf(index(0)));
    EXPECT_EQ("second", certificateOf(index(1)));
}

TEST_F(TokenContainersTest, OpenContainerWithoutAMatchFails) {
    module.addCertificate("a", "first");
    const Text wrongName("A");
    for (const VARIANT& which : {index(1), index(-1), index(0, VT_I2), index(0, VT_UI4),
                                 index(0, VT_EMPTY), string(wrongName), string(nullptr)}) {
        expectNotOpened(which);
    }
    EXPECT_HR(E_INVALIDARG, token->OpenContainer(index(0), nullptr));
    EXPECT_EQ(2u, token->AddRef());
    EXPECT_EQ(1u, token->Release());
}

TEST_F(TokenContainersTest, GetCertDataOfTwoEqualNamesReturnsTheFirst) {
    module.addCertificate("same", "first");
    module.addCertificate("same", "second");
    EXPECT_EQ((Lines{"same", "same"}), list());
    EXPECT_EQ(2u, count());
    EXPECT_EQ("first", certificateOf(index(1)));
}

TEST_F(TokenContainersTest, OpenContainerOfTwoEqualNamesOpensTheFirst) {
    for (const char* type : {"one", "two"}) {
        module->setAttribute(module.addCertificate("same", type), CKA_CERTIFICATE_TYPE, type, 3);
    }
    const Text name("same");
    EXPECT_EQ("one", typeOf(string(name)));
    EXPECT_EQ("one", typeOf(index(0)));
    EXPECT_EQ("two", typeOf(index(1)));
}

TEST_F(TokenContainersTest, GetTypeReturnsTheTextUpToAZeroOr63Bytes) {
    const CK_OBJECT_HANDLE object = module.addCertificate("a", "A");
    for (const std::size_t length : {62, 63, 64, 65, 1000}) {
        const std::string type(length, 'T');
        module->setAttribute(object, CKA_CERTIFICATE_TYPE, type.data(), length);
        EXPECT_EQ(type.substr(0, 63), typeOf(index(0)));
    }
    module->setAttribute(object, CKA_CERTIFICATE_TYPE, "x\0y", 3);
    EXPECT_EQ("x", typeOf(index(0)));
}

TEST_F(TokenContainersTest, EnumContainerIgnoresItsReservedArgument) {
    module.addCertificate("a", "A");
    module.addCertificate("b", "B");
    EXPECT_EQ((Lines{"a", "b"}), list(1));
    EXPECT_EQ((Lines{"a", "b"}), list(0));
}

TEST_F(TokenContainersTest, OpenContainerOfANameLongerThan127BytesFails) {
    const std::string fits(127, 'a');
    const std::string tooLong(128, 'b');
    const std::string huge(4096, 'c');
    for (const auto& name : {fits, tooLong, huge}) {
        module.addCertificate(name, "x");
    }
    EXPECT_EQ((Lines{fits, tooLong, huge}), list());
    EXPECT_EQ("x", certificateOf(index(0)));
    expectNotOpened(index(1));
    expectNotOpened(string(Text(huge)));
}

TEST_F(TokenContainersTest, ContainerOperationsReturnTheirResults) {
    module.addCertificate("a", "first");
    ComRef<IKeyContainer> container = open(index(0));
    Text type;
    EXPECT_HR(S_OK, container->GetType(type.receive()));
    EXPECT_EQ("", narrow(type));
    EXPECT_HR(E_INVALIDARG, container->GetType(nullptr));
    EXPECT_HR(E_INVALIDARG, container->GetKeyCert(true, nullptr));
    EXPECT_HR(E_NOTIMPL, container->GenKeyPair(nullptr));
    EXPECT_HR(E_NOTIMPL, container->ExportCertificate(true, nullptr));
    EXPECT_HR(E_NOTIMPL, container->ImportCertificate(true, index(0)));
    ComRef<IKeyCertificate> first;
    ComRef<IKeyCertificate> second;
    container->GetKeyCert(true, first.receive());
    container->GetKeyCert(false, second.receive());
    EXPECT_NE(first.get(), second.get());
    EXPECT_HR(S_OK, container->Close());
    EXPECT_EQ(2u, container.release()->Release());
    Text id;
    EXPECT_HR(S_OK, first->GetCertID(id.receive()));
    EXPECT_EQ("a", narrow(id));
    EXPECT_HR(E_INVALIDARG, first->GetCertID(nullptr));
    EXPECT_HR(E_INVALIDARG, first->GetCertData(nullptr));
    module->removeObject(1);
    VARIANT data = poisoned();
    EXPECT_HR(E_FAIL, first->GetCertData(&data));
    EXPECT_EQ(VT_UI1, data.vt);
}

TEST_F(TokenContainersTest, ScriptsGetTheCertificateOfAContainer) {
    const ConsoleCapture console;
    module.addCertificate("a", "first");
    ComRef<IKeyContainer> container = open(index(0));
    EXPECT_EQ(1, idOf(container.get(), "GetKeyCert"));
    Variant result;
    EXPECT_HR(S_OK, invoke(container.get(), 1, {index(-1, VT_BOOL)}, result.receive()));
    ASSERT_EQ(VT_DISPATCH, result.type());
    IDispatch* certificate = result.get().pdispVal;
    EXPECT_EQ(1, idOf(certificate, "GetCertID"));
    EXPECT_EQ(2, idOf(certificate, "GetCertData"));
    Variant id;
    EXPECT_HR(S_OK, invoke(certificate, 1, {}, id.receive()));
    EXPECT_EQ("a", id.toText());
    ByteArray data;
    EXPECT_HR(S_OK, invoke(certificate, 2, {}, data.receive()));
    EXPECT_EQ("first", data.bytes());
}

TEST_F(TokenContainersTest, GetContainerCountAfterAFailedCallEndsAndClosesTheSearch) {
    module.addCertificate("a", "A");
    module.addCertificate("b", "B");
    for (unsigned int nth = 1; nth <= 4; ++nth) {
        module->fail("C_GetAttributeValue", nth, CKR_DEVICE_REMOVED);
        EXPECT_EQ(nth <= 2 ? 0u : 1u, count()) << nth;
        EXPECT_FALSE(module->isSearchOpen());
        module->reset();
        token.reset();
        EXPECT_HR(S_OK, provider->OpenKey(0, token.receive()));
        module.addCertificate("a", "A");
        module.addCertificate("b", "B");
    }
    module->fail("C_FindObjects", 2, CKR_DEVICE_REMOVED);
    EXPECT_EQ(1u, count());
    module->settings().foundCount = 2;
    EXPECT_EQ(0u, count());
}

TEST_F(TokenContainersTest, EnumContainerWithAWrongLengthFromTheModuleStaysInBounds) {
    module.addCertificate("abc", "A");
    auto& settings = module->settings();
    settings.lyingType = CKA_ID;
    for (const auto lie : {RecordingModule::Settings::kOnQuery, RecordingModule::Settings::kOnRead,
                           RecordingModule::Settings::kAlways}) {
        settings.lie = lie;
        for (const CK_ULONG length : {CK_ULONG{0}, CK_ULONG{1}, CK_ULONG{2}, CK_ULONG{1000},
                                      CK_ULONG{0x80000000}, CK_UNAVAILABLE_INFORMATION}) {
            settings.lyingLength = length;
            EXPECT_LE(list().size(), 1u);
            EXPECT_FALSE(module->isSearchOpen());
        }
    }
}

TEST_F(TokenContainersTest, GetContainerCountContinuesAndClosesAnOpenSearch) {
    module.addData("6", "x");
    module.addCertificate("a", "A");
    VARIANT exists;
    EXPECT_HR(S_OK, token->FileExists(Text("7"), &exists));
    EXPECT_TRUE(module->isSearchOpen());
    EXPECT_EQ(0u, count());
    EXPECT_FALSE(module->isSearchOpen());
    EXPECT_EQ(1u, count());
}

TEST_F(TokenContainersTest, ContainerOperationsWithoutAResultAreRefusedWithoutACall) {
    VARIANT result = poisoned();
    EXPECT_HR(E_INVALIDARG, token->GetContainerCount(nullptr));
    EXPECT_HR(E_INVALIDARG, token->EnumContainer(0, nullptr));
    EXPECT_HR(E_INVALIDARG, token->GetCertData(nullptr, &result));
    EXPECT_EQ(Lines{}, module.takeCalls());
    EXPECT_EQ(VT_UI1, result.vt);
}

TEST_F(SigningTokenTest, GetCertDataWithoutAResultIsRefused) {
    EXPECT_HR(E_INVALIDARG, token->GetCertData(certificate.get(), nullptr));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

}  // namespace
}  // namespace zr::test
