// Two providers and two modules: every order of Load, Unload, OpenKey, use and release.
//
// The model (two_modules_model.h) proposes the steps and predicts their outcomes. The library takes
// them, in more than a thousand sequences, over two modules that are really loaded and unloaded. A
// call may reach only the token that is used, and a token of an unloaded module makes no call.
#include <optional>
#include <set>

#include "tests/contract/two_modules_model.h"
#include "tests/support/fixtures/token.h"
#include "tests/support/stateful/stateful.h"

namespace zr::test {
namespace {

using Steps = std::vector<Step>;

constexpr std::size_t kLongest = 6;
constexpr int kMostTokens = 2;
constexpr int kParts = 8;

std::string toText(const Steps& steps) {
    std::string text;
    for (const Step& step : steps) {
        text += (text.empty() ? "" : ", ") + toText(step);
    }
    return text;
}

/// Every step from every state of the model that fewer than kLongest steps reach. Of several ways
/// to a state, one is continued.
std::vector<Steps> makeSequences() {
    struct Reached {
        TwoModulesModel model;
        Steps steps;
    };
    std::vector<Steps> sequences;
    std::set<std::string> known;
    std::vector<Reached> reached(1);
    for (std::size_t length = 1; length <= kLongest; ++length) {
        std::vector<Reached> next;
        for (const Reached& from : reached) {
            for (const Step& step : from.model.steps(kMostTokens)) {
                // Every run ends with the use and the release of all tokens.
                if (length == kLongest && step.kind != Step::kOpen && step.kind != Step::kUnload &&
                    step.kind != Step::kReleaseProvider) {
                    continue;
                }
                Reached to = from;
                to.model.take(step);
                to.steps.push_back(step);
                sequences.push_back(to.steps);
                if (known.insert(to.model.key()).second) {
                    next.push_back(to);
                }
            }
        }
        reached = next;
    }
    return sequences;
}

/// A token that the host opened, with an object of each kind from it.
struct OpenedToken {
    CK_SESSION_HANDLE session;
    ComRef<IKeyObject> token;
    ComRef<IKeyFile> file;
    ComRef<IKeyCertificate> certificate;
};

/// The library and the model, taking the same steps.
class Comparison {
public:
    Comparison(Stateful& a, Stateful& b) : m_modules{&a, &b} {
        for (Stateful* module : m_modules) {
            module->reset();
        }
    }

    void take(const Step& step) {
        switch (step.kind) {
            case Step::kLoad:
                allowNoSession();
                EXPECT_HR(S_OK,
                          m_providers[step.object]->Load(Text(m_modules[step.other]->path())));
                m_model.take(step);
                break;
            case Step::kUnload:
                allowNoSession();
                EXPECT_HR(S_OK, m_providers[step.object]->Unload());
                m_model.take(step);
                break;
            case Step::kOpen:
                open(step);
                break;
            case Step::kUse:
                use(step);
                break;
            case Step::kReleaseToken:
                releaseToken(step);
                break;
            case Step::kReleaseProvider:
                allowNoSession();
                m_model.take(step);
                EXPECT_EQ(m_model.provider(step.object).tokens > 0,
                          m_providers[step.object].release()->Release() > 0);
        }
        checkModules();
    }

    /// Uses every token once more, then releases everything.
    void finish() {
        for (const Step::Kind kind : {Step::kUse, Step::kReleaseToken}) {
            for (int i = 0; i < m_model.tokenCount(); ++i) {
                if (m_model.token(i).isHeld) {
                    take({kind, i});
                }
            }
        }
        for (int i = 0; i < kProviders; ++i) {
            if (m_model.provider(i).isHeld) {
                take({Step::kReleaseProvider, i});
            }
        }
        for (int i = 0; i < kModules; ++i) {
            EXPECT_EQ(static_cast<std::size_t>(m_model.module(i).references),
                      m_modules[i]->unload());
        }
    }

private:
    Stateful& moduleOf(const TwoModulesModel::Token& token) { return *m_modules[token.module]; }

