// ZComponentImpl: the chain of proxies that add members to an object.
#include <cstdlib>
#include <new>

#include "runtime/bounded_text.h"
#include "runtime/component_impl.h"
#include "runtime/console.h"

using zr::consoleOut;

namespace {

// Ids are summed without a sign: an offset near either end of the range wraps.
DISPID addOffset(DISPID id, std::int32_t offset) {
    return static_cast<DISPID>(static_cast<ULONG>(id) + static_cast<ULONG>(offset));
}

DISPID subtractOffset(DISPID id, std::int32_t offset) {
    return static_cast<DISPID>(static_cast<ULONG>(id) - static_cast<ULONG>(offset));
}

/// Room for what a proxy writes: one id, 0 at first, for each of the names it is asked for. Memory
/// for many is zeroed by the system, so a count without as many names costs only what is written.
class ProxyIds {
public:
    explicit ProxyIds(UINT count)
        : m_ids(count <= kFew ? m_few : static_cast<DISPID*>(std::calloc(count, sizeof(DISPID)))) {}
    ProxyIds(const ProxyIds&) = delete;
    ProxyIds& operator=(const ProxyIds&) = delete;
    ~ProxyIds() {
        if (m_ids != m_few) {
            std::free(m_ids);
        }
    }

    /// @return null when memory is short.
    DISPID* get() const { return m_ids; }

private:
    static constexpr UINT kFew = 16;

    DISPID m_few[kFew] = {};
    DISPID* m_ids;
};

}  // namespace

/// Asks the proxies of a stage, in the order of the chain, until one answers true.
template <class Ask>
bool ZComponentImpl::AnyProxy(int stage, Ask ask) const {
    for (const ProxyDispatchInfo* node = m_pHead; node; node = node->pNext) {
        if (node->nStage != stage) {
            continue;
        }
        IDispatch* const proxy = node->pDispatch;
        proxy->AddRef();  // it may take itself out of the chain, which may hold the last reference
        const bool hasAnswered = ask(*proxy, std::int32_t{node->nIdOffset});
        const bool isStillThere = FindPDI(proxy) == node;
        proxy->Release();
        if (hasAnswered || !isStillThere) {
            return hasAnswered;  // where the walk was is gone with the node
        }
    }
    return false;
}

/// Looks a name up with the proxies of a stage.
/// @param found  receives the id; untouched when no proxy knows the name.
/// @return false when memory is short: a proxy could not be asked.
bool ZComponentImpl::AskProxies(int stage, const GUID& riid, OLECHAR** names, UINT count, LCID lcid,
                                std::optional<DISPID>* found) const {
    bool isAskable = true;
    AnyProxy(stage, [&](IDispatch& proxy, std::int32_t offset) {
        const ProxyIds room(count);
        DISPID* const ids = room.get();
        if (!ids) {
            isAskable = false;
            return true;
        }
        const HRESULT result = proxy.GetIDsOfNames(riid, names, count, lcid, ids);
        if (SUCCEEDED(result) && ids[0] > 0) {
            *found = addOffset(ids[0], offset);
        }
        return found->has_value();
    });
    return isAskable;
}

HRESULT ZComponentImpl::CallProxyDispatch(int stage, DISPID id, const GUID& riid, LCID lcid,
                                          WORD flags, DISPPARAMS* params, VARIANT* result,
                                          EXCEPINFO* excep, UINT* argErr) {
    const bool answered = AnyProxy(stage, [&](IDispatch& proxy, std::int32_t offset) {
        return SUCCEEDED(proxy.Invoke(subtractOffset(id, offset), riid, lcid, flags, params, result,
                                      excep, argErr));
    });
    return answered ? S_OK : E_FAIL;
}

BOOL ZComponentImpl::AddProxyDispatch(IDispatch* proxy, LONG idOffset, int stage,
                                      const char* name) {
    if (!proxy || FindPDI(proxy)) {
        return 0;
    }
    auto* node = new (std::nothrow) ProxyDispatchInfo();
    if (!node) {
        return 0;
    }
    node->pDispatch = proxy;
    node->nIdOffset = idOffset;
    node->nStage = stage;
    if (name) {
        zr::appendText(node->szName, name);  // one that does not fit leaves it empty
    }
    if (m_pTail) {
        m_pTail->pNext = node;
    } else {
        m_pHead = node;
    }
    m_pTail = node;
    proxy->AddRef();
    return 1;
}

BOOL ZComponentImpl::RemoveProxyDispatch(IDispatch* proxy) {
    ProxyDispatchInfo* node = proxy ? FindPDI(proxy) : nullptr;
    if (!node) {
        return 0;
    }
    if (node == m_pHead) {
        m_pHead = node->pNext;
        if (!m_pHead) {
            m_pTail = nullptr;
        }
    } else {
        ProxyDispatchInfo* previous = m_pHead;
        while (previous->pNext != node) {
            previous = previous->pNext;
        }
        previous->pNext = node->pNext;
        if (node == m_pTail) {
            m_pTail = previous;
        }
    }
    proxy->Release();
    delete node;
    return 1;
}

ProxyDispatchInfo* ZComponentImpl::FindPDI(IDispatch* proxy) const {
    ProxyDispatchInfo* node = m_pHead;
    while (node && node->pDispatch != proxy) {
        node = node->pNext;
    }
    return node;
}

void ZComponentImpl::ClearPDI() {
    while (ProxyDispatchInfo* node = m_pHead) {
        m_pHead = node->pNext;
        if (!m_pHead) {
            m_pTail = nullptr;  // before the release, which may add a proxy
        }
        node->pDispatch->Release();
        delete node;
    }
}

void ZComponentImpl::PrintPDI() const {
    // Nothing is printed for a node; the closing line alone tells that the chain was walked.
    consoleOut("-------------PrintPDI End----------------\n");
}
