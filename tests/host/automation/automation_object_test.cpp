// The objects of the server: interfaces, lifetimes, collections, apartments. Windows only, as
// Automation is.
#include <ocidl.h>

#include <atomic>
#include <chrono>
#include <future>
#include <thread>

#include "host/automation/interfaces.h"
#include "tests/host/automation/automation_test.h"

namespace zr::test {
namespace {

template <class Interface>
ComRef<Interface> query(IUnknown* object, REFIID iid = __uuidof(Interface)) {
    ComRef<Interface> found;
    if (object) {
        object->QueryInterface(iid, found.receive());
    }
    return found;
}

std::string nameOf(ITypeInfo* info) {
    Text name;
    EXPECT_HR(S_OK,
              info->GetDocumentation(MEMBERID_NIL, name.receive(), nullptr, nullptr, nullptr));
    return name.utf8();
}

class AutomationObjectTest : public AutomationTokenTest {
protected:
    ComRef<IEnumVARIANT> enumerate(const ComRef<IDispatch>& list) {
        const Answer answer = invoke(list.get(), DISPID_NEWENUM, DISPATCH_PROPERTYGET, {});
        EXPECT_HR(S_OK, answer.result);
        return answer.value.type() == VT_UNKNOWN ? query<IEnumVARIANT>(answer.value.get().punkVal)
                                                 : ComRef<IEnumVARIANT>();
    }
};

TEST_F(AutomationObjectTest, EveryInterfaceLeadsToTheSameObject) {
    const auto identity = query<IUnknown>(token.get());
    for (const IID& iid : {IID_IUnknown, IID_IDispatch, IID_IZRToken, IID_IProvideClassInfo,
                           IID_ISupportErrorInfo, IID_IMarshal}) {
        const auto found = query<IUnknown>(token.get(), iid);
        ASSERT_TRUE(found);
        EXPECT_EQ(identity.get(), query<IUnknown>(found.get()).get());
        EXPECT_TRUE(query<IDispatch>(found.get()));
    }
}

TEST_F(AutomationObjectTest, OtherInterfacesAreRefused) {
    void* result = token.get();
    EXPECT_HR(E_NOINTERFACE, token->QueryInterface(IID_IZRFile, &result));
    EXPECT_EQ(nullptr, result);
    EXPECT_HR(E_POINTER, token->QueryInterface(IID_IUnknown, nullptr));
    // Not safe for a browser.
    constexpr IID kObjectSafety = {
        0xCB5BDC81, 0x93C1, 0x11CF, {0x8F, 0x20, 0x00, 0x80, 0x5F, 0x2C, 0xD0, 0x64}};
    EXPECT_HR(E_NOINTERFACE, token->QueryInterface(kObjectSafety, &result));
}

TEST_F(AutomationObjectTest, TypeInformationDescribesInterfaceAndClass) {
    UINT count = 0;
    EXPECT_HR(S_OK, token->GetTypeInfoCount(&count));
    EXPECT_EQ(1u, count);
    EXPECT_HR(E_POINTER, token->GetTypeInfoCount(nullptr));
    ComRef<ITypeInfo> info;
    ASSERT_HR(S_OK, token->GetTypeInfo(0, 0, info.receive()));
    EXPECT_EQ("IZRToken", nameOf(info.get()));
    EXPECT_HR(DISP_E_BADINDEX, token->GetTypeInfo(1, 0, info.receive()));
    EXPECT_HR(E_POINTER, token->GetTypeInfo(0, 0, nullptr));
    const auto provided = query<IProvideClassInfo>(token.get());
    ASSERT_HR(S_OK, provided->GetClassInfo(info.receive()));
    EXPECT_EQ("Token", nameOf(info.get()));
    EXPECT_HR(E_POINTER, provided->GetClassInfo(nullptr));
}

TEST_F(AutomationObjectTest, ErrorsAreSupportedForTheDualInterface) {
    const auto support = query<ISupportErrorInfo>(token.get());
    EXPECT_HR(S_OK, support->InterfaceSupportsErrorInfo(IID_IZRToken));
    EXPECT_HR(S_FALSE, support->InterfaceSupportsErrorInfo(IID_IZRFile));
}

TEST_F(AutomationObjectTest, CollectionHasCountAndItems) {
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    EXPECT_ANSWER("N:1", read(list, "Count"));
    EXPECT_ANSWER("N:1", call(list, "count"));
    EXPECT_ANSWER("object", call(list, "Item", integer(0)));
    EXPECT_EXCEPTION(E_INVALIDARG, call(list, "Item", integer(1)));
    EXPECT_EXCEPTION(E_INVALIDARG, call(list, "Item", integer(-1)));
    EXPECT_EQ(DISPID_VALUE, findId(list.get(), "Item"));
    EXPECT_EQ(DISPID_NEWENUM, findId(list.get(), "_newenum"));
    Variant index = integer(0);
    const Answer item =
        invoke(list.get(), DISPID_VALUE, DISPATCH_PROPERTYGET, {&index.get(), nullptr, 1, 0});
    EXPECT_ANSWER("S:a", call(item.value.toObject(), "GetCertID"));
    EXPECT_REFUSED(DISP_E_BADPARAMCOUNT, invoke(list.get(), DISPID_NEWENUM, DISPATCH_METHOD,
                                                {&index.get(), nullptr, 1, 0}));
    EXPECT_REFUSED(DISP_E_MEMBERNOTFOUND,
                   invoke(list.get(), DISPID_NEWENUM, DISPATCH_PROPERTYPUT, {}));
}

TEST_F(AutomationObjectTest, ItemIsTheSameObjectAsLongAsAClientHasIt) {
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    ComRef<IDispatch> first = call(list, "Item", integer(0)).value.toObject();
    EXPECT_EQ(first.get(), call(list, "Item", integer(0)).value.toObject().get());
    Variant item;
    EXPECT_HR(S_OK, enumerate(list)->Next(1, item.receive(), nullptr));
    EXPECT_EQ(first.get(), item.get().pdispVal);
    item.reset();
    first.reset();
    first = call(list, "Item", integer(0)).value.toObject();
    EXPECT_ANSWER("X:41", call(first, "GetCertData"));
}

/// Objects that one thread releases while another gets them.
TEST_F(AutomationObjectTest, ItemThatIsReleasedMeanwhileIsMadeAgain) {
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    const auto getOften = [&] {
        const Apartment ofThread(COINIT_MULTITHREADED);
        for (int i = 0; i < 2000; ++i) {
            const ComRef<IDispatch> first = call(list, "Item", integer(0)).value.toObject();
            EXPECT_HR(S_OK, read(first, "CertID").result);
        }
    };
    std::thread one(getOften);
    std::thread other(getOften);
    one.join();
    other.join();
}

TEST_F(AutomationObjectTest, ClosedCollectionRefusesEveryCall) {
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    const auto items = enumerate(list);
    EXPECT_ANSWER("B:true", call(list, "Close"));
    EXPECT_EXCEPTION(E_UNEXPECTED, read(list, "Count"));
    EXPECT_EXCEPTION(E_UNEXPECTED, call(list, "Item", integer(0)));
    EXPECT_EXCEPTION(E_UNEXPECTED, invoke(list.get(), DISPID_NEWENUM, DISPATCH_METHOD, {}));
    // Its enumerator stays usable.
    Variant item;
    EXPECT_HR(S_OK, items->Next(1, item.receive(), nullptr));
    EXPECT_ANSWER("X:41", call(item.toObject(), "GetCertData"));
}

TEST_F(AutomationObjectTest, EnumeratorHandsOutEachObject) {
    module.addCertificate("b", "B");
    const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
    const auto items = enumerate(list);
    ASSERT_TRUE(items);
    VARIANT two[3] = {poisoned(), poisoned(), poisoned()};
    ULONG fetched = 9;
    EXPECT_HR(S_FALSE, items->Next(3, two, &fetched));
    EXPECT_EQ(2u, fetched);
    EXPECT_EQ(VT_EMPTY, two[2].vt);
    Variant second;
    second.reset(two[1]);
    EXPECT_ANSWER("X:42", call(second.toObject(), "GetCertData"));
    VariantClear(&two[0]);
    EXPECT_HR(S_FALSE, items->Next(1, two, nullptr));
}

TEST_F(AutomationObjectTest, EnumeratorSkipsResetsAndClones) {
    module.addCertificate("b", "B");
    const auto items = enumerate(call(token, "certificates").value.toObject());
    EXPECT_HR(S_OK, items->Skip(1));
    ComRef<IEnumVARIANT> clone;
    ASSERT_HR(S_OK, items->Clone(clone.receive()));
    Variant item;
    EXPECT_HR(S_OK, clone->Next(1, item.receive(), nullptr));
    EXPECT_ANSWER("S:b", call(item.toObject(), "GetCertID"));
    EXPECT_HR(S_FALSE, items->Skip(2));
    EXPECT_HR(S_OK, items->Reset());
    EXPECT_HR(S_OK, items->Next(1, item.receive(), nullptr));
    EXPECT_ANSWER("S:a", call(item.toObject(), "GetCertID"));
}

TEST_F(AutomationObjectTest, EnumeratorRefusesNullPointers) {
    const auto items = enumerate(call(token, "certificates").value.toObject());
    VARIANT results[2];
    ULONG fetched = 9;
    EXPECT_HR(E_INVALIDARG, items->Next(1, nullptr, &fetched));
    EXPECT_HR(E_INVALIDARG, items->Next(2, results, nullptr));
    EXPECT_HR(E_POINTER, items->Clone(nullptr));
    EXPECT_HR(E_POINTER, items->QueryInterface(IID_IUnknown, nullptr));
    EXPECT_HR(S_OK, items->Next(0, results, &fetched));
    EXPECT_EQ(0u, fetched);
}

TEST_F(AutomationObjectTest, EnumeratorOutlivesEverythingElse) {
    auto items = enumerate(call(token, "certificates").value.toObject());
    provider.reset();
    container.reset();
    certificate.reset();
    token.reset();
    Variant item;
    EXPECT_HR(S_OK, items->Next(1, item.receive(), nullptr));
    items.reset();
    EXPECT_ANSWER("X:41", call(item.toObject(), "GetCertData"));
}

TEST_F(AutomationObjectTest, ObjectsOutliveWhatTheyCameFrom) {
    provider.reset();
    EXPECT_ANSWER("L:S:a ", call(token, "EnumContainer"));
    token.reset();
    container.reset();
    EXPECT_ANSWER("X:41", call(certificate, "GetCertData"));
    EXPECT_EQ(0u, module.count("C_Logout"));
    certificate.reset();
    EXPECT_EQ(1u, module.count("C_Logout"));
}

TEST_F(AutomationObjectTest, DllStaysLoadedAsLongAsAnObjectLives) {
    provider.reset();
    container.reset();
    certificate.reset();
    EXPECT_HR(S_FALSE, canUnloadNow());
    auto items = enumerate(call(token, "certificates").value.toObject());
    token.reset();
    EXPECT_HR(S_FALSE, canUnloadNow());
    items.reset();
    EXPECT_HR(S_OK, canUnloadNow());
}

TEST_F(AutomationObjectTest, DllStaysLoadedForAFactoryAndForALock) {
    provider.reset();
    container.reset();
    certificate.reset();
    token.reset();
    ComRef<IClassFactory> factory;
    ASSERT_HR(S_OK, getClassObject(CLSID_TokenProvider, IID_IClassFactory, factory.receive()));
    EXPECT_HR(S_FALSE, canUnloadNow());
    EXPECT_HR(S_OK, factory->LockServer(TRUE));
    IClassFactory* const kept = factory.get();
    kept->AddRef();
    factory.reset();
    EXPECT_HR(S_FALSE, canUnloadNow());
    EXPECT_HR(S_OK, kept->LockServer(FALSE));
    kept->Release();
    EXPECT_HR(S_OK, canUnloadNow());
}

TEST_F(AutomationObjectTest, UnlockingTooOftenDoesNotUndoALaterLock) {
    provider.reset();
    container.reset();
    certificate.reset();
    token.reset();
    ComRef<IClassFactory> factory;
    ASSERT_HR(S_OK, getClassObject(CLSID_TokenProvider, IID_IClassFactory, factory.receive()));
    EXPECT_HR(S_OK, factory->LockServer(FALSE));
    EXPECT_HR(S_OK, factory->LockServer(FALSE));
    EXPECT_HR(S_OK, factory->LockServer(TRUE));
    IClassFactory* const kept = factory.get();
    kept->AddRef();
    factory.reset();
    EXPECT_HR(S_FALSE, canUnloadNow());
    EXPECT_HR(S_OK, kept->LockServer(FALSE));
    EXPECT_HR(S_FALSE, canUnloadNow());
    kept->Release();
    EXPECT_HR(S_OK, canUnloadNow());
}

/// A client asks in another apartment whether the DLL may be unloaded, while a call lasts.
struct UnloadQuestion {
    std::future<HRESULT> answer;
    bool wasAnswered = false;

