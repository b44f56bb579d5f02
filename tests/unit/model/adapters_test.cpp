// Adapters called without Invoke, which otherwise checks and copies the arguments.
#include <limits>
#include <map>

#include "tests/support/fixtures/objects.h"

namespace zr::test {
namespace {

using Results = std::map<std::string, HRESULT>;

class AdaptersTest : public ObjectsTest {
protected:
    /// Calls every adapter of an object, in table order.
    static Results callAll(ZComponentImpl* object, DISPPARAMS* params, VARIANT* result) {
        Results results;
        const DispatchInfo* rows = object->GetSelfDispatchInfo();
        for (int i = 0; i < object->GetSelfGetDispatchInfoCount(); ++i) {
            const PFNDISPATCH adapter = rows[i].pfnInvoke;
            if (result) {
                VariantClear(result);
            }
            results[rows[i].szName] = (object->*adapter)(params, result);
        }
        if (result) {
            VariantClear(result);
        }
        return results;
    }

    /// The results of the token's adapters without usable arguments.
    static Results withoutArguments(HRESULT sizes) {
        Results results = {
            {"GetTotalSize", sizes},
            {"GetFreeSize", sizes},
            {"Lock", E_NOTIMPL},
            {"Unlock", E_NOTIMPL},
        };
        for (const char* getter : {"GetSerialNumber", "GetLabel", "GetManufacturerID", "GetModelID",
                                   "GetDigestMethod", "GetSignAlgo"}) {
            results[getter] = S_OK;
        }
        for (const char* reader : {"GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN",
                                   "VerifyPIN", "UnlockPIN", "FileExists"}) {
            results[reader] = E_INVALIDARG;
        }
        for (const char* stub :
             {"SetLabel", "ModifyPIN", "CreateFile", "OpenFile", "EnumFiles", "DeleteFile",
              "DigestData", "CreateContainer", "GetContainerCount", "OpenContainer",
              "DeleteContainer", "EnumContainer", "SignData", "VerifyData"}) {
            results[stub] = E_FAIL;
        }
        return results;
    }

