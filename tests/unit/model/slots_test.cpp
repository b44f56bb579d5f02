// The order of the virtual operations, which hosts call by slot, and the values of the identifiers.
#include <cstdio>
#include <cstring>

#include "runtime/component.h"
#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

/// The slot of a virtual operation. Both compilers use the Itanium C++ ABI, which stores it in the
/// pointer to the member.
template <class Method>
std::size_t slotOf(Method method) {
    std::uintptr_t words[2] = {};
    static_assert(sizeof method == sizeof words);
    std::memcpy(words, &method, sizeof words);
    return (words[0] - 1) / sizeof(void*);
}

/// Expects operations in successive slots.
template <class... Methods>
void expectSlots(std::size_t first, Methods... methods) {
    const std::size_t slots[] = {slotOf(methods)...};
    for (const std::size_t slot : slots) {
        EXPECT_EQ(first++, slot);
    }
}

std::string textOf(const GUID& id) {
    char text[64];
    std::snprintf(text, sizeof text, "%08X-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X",
                  static_cast<unsigned int>(id.Data1), id.Data2, id.Data3, id.Data4[0], id.Data4[1],
                  id.Data4[2], id.Data4[3], id.Data4[4], id.Data4[5], id.Data4[6], id.Data4[7]);
    return text;
}

TEST(SlotsTest, SlotsOfTheAutomationInterfacesAreInOrder) {
    using Query = HRESULT (STDMETHODCALLTYPE IDispatch::*)(REFIID, void**);
    expectSlots(0, Query(&IDispatch::QueryInterface), &IDispatch::AddRef, &IDispatch::Release,
                &IDispatch::GetTypeInfoCount, &IDispatch::GetTypeInfo, &IDispatch::GetIDsOfNames,
                &IDispatch::Invoke);
    expectSlots(3, &IClassFactory::CreateInstance, &IClassFactory::LockServer);
    expectSlots(3, &ISupportErrorInfo::InterfaceSupportsErrorInfo);
    expectSlots(3, &IErrorInfo::GetGUID, &IErrorInfo::GetSource, &IErrorInfo::GetDescription,
                &IErrorInfo::GetHelpFile, &IErrorInfo::GetHelpContext);
    expectSlots(3, &ICreateErrorInfo::SetGUID, &ICreateErrorInfo::SetSource,
                &ICreateErrorInfo::SetDescription, &ICreateErrorInfo::SetHelpFile,
                &ICreateErrorInfo::SetHelpContext);
}

TEST(SlotsTest, SlotsOfTheProviderAreInOrder) {
    expectSlots(7, &ITokenProvider::Load, &ITokenProvider::Unload, &ITokenProvider::OpenKey,
                &ITokenProvider::GetName, &ITokenProvider::GetKeyCount, &ITokenProvider::GetKeySN,
                &ITokenProvider::LoadFinish);
    // Slots 14 and 15 are the destructors.
    expectSlots(16, &TokenProvider::InterfaceSupportsErrorInfo, &TokenProvider::FinalRelease,
                &TokenProvider::GetSelfDispatchInfo, &TokenProvider::GetSelfGetDispatchInfoCount);
}

TEST(SlotsTest, SlotsOfTheTokenAreInOrder) {
    using K = IKeyObject;
    expectSlots(7, &K::GetSerialNumber, &K::SetLabel, &K::GetLabel, &K::GetManufacturerID,
                &K::GetModelID, &K::GetTotalSize, &K::GetFreeSize, &K::ModifyPIN,
                &K::GetMaxRetryCount, &K::GetRemainRetryCount, &K::IsDefaultPIN, &K::VerifyPIN,
                &K::UnlockPIN, &K::Lock, &K::Unlock, &K::CreateFile, &K::FileExists, &K::OpenFile,
                &K::EnumFiles, &K::DeleteFile, &K::GetDigestMethod, &K::DigestData,
                &K::CreateContainer, &K::GetContainerCount, &K::OpenContainer, &K::DeleteContainer,
                &K::EnumContainer, &K::GetCertData, &K::GetPubKeyData, &K::SignData, &K::VerifyData,
                &K::VerifyDataByCert, &K::VerifyDataByPubKey, &K::GetSignAlgo,
                &K::GetKeyObjectClassName, &K::GetCaLibPath, &K::GetCSPName, &K::GetAlgoList,
                &K::GetZRHardApiInfo);
    using Digest = HRESULT (STDMETHODCALLTYPE KeyObject::*)(VARIANT, BSTR, VARIANT*);
    using Enumerate = HRESULT (STDMETHODCALLTYPE KeyObject::*)(VARIANT*);
    expectSlots(48, &KeyObject::InterfaceSupportsErrorInfo, &KeyObject::CloseKey,
                Digest(&KeyObject::DigestData), Enumerate(&KeyObject::EnumContainer));
}