    static void ask(void* question) {
        auto& self = *static_cast<UnloadQuestion*>(question);
        self.answer = std::async(std::launch::async, canUnloadNow);
        self.wasAnswered =
            self.answer.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    }
};

TEST_F(AutomationObjectTest, UnloadingIsRefusedAtOnceWhileACallLasts) {
    UnloadQuestion question;
    module->callBack("C_GetTokenInfo", UnloadQuestion::ask, &question);
    EXPECT_ANSWER("N:65536", read(token, "TotalSize"));
    ASSERT_TRUE(question.answer.valid());
    EXPECT_TRUE(question.wasAnswered);
    EXPECT_HR(S_FALSE, question.answer.get());
}

TEST_F(AutomationObjectTest, FactoryRefusesOtherClassesAndAggregation) {
    void* result = token.get();
    EXPECT_HR(CLASS_E_CLASSNOTAVAILABLE, getClassObject(CLSID_Token, IID_IClassFactory, &result));
    EXPECT_EQ(nullptr, result);
    ComRef<IClassFactory> factory;
    ASSERT_HR(S_OK, getClassObject(CLSID_TokenProvider, IID_IClassFactory, factory.receive()));
    result = token.get();
    EXPECT_HR(CLASS_E_NOAGGREGATION, factory->CreateInstance(token.get(), IID_IUnknown, &result));
    EXPECT_EQ(nullptr, result);
    result = token.get();
    EXPECT_HR(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IZRToken, &result));
    EXPECT_EQ(nullptr, result);
}

TEST_F(AutomationObjectTest, AnotherApartmentGetsTheObjectItself) {
    for (const DWORD kind : {COINIT_APARTMENTTHREADED, COINIT_MULTITHREADED}) {
        ComRef<IStream> stream;
        ASSERT_HR(S_OK, CoMarshalInterThreadInterfaceInStream(IID_IDispatch, token.get(),
                                                              stream.receive()));
        std::thread other([&] {
            const Apartment ofThread(kind);
            ComRef<IDispatch> same;
            // Releases the stream.
            EXPECT_HR(S_OK, CoGetInterfaceAndReleaseStream(stream.release(), IID_IDispatch,
                                                           same.receive()));
            EXPECT_EQ(token.get(), same.get());
            EXPECT_ANSWER("L:S:a ", call(same, "EnumContainer"));
        });
        other.join();
    }
}

TEST_F(AutomationObjectTest, ApartmentsMayCallAtTheSameTime) {
    constexpr int kRounds = 200;
    const auto callOften = [&] {
        const Apartment ofThread;
        for (int i = 0; i < kRounds; ++i) {
            const ComRef<IDispatch> list = call(token, "certificates").value.toObject();
            EXPECT_ANSWER("X:41",
                          call(call(list, "Item", integer(0)).value.toObject(), "GetCertData"));
        }
    };
    std::thread first(callOften);
    std::thread second(callOften);
    first.join();
    second.join();
}

/// A call of the module that lasts, and a call of another apartment meanwhile.
struct LongCall {
    std::atomic<bool> hasBegun = false;
    std::atomic<bool> hasOtherEnded = false;
    bool wasAlone = false;

    static void last(void* call) {
        auto& self = *static_cast<LongCall*>(call);
        self.hasBegun = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(200));
        self.wasAlone = !self.hasOtherEnded;
    }
};

TEST_F(AutomationObjectTest, CallWaitsForTheCallOfAnotherApartment) {
    LongCall longCall;
    module->callBack("C_GetTokenInfo", LongCall::last, &longCall);
    std::thread other([&] {
        const Apartment ofThread;
        while (!longCall.hasBegun) {
            std::this_thread::yield();
        }
        EXPECT_ANSWER("L:S:a ", call(token, "EnumContainer"));
        longCall.hasOtherEnded = true;
    });
    EXPECT_HR(S_OK, read(token, "Label").result);
    // Also when the module was not called.
    longCall.hasBegun = true;
    other.join();
    EXPECT_TRUE(longCall.wasAlone);
}

}  // namespace
}  // namespace zr::test
