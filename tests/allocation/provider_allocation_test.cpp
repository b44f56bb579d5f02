// A full session with a token while each allocation of the library fails in turn: the step that
// makes the allocation fails as documented and hands out nothing, it succeeds when it is repeated,
// and all memory is free at the end.
//
// ZRKEY_TEST_ALLOCATION=17 runs number 17 only.
#include <algorithm>
#include <functional>

#include "tests/allocation/allocations.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

/// One session in which one allocation fails.
class Work {
public:
    /// @param isLogged  a log is written: out of memory, a line is missing and no call fails.
    Work(Recording& module, std::size_t failing, bool isLogged = false)
        : m_module(module), m_isLogged(isLogged), m_allocations(Allocations::kOfLibrary, failing) {}

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

    /// Makes one call, and repeats it when it made the failing allocation and failed.
    /// @param outcomes  the results that are allowed then.
    void step(const char* name, std::initializer_list<HRESULT> outcomes, const Call& call) {
        const bool hadFailed = m_allocations.hasFailed();
        HRESULT hr = call();
        if (m_allocations.hasFailed() && !hadFailed) {
            EXPECT_TRUE((m_isLogged && hr == S_OK) ||
                        std::find(outcomes.begin(), outcomes.end(), hr) != outcomes.end())
                << name << " returns 0x" << std::hex << static_cast<ULONG>(hr);
            if (SUCCEEDED(hr)) {
                return;
            }
            hr = call();
        }
        EXPECT_HR(S_OK, hr) << name;
    }

