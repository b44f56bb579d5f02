// The binary contract of scriptable objects: packed rows and nodes, slots, interfaces.
#include "tests/support/hresult.h"
#include "tests/unit/runtime/thing.h"

namespace zr::test {
namespace {

using ComponentLayoutTest = ThingTest;

TEST_F(ComponentLayoutTest, RowsArePacked) {
    EXPECT_EQ(0u, offsetof(DispatchInfo, nId));
    EXPECT_EQ(4u, offsetof(DispatchInfo, szName));
    EXPECT_EQ(204u, offsetof(DispatchInfo, nType));
    EXPECT_EQ(208u, offsetof(DispatchInfo, pfnInvoke));
    EXPECT_EQ(224u, offsetof(DispatchInfo, vtResult));
    EXPECT_EQ(226u, offsetof(DispatchInfo, vtArgs));
    EXPECT_EQ(426u, sizeof(DispatchInfo));
}

TEST_F(ComponentLayoutTest, NodesArePacked) {
    EXPECT_EQ(0u, offsetof(ProxyDispatchInfo, pDispatch));
    EXPECT_EQ(8u, offsetof(ProxyDispatchInfo, nIdOffset));
    EXPECT_EQ(12u, offsetof(ProxyDispatchInfo, nStage));
    EXPECT_EQ(16u, offsetof(ProxyDispatchInfo, szName));
    EXPECT_EQ(36u, offsetof(ProxyDispatchInfo, pNext));
    EXPECT_EQ(44u, sizeof(ProxyDispatchInfo));
}

/// The virtual table of the component part, slot by slot.
using Slot = void (*)();
Slot* slotsOf(void* object) {
    return *static_cast<Slot**>(object);
}

TEST_F(ComponentLayoutTest, SlotsAreInOrder) {
    // In the component part the two destructors come first, then the operations.
    auto* part = static_cast<ZComponentImpl*>(thing);
    using TypeInfoCount = HRESULT(STDMETHODCALLTYPE*)(void*, UINT*);
    using Supports = HRESULT(STDMETHODCALLTYPE*)(void*, const GUID&);
    using Count = int (*)(void*);
    using Rows = DispatchInfo* (*)(void*);
    EXPECT_HR(E_NOTIMPL, reinterpret_cast<TypeInfoCount>(slotsOf(part)[3])(part, nullptr));
    EXPECT_HR(S_OK, reinterpret_cast<Supports>(slotsOf(part)[7])(part, IID_NULL));
    EXPECT_EQ(Thing::s_rows, reinterpret_cast<Rows>(slotsOf(part)[9])(part));
    EXPECT_EQ(4, reinterpret_cast<Count>(slotsOf(part)[10])(part));
    // In the primary interface: seven common operations, Own, two destructors, then the rest.
    using Own = HRESULT(STDMETHODCALLTYPE*)(void*, INT);
    EXPECT_HR(5, reinterpret_cast<Own>(slotsOf(thing)[7])(thing, 5));
    EXPECT_HR(S_OK, reinterpret_cast<Supports>(slotsOf(thing)[10])(thing, IID_NULL));
}

TEST_F(ComponentLayoutTest, ErrorInterfaceSharesTheReferenceCount) {
    auto* face = static_cast<ISupportErrorInfo*>(thing);
    EXPECT_EQ(2u, face->AddRef());
    void* other = nullptr;
    EXPECT_HR(S_OK, face->QueryInterface(IID_ISupportErrorInfo, &other));
    EXPECT_EQ(face, other);
    EXPECT_EQ(4u, thing->AddRef());
    other = this;
    EXPECT_HR(E_NOTIMPL, face->QueryInterface(IID_IUnknown, &other));
    EXPECT_EQ(this, other);
    EXPECT_HR(E_INVALIDARG, face->QueryInterface(IID_ISupportErrorInfo, nullptr));
    EXPECT_HR(S_OK, face->InterfaceSupportsErrorInfo(IID_NULL));
    EXPECT_EQ(3u, face->Release());
    EXPECT_EQ(2u, face->Release());
    EXPECT_EQ(1u, face->Release());
}

}  // namespace
}  // namespace zr::test
