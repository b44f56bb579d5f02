// The objects of a collection one after the other, for "For Each".
#include "host/automation/enumerator.h"

#include <algorithm>
#include <mutex>
#include <new>
#include <optional>

#include "host/automation/object_base.h"
#include "host/automation/objects.h"
#include "host/automation/variants.h"

namespace zr::automation {
namespace {

using Items = std::vector<host::ObjectRef>;

class Enumerator final : public IEnumVARIANT {
public:
    Enumerator(Items items, std::size_t next) : m_items(std::move(items)), m_next(next) {
        m_base.makeMarshaler(this);
    }
    Enumerator(const Enumerator&) = delete;
    Enumerator& operator=(const Enumerator&) = delete;

    STDMETHODIMP QueryInterface(REFIID iid, void** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        if (iid == IID_IMarshal) {
            return m_base.getMarshal(result);
        }
        if (iid != IID_IUnknown && iid != IID_IEnumVARIANT) {
            return E_NOINTERFACE;
        }
        AddRef();
        *result = static_cast<IEnumVARIANT*>(this);
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return m_base.addReference(); }
    STDMETHODIMP_(ULONG) Release() override {
        const ULONG left = m_base.dropReference();
        if (left == 0) {
            delete this;
        }
        return left;
    }

    STDMETHODIMP Next(ULONG count, VARIANT* results, ULONG* fetched) override {
        if (fetched) {
            *fetched = 0;
        }
        if (!results || (!fetched && count != 1)) {
            return E_INVALIDARG;
        }
        for (ULONG i = 0; i < count; ++i) {
            VariantInit(&results[i]);
        }
        const std::optional<ULONG> given = take(count, results);
        if (!given) {
            return E_OUTOFMEMORY;
        }
        if (fetched) {
            *fetched = *given;
        }
        return *given == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG count) override {
        const std::lock_guard lock(libraryLock());
        const std::size_t skipped = std::min<std::size_t>(count, m_items.size() - m_next);
        m_next += skipped;
        return skipped == count ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override {
        const std::lock_guard lock(libraryLock());
        m_next = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnumVARIANT** result) override {
        if (!result) {
            return E_POINTER;
        }
        *result = nullptr;
        try {
            const std::lock_guard lock(libraryLock());
            *result = new Enumerator(m_items, m_next);
            return S_OK;
        } catch (...) {
            return E_OUTOFMEMORY;
        }
    }

private:
    ~Enumerator() {
        const std::lock_guard lock(libraryLock());
        m_items.clear();
    }

    /// Hands out objects.
    /// @return their number; nullopt when out of memory: none was handed out.
    std::optional<ULONG> take(ULONG count, VARIANT* results) noexcept {
        try {
            const std::lock_guard lock(libraryLock());
            const auto given =
                static_cast<ULONG>(std::min<std::size_t>(count, m_items.size() - m_next));
            for (ULONG i = 0; i < given; ++i) {
                store(m_items[m_next + i], true, results[i]);
            }
            m_next += given;
            return given;
        } catch (...) {
            std::for_each_n(results, count, [](VARIANT& made) { VariantClear(&made); });
            return std::nullopt;
        }
    }

    ObjectBase m_base;
    Items m_items;
    std::size_t m_next;  ///< the index of the object that comes next
};

}  // namespace

zrkey::ComRef<IUnknown> makeEnumerator(Items items) {
    zrkey::ComRef<IUnknown> made;
    made.reset(new Enumerator(std::move(items), 0));
    return made;
}

}  // namespace zr::automation
