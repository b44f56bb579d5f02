// A host with several providers over two modules that takes any steps in any order, chosen by the
// input. Modules, proxies and certificates of the host may call it back in the middle of a call.
//
// A model of the objects' lives (lives.h) predicts which tokens are alive. A call on a token may
// reach the session of this token only; a token whose module was unloaded must fail without a call.
#pragma once

#include <deque>
#include <memory>

#include "tests/fuzz/host_objects.h"
#include "tests/fuzz/input.h"
#include "tests/fuzz/lives.h"

namespace zr::fuzz {

class Sequence {
public:
    Sequence(Input& input, Modules& modules);
    Sequence(const Sequence&) = delete;
    Sequence& operator=(const Sequence&) = delete;

    /// One call of one operation, with what it calls back.
    void step();
    /// Releases everything.
    void finish();

private:
    /// What the library is doing for the host; the host may be called back in the middle.
    class Call;

    /// A reference for the time of a call: hosts hold one on what they call.
    template <class H>
    class Held {
    public:
        Held(Sequence& sequence, const H& handle) : m_sequence(sequence), m_handle(handle) {}
        Held(const Held&) = delete;
        Held& operator=(const Held&) = delete;
        ~Held() { m_sequence.drop(std::move(m_handle)); }
        const H* operator->() const { return &m_handle; }

    private:
        Sequence& m_sequence;
        H m_handle;
    };

    template <class H>
    using List = std::deque<H>;
    static constexpr std::size_t kMostProviders = 3;
    static constexpr std::size_t kMostObjects = 6;

    template <class H>
    const H* any(const List<H>& handles) {
        return handles.empty() ? nullptr : &handles[m_input.below(handles.size())];
    }
    /// Keeps what an operation opened, unless there are many of its kind.
    template <class H>
    void keep(List<H>& handles, H made);
    template <class Life, class Interface>
    void drop(Handle<Interface, Life> handle, bool mayCallBack = false);
    template <class H>
    void releaseAny(List<H>& handles);
    void release();

    void useProvider(const Provider& used);
    void load(const Held<Provider>& provider);
    void unload(const Held<Provider>& provider);
    void openKey(const Held<Provider>& provider);

    void useToken(const Token& used);
    void readLabel(const Held<Token>& token);
    void verifyPin(const Held<Token>& token);
    void modifyPin(const Held<Token>& token);
    void createFile(const Held<Token>& token);
    void openFile(const Held<Token>& token);
    void removeFile(const Held<Token>& token);
    void openContainer(const Held<Token>& token);
    void countContainers(const Held<Token>& token);
    void sign(const Held<Token>& token);
    void useFile(const Child<IKeyFile>& used);
    void useContainer(const Child<IKeyContainer>& used);
    void useCertificate(const Child<IKeyCertificate>& used);

    void callByName();
    void useProxy(IDispatch* object);
    template <class H>
    void callByName(const H& used, const char* name);

    /// The module or an object of the host calls the host.
    void callBack();
    HRESULT answerAsProxy();
    void called(const zr::test::StatefulCall& call, bool isEnd);
    void applyAllowed();
    std::size_t callCount() const;

    Input& m_input;
    Modules& m_modules;
    bool m_modulesCallBack;
    Call* m_call = nullptr;
    List<Provider> m_providers;
    List<Token> m_tokens;
    List<Child<IKeyFile>> m_files;
    List<Child<IKeyContainer>> m_containers;
    List<Child<IKeyCertificate>> m_certificates;
    std::deque<ComRef<HostProxy>> m_proxies;
};

}  // namespace zr::fuzz
