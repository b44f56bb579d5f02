// The export and the class factory: results, references, console texts, slots.
#include "tests/support/console_capture.h"
#include "tests/support/fixtures/library.h"
#include "tests/support/hresult.h"

namespace zr::test {

/// The dispatch members in the factory's table, which follow its own two. Not in the unnamed
/// namespace, where the compiler knows that nothing derives from it and drops the calls.
struct FactorySlots : IClassFactory {
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID lcid, ITypeInfo** info) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetIDsOfNames(const IID& riid, LPOLESTR* names, UINT count,
                                                    LCID lcid, DISPID* ids) = 0;
    virtual HRESULT STDMETHODCALLTYPE Invoke(DISPID id, const IID& riid, LCID lcid, WORD flags,
                                             DISPPARAMS* params, VARIANT* result, EXCEPINFO* excep,
                                             UINT* argErr) = 0;
    virtual void completeDestructor() = 0;
    virtual void deletingDestructor() = 0;
    virtual HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(const IID& riid) = 0;
};

namespace {

int s_untouched;
void* const kPoison = &s_untouched;

TEST(EntryPointTest, GetClassObjectWithoutAResultIsRefusedBeforeTheIdentifiersAreRead) {
    ConsoleCapture console;
    EXPECT_HR(E_INVALIDARG, ZCLGetClassObject(IID_NULL, IID_NULL, nullptr));
    const auto text = console.stop();
    EXPECT_EQ("[ZCLGetClassObject] ppv == NULL\n", text.error);
    EXPECT_EQ("", text.out);
}

TEST(EntryPointTest, GetClassObjectOfAnotherClassReturnsNotImplementedAndPrintsNothing) {
    for (const IID& iid : {IID_IClassFactory, IID_ITokenProvider, IID_NULL}) {
        void* object = kPoison;
        ConsoleCapture console;
        EXPECT_HR(E_NOTIMPL, ZCLGetClassObject(IID_ITokenProvider, iid, &object));
        const auto text = console.stop();
        EXPECT_EQ("", text.error);
        EXPECT_EQ("", text.out);
        EXPECT_EQ(kPoison, object);
    }
}

TEST(EntryPointTest, GetClassObjectOfTheProviderInterfaceFails) {
    void* object = kPoison;
    ConsoleCapture console;
    EXPECT_HR(E_NOINTERFACE, ZCLGetClassObject(LIBID_ZRKey, IID_ITokenProvider, &object));
    const auto text = console.stop();
    EXPECT_EQ("[ZCLGetClassObject] no interface\n", text.error);
    EXPECT_EQ("", text.out);
    EXPECT_EQ(kPoison, object);
}

TEST(EntryPointTest, GetClassObjectTwiceReturnsTwoFactories) {
    ConsoleCapture console;
    ComRef<IClassFactory> first = getFactory();
    ComRef<IClassFactory> second = getFactory();
    const auto text = console.stop();
    EXPECT_EQ("", text.error);
    EXPECT_EQ("", text.out);
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(2u, first->AddRef());
    EXPECT_EQ(1u, first->Release());
    EXPECT_EQ(0u, first.release()->Release());
    EXPECT_EQ(0u, second.release()->Release());
}

TEST(ClassFactoryTest, CreateInstanceOfTheFactoryReturnsItselfWithoutAReference) {
    ComRef<IClassFactory> factory = getFactory();
    void* self = nullptr;
    EXPECT_HR(S_OK, factory->CreateInstance(nullptr, IID_IClassFactory, &self));
    EXPECT_EQ(factory.get(), self);
    EXPECT_EQ(0u, factory.release()->Release());
}

TEST(ClassFactoryTest, CreateInstanceOfAnotherInterfaceOrWithoutAResultFails) {
    ComRef<IClassFactory> factory = getFactory();
    for (const IID& iid : {IID_IKeyObject, IID_IUnknown, IID_IDispatch, IID_NULL}) {
        void* object = kPoison;
        EXPECT_HR(E_NOINTERFACE, factory->CreateInstance(nullptr, iid, &object));
        EXPECT_HR(E_NOINTERFACE, factory->CreateInstance(nullptr, iid, nullptr));
        EXPECT_EQ(kPoison, object);
    }
    for (const IID& iid : {IID_ITokenProvider, IID_IClassFactory}) {
        EXPECT_HR(E_INVALIDARG, factory->CreateInstance(nullptr, iid, nullptr));
    }
}

TEST(ClassFactoryTest, CreateInstanceIgnoresAnOuterObject) {
    ComRef<IClassFactory> factory = getFactory();
    ComRef<ITokenProvider> provider;
    EXPECT_HR(S_OK, factory->CreateInstance(factory.get(), IID_ITokenProvider, provider.receive()));
    EXPECT_EQ(0u, provider.release()->Release());
    EXPECT_EQ(0u, factory.release()->Release());
}

TEST(ClassFactoryTest, ReleaseOfOneProviderLeavesTheOther) {
    ComRef<ITokenProvider> first = makeProvider();
    ComRef<ITokenProvider> second = makeProvider();
    EXPECT_NE(first.get(), second.get());
    EXPECT_EQ(0u, first.release()->Release());
    INT count = 5;
    EXPECT_HR(E_FAIL, second->GetKeyCount(&count));
    EXPECT_EQ(0, count);
    EXPECT_EQ(0u, second.release()->Release());
}

TEST(ClassFactoryTest, LockServerKeepsNoCount) {
    ComRef<IClassFactory> factory = getFactory();
    EXPECT_HR(S_OK, factory->LockServer(1));
    EXPECT_HR(S_OK, factory->LockServer(0));
    EXPECT_EQ(0u, factory.release()->Release());
}

TEST(ClassFactoryTest, QueryInterfaceSupportsTheErrorInformationInterfaceOnly) {
    ComRef<IClassFactory> factory = getFactory();
    void* object = kPoison;
    EXPECT_HR(E_NOTIMPL, factory->QueryInterface(IID_IClassFactory, &object));
    EXPECT_HR(E_NOTIMPL, factory->QueryInterface(IID_IUnknown, &object));
    EXPECT_EQ(kPoison, object);
    EXPECT_HR(E_INVALIDARG, factory->QueryInterface(IID_ISupportErrorInfo, nullptr));
    ComRef<ISupportErrorInfo> support;
    EXPECT_HR(S_OK, factory->QueryInterface(IID_ISupportErrorInfo, support.receive()));
    EXPECT_HR(S_OK, support->InterfaceSupportsErrorInfo(IID_NULL));
    EXPECT_EQ(1u, support.release()->Release());
    EXPECT_EQ(0u, factory.release()->Release());
}

TEST(ClassFactoryTest, DispatchSlotsFollowTheSlotsOfTheFactory) {
    ConsoleCapture console;
    auto* factory = static_cast<FactorySlots*>(getFactory().release());
    UINT count = 7;
    EXPECT_HR(E_NOTIMPL, factory->GetTypeInfoCount(&count));
    EXPECT_EQ(7u, count);
    EXPECT_HR(E_NOTIMPL, factory->GetTypeInfo(0, 0, nullptr));
    OLECHAR name[] = OLESTR("CreateInstance");
    LPOLESTR names = name;
    DISPID id = 9;
    EXPECT_HR(E_FAIL, factory->GetIDsOfNames(IID_NULL, &names, 1, 0, &id));
    EXPECT_EQ(9, id);
    EXPECT_HR(E_INVALIDARG, factory->Invoke(0, IID_NULL, 0, 1, nullptr, nullptr, nullptr, nullptr));
    EXPECT_HR(S_OK, factory->InterfaceSupportsErrorInfo(IID_NULL));
    EXPECT_EQ(0u, factory->Release());
}

}  // namespace
}  // namespace zr::test
