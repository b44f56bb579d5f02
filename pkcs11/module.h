// Module: a loaded Cryptoki module and the private copy of its entry points.
//
// A provider holds the module that it loaded last. A session keeps its module, whatever the
// provider loads later. Sessions call the module (pkcs11/session.h); a Module calls it only to
// start and to finalise it.
#pragma once

#include <memory>

#include "pkcs11/cryptoki_types.h"
#include "pkcs11/module_epoch.h"
#include "platform/kernel.h"

class Module {
public:
    struct Started;
    class Use;

    /// Copies the entry points of a loaded library and initialises it as a Cryptoki module.
    /// @param library  taken over; freed when the module cannot be started.
    static Started start(HMODULE library);

    /// For start only.
    explicit Module(HMODULE library);
    Module(const Module&) = delete;
    Module& operator=(const Module&) = delete;
    /// Frees the copy of the entry points. The library stays loaded: unload() is a host's decision.
    ~Module();

    /// Finalises the module for the whole process and frees the library. Every session of this
    /// Cryptoki module is dead afterwards, whichever provider opened it. Called from within a call
    /// into the module, it leaves the library to the end of that call.
    void unload();

    /// @return the function; null when the module has no such entry point or was unloaded.
    template <class Function>
    Function entry(Function CK_FUNCTIONS::*member) const {
        return m_pFunctionTable ? m_pFunctionTable->*member : nullptr;
    }

    /// Changes whenever the library finalises this Cryptoki module.
    std::uint64_t epoch() const { return m_epoch.value(); }

private:
    HRESULT copyFunctionList();
    HRESULT initialize() const;
    void freeFunctionTable();
    void freeUnloadedLibrary();

    HMODULE m_hModule;
    unsigned int m_calls = 0;
    bool m_isUnloaded = false;
    CK_FUNCTIONS* m_pFunctionTable = nullptr;
    ModuleEpoch m_epoch;
};

/// Keeps the library in memory during a call into it: a module may call back, and the host may
/// unload it then.
class Module::Use {
public:
    explicit Use(Module& module) : m_module(module) { ++m_module.m_calls; }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    ~Use() {
        --m_module.m_calls;
        m_module.freeUnloadedLibrary();
    }

private:
    Module& m_module;
};

struct Module::Started {
    /// E_OUTOFMEMORY when out of memory or the library has no usable function list; E_FAIL when the
    /// module does not initialise.
    HRESULT result;
    /// Null on failure.
    std::shared_ptr<Module> module;
};
