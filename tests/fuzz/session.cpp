// A host that calls the operations of all objects in any order.
#include "tests/fuzz/session.h"

#include <string>
#include <utility>

#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/kept_file.h"

namespace zr::fuzz {
namespace {

constexpr std::size_t kMostObjects = 6;

void expectBytes(const VARIANT& variant) {
    expect(variant.vt == (VT_ARRAY | VT_UI1) && variant.parray && variant.parray->cDims == 1 &&
               variant.parray->cbElements == 1 && variant.parray->cLocks == 0,
           "byte data is an array of bytes without a lock");
}

}  // namespace

Session::Session(Input& input) : m_input(input) {
    m_provider = makeProvider();
    m_provider->Load(Text(modulePath()).get());
    open(m_tokens, [this](void** out) { return m_provider->OpenKey(0, out); });
}

void Session::step() {
    AnyVariants variants(m_input, m_none);
    m_variants = &variants;
    IKeyObject* token = any(m_tokens);
    IKeyFile* file = any(m_files);
    IKeyContainer* container = any(m_containers);
    IKeyCertificate* certificate = any(m_certificates);
    const std::uint8_t choice = m_input.byte();
    if (choice >= 246 || !token) {
        useProvider();
    } else if (choice >= 240) {
        releaseOne();
    } else if (choice >= 200 && file) {
        useFile(*file);
    } else if (choice >= 180 && container) {
        useContainer(*container);
    } else if (choice >= 160 && certificate) {
        useCertificate(*certificate);
    } else {
        useToken(*token);
    }
    m_arguments.clear();
}

BSTR Session::text() {
    static const char* const texts[] = {"1", "2", "7", "1234", "12345678", "MD5", "65536", "-1"};
    const std::size_t choice = m_input.below(12);
    Text text;
    text.reset(choice < std::size(texts) ? Text(texts[choice]).release() : makeAnyString(m_input));
    m_arguments.push_back(Variant::fromText(std::move(text)));
    return m_arguments.back().get().bstrVal;
}

const VARIANT& Session::data() {
    if (m_input.byte() >= 200) {
        return m_variants->make();
    }
    Variant& bytes = m_arguments.emplace_back();
    bytes.reset(ByteArray(m_input.text()).release());
    return bytes;
}

template <class Interface, class Call>
HRESULT Session::open(Refs<Interface>& objects, Call call) {
    ComRef<Interface>& made = objects.emplace_back();
    const HRESULT hr = call(made.receive());
    expect(SUCCEEDED(hr) || !made, "what fails opens nothing");
    if (!made || objects.size() > kMostObjects) {
        objects.pop_back();
    }
    return hr;
}

template <class Call>
void Session::readText(Call call) {
    const bool isAsked = m_input.byte() < 250;
    Text text;
    const HRESULT hr = call(isAsked ? text.receive() : nullptr);
    expect(SUCCEEDED(hr) || !text, "what fails hands out no text");
}

template <class Call>
void Session::readValue(Call call) {
    const bool isAsked = m_input.byte() < 250;
    Variant value;
    const HRESULT hr = call(isAsked ? value.receive() : nullptr);
    expect(SUCCEEDED(hr) || value.type() == VT_EMPTY || value.type() == VT_I4,
           "what fails hands out at most a zero");
}

void Session::useProvider() {
    ITokenProvider& provider = *m_provider.get();
    switch (m_input.below(8)) {
        case 0:
            provider.Load(m_input.flag() ? text() : Text(modulePath()).get());
            break;
        case 1:
            expect(provider.Unload() == S_OK);
            break;
        case 2:
            readText([&](BSTR* out) { return provider.GetName(out); });
            break;
        case 3: {
            INT count = 7;
            const HRESULT hr = provider.GetKeyCount(&count);
            expect(SUCCEEDED(hr) || count == 0, "without slots the count is 0");
            provider.GetKeyCount(nullptr);
            break;
        }
        case 4:
            readText([&](BSTR* out) { return provider.GetKeySN(m_input.number<LONG>(), out); });
            break;
        case 5: {
            INT done = 7;
            expect(provider.LoadFinish(&done) == E_NOTIMPL && done == 7);
            break;
        }
        default:
            open(m_tokens, [&](void** out) {
                return provider.OpenKey(static_cast<LONG>(m_input.below(4)) - 1, out);
            });
    }
}

void Session::useToken(IKeyObject& token) {
    switch (m_input.below(4)) {
        case 0:
            askToken(token);
            break;
        case 1:
            useCertificateOf(token);
            break;
        default:
            openOfToken(token);
    }
}

void Session::openOfToken(IKeyObject& token) {
    const INT type = static_cast<INT>(m_input.below(4)) - 1;
    switch (m_input.below(10)) {
        case 0:
        case 1:
            token.VerifyPIN(text(), type);
            break;
        case 2:
            token.ModifyPIN(text(), text(), type);
            break;
        case 3:
            open(m_files, [&](void** out) {
                return token.CreateFile(text(), 0, 0, 0, m_input.number<ULONG>(), out);
            });
            break;
        case 4:
        case 5:
            open(m_files, [&](void** out) { return token.OpenFile(text(), out); });
            break;
        case 6:
            deleteFile(&token, text());
            break;
        case 7:
            readValue([&](VARIANT* out) { return token.FileExists(text(), out); });
            break;
        default: {
            VARIANT which = {};
            which.vt = VT_I4;
            which.lVal = static_cast<LONG>(m_input.below(4));
            if (m_input.flag()) {
                which.vt = VT_BSTR;
                which.bstrVal = text();
            } else if (m_input.byte() >= 240) {
                which = m_variants->make();
            }
            open(m_containers, [&](void** out) { return token.OpenContainer(which, out); });
        }
    }
}

void Session::useCertificateOf(IKeyObject& token) {
    IKeyCertificate* certificate = any(m_certificates);
    Variant result;
    switch (m_input.below(8)) {
        case 0:
        case 1:
            if (token.SignData(text(), data(), certificate, result.receive()) == S_OK) {
                expectBytes(result);
                expect(result.get().parray->rgsabound[0].cElements <= 1024);
            }
            break;
        case 2:
            token.VerifyData(data(), certificate, text(), data());
            break;
        case 3:
            token.VerifyDataByCert(data(), certificate, data(), text(), data());
            break;
        case 4:
            expect(token.VerifyDataByPubKey(data(), certificate, data(), text(), data()) == E_FAIL);
            break;
        case 5:
            if (token.GetPubKeyData(certificate, result.receive()) == S_OK) {
                expectBytes(result);
            }
            break;
        case 6:
            if (token.GetCertData(certificate, result.receive()) == S_OK) {
                expectBytes(result);
            }
            break;
        default:
            if (token.DigestData(text(), data(), result.receive()) == S_OK) {
                expectBytes(result);
                expect(result.get().parray->rgsabound[0].cElements == 16);
            }
    }
}

void Session::askToken(IKeyObject& token) {
    using TextGetter = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(BSTR*);
    using Value = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(VARIANT*);
    using Typed = HRESULT (STDMETHODCALLTYPE IKeyObject::*)(INT, VARIANT*);
    static constexpr TextGetter texts[] = {
        &IKeyObject::GetSerialNumber,      &IKeyObject::GetLabel,    &IKeyObject::GetManufacturerID,
        &IKeyObject::GetModelID,           &IKeyObject::GetSignAlgo, &IKeyObject::GetDigestMethod,
        &IKeyObject::GetAlgoList,          &IKeyObject::GetCSPName,  &IKeyObject::GetCaLibPath,
        &IKeyObject::GetKeyObjectClassName};
    static constexpr Value values[] = {&IKeyObject::GetTotalSize, &IKeyObject::GetFreeSize,
                                       &IKeyObject::Lock,         &IKeyObject::Unlock,
                                       &IKeyObject::EnumFiles,    &IKeyObject::GetContainerCount};
    static constexpr Typed typed[] = {&IKeyObject::GetMaxRetryCount,
                                      &IKeyObject::GetRemainRetryCount, &IKeyObject::IsDefaultPIN,
                                      &IKeyObject::EnumContainer};
    const std::size_t choice =
        m_input.below(std::size(texts) + std::size(values) + std::size(typed) + 4);
    if (choice < std::size(texts)) {
        readText([&](BSTR* out) { return (token.*texts[choice])(out); });
    } else if (choice < std::size(texts) + std::size(values)) {
        readValue([&](VARIANT* out) { return (token.*values[choice - std::size(texts)])(out); });
    } else if (choice < std::size(texts) + std::size(values) + std::size(typed)) {
        const std::size_t index = choice - std::size(texts) - std::size(values);
        readValue([&](VARIANT* out) { return (token.*typed[index])(m_input.number<INT>(), out); });
    } else {
        BSTR label = text();
        Variant result;
        void* api = nullptr;
        expect(token.SetLabel(&label, result.receive()) == E_NOTIMPL);
        expect(token.UnlockPIN(text(), text()) == S_OK);
        expect(token.CreateContainer(text(), &api) == E_NOTIMPL && !api);
        expect(token.DeleteContainer(m_variants->make()) == E_NOTIMPL);
        expect(token.GetZRHardApiInfo(&api, nullptr) == E_NOTIMPL && !api);
    }
}

void Session::useFile(IKeyFile& file) {
    switch (m_input.below(8)) {
        case 0:
            expect(file.Close() == S_OK);
            break;
        case 1:
            file.Flush();
            break;
        case 2:
            file.Write(data());
            break;
        case 3: {
            // Files are short: small offsets reach their ends more often.
            const LONG offset =
                m_input.flag() ? m_input.number<LONG>() : static_cast<LONG>(m_input.below(40)) - 8;
            expect(file.Seek(offset, static_cast<INT>(m_input.below(5)) - 1) == S_OK);
            break;
        }
        case 4:
            readValue([&](VARIANT* out) { return file.GetSize(out); });
            break;
        default: {
            Variant size;
            file.GetSize(size.receive());
            const ULONG length = m_input.byte() < 240 ? m_input.byte() : m_input.number<ULONG>();
            Variant contents;
            if (file.Read(length, contents.receive()) == S_OK && contents.type() != VT_EMPTY) {
                expectBytes(contents);
                expect(contents.get().parray->rgsabound[0].cElements == length &&
                           length <= size.get().ulVal,
                       "a read returns the requested length, from inside the file");
            }
            file.Read(0, nullptr);
        }
    }
}

void Session::useContainer(IKeyContainer& container) {
    Variant result;
    switch (m_input.below(8)) {
        case 0:
            expect(container.Close() == S_OK);
            break;
        case 1:
            readText([&](BSTR* out) { return container.GetType(out); });
            break;
        case 2:
            expect(container.ImportCertificate(m_input.flag(), data()) == E_NOTIMPL);
            break;
        case 3:
            expect(container.ExportCertificate(m_input.flag(), result.receive()) == E_NOTIMPL);
            break;
        case 4:
            expect(container.GenKeyPair(result.receive()) == E_NOTIMPL);
            break;
        default:
            open(m_certificates, [&](void** out) { return container.GetKeyCert(true, out); });
    }
}

void Session::useCertificate(IKeyCertificate& certificate) {
    Variant result;
    if (m_input.flag()) {
        readText([&](BSTR* out) { return certificate.GetCertID(out); });
    } else if (certificate.GetCertData(result.receive()) == S_OK) {
        expectBytes(result);
    }
}

/// Releases the oldest object of a kind; objects opened from it keep it alive.
void Session::releaseOne() {
    const auto release = [](auto& objects) {
        if (!objects.empty()) {
            objects.pop_front();
        }
    };
    switch (m_input.below(4)) {
        case 0:
            release(m_tokens);
            break;
        case 1:
            release(m_containers);
            break;
        case 2:
            release(m_certificates);
            break;
        default:
            release(m_files);
    }
}

}  // namespace zr::fuzz