    VARIANT result = {};
};

TEST_F(AdaptersTest, ProviderAdaptersWithoutArgumentsOrResultReturnInvalidArgument) {
    const Results refused = {{"Load", E_INVALIDARG},
                             {"Unload", E_INVALIDARG},
                             {"OpenKey", E_INVALIDARG},
                             {"GetKeyCount", E_INVALIDARG}};
    DISPPARAMS none = {};
    EXPECT_EQ(refused, callAll(provider, nullptr, nullptr));
    EXPECT_EQ(refused, callAll(provider, nullptr, &result));
    EXPECT_EQ(refused, callAll(provider, &none, nullptr));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(AdaptersTest, ProviderAdaptersSetTheResultToZeroFirst) {
    const std::map<std::string, VARTYPE> types = {
        {"Load", VT_BOOL}, {"Unload", VT_BOOL}, {"OpenKey", VT_DISPATCH}, {"GetKeyCount", VT_I4}};
    for (const auto& [name, type] : types) {
        const PFNDISPATCH adapter =
            TokenProvider::GetDispatchInfo(provider, name.c_str())->pfnInvoke;
        result = poisoned();
        (static_cast<ZComponentImpl*>(provider)->*adapter)(nullptr, &result);
        EXPECT_EQ(type, result.vt) << name;
        EXPECT_EQ(0u, result.ullVal) << name;
    }
}

TEST_F(AdaptersTest, ProviderAdaptersWithAWrongCountReturnInvalidArgument) {
    std::vector<VARIANT> many(10000);
    DISPPARAMS params = {};
    params.rgvarg = many.data();
    for (const UINT count : {0u, 2u, 10000u}) {
        params.cArgs = count;
        EXPECT_HR(E_INVALIDARG, provider->_Load(&params, &result));
        EXPECT_HR(E_INVALIDARG, provider->_OpenKey(&params, &result));
    }
    for (const UINT count : {1u, 10000u}) {
        params.cArgs = count;
        EXPECT_HR(E_INVALIDARG, provider->_Unload(&params, &result));
        EXPECT_HR(E_INVALIDARG, provider->_GetKeyCount(&params, &result));
    }
    params.cArgs = 1;
    params.rgvarg = nullptr;
    EXPECT_HR(E_INVALIDARG, provider->_Load(&params, &result));
    EXPECT_EQ(Lines{}, module.takeCalls());
}

TEST_F(AdaptersTest, TokenAdaptersWithoutArgumentsDoNotCrash) {
    DISPPARAMS none = {};
    DISPPARAMS lost = {};
    lost.cArgs = 3;  // a count without an array
    EXPECT_EQ(withoutArguments(E_INVALIDARG), callAll(token, nullptr, nullptr));
    for (DISPPARAMS* params : {static_cast<DISPPARAMS*>(nullptr), &lost}) {
        EXPECT_EQ(withoutArguments(S_OK), callAll(token, params, &result));
    }
    // Without arguments, the missing type is 0.
    for (VARIANT* given : {static_cast<VARIANT*>(nullptr), &result}) {
        Results expected = withoutArguments(given ? S_OK : E_INVALIDARG);
        for (const char* reader : {"GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN"}) {
            expected[reader] = E_NOTIMPL;
        }
        EXPECT_EQ(expected, callAll(token, &none, given));
    }
}

TEST_F(AdaptersTest, TokenAdaptersWithNumbersInPlaceOfTextsReturnInvalidArgument) {
    std::vector<VARIANT> many(10000, number(1.5));
    DISPPARAMS params = {};
    params.rgvarg = many.data();
    params.cArgs = static_cast<UINT>(many.size());
    Results expected = withoutArguments(S_OK);
    // A type is the low 32 bits of any variant.
    for (const char* reader : {"GetMaxRetryCount", "GetRemainRetryCount", "IsDefaultPIN"}) {
        expected[reader] = E_NOTIMPL;
    }
    EXPECT_EQ(expected, callAll(token, &params, &result));
}

TEST_F(AdaptersTest, VerifyPinAdapterWithoutArgumentsSetsTheResultToFalse) {
    result = poisoned();
    EXPECT_HR(E_INVALIDARG, token->_VerifyPIN(nullptr, &result));
    EXPECT_EQ(VT_BOOL, result.vt);
    EXPECT_EQ(VARIANT_FALSE, result.boolVal);
}

TEST_F(AdaptersTest, VerifyPinAdapterWithoutAResultLogsIn) {
    const Text pin("1234");
    VARIANT arguments[] = {string(pin), {}};
    DISPPARAMS params = {};
    params.rgvarg = arguments;
    params.cArgs = 2;
    EXPECT_HR(S_OK, token->_VerifyPIN(&params, nullptr));
    EXPECT_GE(module.count("C_Login"), 1u);
}

TEST_F(AdaptersTest, ContainerAndCertificateAdaptersNeedOnlyAResult) {
    EXPECT_EQ((Results{{"GetKeyCert", E_INVALIDARG}}), callAll(container, nullptr, nullptr));
    EXPECT_EQ((Results{{"GetKeyCert", S_OK}}), callAll(container, nullptr, &result));
    EXPECT_EQ((Results{{"GetCertID", E_INVALIDARG}, {"GetCertData", E_INVALIDARG}}),
              callAll(certificate, nullptr, nullptr));
    EXPECT_EQ((Results{{"GetCertID", S_OK}, {"GetCertData", S_OK}}),
              callAll(certificate, nullptr, &result));
}

TEST_F(AdaptersTest, InvokeWithIdsOutsideTheTableFails) {
    const std::map<LONG, HRESULT> ids = {{std::numeric_limits<LONG>::min(), E_INVALIDARG},
                                         {-1, E_INVALIDARG},
                                         {0, E_INVALIDARG},
                                         {31, E_FAIL},
                                         {1000, E_FAIL},
                                         {std::numeric_limits<LONG>::max(), E_FAIL}};
    for (IDispatch* object :
         std::vector<IDispatch*>{provider, token, container, certificate, file}) {
        for (const auto& [id, expected] : ids) {
            EXPECT_HR(expected, invoke(object, id, {}, &result)) << id;
        }
    }
}

}  // namespace
}  // namespace zr::test