    void allowNoSession() {
        for (Stateful* module : m_modules) {
            module->allowOnly(0, 0);
        }
    }
    /// Allows the calls of one token and no other.
    void allow(int number) {
        allowNoSession();
        const TwoModulesModel::Token& token = m_model.token(number);
        if (token.isAlive) {
            moduleOf(token).allowOnly(m_opened[static_cast<std::size_t>(number)].session,
                                      kFirstSlot + static_cast<CK_SLOT_ID>(token.slot));
        }
    }
    std::size_t callCount() const { return m_modules[0]->callCount() + m_modules[1]->callCount(); }

    void open(const Step& step) {
        allowNoSession();
        ITokenProvider& provider = *m_providers[step.object].get();
        const bool isOpened = m_model.take(step);
        INT count = -1;
        EXPECT_HR(isOpened ? S_OK : E_FAIL, provider.GetKeyCount(&count));
        EXPECT_EQ(isOpened ? kSlots : 0, count);
        OpenedToken opened = {};
        EXPECT_HR(isOpened ? S_OK : E_FAIL, provider.OpenKey(step.other, opened.token.receive()));
        ASSERT_EQ(isOpened, static_cast<bool>(opened.token));
        if (!isOpened) {
            return;
        }
        const int number = m_model.tokenCount() - 1;
        opened.session = moduleOf(m_model.token(number)).lastSession();
        m_opened.push_back(std::move(opened));
        allow(number);
        OpenedToken& made = m_opened.back();
        EXPECT_HR(S_OK, made.token->OpenFile(Text("7"), made.file.receive()));
        made.certificate = openCertificate(made.token.get(), Variant::fromNumber(0));
    }

    void use(const Step& step) {
        const TwoModulesModel::Token token = m_model.token(step.object);
        const OpenedToken& opened = m_opened[static_cast<std::size_t>(step.object)];
        const std::size_t calls = callCount();
        allow(step.object);
        for (Stateful* module : m_modules) {
            module->overwriteFiles();
        }
        checkInformation(opened, token);
        // Another object on the same token may have logged out the user meanwhile.
        checkSignature(opened, token,
                       m_model.isLoggedIn(step.object) ? S_OK
                       : token.hasLoggedIn             ? E_FAIL
                                                       : RPC_E_CANTCALLOUT_INEXTERNALCALL);
        const HRESULT expected = token.isAlive ? S_OK : E_FAIL;
        EXPECT_HR(expected, opened.token->VerifyPIN(
                                Text(moduleOf(token).pin(static_cast<CK_ULONG>(token.slot))), 0));
        checkSignature(opened, token, token.isAlive ? S_OK : RPC_E_CANTCALLOUT_INEXTERNALCALL);
        checkFiles(opened, token, expected);
        m_model.take(step);
        if (!token.isAlive) {
            EXPECT_EQ(calls, callCount()) << "a dead token makes no call";
        }
    }

    void checkInformation(const OpenedToken& opened, const TwoModulesModel::Token& token) {
        const auto slot = static_cast<CK_ULONG>(token.slot);
        Text label;
        EXPECT_HR(token.isAlive ? S_OK : E_FAIL, opened.token->GetLabel(label.receive()));
        EXPECT_EQ(token.isAlive ? moduleOf(token).label(slot) : "", label.utf8());
        ByteArray data;
        EXPECT_HR(token.isAlive ? S_OK : E_FAIL, opened.certificate->GetCertData(data.receive()));
        EXPECT_EQ(token.isAlive ? moduleOf(token).certificate(slot) : "(none)",
                  data.bytes().value_or("(none)"));
    }

