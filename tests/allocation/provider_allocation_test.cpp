// The whole work with a token, once for each allocation that the library makes, with that one
// failing: the step that meets it fails as documented and hands out nothing, succeeds when it is
// repeated, and nothing is left over at the end.
//
// ZRKEY_TEST_ALLOCATION=17 runs the one number.
#include <algorithm>
#include <functional>

#include "tests/allocation/allocations.h"
#include "tests/contract/token.h"

namespace zr::test {
namespace {

template <class Interface>
void** receive(Interface** out) {
    *out = nullptr;
    return reinterpret_cast<void**>(out);
}

/// One run through the work, with one allocation failing.
class Work {
public:
    /// @param isLogged  a log is written: for want of memory a line is lost, and no call fails.
    Work(Recording& module, std::size_t failing, bool isLogged = false)
        : m_module(module), m_isLogged(isLogged), m_allocations(Allocations::ofLibrary, failing) {}

    void run() {
        load();
        describe();
        changePins();
        useFiles();
        useContainers();
        signAndDigest();
        callByName();
        unload();
        m_allocations.stop();
    }

    const Allocations& allocations() const { return m_allocations; }

private:
    using Call = std::function<HRESULT()>;

    /// Makes one call, and once more when it met the failing allocation and failed.
    /// @param outcomes  what it may answer then.
    void step(const char* name, std::initializer_list<HRESULT> outcomes, const Call& call) {
        const bool hadFailed = m_allocations.hasFailed();
        HRESULT hr = call();
        if (m_allocations.hasFailed() && !hadFailed) {
            EXPECT_TRUE((m_isLogged && hr == S_OK) ||
                        std::find(outcomes.begin(), outcomes.end(), hr) != outcomes.end())
                << name << " answers 0x" << std::hex << static_cast<ULONG>(hr);
            if (SUCCEEDED(hr)) {
                return;
            }
            hr = call();
        }
        EXPECT_HR(S_OK, hr) << name;
    }

    /// A step that hands out an object.
    template <class Interface>
    void open(const char* name, std::initializer_list<HRESULT> outcomes, Interface** out,
              const std::function<HRESULT(void**)>& call) {
        step(name, outcomes, [&] {
            const HRESULT hr = call(receive(out));
            EXPECT_EQ(SUCCEEDED(hr), *out != nullptr) << name;
            return hr;
        });
        ASSERT_TRUE(*out) << name;
    }

    /// A step that hands out a string.
    void text(const char* name, const std::function<HRESULT(BSTR*)>& call) {
        step(name, {E_OUTOFMEMORY}, [&] {
            BSTR out = nullptr;
            const HRESULT hr = call(&out);
            EXPECT_EQ(SUCCEEDED(hr), out != nullptr) << name;
            SysFreeString(out);
            return hr;
        });
    }

    /// A step that fills a variant; on failure it is as it was, or empty.
    void value(const char* name, std::initializer_list<HRESULT> outcomes,
               const std::function<HRESULT(VARIANT*)>& call) {
        step(name, outcomes, [&] {
            VARIANT out;
            VariantInit(&out);
            const HRESULT hr = call(&out);
            if (FAILED(hr)) {
                EXPECT_EQ(0u, out.ullVal) << name;
            }
            VariantClear(&out);
            return hr;
        });
    }

    /// A member by name, its arguments in natural order.
    void member(IDispatch* object, const char* name, const std::vector<VARIANT>& arguments,
                std::initializer_list<HRESULT> outcomes) {
        DISPID id = 0;
        step(name, {}, [&] {
            const ConsoleCapture quiet;
            id = idOf(object, name);
            return id > 0 ? S_OK : E_FAIL;
        });
        value(name, outcomes, [&](VARIANT* result) {
            const ConsoleCapture quiet;
            return invoke(object, id, arguments, result);
        });
    }

    /// Ends a search that FileExists left open, too.
    void countContainers() {
        // A certificate that cannot be read ends the count.
        value("GetContainerCount", {S_OK},
              [&](VARIANT* out) { return m_token->GetContainerCount(out); });
    }

    void load();
    void describe();
    void changePins();
    void useFiles();
    void useContainers();
    void signAndDigest();
    void callByName();
    void unload();

