// A small model of two providers, two modules and the tokens opened on them: which steps a host can
// take, and whether they succeed. It knows what is loaded, finalised and logged in, but no Cryptoki
// calls.
#pragma once

#include <string>
#include <vector>

namespace zr::test {

inline constexpr int kProviders = 2;
inline constexpr int kModules = 2;
inline constexpr int kSlots = 2;

struct Step {
    enum Kind { kLoad, kUnload, kOpen, kUse, kReleaseToken, kReleaseProvider };

    Kind kind;
    int object;     ///< the number of the provider or, from kUse on, of the token
    int other = 0;  ///< the module that is loaded, the slot that is opened
};

std::string toText(const Step& step);

class TwoModulesModel {
public:
    struct Provider {
        bool isHeld = true;  ///< by the host
        int module = -1;     ///< what it loaded last, as long as it is not unloaded
        int tokens = 0;      ///< opened from it and held by the host
    };
    struct Token {
        int provider;
        int module;
        int slot;
        bool isHeld = true;
        bool isAlive = true;
        bool hasLoggedIn = false;  ///< its last VerifyPIN succeeded
    };
    struct Module {
        bool isInitialized = false;
        bool isLoggedIn[kSlots] = {};
        int sessions[kSlots] = {};
        int references = 0;     ///< how often the library has it loaded
        int finalizations = 0;  ///< calls of C_Finalize
    };

    /// The steps that make sense now. Providers, modules and slots that nobody has used yet are
    /// alike, so only the first of them is offered.
    /// @param mostTokens  how many are held at once.
    std::vector<Step> steps(int mostTokens) const;
    /// @return whether the step succeeds.
    bool take(const Step& step);
    /// The same text for states that no step can distinguish, whatever the numbers in them.
    std::string key() const;

    const Provider& provider(int number) const { return m_providers[number]; }
    const Token& token(int number) const { return m_tokens[static_cast<std::size_t>(number)]; }
    int tokenCount() const { return static_cast<int>(m_tokens.size()); }
    const Module& module(int number) const { return m_modules[number]; }
    /// Whether the token can sign: both the token object and the module count it as logged in.
    bool isLoggedIn(int token) const;

private:
    std::string keyAs(int renaming) const;
    void unload(int provider);
    void closeToken(Token& token);
    void releaseFromProvider(int provider);

    Provider m_providers[kProviders];
    Module m_modules[kModules];
    std::vector<Token> m_tokens;
};

}  // namespace zr::test
