// Watches the task allocator through its spy interface.
#include "tests/allocation/windows/malloc_spy.h"

#include <windows.h>

#include <objidl.h>
#include <oleauto.h>

#include "tests/allocation/allocation_count.h"

// Documented, but declared in no header of mingw-w64.
extern "C" void STDAPICALLTYPE SetOaNoCache();

namespace zr::test {
namespace {

/// Lives as long as the process. The allocator calls it with its lock held.
class MallocSpy final : public IMallocSpy {
public:
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
        if (iid != IID_IUnknown && iid != IID_IMallocSpy) {
            *out = nullptr;
            return E_NOINTERFACE;
        }
        *out = this;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }

    SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T size) override {
        return beginAllocation(__builtin_return_address(0), &m_isNoted) ? size : 0;
    }
    void* STDMETHODCALLTYPE PostAlloc(void* block) override { return note(block); }

    void* STDMETHODCALLTYPE PreFree(void* block, BOOL) override {
        forgetBlock(block);
        return block;
    }
    void STDMETHODCALLTYPE PostFree(BOOL) override {}

    SIZE_T STDMETHODCALLTYPE PreRealloc(void* block, SIZE_T size, void** passed, BOOL) override {
        *passed = block;
        if (!beginAllocation(__builtin_return_address(0), &m_isNoted)) {
            return 0;
        }
        forgetBlock(block);
        return size;
    }
    void* STDMETHODCALLTYPE PostRealloc(void* block, BOOL) override { return note(block); }

    void* STDMETHODCALLTYPE PreGetSize(void* block, BOOL) override { return block; }
    SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T size, BOOL) override { return size; }
    void* STDMETHODCALLTYPE PreDidAlloc(void* block, BOOL) override { return block; }
    int STDMETHODCALLTYPE PostDidAlloc(void*, BOOL, int isOwn) override { return isOwn; }
    void STDMETHODCALLTYPE PreHeapMinimize() override {}
    void STDMETHODCALLTYPE PostHeapMinimize() override {}

private:
    void* note(void* block) {
        if (m_isNoted && block) {
            noteBlock(block);
        }
        return block;
    }

    bool m_isNoted = false;
};

}  // namespace

void watchTaskMemory() {
    static MallocSpy s_spy;
    static const HRESULT s_registered = CoRegisterMallocSpy(&s_spy);
    static_cast<void>(s_registered);
    SetOaNoCache();  // freed strings would come back without an allocation
}

}  // namespace zr::test
