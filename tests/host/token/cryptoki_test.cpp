// The command's direct calls of a module, over the recording module.
#include "host/token/cryptoki.h"

#include <gtest/gtest.h>

#include "host/token/cryptoki_names.h"
#include "host/token/cryptoki_session.h"
#include "tests/support/recording/recording.h"

namespace zr::test {
namespace {

using host::Attributes;
using host::AttributeValues;
using host::CryptokiSession;
using host::kImpossibleAnswer;
using Calls = std::vector<std::string>;
using Numbers = std::vector<CK_ULONG>;

constexpr CK_RV kNoEvent = 0x8;
/// The lengths that a fault reports instead of the true ones.
constexpr RecordingFault::Kind kLargeLengths[] = {RecordingFault::kLengthLargest,
                                                  RecordingFault::kLengthPastRoom};

class CryptokiTest : public testing::Test {
protected:
    Recording module;
    const host::Cryptoki cryptoki{Recording::file()};
};

TEST_F(CryptokiTest, ModuleWithoutFunctionsSaysWhy) {
    EXPECT_EQ("", cryptoki.problem());
    module->settings().functionListResult = CKR_GENERAL_ERROR;
    EXPECT_EQ("its C_GetFunctionList returned CKR_GENERAL_ERROR (0x00000005)",
              host::Cryptoki(Recording::file()).problem());
    const host::Cryptoki none(Recording::noListFile());
    EXPECT_EQ("it has no function C_GetFunctionList", none.problem());
    EXPECT_EQ(CKR_FUNCTION_NOT_SUPPORTED, none.initialise());
}

TEST_F(CryptokiTest, FunctionThatIsMissingIsNotSupported) {
    module->removeEntry(67);
    const host::Cryptoki without(Recording::file());
    CK_SLOT_ID slot = 0;
    EXPECT_EQ(CKR_FUNCTION_NOT_SUPPORTED, without.takeSlotEvent(slot));
}

TEST_F(CryptokiTest, FactsOfModuleSlotAndTokenAreRead) {
    host::ModuleFacts facts;
    EXPECT_EQ(CKR_OK, cryptoki.readModule(facts));
    EXPECT_EQ("Module Maker", facts.manufacturer);
    EXPECT_EQ("Recording Module", facts.description);
    EXPECT_EQ("1.2", facts.version);
    EXPECT_EQ("2.40", facts.cryptokiVersion);
    host::SlotFacts slot;
    EXPECT_EQ(CKR_OK, cryptoki.readSlot(10, slot));
    EXPECT_EQ("Recording Reader", slot.description);
    EXPECT_EQ("Reader Maker", slot.manufacturer);
    EXPECT_EQ(CKF_TOKEN_PRESENT, slot.flags);
    CK_TOKEN_INFO& info = module->settings().tokenInfo;
    info.flags = 0x40C;
    info.ulMinPinLen = 4;
    info.ulMaxPinLen = 16;
    info.firmwareVersion = {3, 7};
    host::TokenFacts token;
    EXPECT_EQ(CKR_OK, cryptoki.readToken(10, token));
    EXPECT_EQ("Recording Token", token.label);
    EXPECT_EQ("0123456789", token.serial);
    EXPECT_EQ("Test Maker", token.manufacturer);
    EXPECT_EQ("Model 1", token.model);
    EXPECT_EQ("3.7", token.firmwareVersion);
    EXPECT_EQ(0x40Cu, token.flags);
    EXPECT_EQ(4u, token.shortestPin);
    EXPECT_EQ(16u, token.longestPin);
    EXPECT_EQ((Calls{"C_GetInfo()", "C_GetSlotInfo(10)", "C_GetTokenInfo(10)"}),
              module.takeCalls());
}

TEST_F(CryptokiTest, ListsAreReadInTwoCalls) {
    module->settings().mechanismCount = 2;
    module->settings().mechanisms[1] = 0x40;
    Numbers list;
    EXPECT_EQ(CKR_OK, cryptoki.listMechanisms(10, list));
    EXPECT_EQ((Numbers{6, 0x40}), list);
    EXPECT_EQ(CKR_OK, cryptoki.listSlots(true, list));
    EXPECT_EQ(Numbers{10}, list);
    EXPECT_EQ((Calls{"C_GetMechanismList(10, null)", "C_GetMechanismList(10, list)",
                     "C_GetSlotList(1, null)", "C_GetSlotList(1, list)"}),
              module.takeCalls());
    host::MechanismFacts facts;
    module->settings().mechanismFlags = 0x800;
    EXPECT_EQ(CKR_OK, cryptoki.readMechanism(10, 6, facts));
    EXPECT_EQ(512u, facts.smallestKey);
    EXPECT_EQ(4096u, facts.largestKey);
    EXPECT_EQ(0x800u, facts.flags);
}

TEST_F(CryptokiTest, HugeListIsNotAllocated) {
    Numbers list;
    module->setFault({RecordingFault::kCountLargest, 1, 0, 0});
    EXPECT_EQ(kImpossibleAnswer, cryptoki.listMechanisms(10, list));
    EXPECT_TRUE(list.empty());
    // The second call reports more than the first.
    module->reset();
    module->setFault({RecordingFault::kCountLargest, 2, 0, 0});
    EXPECT_EQ(CKR_OK, cryptoki.listMechanisms(10, list));
    EXPECT_EQ(Numbers{6}, list);
}

TEST_F(CryptokiTest, SlotEventIsTakenWithoutWaiting) {
    CK_SLOT_ID slot = 0;
    EXPECT_EQ(kNoEvent, cryptoki.takeSlotEvent(slot));
    module->settings().eventSlot = 12;
    EXPECT_EQ(CKR_OK, cryptoki.takeSlotEvent(slot));
    EXPECT_EQ(12u, slot);
    EXPECT_EQ("C_WaitForSlotEvent(1, null)", module.takeCalls().back());
}

class CryptokiSessionTest : public CryptokiTest {
protected:
    CryptokiSessionTest() { module.takeCalls(); }

