// ZComponentImpl: the chain of proxies that add members to an object.
#include <cstdlib>
#include <new>

#include "runtime/bounded_text.h"
#include "runtime/component_impl.h"
#include "runtime/diagnostics.h"

using zr::consoleOut;

namespace {

// Unsigned arithmetic: the sum of an id and an offset may wrap.
DISPID addOffset(DISPID id, std::int32_t offset) {
    return static_cast<DISPID>(static_cast<ULONG>(id) + static_cast<ULONG>(offset));
}

DISPID subtractOffset(DISPID id, std::int32_t offset) {
    return static_cast<DISPID>(static_cast<ULONG>(id) - static_cast<ULONG>(offset));
}

/// One id for each name that a proxy is asked for, 0 at first. The system zeroes large blocks only
/// when they are written, so a huge count costs nothing by itself.
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

    /// @return null when out of memory.
    DISPID* get() const { return m_ids; }

private:
    static constexpr UINT kFew = 16;

    DISPID m_few[kFew] = {};
    DISPID* m_ids;
};

}  // namespace

/// A walk through the chain. The proxies it asks may change the chain. The walk keeps the node it
/// asked last; when that node is removed, it keeps the node before instead. Nodes added during the
/// walk are reached, but not after a removal: proxies that remove and add each other would never
/// end the walk.
class ZComponentImpl::ProxyWalk {
public:
    // Inlined, the registration looks to g++ 12 as if a dangling pointer stayed in the object.
    [[gnu::noinline]] explicit ProxyWalk(ZComponentImpl* object)
        : m_object(object), m_outer(object->m_pWalks) {
        object->m_pWalks = this;
    }
    ProxyWalk(const ProxyWalk&) = delete;
    ProxyWalk& operator=(const ProxyWalk&) = delete;
    ~ProxyWalk() { m_object->m_pWalks = m_outer; }

    /// The next node, or null at the end.
    const ProxyDispatchInfo* next() {
        if (m_hasLast && m_current == m_last) {
            return nullptr;
        }
        const ProxyDispatchInfo* node = m_current ? m_current->pNext : m_object->m_pHead;
        if (node) {
            m_current = node;
        }
        return node;
    }

    /// Call before a node is unlinked.
    /// @param previous  the node before it; null for the head.
    void forget(const ProxyDispatchInfo* node, const ProxyDispatchInfo* previous) {
        if (!m_hasLast) {
            m_hasLast = true;
            m_last = m_object->m_pTail;
        }
        if (m_last == node) {
            m_last = previous;
        }
        if (m_current == node) {
            m_current = previous;
        }
    }

    ProxyWalk* outer() const { return m_outer; }

private:
    ZComponentImpl* m_object;
    ProxyWalk* m_outer;
    const ProxyDispatchInfo* m_current = nullptr;  ///< null before the head
    const ProxyDispatchInfo* m_last = nullptr;     ///< where the walk ends; null before the head
    bool m_hasLast = false;
};

/// Asks the proxies of a stage, in the order of the chain, until one answers true.
template <class Ask>
bool ZComponentImpl::AnyProxy(int stage, Ask ask) {
    if (!m_pHead) {
        return false;
    }
    ProxyWalk walk(this);
    while (const ProxyDispatchInfo* node = walk.next()) {
        if (node->nStage != stage) {
            continue;
        }
        IDispatch* const proxy = node->pDispatch;
        proxy->AddRef();  // the proxy may remove itself, and the chain may hold its last reference
        const bool hasAnswered = ask(*proxy, std::int32_t{node->nIdOffset});
        proxy->Release();
        if (hasAnswered) {
            return true;
        }
    }
    return false;
}

/// Asks the proxies of a stage for a name.
/// @param found  receives the id; untouched when no proxy knows the name.
/// @return false when out of memory to ask a proxy.
bool ZComponentImpl::AskProxies(int stage, const GUID& riid, OLECHAR** names, UINT count, LCID lcid,
                                std::optional<DISPID>* found) {
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
        zr::appendText(node->szName, name);  // stays empty when the name does not fit
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
    ProxyDispatchInfo* previous = nullptr;
    ProxyDispatchInfo* node = proxy ? m_pHead : nullptr;
    while (node && node->pDispatch != proxy) {
        previous = node;
        node = node->pNext;
    }
    if (!node) {
        return 0;
    }
    RemoveNode(node, previous);
    return 1;
}

/// Unlinks a node, releases its proxy and frees it.
/// @param previous  the node before it; null for the head.
void ZComponentImpl::RemoveNode(ProxyDispatchInfo* node, ProxyDispatchInfo* previous) {
    for (ProxyWalk* walk = m_pWalks; walk; walk = walk->outer()) {
        walk->forget(node, previous);
    }
    if (previous) {
        previous->pNext = node->pNext;
    } else {
        m_pHead = node->pNext;
    }
    if (node == m_pTail) {
        m_pTail = previous;
    }
    // Last, as the release may change the chain.
    node->pDispatch->Release();
    delete node;
}

ProxyDispatchInfo* ZComponentImpl::FindPDI(IDispatch* proxy) const {
    ProxyDispatchInfo* node = m_pHead;
    while (node && node->pDispatch != proxy) {
        node = node->pNext;
    }
    return node;
}

void ZComponentImpl::ClearPDI() {
    while (m_pHead) {
        RemoveNode(m_pHead, nullptr);
    }
}

void ZComponentImpl::PrintPDI() const {
    // Nothing is printed per node; hosts know the closing line.
    consoleOut("-------------PrintPDI End----------------\n");
}
