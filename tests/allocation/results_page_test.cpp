// docs/results.md: the values of the codes, and the results of what zrkey.h does not declare itself:
// the factory, the calls by name and the C++ layer. Here because some are those of a call that is out
// of memory; tests/package/check-results compares the rest of the page with the header.
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

#include "tests/allocation/allocations.h"
#include "tests/support/fixtures/foreign_certificate.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

using CodeAndName = std::pair<std::string, std::string>;

/// The texts between backticks.
Lines quotedNames(const std::string& text) {
    Lines names;
    std::istringstream parts(text);
    std::string part;
    for (bool isQuoted = false; std::getline(parts, part, '`'); isQuoted = !isQuoted) {
        if (isQuoted) {
            names.push_back(part);
        }
    }
    return names;
}

/// What a page says.
struct ResultsPage {
    ResultsPage() {
        std::ifstream file(ZRKEY_DOCS "/results.md");
        std::string code;
        for (std::string line; std::getline(file, line);) {
            if (line.rfind("### ", 0) == 0) {
                code = line.substr(4, line.find_last_not_of('\r') - 3);
            } else if (line.rfind("Value 0x", 0) == 0) {
                values.emplace_back(code, line.substr(6, 10));
            } else if (line.rfind("| `", 0) == 0) {
                readRow(code, line.substr(2, line.find(" | ") - 2));
            } else if (const std::size_t value = line.find(" | 0x"); value != line.npos) {
                values.emplace_back(line.substr(2, value - 2), line.substr(value + 3, 10));
            }
        }
    }

    std::vector<CodeAndName> values;  ///< "E_FAIL", "0x80004005"
    std::set<CodeAndName> results;    ///< "E_FAIL", "IDispatch::Invoke"; those of this test only

private:
    void readRow(const std::string& code, const std::string& cell) {
        std::istringstream parts(cell);
        for (std::string part; std::getline(parts, part, ';');) {
            const Lines names = quotedNames(part);
            for (const char* own :
                 {"IUnknown", "IDispatch", "IClassFactory", "ISupportErrorInfo", "zrkey"}) {
                for (std::size_t i = 1; i < names.size() && names[0] == own; ++i) {
                    results.emplace(code, names[0] + "::" + names[i]);
                }
            }
        }
    }
};

TEST(ResultsPageTest, ValuesAreThoseOfTheCodes) {
    const ResultsPage page;
    EXPECT_EQ(16u, page.values.size());
    for (const auto& [name, value] : page.values) {
        const auto code = static_cast<HRESULT>(std::stoul(value, nullptr, 16));
        EXPECT_EQ(name, zrkey::Result(code).name()) << value;
        EXPECT_EQ(value, zrkey::Result(code).hex()) << name;
    }
}

class ResultsPageTokenTest : public LoggedInTokenTest {
protected:
    using Call = std::function<HRESULT()>;

    HRESULT invoke(DISPID id) const {
        DISPPARAMS none = {};
        Variant result;
        return token->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &none, result.receive(), nullptr,
                             nullptr);
    }
    HRESULT invoke(const char* name) const { return invoke(idOf(token.get(), name)); }
    HRESULT find(const OLECHAR* name, DISPID* id) const {
        LPOLESTR names = const_cast<LPOLESTR>(name);
        return token->GetIDsOfNames(IID_NULL, &names, 1, 0, id);
    }
    HRESULT create(const IID& iid) const {
        ComRef<ITokenProvider> made;
        const HRESULT hr = factory->CreateInstance(nullptr, iid, made.receive());
        if (iid == IID_IClassFactory) {
            made.release();  // no reference was added
        }
        return hr;
    }
    static HRESULT createByLayer() {
        ComRef<ITokenProvider> made;
        return zrkey::createProvider(made);
    }
    /// What a call returns whose first allocation fails.
    static HRESULT withoutMemory(const Call& call) {
        const Allocations allocations(Allocations::kOfLibrary, 1);
        return call();
    }

    const ComRef<IClassFactory> factory = getFactory();
};