    Recording& m_module;
    bool m_isLogged;
    Allocations m_allocations;
    IClassFactory* m_factory = nullptr;
    ITokenProvider* m_provider = nullptr;
    IKeyObject* m_token = nullptr;
    IKeyFile* m_file = nullptr;
    IKeyContainer* m_container = nullptr;
    IKeyCertificate* m_certificate = nullptr;
    VARIANT m_signature = {};
};

void Work::load() {
    open("ZCLGetClassObject", {E_OUTOFMEMORY}, &m_factory,
         [](void** out) { return ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, out); });
    // Without memory for its log a provider works without one.
    open("CreateInstance", {S_OK, E_OUTOFMEMORY}, &m_provider,
         [&](void** out) { return m_factory->CreateInstance(nullptr, IID_ITokenProvider, out); });
    // The configuration is read without a buffer when there is none for it.
    step("Load", {S_OK, E_FAIL, E_OUTOFMEMORY},
         [&] { return m_provider->Load(Text(m_module.path())); });
    text("GetName", [&](BSTR* out) { return m_provider->GetName(out); });
    INT count = 0;
    step("GetKeyCount", {}, [&] { return m_provider->GetKeyCount(&count); });
    EXPECT_EQ(1, count);
    open("OpenKey", {E_FAIL, E_OUTOFMEMORY}, &m_token,
         [&](void** out) { return m_provider->OpenKey(0, out); });
}

void Work::describe() {
    text("GetSerialNumber", [&](BSTR* out) { return m_token->GetSerialNumber(out); });
    text("GetLabel", [&](BSTR* out) { return m_token->GetLabel(out); });
    text("GetManufacturerID", [&](BSTR* out) { return m_token->GetManufacturerID(out); });
    text("GetModelID", [&](BSTR* out) { return m_token->GetModelID(out); });
    text("GetSignAlgo", [&](BSTR* out) { return m_token->GetSignAlgo(out); });
    text("GetAlgoList", [&](BSTR* out) { return m_token->GetAlgoList(out); });
    text("GetDigestMethod", [&](BSTR* out) { return m_token->GetDigestMethod(out); });
    value("GetTotalSize", {}, [&](VARIANT* out) { return m_token->GetTotalSize(out); });
    value("GetFreeSize", {}, [&](VARIANT* out) { return m_token->GetFreeSize(out); });
}

void Work::changePins() {
    step("VerifyPIN", {}, [&] { return m_token->VerifyPIN(Text("1234"), 0); });
    step("ModifyPIN", {}, [&] { return m_token->ModifyPIN(Text("1234"), Text("567890"), 0); });
    step("ModifyPIN", {}, [&] { return m_token->ModifyPIN(Text("567890"), Text("1234"), 0); });
}

void Work::useFiles() {
    IKeyFile* created = nullptr;
    open("CreateFile", {S_OK, E_FAIL, E_OUTOFMEMORY}, &created,
         [&](void** out) { return m_token->CreateFile(Text("7"), 0, 0, 0, 0, out); });
    step("Flush", {}, [&] { return created->Flush(); });
    step("Close", {}, [&] { return created->Close(); });
    created->Release();
    value("FileExists", {E_FAIL}, [&](VARIANT* out) {
        const HRESULT hr = m_token->FileExists(Text("8"), out);
        EXPECT_EQ(SUCCEEDED(hr) ? 1 : 0, out->lVal);
        return hr;
    });
    countContainers();
    m_module.addData("100", "contents of the file");
    open("OpenFile", {E_FAIL, E_OUTOFMEMORY}, &m_file,
         [&](void** out) { return m_token->OpenFile(Text("101"), out); });
    value("GetSize", {}, [&](VARIANT* out) { return m_file->GetSize(out); });
    step("Seek", {}, [&] { return m_file->Seek(9, 0); });
    // Reading without memory for the array leaves the result unset and is S_OK.
    value("Read", {S_OK}, [&](VARIANT* out) { return m_file->Read(6, out); });
    step("Flush", {}, [&] { return m_file->Flush(); });
    step("Write", {}, [&] { return m_file->Write(Bytes("x")) == E_INVALIDARG ? S_OK : E_FAIL; });
}

void Work::useContainers() {
    m_module.addCertificate("a", "certificate a");
    m_module.addCertificate("", "certificate without an ID");
    m_module.addKey(CKO_PRIVATE_KEY, "a");
    m_module.addKey(CKO_PUBLIC_KEY, "a");
    countContainers();
    value("EnumContainer", {S_OK, E_FAIL},
          [&](VARIANT* out) { return m_token->EnumContainer(0, out); });
    IKeyContainer* nameless = nullptr;
    VARIANT index;
    VariantInit(&index);
    index.vt = VT_I4;
    index.lVal = 1;
    open("OpenContainer", {E_FAIL, E_OUTOFMEMORY}, &nameless,
         [&](void** out) { return m_token->OpenContainer(index, out); });
    IKeyCertificate* certificate = nullptr;
    open("GetKeyCert", {E_OUTOFMEMORY}, &certificate,
         [&](void** out) { return nameless->GetKeyCert(true, out); });
    nameless->Release();
    value("GetPubKeyData", {E_FAIL, E_OUTOFMEMORY},
          [&](VARIANT* out) { return m_token->GetPubKeyData(certificate, out); });
    certificate->Release();

    const Text name("a");
    open("OpenContainer", {E_FAIL, E_OUTOFMEMORY}, &m_container,
         [&](void** out) { return m_token->OpenContainer(string(name), out); });
    text("GetType", [&](BSTR* out) { return m_container->GetType(out); });
    open("GetKeyCert", {E_OUTOFMEMORY}, &m_certificate,
         [&](void** out) { return m_container->GetKeyCert(true, out); });
    text("GetCertID", [&](BSTR* out) { return m_certificate->GetCertID(out); });
    value("GetCertData", {E_FAIL}, [&](VARIANT* out) { return m_certificate->GetCertData(out); });
    value("GetCertData", {E_FAIL},
          [&](VARIANT* out) { return m_token->GetCertData(m_certificate, out); });
}

void Work::signAndDigest() {
    const Bytes data("data to sign");
    step("SignData", {E_FAIL, E_OUTOFMEMORY}, [&] {
        VariantInit(&m_signature);
        return m_token->SignData(nullptr, data, m_certificate, &m_signature);
    });
    step("VerifyData", {E_FAIL, E_OUTOFMEMORY},
         [&] { return m_token->VerifyData(data, m_certificate, nullptr, m_signature); });
    VariantClear(&m_signature);
    // A name that cannot be converted is not "MD5".
    value("DigestData", {E_FAIL, E_INVALIDARG},
          [&](VARIANT* out) { return m_token->DigestData(Text("MD5"), data, out); });
}

void Work::callByName() {
    const Text pin("1234");
    const Text fileName("8");
    const auto byName = {E_FAIL, E_OUTOFMEMORY};
    member(m_provider, "GetKeyCount", {}, byName);
    member(m_provider, "OpenKey", {number(0)}, byName);
    member(m_token, "GetLabel", {}, byName);
    member(m_token, "GetTotalSize", {}, byName);
    member(m_token, "VerifyPIN", {string(pin), number(0)}, byName);
    member(m_token, "FileExists", {string(fileName)}, byName);
    countContainers();
    member(m_container, "GetKeyCert", {number(1)}, byName);
    member(m_certificate, "GetCertID", {}, byName);
    member(m_certificate, "GetCertData", {}, byName);
}

void Work::unload() {
    m_file->Release();
    m_certificate->Release();
    m_container->Release();
    EXPECT_EQ(0u, m_token->Release());
    step("Unload", {}, [&] { return m_provider->Unload(); });
    EXPECT_EQ(0u, m_provider->Release());
    EXPECT_EQ(0u, m_factory->Release());
}

class ProviderAllocationTest : public ModuleTest {
protected:
    /// The work once for each allocation; nothing of the library is left after any.
    void failEach(bool isLogged) {
        // What the language's libraries make once and keep: the time zone, the first exception's.
        Work(module, 0, isLogged).run();
        module->reset();
        Work(module, 1, isLogged).run();
        const std::size_t only = onlyAllocation();
        for (std::size_t number = only ? only : 1;; ++number) {
            SCOPED_TRACE("ZRKEY_TEST_ALLOCATION=" + std::to_string(number));
            module->reset();
            Work work(module, number, isLogged);
            work.run();
            EXPECT_EQ(0u, work.allocations().live());
            if (only || !work.allocations().hasFailed() || HasFatalFailure()) {
                RecordProperty("allocations", std::to_string(work.allocations().made()));
                return;
            }
        }
    }
};

TEST_F(ProviderAllocationTest, WithoutAFailureTheLibraryGivesAllBack) {
    for (int run = 0; run < 2; ++run) {
        module->reset();
        Work work(module, 0);
        work.run();
        EXPECT_LT(100u, work.allocations().made());
        EXPECT_EQ(0u, work.allocations().live());
    }
}

TEST_F(ProviderAllocationTest, EachAllocationFailsOnce) {
    failEach(false);
}

TEST_F(ProviderAllocationTest, EachAllocationFailsOnceWhileALogIsWritten) {
    folder.enableLog();
    failEach(true);
}

// Apart from the work: a deletion that succeeds keeps its token.
TEST_F(LoggedInTokenTest, ADeletionThatFailsForWantOfMemoryDeletesAndKeepsNothing) {
    module.addData("100", "contents");
    const Text name("101");
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        Allocations allocations(Allocations::ofLibrary, number);
        const HRESULT hr = token->DeleteFile(name);
        allocations.stop();
        if (!allocations.hasFailed()) {
            EXPECT_HR(S_OK, hr);
            EXPECT_EQ(0u, module->objectCount());
            EXPECT_LT(3u, number);
            return;
        }
        EXPECT_HR(E_FAIL, hr);
        EXPECT_EQ(0u, allocations.live());
        EXPECT_EQ(1u, module->objectCount());
    }
}

}  // namespace
}  // namespace zr::test
