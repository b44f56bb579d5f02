// A session from Load to Unload: token information, PINs, signatures and digests.
#include "tests/faults/oracle.h"
#include "tests/faults/scenario.h"
#include "tests/support/fixtures/token.h"

namespace zr::test {
namespace {

constexpr std::size_t kSignatureRoom = 1024;

/// A field without the blanks and zeros at its end.
template <std::size_t Size>
std::string trimmed(const CK_BYTE (&field)[Size]) {
    std::string text(field, field + Size);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0')) {
        text.pop_back();
    }
    return text;
}

std::string signatureOf(std::size_t length) {
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
        bytes += static_cast<char>(i);
    }
    return bytes;
}

/// The login of VerifyPIN and ModifyPIN.
/// @return whether the token is logged in after it.
bool expectLogin(Step* step, CK_SESSION_HANDLE session, const std::string& pin) {
    const std::string login = callOf("C_Login", session) + ", 1, " + pin + ")";
    CK_RV rv = step->call(login).result;
    if (rv == CKR_USER_ALREADY_LOGGED_IN) {
        step->call(callOf("C_Logout", session) + ")");
        rv = step->call(login).result;
        return rv == CKR_OK || rv == CKR_USER_ALREADY_LOGGED_IN;
    }
    return rv == CKR_OK;
}

}  // namespace

void Scenario::readInformation(const Token& token) {
    using Info = const CK_TOKEN_INFO&;
    readText("GetSerialNumber", token, &IKeyObject::GetSerialNumber,
             [](Info info) { return trimmed(info.serialNumber); });
    readText("GetLabel", token, &IKeyObject::GetLabel,
             [](Info info) { return trimmed(info.label); });
    readText("GetManufacturerID", token, &IKeyObject::GetManufacturerID,
             [](Info info) { return trimmed(info.manufacturerID); });
    readText("GetModelID", token, &IKeyObject::GetModelID,
             [](Info info) { return trimmed(info.model); });
    readSize("GetTotalSize", token, &IKeyObject::GetTotalSize,
             [](Info info) { return CK_ULONG{info.ulTotalPublicMemory}; });
    readSize("GetFreeSize", token, &IKeyObject::GetFreeSize,
             [](Info info) { return CK_ULONG{info.ulFreePublicMemory}; });
    Step step(m_context, "GetSignAlgo");
    Text list;
    step.expect(S_OK, token.object->GetSignAlgo(list.receive()));
    step.equal("the list", std::string("RSA"), narrow(list));
}

void Scenario::readText(const char* name, const Token& token, HRESULT (IKeyObject::*getter)(BSTR*),
                        std::string (*field)(const CK_TOKEN_INFO&)) {
    Step step(m_context, name);
    const Text preset("untouched");
    BSTR text = preset;
    const HRESULT hr = (token.object.get()->*getter)(&text);
    const RecordingAnswer info = step.call("C_GetTokenInfo(" + std::to_string(token.slot) + ")");
    const bool isKnown = info.result == CKR_OK;
    step.expect(isKnown ? S_OK : E_FAIL, hr);
    step.equal("the text", isKnown ? field(info.tokenInfo) : "untouched", narrow(text));
    if (text != preset) {
        SysFreeString(text);
    }
}

void Scenario::readSize(const char* name, const Token& token,
                        HRESULT (IKeyObject::*getter)(VARIANT*),
                        CK_ULONG (*field)(const CK_TOKEN_INFO&)) {
    Step step(m_context, name);
    VARIANT size = poisoned();
    const HRESULT hr = (token.object.get()->*getter)(&size);
    const RecordingAnswer info = step.call("C_GetTokenInfo(" + std::to_string(token.slot) + ")");
    const bool isKnown = info.result == CKR_OK;
    step.expect(isKnown ? S_OK : E_FAIL, hr);
    step.equal("the type", static_cast<int>(isKnown ? VT_UI4 : VT_UI1), static_cast<int>(size.vt));
    step.equal("the size", isKnown ? static_cast<ULONG>(field(info.tokenInfo)) : poisoned().ulVal,
               size.ulVal);
}

void Scenario::verifyPin(Token* token, const std::string& pin) {
    Step step(m_context, "VerifyPIN");
    const HRESULT hr = token->object->VerifyPIN(Text(pin), 0);
    token->isLoggedIn = expectLogin(&step, token->session, pin);
    step.expect(token->isLoggedIn ? S_OK : E_FAIL, hr);
}

void Scenario::modifyPin(Token* token, const std::string& from, const std::string& to) {
    Step step(m_context, "ModifyPIN");
    const HRESULT hr = token->object->ModifyPIN(Text(from), Text(to), 0);
    if (token->isLoggedIn) {
        step.call(callOf("C_Logout", token->session) + ")");
    }
    token->isLoggedIn = expectLogin(&step, token->session, from);
    const bool isChanged = token->isLoggedIn && step.isOk(callOf("C_SetPIN", token->session) +
                                                          ", " + from + ", " + to + ")");
    step.expect(isChanged ? S_OK : E_FAIL, hr);
}

void Scenario::sign(const Token& token, const Container& container) {
    Step step(m_context, "SignData");
    VARIANT result = poisoned();
    const HRESULT hr =
        token.object->SignData(nullptr, ByteArray("data"), container.certificate.get(), &result);
    const auto fail = [&](HRESULT expected) {
        step.expect(expected, hr);
        step.equal("the type", static_cast<int>(VT_UI1), static_cast<int>(result.vt));
    };
    if (!token.isLoggedIn) {
        return fail(RPC_E_CANTCALLOUT_INEXTERNALCALL);
    }
    const auto key = findKey(step, token.session, CKO_PRIVATE_KEY, container.id);
    if (!key ||
        !step.isOk(callOf("C_SignInit", token.session) + ", 6/0, " + std::to_string(*key) + ")")) {
        return fail(E_FAIL);
    }
    const RecordingAnswer answer = step.call(callOf("C_Sign", token.session) + ", [data], 1024)");
    if (answer.result != CKR_OK || answer.values[0].length > kSignatureRoom) {
        return fail(E_FAIL);
    }
    step.expect(S_OK, hr);
    const auto* bytes = reinterpret_cast<const char*>(answer.values[0].bytes);
    step.equal("the signature", std::string(bytes, answer.values[0].length), takeBytes(&result));
}

void Scenario::verify(const char* name, const Token& token, const Container& container,
                      std::size_t length) {
    Step step(m_context, name);
    const HRESULT hr = token.object->VerifyData(ByteArray("data"), container.certificate.get(),
                                                nullptr, ByteArray(signatureOf(length)));
    if (!token.isLoggedIn) {
        step.expect(RPC_E_CANTCALLOUT_INEXTERNALCALL, hr);
        return;
    }
    const auto key = findKey(step, token.session, CKO_PUBLIC_KEY, container.id);
    const bool isVerified =
        key &&
        step.isOk(callOf("C_VerifyInit", token.session) + ", 6/0, " + std::to_string(*key) + ")") &&
        step.isOk(callOf("C_Verify", token.session) + ", [data], " + std::to_string(length) + ")");
    step.expect(isVerified ? S_OK : E_FAIL, hr);
}

void Scenario::digest(const Token& token) {
    Step step(m_context, "DigestData");
    VARIANT result = poisoned();
    step.expect(S_OK, token.object->DigestData(Text("MD5"), ByteArray("abc"), &result));
    step.equal("the digest",
               std::string("\x90\x01\x50\x98\x3c\xd2\x4f\xb0\xd6\x96\x3f\x7d\x28\xe1\x7f\x72"),
               takeBytes(&result));
}

}  // namespace zr::test