    /// A step that hands out an object.
    template <class Interface>
    void open(const char* name, std::initializer_list<HRESULT> outcomes, ComRef<Interface>* out,
              const std::function<HRESULT(void**)>& call) {
        step(name, outcomes, [&] {
            const HRESULT hr = call(out->receive());
            EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(*out)) << name;
            return hr;
        });
        ASSERT_TRUE(*out) << name;
    }

    /// A step that hands out a string.
    void text(const char* name, const std::function<HRESULT(BSTR*)>& call) {
        step(name, {E_OUTOFMEMORY}, [&] {
            Text out;
            const HRESULT hr = call(out.receive());
            EXPECT_EQ(SUCCEEDED(hr), static_cast<bool>(out)) << name;
            return hr;
        });
    }

    /// A step that fills a variant; a failure leaves the variant unchanged or empty.
    void value(const char* name, std::initializer_list<HRESULT> outcomes,
               const std::function<HRESULT(VARIANT*)>& call) {
        step(name, outcomes, [&] {
            Variant out;
            const HRESULT hr = call(out.receive());
            if (FAILED(hr)) {
                EXPECT_EQ(0u, out.get().ullVal) << name;
            }
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

    /// Also ends a search that FileExists left open.
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
    ComRef<IClassFactory> m_factory;
    ComRef<ITokenProvider> m_provider;
    ComRef<IKeyObject> m_token;
    ComRef<IKeyFile> m_file;
    ComRef<IKeyContainer> m_container;
    ComRef<IKeyCertificate> m_certificate;
    Variant m_signature;
};

void Work::load() {
    open("ZCLGetClassObject", {E_OUTOFMEMORY}, &m_factory,
         [](void** out) { return ZCLGetClassObject(LIBID_ZRKey, IID_IClassFactory, out); });
    // Out of memory for its log, a provider works without a log.
    open("CreateInstance", {S_OK, E_OUTOFMEMORY}, &m_provider,
         [&](void** out) { return m_factory->CreateInstance(nullptr, IID_ITokenProvider, out); });
    // Out of memory for its buffer, the configuration is read without a buffer.
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
    ComRef<IKeyFile> created;
    open("CreateFile", {S_OK, E_FAIL, E_OUTOFMEMORY}, &created,
         [&](void** out) { return m_token->CreateFile(Text("7"), 0, 0, 0, 0, out); });
    step("Flush", {}, [&] { return created->Flush(); });
    step("Close", {}, [&] { return created->Close(); });
    created.reset();
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
    // Out of memory for the array, Read returns S_OK and leaves the result unset.
    value("Read", {S_OK}, [&](VARIANT* out) { return m_file->Read(6, out); });
    step("Flush", {}, [&] { return m_file->Flush(); });
    step("Write", {},
         [&] { return m_file->Write(ByteArray("x")) == E_INVALIDARG ? S_OK : E_FAIL; });
}

void Work::useContainers() {
    m_module.addCertificate("a", "certificate a");
    m_module.addCertificate("", "certificate without an ID");
    m_module.addKey(CKO_PRIVATE_KEY, "a");
    m_module.addKey(CKO_PUBLIC_KEY, "a");
    countContainers();
    value("EnumContainer", {S_OK, E_FAIL},
          [&](VARIANT* out) { return m_token->EnumContainer(0, out); });
    ComRef<IKeyContainer> nameless;
    const Variant index = Variant::fromNumber(1);
    open("OpenContainer", {E_FAIL, E_OUTOFMEMORY}, &nameless,
         [&](void** out) { return m_token->OpenContainer(index, out); });
    ComRef<IKeyCertificate> certificate;
    open("GetKeyCert", {E_OUTOFMEMORY}, &certificate,
         [&](void** out) { return nameless->GetKeyCert(true, out); });
    nameless.reset();
    value("GetPubKeyData", {E_FAIL, E_OUTOFMEMORY},
          [&](VARIANT* out) { return m_token->GetPubKeyData(certificate.get(), out); });
    certificate.reset();

    const Text name("a");
    open("OpenContainer", {E_FAIL, E_OUTOFMEMORY}, &m_container,
         [&](void** out) { return m_token->OpenContainer(string(name), out); });
    text("GetType", [&](BSTR* out) { return m_container->GetType(out); });
    open("GetKeyCert", {E_OUTOFMEMORY}, &m_certificate,
         [&](void** out) { return m_container->GetKeyCert(true, out); });
    text("GetCertID", [&](BSTR* out) { return m_certificate->GetCertID(out); });
    value("GetCertData", {E_FAIL}, [&](VARIANT* out) { return m_certificate->GetCertData(out); });
    value("GetCertData", {E_FAIL},
          [&](VARIANT* out) { return m_token->GetCertData(m_certificate.get(), out); });
}

void Work::signAndDigest() {
    const ByteArray data("data to sign");
    step("SignData", {E_FAIL, E_OUTOFMEMORY}, [&] {
        return m_token->SignData(nullptr, data, m_certificate.get(), m_signature.receive());
    });
    step("VerifyData", {E_FAIL, E_OUTOFMEMORY},
         [&] { return m_token->VerifyData(data, m_certificate.get(), nullptr, m_signature); });
    m_signature.reset();
    // A name that cannot be converted is not "MD5".
    value("DigestData", {E_FAIL, E_INVALIDARG},
          [&](VARIANT* out) { return m_token->DigestData(Text("MD5"), data, out); });
}

void Work::callByName() {
    const Text pin("1234");
    const Text fileName("8");
    const auto byName = {E_FAIL, E_OUTOFMEMORY};
    member(m_provider.get(), "GetKeyCount", {}, byName);
    member(m_provider.get(), "OpenKey", {number(0)}, byName);
    member(m_token.get(), "GetLabel", {}, byName);
    member(m_token.get(), "GetTotalSize", {}, byName);
    member(m_token.get(), "VerifyPIN", {string(pin), number(0)}, byName);
    member(m_token.get(), "FileExists", {string(fileName)}, byName);
    countContainers();
    member(m_container.get(), "GetKeyCert", {number(1)}, byName);
    member(m_certificate.get(), "GetCertID", {}, byName);
    member(m_certificate.get(), "GetCertData", {}, byName);
}

void Work::unload() {
    m_file.reset();
    m_certificate.reset();
    m_container.reset();
    EXPECT_EQ(0u, m_token.release()->Release());
    step("Unload", {}, [&] { return m_provider->Unload(); });
    EXPECT_EQ(0u, m_provider.release()->Release());
    EXPECT_EQ(0u, m_factory.release()->Release());
}

class ProviderAllocationTest : public ModuleTest {
protected:
    /// Runs one session for each allocation; each must free all memory of the library.
    void failEach(bool isLogged) {
        // The language libraries allocate some memory once and keep it: time zone, first exception.
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

TEST_F(ProviderAllocationTest, SessionWithoutAFailureFreesAllMemory) {
    for (int run = 0; run < 2; ++run) {
        module->reset();
        Work work(module, 0);
        work.run();
        EXPECT_LT(50u, work.allocations().made());
        EXPECT_EQ(0u, work.allocations().live());
    }
}

TEST_F(ProviderAllocationTest, SessionWithEachAllocationFailingOnceFreesAllMemory) {
    failEach(false);
}

TEST_F(ProviderAllocationTest, LoggedSessionWithEachAllocationFailingOnceFreesAllMemory) {
    folder.enableLog();
    failEach(true);
}

// Not part of the session: a provider whose logger is out of memory.
TEST_F(ModuleTest, ProviderOutOfMemoryForItsLoggerMakesTheLogFoldersAndNoFile) {
    folder.enableLog();
    const std::filesystem::path directory = folder.home() / "log" / "level" / "work";
    const ComRef<IClassFactory> factory = getFactory();
    std::size_t withoutLogger = 0;
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        ComRef<ITokenProvider> provider;
        Allocations allocations(Allocations::kOfLibrary, number);
        factory->CreateInstance(nullptr, IID_ITokenProvider, provider.receive());
        allocations.stop();
        if (provider) {
            const bool hasFolders = std::filesystem::is_directory(directory);
            withoutLogger += hasFolders && findLogFiles(folder.home()).empty() ? 1 : 0;
        }
        if (!allocations.hasFailed()) {
            break;
        }
        std::filesystem::remove_all(folder.home() / "log");
    }
    EXPECT_EQ(1u, withoutLogger);
}

// Not part of the session: a deletion that succeeds keeps its token.
TEST_F(LoggedInTokenTest, DeleteFileOutOfMemoryKeepsTheObject) {
    module.addData("100", "contents");
    const Text name("101");
    for (std::size_t number = 1;; ++number) {
        SCOPED_TRACE("allocation " + std::to_string(number));
        Allocations allocations(Allocations::kOfLibrary, number);
        const HRESULT hr = token->DeleteFile(name);
        allocations.stop();
        if (!allocations.hasFailed()) {
            EXPECT_HR(S_OK, hr);
            EXPECT_EQ(0u, module->objectCount());
            EXPECT_LT(1u, number);
            return;
        }
        EXPECT_HR(E_FAIL, hr);
        EXPECT_EQ(0u, allocations.live());
        EXPECT_EQ(1u, module->objectCount());
    }
}

}  // namespace
}  // namespace zr::test
