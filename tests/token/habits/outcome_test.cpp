// docs/habits.md: what a result code says, and what it does not.
#include <functional>

#include "tests/support/fixtures/soft_token.h"
#include "tests/support/log_file.h"

namespace zr::test {
namespace {

using OneCodeStandsForEveryFailure = SoftTokenTest;
using SOKMayLeaveThePointerUntouched = SoftTokenTest;
using SomeOperationsSucceedAndDoNothing = SoftTokenTest;
using ResultsAreOverwrittenNotCleared = SoftTokenTest;
using TextsEndAtTheirFirstZero = SoftTokenTest;
using TheLogIsChosenWhenAProviderIsCreated = SoftTokenTest;

TEST_F(OneCodeStandsForEveryFailure, AWrongPinAndAPulledTokenFailAlike) {
    Text label;
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("9999"), 0));
    EXPECT_HR(S_OK, token->GetLabel(label.receive()));
    const PulledToken pulled;
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234"), 0));
    EXPECT_HR(E_FAIL, token->GetLabel(label.receive()));
}

TEST_F(OneCodeStandsForEveryFailure, RetryCountersAreNotImplemented) {
    Variant count;
    EXPECT_HR(E_NOTIMPL, token->GetRemainRetryCount(0, count.receive()));
    EXPECT_HR(E_NOTIMPL, token->GetMaxRetryCount(0, count.receive()));
}

TEST_F(SOKMayLeaveThePointerUntouched, GettersWithoutAValueTouchNothing) {
    OLECHAR mark[] = OLESTR("mark");
    BSTR text = mark;
    EXPECT_HR(S_OK, provider->GetKeySN(0, &text));
    EXPECT_HR(S_OK, token->GetKeyObjectClassName(&text));
    EXPECT_HR(S_OK, token->GetCaLibPath(&text));
    EXPECT_HR(S_OK, token->GetCSPName(&text));
    EXPECT_EQ(mark, text);
}

// SoftHSM2 never changes its slots during a call.
TEST_F(SOKMayLeaveThePointerUntouched, OpenKeyOpensNothingWhenTheSlotsChange) {
    const Recording module;
    ASSERT_HR(S_OK, provider->Load(Text(module.path())));
    module->settings().slotCountWhenListed = 0;
    ComRef<IKeyObject> opened;
    EXPECT_HR(S_OK, provider->OpenKey(0, opened.receive()));
    EXPECT_FALSE(opened);
}

TEST_F(SomeOperationsSucceedAndDoNothing, VerifyDataByCertAcceptsAnything) {
    const ComRef<IKeyCertificate> certificate = openCertificate();
    const Variant number = Variant::fromNumber(7);
    EXPECT_HR(S_OK, token->VerifyDataByCert(ByteArray("data"), certificate.get(), ByteArray("x"),
                                            nullptr, ByteArray("forged")));
    EXPECT_HR(S_OK, token->VerifyDataByCert(number, nullptr, number, nullptr, number));
}

TEST_F(SomeOperationsSucceedAndDoNothing, UnlockPinChangesNoPin) {
    EXPECT_HR(S_OK, token->UnlockPIN(Text("87654321"), Text("4321")));
    EXPECT_HR(S_OK, token->UnlockPIN(Text("wrong"), nullptr));
    EXPECT_HR(S_OK, token->VerifyPIN(Text("1234"), 0));
}

TEST_F(SomeOperationsSucceedAndDoNothing, AClosedContainerStillWorks) {
    ComRef<IKeyContainer> container;
    ASSERT_HR(S_OK, token->OpenContainer(Variant::fromNumber(0), container.receive()));
    EXPECT_HR(S_OK, container->Close());
    ComRef<IKeyCertificate> certificate;
    EXPECT_HR(S_OK, container->GetKeyCert(true, certificate.receive()));
    EXPECT_TRUE(certificate);
}

/// How many references the object has that a variant is given.
ULONG referencesAfter(const ComRef<ITokenProvider>& object,
                      const std::function<HRESULT(VARIANT*)>& call) {
    VARIANT variant = {};
    variant.vt = VT_DISPATCH;
    variant.pdispVal = object.get();
    object->AddRef();
    EXPECT_HR(S_OK, call(&variant));
    object->AddRef();
    return object->Release();
}

TEST_F(ResultsAreOverwrittenNotCleared, WhatTheVariantHeldIsLost) {
    const ComRef<ITokenProvider> object = makeProvider();
    EXPECT_EQ(2u,
              referencesAfter(object, [&](VARIANT* out) { return token->GetContainerCount(out); }));
    object->Release();
}

TEST_F(ResultsAreOverwrittenNotCleared, SizesClearTheVariant) {
    const ComRef<ITokenProvider> object = makeProvider();
    EXPECT_EQ(1u, referencesAfter(object, [&](VARIANT* out) { return token->GetTotalSize(out); }));
    EXPECT_EQ(1u, referencesAfter(object, [&](VARIANT* out) { return token->GetFreeSize(out); }));
}

TEST_F(TextsEndAtTheirFirstZero, APinIsReadUpToItsZero) {
    EXPECT_HR(S_OK, token->VerifyPIN(Text(std::string("1234\0more", 9)), 0));
    EXPECT_HR(E_FAIL, token->VerifyPIN(Text("1234more"), 0));
}

TEST_F(TheLogIsChosenWhenAProviderIsCreated, LaterChangesDoNothing) {
    folder.enableLog();
    Text label;
    EXPECT_HR(S_OK, token->GetLabel(label.receive()));
    EXPECT_TRUE(findLogFiles(folder.home()).empty());
    const ComRef<ITokenProvider> logging = makeProvider();
    setEnvironment("ZRKEY_HOME_X64", "");
    ASSERT_HR(S_OK, load(logging));
    const auto files = findLogFiles(folder.home());
    ASSERT_EQ(1u, files.size());
    EXPECT_EQ(folder.home() / "log" / "level" / "work", files[0].parent_path());
    EXPECT_NE(std::string::npos, readText(files[0]).find("Load"));
}

}  // namespace
}  // namespace zr::test