    void checkSignature(const OpenedToken& opened, const TwoModulesModel::Token& token,
                        HRESULT expected) {
        ByteArray signature;
        EXPECT_HR(expected, opened.token->SignData(nullptr, ByteArray("data"),
                                                   opened.certificate.get(), signature.receive()));
        EXPECT_EQ(expected == S_OK
                      ? moduleOf(token).signature(static_cast<CK_ULONG>(token.slot), "data")
                      : "(none)",
                  signature.bytes().value_or("(none)"));
    }

    /// A file that is written and one that is made are on the token that is used, and nowhere else.
    void checkFiles(const OpenedToken& opened, const TwoModulesModel::Token& token,
                    HRESULT expected) {
        EXPECT_HR(expected, opened.file->Flush());
        ComRef<IKeyFile> made;
        EXPECT_HR(expected, opened.token->CreateFile(Text("9"), 0, 0, 0, 0, made.receive()));
        for (int number = 0; number < kModules; ++number) {
            Stateful& module = *m_modules[number];
            for (CK_ULONG slot = 0; slot < kSlots; ++slot) {
                Lines files = module.contents(slot);
                std::erase_if(files, [](const std::string& line) { return line[0] != 'd'; });
                const bool isUsed = token.isAlive && number == token.module &&
                                    slot == static_cast<CK_ULONG>(token.slot);
                EXPECT_EQ(isUsed ? (Lines{"data 6=" + module.file(slot), "data 9="})
                                 : Lines{"data 6=" + std::string(Stateful::kOverwritten)},
                          files)
                    << module.name(slot);
                module.removeFile(slot, "9");
            }
            module.restoreFiles();
        }
    }

    void releaseToken(const Step& step) {
        allow(step.object);
        OpenedToken& opened = m_opened[static_cast<std::size_t>(step.object)];
        opened.certificate.reset();
        const bool wasAlive = m_model.token(step.object).isAlive;
        const std::size_t sessionsClosed = closedSessions();
        // The file keeps the token.
        EXPECT_NE(0u, opened.token.release()->Release());
        EXPECT_EQ(0u, opened.file.release()->Release());
        EXPECT_EQ(wasAlive ? 1u : 0u, closedSessions() - sessionsClosed);
        m_model.take(step);
    }

    std::size_t closedSessions() const {
        return m_modules[0]->callCount("C_CloseSession") +
               m_modules[1]->callCount("C_CloseSession");
    }

    void checkModules() {
        for (int i = 0; i < kModules; ++i) {
            EXPECT_EQ(Lines{}, m_modules[i]->takeMisuses());
            EXPECT_EQ(static_cast<std::size_t>(m_model.module(i).finalizations),
                      m_modules[i]->callCount("C_Finalize"));
            EXPECT_EQ(m_model.module(i).references > 0, m_modules[i]->isLoaded());
        }
    }

    Stateful* m_modules[kModules];
    ComRef<ITokenProvider> m_providers[kProviders] = {makeProvider(), makeProvider()};
    std::vector<OpenedToken> m_opened;
    TwoModulesModel m_model;
};

/// Runs one part of the sequences, so that ctest uses all cores.
class TwoModulesTest : public testing::TestWithParam<int> {
protected:
    TwoModulesTest() { folder.writeConfig(); }

    TempDir folder;
    ConsoleCapture console;
};

TEST_P(TwoModulesTest, EveryOrderOfStepsReachesLiveTokensOnly) {
    Stateful a('a');
    Stateful b('b');
    const std::vector<Steps> sequences = makeSequences();
    ASSERT_LT(1000u, sequences.size());
    for (auto i = static_cast<std::size_t>(GetParam()); i < sequences.size(); i += kParts) {
        SCOPED_TRACE(toText(sequences[i]));
        Comparison run(a, b);
        for (const Step& step : sequences[i]) {
            run.take(step);
        }
        run.finish();
        if (HasFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Part, TwoModulesTest, testing::Range(0, kParts));

}  // namespace
}  // namespace zr::test
