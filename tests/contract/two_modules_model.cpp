// A small model of two providers, two modules and the tokens opened on them.
#include "tests/contract/two_modules_model.h"

#include <algorithm>

namespace zr::test {

std::string toText(const Step& step) {
    static constexpr const char* names[] = {"Load",      "Unload",        "OpenKey",
                                            "use token", "release token", "release provider"};
    std::string text = names[step.kind] + (" " + std::to_string(step.object));
    if (step.kind == Step::kLoad || step.kind == Step::kOpen) {
        text += (step.kind == Step::kLoad ? " module " : " slot ") + std::to_string(step.other);
    }
    return text;
}

std::vector<Step> TwoModulesModel::steps(int mostTokens) const {
    std::vector<Step> steps;
    const auto held = std::count_if(m_tokens.begin(), m_tokens.end(),
                                    [](const Token& token) { return token.isHeld; });
    const bool isLoadedOnce = m_modules[0].references + m_modules[0].finalizations > 0;
    for (int i = 0; i < (isLoadedOnce ? kProviders : 1); ++i) {
        const Provider& own = m_providers[i];
        if (!own.isHeld) {
            continue;
        }
        for (int module = 0; module < (isLoadedOnce ? kModules : 1); ++module) {
            steps.push_back({Step::kLoad, i, module});
        }
        steps.push_back({Step::kUnload, i});
        steps.push_back({Step::kReleaseProvider, i});
        const bool isFirstOfModule =
            std::none_of(m_tokens.begin(), m_tokens.end(),
                         [&](const Token& token) { return token.module == own.module; });
        for (int slot = 0; slot < (isFirstOfModule ? 1 : kSlots); ++slot) {
            if (held < mostTokens) {
                steps.push_back({Step::kOpen, i, slot});
            }
        }
    }
    for (int i = 0; i < tokenCount(); ++i) {
        if (token(i).isHeld) {
            steps.push_back({Step::kUse, i});
            steps.push_back({Step::kReleaseToken, i});
        }
    }
    return steps;
}

bool TwoModulesModel::take(const Step& step) {
    switch (step.kind) {
        case Step::kLoad: {
            // The module that was loaded before stays loaded for ever.
            Module& loaded = m_modules[step.other];
            loaded.isInitialized = true;
            ++loaded.references;
            m_providers[step.object].module = step.other;
            return true;
        }
        case Step::kUnload:
            unload(step.object);
            return true;
        case Step::kOpen: {
            Provider& opener = m_providers[step.object];
            if (opener.module < 0 || !m_modules[opener.module].isInitialized) {
                return false;
            }
            ++opener.tokens;
            ++m_modules[opener.module].sessions[step.other];
            m_tokens.push_back({step.object, opener.module, step.other});
            return true;
        }
        case Step::kUse: {
            Token& used = m_tokens[static_cast<std::size_t>(step.object)];
            used.hasLoggedIn = used.isAlive;
            if (used.isAlive) {
                m_modules[used.module].isLoggedIn[used.slot] = true;
            }
            return used.isAlive;
        }
        case Step::kReleaseToken:
            closeToken(m_tokens[static_cast<std::size_t>(step.object)]);
            return true;
        case Step::kReleaseProvider:
            m_providers[step.object].isHeld = false;
            releaseFromProvider(step.object);
            return true;
    }
    return false;
}

/// Ends every session of the module in the process.
void TwoModulesModel::unload(int provider) {
    const int number = m_providers[provider].module;
    if (number < 0) {
        return;
    }
    m_providers[provider].module = -1;
    const Module before = m_modules[number];
    m_modules[number] = {};
    m_modules[number].references = before.references - 1;
    m_modules[number].finalizations = before.finalizations + 1;
    for (Token& token : m_tokens) {
        token.isAlive = token.isAlive && token.module != number;
    }
}

void TwoModulesModel::closeToken(Token& token) {
    token.isHeld = false;
    if (token.isAlive) {
        Module& own = m_modules[token.module];
        const bool isLast = --own.sessions[token.slot] == 0;
        own.isLoggedIn[token.slot] = own.isLoggedIn[token.slot] && !token.hasLoggedIn && !isLast;
        token.isAlive = false;
    }
    --m_providers[token.provider].tokens;
    releaseFromProvider(token.provider);
}

/// The last reference unloads.
void TwoModulesModel::releaseFromProvider(int provider) {
    if (!m_providers[provider].isHeld && m_providers[provider].tokens == 0) {
        unload(provider);
    }
}

bool TwoModulesModel::isLoggedIn(int number) const {
    const Token& asked = token(number);
    return asked.isAlive && asked.hasLoggedIn && m_modules[asked.module].isLoggedIn[asked.slot];
}

std::string TwoModulesModel::key() const {
    std::string least;
    for (int renaming = 0; renaming < 16; ++renaming) {
        const std::string key = keyAs(renaming);
        least = least.empty() ? key : std::min(least, key);
    }
    return least;
}

/// @param renaming  a set of bits: exchange the providers, the modules, the slots of either module.
std::string TwoModulesModel::keyAs(int renaming) const {
    const auto bit = [renaming](int number) { return renaming >> number & 1; };
    std::string key;
    const auto add = [&key](int number) { key += std::to_string(number) + ","; };
    for (int i = 0; i < kProviders; ++i) {
        const Provider& own = m_providers[i ^ bit(0)];
        add(own.isHeld);
        add(own.module < 0 ? -1 : own.module ^ bit(1));
    }
    for (int i = 0; i < kModules; ++i) {
        const int number = i ^ bit(1);
        const Module& module = m_modules[number];
        add(module.isInitialized);
        // A module that stays loaded behaves as one with any number of references.
        add(module.references > 0);
        add(module.finalizations > 0);
        for (int slot = 0; slot < kSlots; ++slot) {
            add(module.isLoggedIn[slot ^ bit(2 + number)]);
        }
    }
    std::vector<std::string> tokens;
    for (const Token& token : m_tokens) {
        if (token.isHeld) {
            std::string text;
            for (const int number :
                 {token.provider ^ bit(0), token.module ^ bit(1),
                  token.slot ^ bit(2 + token.module), int{token.isAlive}, int{token.hasLoggedIn}}) {
                text += std::to_string(number) + ",";
            }
            tokens.push_back(text);
        }
    }
    std::sort(tokens.begin(), tokens.end());
    for (const std::string& token : tokens) {
        key += token;
    }
    return key;
}

}  // namespace zr::test