    CryptokiSession session{cryptoki, 10, CryptokiSession::Access::kReadWrite};
    Numbers found;
    AttributeValues values;
};

TEST_F(CryptokiSessionTest, SessionIsClosedWhenItIsDestroyed) {
    { const CryptokiSession reader(cryptoki, 10, CryptokiSession::Access::kReadOnly); }
    { const CryptokiSession writer(cryptoki, 10, CryptokiSession::Access::kReadWrite); }
    EXPECT_EQ((Calls{"C_OpenSession(10, 4, null, null)", "C_CloseSession(2)",
                     "C_OpenSession(10, 6, null, null)", "C_CloseSession(2)"}),
              module.takeCalls());
}

TEST_F(CryptokiSessionTest, SessionThatDoesNotOpenIsNotClosed) {
    module.takeCalls();
    module->fail("C_OpenSession", 0, CKR_DEVICE_REMOVED);
    {
        const CryptokiSession other(cryptoki, 10, CryptokiSession::Access::kReadOnly);
        EXPECT_EQ(CKR_DEVICE_REMOVED, other.result());
        EXPECT_STREQ("C_OpenSession", other.lastFunction());
    }
    EXPECT_EQ(0u, module.count("C_CloseSession"));
}

TEST_F(CryptokiSessionTest, ObjectsAreFoundByTheirAttributes) {
    const CK_OBJECT_HANDLE first = module.addData("1", "one");
    module.addCertificate("id", "certificate");
    const CK_OBJECT_HANDLE second = module.addData("2", "two");
    module.takeCalls();
    EXPECT_EQ(CKR_OK, session.find({host::numberAttribute(CKA_CLASS, CKO_DATA)}, found));
    EXPECT_EQ((Numbers{first, second}), found);
    EXPECT_EQ((Calls{"C_FindObjectsInit(1, {0x0=0})", "C_FindObjects(1, 64)",
                     "C_FindObjects(1, 64)", "C_FindObjects(1, 64)", "C_FindObjectsFinal(1)"}),
              module.takeCalls());
}

TEST_F(CryptokiSessionTest, SearchEndsWhateverFails) {
    module.addData("1", "one");
    module->fail("C_FindObjects", 2, CKR_DEVICE_REMOVED);
    EXPECT_EQ(CKR_DEVICE_REMOVED, session.find({}, found));
    EXPECT_STREQ("C_FindObjects", session.lastFunction());
    EXPECT_TRUE(found.empty());
    EXPECT_FALSE(module->isSearchOpen());
    module->fail("C_FindObjectsFinal", 1, CKR_GENERAL_ERROR);
    EXPECT_EQ(CKR_GENERAL_ERROR, session.find({}, found));
    EXPECT_STREQ("C_FindObjectsFinal", session.lastFunction());
    EXPECT_TRUE(found.empty());
}

TEST_F(CryptokiSessionTest, SearchWithAFalseCountFails) {
    module.addData("1", "one");
    module->settings().foundCount = 65;
    EXPECT_EQ(kImpossibleAnswer, session.find({}, found));
    EXPECT_TRUE(found.empty());
    EXPECT_FALSE(module->isSearchOpen());
}

TEST_F(CryptokiSessionTest, AttributesAreReadInTwoCalls) {
    const CK_OBJECT_HANDLE object = module.addData("1", "one");
    module.takeCalls();
    EXPECT_EQ(CKR_OK, session.read(object, {CKA_LABEL, CKA_ID, CKA_VALUE, CKA_CLASS}, values));
    EXPECT_EQ("1", values[0]);
    EXPECT_FALSE(values[1]);
    EXPECT_EQ("one", values[2]);
    EXPECT_EQ(CKO_DATA, host::toNumber(values[3]));
    EXPECT_FALSE(host::toNumber(values[0]));
    EXPECT_EQ(2u, module.count("C_GetAttributeValue"));
}

TEST_F(CryptokiSessionTest, ShortAttributesAreReadInOneCall) {
    const CK_OBJECT_HANDLE object = module.addData("1", std::string(host::kShortValue, 'x'));
    module.takeCalls();
    EXPECT_EQ(CKR_OK, session.readShort(object, {CKA_LABEL, CKA_VALUE, CKA_CLASS}, values));
    EXPECT_EQ("1", values[0]);
    EXPECT_EQ(std::string(host::kShortValue, 'x'), values[1]);
    EXPECT_EQ(CKO_DATA, host::toNumber(values[2]));
    EXPECT_EQ(1u, module.count("C_GetAttributeValue"));
}

TEST_F(CryptokiSessionTest, LongAndMissingAttributesAreReadAllTheSame) {
    const std::string text(host::kShortValue + 1, 'x');
    const CK_OBJECT_HANDLE object = module.addData("1", text);
    EXPECT_EQ(CKR_OK, session.readShort(object, {CKA_LABEL, CKA_VALUE}, values));
    EXPECT_EQ("1", values[0]);
    EXPECT_EQ(text, values[1]);
    EXPECT_EQ(CKR_OK, session.readShort(object, {CKA_VALUE, CKA_ID}, values));
    EXPECT_EQ(text, values[0]);
    EXPECT_FALSE(values[1]);
    EXPECT_EQ(CKR_OBJECT_HANDLE_INVALID, session.readShort(object + 1, {CKA_ID}, values));
}

TEST_F(CryptokiSessionTest, EmptyValueIsAValue) {
    const CK_OBJECT_HANDLE object = module.addData("1", "");
    EXPECT_EQ(CKR_OK, session.read(object, {CKA_VALUE}, values));
    EXPECT_EQ("", values[0]);
}

TEST_F(CryptokiSessionTest, AttributeOfAnAbsurdLengthIsNotRead) {
    const CK_OBJECT_HANDLE object = module.addData("1", "one");
    auto& settings = module->settings();
    settings.lyingType = CKA_VALUE;
    settings.lie = RecordingModule::Settings::kOnQuery;
    for (const CK_ULONG length : {CK_ULONG{(1 << 20) + 1}, CK_UNAVAILABLE_INFORMATION - 1}) {
        settings.lyingLength = length;
        module.takeCalls();
        EXPECT_EQ(kImpossibleAnswer, session.read(object, {CKA_VALUE}, values));
        EXPECT_FALSE(values[0]);
        EXPECT_EQ(1u, module.count("C_GetAttributeValue"));
    }
    settings.lie = RecordingModule::Settings::kOnRead;
    EXPECT_EQ(kImpossibleAnswer, session.read(object, {CKA_VALUE}, values));
    EXPECT_FALSE(values[0]);
}

TEST_F(CryptokiSessionTest, AttributeThatVanishesMeanwhileIsNoValue) {
    const CK_OBJECT_HANDLE object = module.addData("1", "one");
    auto& settings = module->settings();
    settings.lyingType = CKA_VALUE;
    settings.lie = RecordingModule::Settings::kOnRead;
    settings.lyingLength = CK_UNAVAILABLE_INFORMATION;
    EXPECT_EQ(CKR_OK, session.read(object, {CKA_VALUE}, values));
    EXPECT_FALSE(values[0]);
}

TEST_F(CryptokiSessionTest, ObjectsAreMadeChangedCopiedAndDestroyed) {
    CK_OBJECT_HANDLE object = 0;
    CK_OBJECT_HANDLE copied = 0;
    EXPECT_EQ(CKR_OK, session.create({host::numberAttribute(CKA_CLASS, CKO_DATA),
                                      host::truthAttribute(CKA_TOKEN, true),
                                      {CKA_LABEL, "seven"}},
                                     object));
    EXPECT_EQ(CKR_OK, session.set(object, {{CKA_VALUE, "text"}}));
    EXPECT_EQ(CKR_OK, session.copy(object, {{CKA_LABEL, "eight"}}, copied));
    EXPECT_EQ("seven", module.read(object, CKA_LABEL));
    EXPECT_EQ("eight", module.read(copied, CKA_LABEL));
    EXPECT_EQ("text", module.read(copied, CKA_VALUE));
    EXPECT_EQ(CKR_OK, session.read(copied, {CKA_TOKEN}, values));
    EXPECT_TRUE(host::isTrue(values[0]));
    EXPECT_EQ(CKR_OK, session.destroy(object));
    EXPECT_EQ("(none)", module.read(object, CKA_LABEL));
    EXPECT_STREQ("C_DestroyObject", session.lastFunction());
}

TEST_F(CryptokiSessionTest, PinSurvivesAModuleThatWritesPastIt) {
    module->settings().overwritesPin = true;
    host::Pin pin;
    for (const char byte : std::string("1234")) {
        pin.append(byte);
    }
    module.takeCalls();
    EXPECT_EQ(CKR_OK, session.login(CKU_USER, pin));
    EXPECT_EQ("1234", pin.view());
    EXPECT_EQ(CKR_OK, session.logout());
    EXPECT_EQ(CKR_USER_NOT_LOGGED_IN, session.initPin(pin));
    EXPECT_EQ((Calls{"C_Login(1, 1, 1234)", "C_Logout(1)", "C_InitPIN(1, 1234)"}),
              module.takeCalls());
}

TEST_F(CryptokiSessionTest, DataIsSignedAtOnceAndInParts) {
    std::string whole;
    std::string parts;
    module->settings().signatureLength = 3;
    module.takeCalls();
    EXPECT_EQ(CKR_OK, session.signInit({6, ""}, 5));
    EXPECT_EQ(CKR_OK, session.sign("data", whole));
    EXPECT_EQ(CKR_OK, session.signInit({0x43, "parameter"}, 5));
    EXPECT_EQ(CKR_OK, session.signUpdate("da"));
    EXPECT_EQ(CKR_OK, session.signFinal(parts));
    EXPECT_EQ(std::string("\0\1\2", 3), whole);
    EXPECT_EQ(whole, parts);
    EXPECT_EQ(
        (Calls{"C_SignInit(1, 6/0, 5)", "C_Sign(1, [data], 4096)", "C_SignInit(1, 67/9 set, 5)",
               "C_SignUpdate(1, [da])", "C_SignFinal(1, 4096)"}),
        module.takeCalls());
    EXPECT_EQ(CKR_OK, session.verifyInit({6, ""}, 5));
    EXPECT_EQ(CKR_OK, session.verify("data", whole));
    EXPECT_EQ(CKR_OK, session.verifyUpdate("da"));
    EXPECT_EQ(CKR_SIGNATURE_INVALID, session.verifyFinal("wrong"));
    EXPECT_EQ((Calls{"C_VerifyInit(1, 6/0, 5)", "C_Verify(1, [data], 3)", "C_VerifyUpdate(1, [da])",
                     "C_VerifyFinal(1, 5)"}),
              module.takeCalls());
}

TEST_F(CryptokiSessionTest, SignatureOfAFalseLengthFails) {
    for (const RecordingFault::Kind kind : kLargeLengths) {
        std::string signature = "old";
        module->reset();
        module->setFault({kind, 1, 0, 0});
        EXPECT_EQ(kImpossibleAnswer, session.sign("data", signature));
        EXPECT_EQ("old", signature);
        EXPECT_TRUE(module->wasFaultHit());
    }
    std::string signature = "old";
    module->reset();
    module->settings().signatureLength = 4097;
    EXPECT_EQ(CKR_BUFFER_TOO_SMALL, session.sign("data", signature));
    EXPECT_EQ("", signature);
}

TEST(CryptokiNamesTest, ResultsHaveTheirNames) {
    EXPECT_EQ("CKR_OK (0x00000000)", host::resultText(CKR_OK));
    EXPECT_EQ("CKR_FUNCTION_REJECTED (0x00000200)", host::resultText(0x200));
    EXPECT_EQ("an unexpected error (0x000004D2)", host::resultText(1234));
    EXPECT_EQ("an error of its maker's (0x80000001)", host::resultText(0x80000001));
    EXPECT_EQ("an answer that cannot be right", host::resultText(kImpossibleAnswer));
}

TEST(CryptokiNamesTest, CauseNamesTheFunctionAndAdvises) {
    const host::Cause cause = host::moduleCause("C_SignFinal", CKR_DEVICE_REMOVED);
    EXPECT_EQ("the module's C_SignFinal returned CKR_DEVICE_REMOVED (0x00000032)", cause.text);
    EXPECT_EQ("the token was removed; connect it and try again", cause.advice);
}

}  // namespace
}  // namespace zr::test