TEST_F(ResultsPageTokenTest, CallsOutsideTheHeaderReturnWhatThePageSays) {
    const ConsoleCapture quiet;
    ComRef<ISupportErrorInfo> support;
    void* face = nullptr;
    DISPID id = 0;
    UINT types = 0;
    ITypeInfo* type = nullptr;
    const DISPID digestMethod = idOf(token.get(), "GetDigestMethod");
    const std::vector<std::pair<const char*, Call>> calls = {
        {"zrkey::createProvider", [] { return createByLayer(); }},
        {"zrkey::createProvider", [] { return withoutMemory(createByLayer); }},
        {"IClassFactory::CreateInstance", [&] { return create(IID_ITokenProvider); }},
        {"IClassFactory::CreateInstance", [&] { return create(IID_IClassFactory); }},
        {"IClassFactory::CreateInstance", [&] { return create(IID_IKeyObject); }},
        {"IClassFactory::CreateInstance",
         [&] { return factory->CreateInstance(nullptr, IID_ITokenProvider, nullptr); }},
        {"IClassFactory::CreateInstance",
         [&] { return withoutMemory([&] { return create(IID_ITokenProvider); }); }},
        {"IClassFactory::LockServer", [&] { return factory->LockServer(TRUE); }},
        {"IUnknown::QueryInterface",
         [&] { return token->QueryInterface(IID_ISupportErrorInfo, support.receive()); }},
        {"IUnknown::QueryInterface", [&] { return token->QueryInterface(IID_IUnknown, &face); }},
        {"IUnknown::QueryInterface",
         [&] { return token->QueryInterface(IID_ISupportErrorInfo, nullptr); }},
        {"ISupportErrorInfo::InterfaceSupportsErrorInfo",
         [&] { return support->InterfaceSupportsErrorInfo(IID_NULL); }},
        {"IDispatch::GetTypeInfoCount", [&] { return token->GetTypeInfoCount(&types); }},
        {"IDispatch::GetTypeInfo", [&] { return token->GetTypeInfo(0, 0, &type); }},
        {"IDispatch::GetIDsOfNames", [&] { return find(OLESTR("GetLabel"), &id); }},
        {"IDispatch::GetIDsOfNames", [&] { return find(OLESTR("getLabel"), &id); }},
        {"IDispatch::GetIDsOfNames", [&] { return find(OLESTR("GetLabel"), nullptr); }},
        {"IDispatch::GetIDsOfNames",
         [&] { return token->GetIDsOfNames(IID_NULL, nullptr, 1, 0, &id); }},
        {"IDispatch::Invoke", [&] { return invoke("GetLabel"); }},
        {"IDispatch::Invoke", [&] { return invoke("SignData"); }},
        {"IDispatch::Invoke", [&] { return invoke(DISPID{1000}); }},
        {"IDispatch::Invoke", [&] { return invoke(DISPID{0}); }},
        {"IDispatch::Invoke", [&] { return invoke("FileExists"); }},
        {"IDispatch::Invoke", [&] { return invoke("Lock"); }},
        {"IDispatch::Invoke", [&] { return withoutMemory([&] { return invoke(digestMethod); }); }},
    };
    std::set<CodeAndName> returned;
    for (const auto& [name, call] : calls) {
        returned.emplace(zrkey::Result(call()).name(), name);
    }
    EXPECT_EQ(ResultsPage().results, returned);
}

TEST_F(ResultsPageTokenTest, SizesReturnWhatVariantClearReturns) {
    VARIANT size = {};
    size.vt = 0x0FFF;
    EXPECT_HR(DISP_E_BADVARTYPE, token->GetTotalSize(&size));
    EXPECT_HR(DISP_E_BADVARTYPE, token->GetFreeSize(&size));
    for (const auto getter : {&IKeyObject::GetTotalSize, &IKeyObject::GetFreeSize}) {
        // The array may be forgotten when it cannot be freed, so each getter has its own.
        SAFEARRAYBOUND bound = {1, 0};
        Variant array = Variant::fromArray(VT_UI1, SafeArrayCreate(VT_UI1, 1, &bound));
        const zrkey::ArrayLock lock(array.get().parray);
        EXPECT_HR(DISP_E_ARRAYISLOCKED, (token.get()->*getter)(&array.get()));
    }
}

TEST_F(ResultsPageTokenTest, OperationsReturnWhatAHostsCertificateReturns) {
    ForeignCertificate certificate;
    certificate.answer = E_UNEXPECTED;
    const ByteArray data("data");
    Variant result;
    EXPECT_HR(E_UNEXPECTED, token->SignData(nullptr, data, &certificate, result.receive()));
    EXPECT_HR(E_UNEXPECTED, token->VerifyData(data, &certificate, nullptr, data));
    EXPECT_HR(E_UNEXPECTED, token->GetPubKeyData(&certificate, result.receive()));
}

}  // namespace
}  // namespace zr::test
