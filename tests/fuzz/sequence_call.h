// One call of the library by the host of a sequence, and what calls open and release.
#pragma once

#include <type_traits>
#include <utility>

#include "tests/fuzz/sequence.h"

namespace zr::fuzz {

class Sequence::Call {
public:
    enum Kind {
        kOrdinary,
        kLoadsOnly,  ///< called back, the host loads and unloads and does nothing else
        kRelease,    ///< not called back while a provider ends
        kDrop,       ///< a release that is not called back
        kQuiet       ///< not called back
    };

    /// @param token  whose session may be reached; null for none.
    Call(Sequence& sequence, std::shared_ptr<TokenLife> token, Kind kind = kOrdinary)
        : m_sequence(sequence),
          m_token(std::move(token)),
          m_kind(kind),
          m_outer(sequence.m_call),
          m_wasAlive(m_token && m_token->isAlive()),
          m_callsBefore(sequence.callCount()) {
        for (const Call* outer = m_outer; outer; outer = outer->m_outer) {
            ++m_depth;
        }
        const std::uint8_t choice =
            m_kind >= kDrop || m_depth >= kDeepest ? std::uint8_t{0} : sequence.m_input.byte();
        m_callBackAfter = choice >= kCallsBackFrom ? (choice - kCallsBackFrom) / 2 : -1;
        sequence.m_call = this;
        sequence.applyAllowed();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;
    ~Call() {
        const bool madeCalls = m_sequence.callCount() != m_callsBefore;
        const bool isRelease = m_kind == kRelease || m_kind == kDrop;
        expect(!m_token || m_wasAlive || m_wasCalledBack || isRelease || !madeCalls,
               "a dead token makes no call");
        m_token.reset();
        m_sequence.m_call = m_outer;
        m_sequence.applyAllowed();
        for (Stateful* module : m_sequence.m_modules.all) {
            for (const std::string& misuse : module->takeMisuses()) {
                expect(false, misuse);
            }
        }
    }

    const std::shared_ptr<TokenLife>& token() const { return m_token; }
    Kind kind() const { return m_kind; }
    /// Whether the token was alive from the beginning to now.
    bool isAlive() const { return m_token && m_token->isAlive(); }
    bool wasAlive() const { return m_wasAlive; }
    /// Whether nobody else did anything meanwhile.
    bool isCertain() const { return !m_wasCalledBack; }
    /// @return true once, when it is time to call back.
    bool takeCallBack() {
        if (m_callBackAfter < 0 || m_callBackAfter-- > 0) {
            return false;
        }
        m_wasCalledBack = true;
        return true;
    }
    /// The session that the call opened.
    CK_SESSION_HANDLE session = 0;

private:
    static constexpr int kDeepest = 3;
    static constexpr int kCallsBackFrom = 192;

    Sequence& m_sequence;
    std::shared_ptr<TokenLife> m_token;
    Kind m_kind;
    Call* m_outer;
    int m_depth = 0;
    bool m_wasAlive;
    std::size_t m_callsBefore;
    int m_callBackAfter = -1;
    bool m_wasCalledBack = false;
};

template <class H>
void Sequence::keep(List<H>& handles, H made) {
    const bool isProvider = std::is_same_v<H, Provider>;
    if (handles.size() < (isProvider ? kMostProviders : kMostObjects)) {
        handles.push_back(std::move(made));
    } else {
        drop(std::move(made));
    }
}

/// Releases a reference; a token's session may be closed then.
template <class Life, class Interface>
void Sequence::drop(Handle<Interface, Life> handle, bool mayCallBack) {
    std::shared_ptr<TokenLife> token;
    if constexpr (std::is_same_v<Life, TokenLife>) {
        token = handle.life;
    }
    const Call call(*this, token, mayCallBack ? Call::kRelease : Call::kDrop);
    handle.object.reset();
    handle.life.reset();
}

template <class H>
void Sequence::releaseAny(List<H>& handles) {
    if (!handles.empty()) {
        const auto chosen =
            handles.begin() + static_cast<std::ptrdiff_t>(m_input.below(handles.size()));
        H handle = std::move(*chosen);
        handles.erase(chosen);
        drop(std::move(handle), true);
    }
}

}  // namespace zr::fuzz