TEST(SlotsTest, SlotsOfFilesContainersAndCertificatesAreInOrder) {
    expectSlots(7, &IKeyFile::Close, &IKeyFile::Flush, &IKeyFile::Write, &IKeyFile::Read,
                &IKeyFile::GetSize, &IKeyFile::Seek);
    expectSlots(7, &IKeyContainer::Close, &IKeyContainer::GetType,
                &IKeyContainer::ImportCertificate, &IKeyContainer::ExportCertificate,
                &IKeyContainer::GenKeyPair, &IKeyContainer::GetKeyCert);
    expectSlots(7, &IKeyCertificate::GetCertData, &IKeyCertificate::GetCertID);
    expectSlots(15, &KeyFile::InterfaceSupportsErrorInfo);
    expectSlots(15, &KeyContainer::InterfaceSupportsErrorInfo);
    expectSlots(11, &KeyCertificate::InterfaceSupportsErrorInfo,
                &KeyCertificate::GetSelfDispatchInfo, &KeyCertificate::GetSelfGetDispatchInfoCount);
}

TEST(SlotsTest, SlotsOfTheComponentPartAreInOrder) {
    using C = ZComponentImpl;
    expectSlots(2, &C::QueryInterface, &C::GetTypeInfoCount, &C::GetTypeInfo, &C::GetIDsOfNames,
                &C::Invoke, &C::InterfaceSupportsErrorInfo, &C::FinalRelease,
                &C::GetSelfDispatchInfo, &C::GetSelfGetDispatchInfoCount, &C::AddProxyDispatch,
                &C::RemoveProxyDispatch, &C::GetDipatchInfo, &C::CallProxyDispatch,
                &C::CloneDispParams);
}

TEST(SlotsTest, IdentifiersHaveTheirValues) {
    const std::pair<const char*, GUID> identifiers[] = {
        {"00000000-0000-0000-0000-000000000000", IID_NULL},
        {"00000000-0000-0000-C000-000000000046", IID_IUnknown},
        {"00000001-0000-0000-C000-000000000046", IID_IClassFactory},
        {"00020400-0000-0000-C000-000000000046", IID_IDispatch},
        {"DF0B3D60-548F-101B-8E65-08002B2BD119", IID_ISupportErrorInfo},
        {"1CF2B120-547D-101B-8E65-08002B2BD119", IID_IErrorInfo},
        {"22F03340-547D-101B-8E65-08002B2BD119", IID_ICreateErrorInfo},
        {"A453F02B-23F9-43F2-AF82-301C1AE75489", LIBID_ZRKey},
        {"34DF3135-4C7D-4000-8384-6B48E213F3FA", IID_ITokenProvider},
        {"7FE68A62-9B82-44E9-990E-C9DB7F9A9E94", IID_IKeyManager},
        {"7A20E9EE-FBCB-4FFA-B2A6-3E6B2EBF6E8B", IID_ITokenProviderIPC},
        {"03EE18DE-8637-4C69-908E-7B4779F0B8DA", IID_IKeyFile},
        {"658B212F-2A70-4C93-BD24-468998A2A321", IID_IKeyContainer},
        {"CBE939EF-EE3C-412D-872C-588E48A86FA5", IID_IKeyCertificate},
        {"51A29A58-C94A-4EA4-B8CC-69B96B108697", IID_IKeyObject},
        {"57E1E167-BBA4-484B-8359-6300B7C9081D", IID_IKeyDevice},
        {"89FA0249-2B8A-44BC-BDA4-CB60BE03AA2E", IID_IZCLRegister},
    };
    for (const auto& [text, id] : identifiers) {
        EXPECT_EQ(text, textOf(id));
    }
}

}  // namespace
}  // namespace zr::test
