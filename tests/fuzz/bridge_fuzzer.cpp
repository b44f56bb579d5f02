// Calls of a Windows program through the bridge, to a module that answers from the input.
#include <array>
#include <cstring>
#include <vector>

#include "tests/fuzz/fuzz_module.h"
#include "tests/fuzz/objects.h"
#include "tests/support/bridge/calls.h"

extern "C" [[gnu::ms_abi]] zr::bridge::windows::Ulong C_GetFunctionList(
    zr::bridge::windows::FunctionList** list);

namespace zr::fuzz {
namespace {

using bridge::Handle;
using bridge::Ulong;
using bridge::windows::Attribute;

/// Entry points by their index in the list.
enum Place {
    kInfoAt = 2,
    kSlotListAt = 4,
    kSlotInfoAt = 5,
    kTokenInfoAt = 6,
    kMechanismListAt = 7,
    kMechanismInfoAt = 8,
    kOpenAt = 12,
    kSessionInfoAt = 15,
    kCreateAt = 20,
    kCopyAt = 21,
    kDestroyAt = 22,
    kReadAt = 24,
    kWriteAt = 25,
    kFindInitAt = 26,
    kFindAt = 27,
    kFindFinalAt = 28,
    kSignInitAt = 42,
    kSignAt = 43,
    kGenerateKeyAt = 58,
    kGenerateKeyPairAt = 59,
    kUnwrapKeyAt = 61,
    kDeriveKeyAt = 62
};

/// A buffer for a call, with a guard after it.
class Room {
public:
    explicit Room(std::size_t size) : m_bytes(size + kGuard, '#') {}
    ~Room() {
        for (std::size_t i = m_bytes.size() - kGuard; i < m_bytes.size(); ++i) {
            expect(m_bytes[i] == '#');
        }
    }
    Room(Room&&) = default;
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;
    void* data() { return m_bytes.data(); }
    Ulong size() const { return static_cast<Ulong>(m_bytes.size() - kGuard); }

private:
    static constexpr std::size_t kGuard = 8;
    std::vector<char> m_bytes;
};

/// A template of arbitrary types, with and without room for the values.
class Template {
public:
    explicit Template(Input& input) {
        static constexpr Ulong types[] = {0,     1,     3,     0x11,       0x80,
                                          0x100, 0x102, 0x121, 0x40000600, 0x40000211};
        const std::size_t count = input.below(5);
        m_rooms.reserve(count);
        for (std::size_t i = 0; i < count; ++i) {
            const Ulong type =
                input.flag() ? types[input.below(std::size(types))] : input.number<Ulong>();
            Room& room = m_rooms.emplace_back(input.below(40));
            const std::string bytes = input.text(room.size());
            bytes.copy(static_cast<char*>(room.data()), bytes.size());
            const bool isQuery = input.flag();
            m_attributes.push_back({type, isQuery ? nullptr : room.data(),
                                    isQuery ? input.number<Ulong>() : room.size()});
        }
    }
    Attribute* data() { return m_attributes.data(); }
    Ulong count() const { return static_cast<Ulong>(m_attributes.size()); }

private:
    std::vector<Room> m_rooms;
    std::vector<Attribute> m_attributes;
};

template <class... Arguments>
Ulong call(Place place, Arguments... arguments) {
    using Function = Ulong(__attribute__((ms_abi))*)(Arguments...);
    static bridge::windows::FunctionList* list = nullptr;
    expect(list || C_GetFunctionList(&list) == CKR_OK);
    return reinterpret_cast<Function>(list->functions[place])(arguments...);
}

void getLists(Input& input) {
    std::array<Ulong, 8> room{};
    room[6] = room[7] = 0x23232323;
    Ulong count = input.flag() ? static_cast<Ulong>(input.below(7)) : input.number<Ulong>();
    const bool isSafe = count <= 6;
    Ulong* const items = isSafe ? room.data() : nullptr;
    if (input.flag()) {
        call<CK_BBOOL, Handle*, Ulong*>(kSlotListAt, CK_TRUE, reinterpret_cast<Handle*>(items),
                                        &count);
    } else {
        call<Handle, Ulong*, Ulong*>(kMechanismListAt, Handle{1}, items, &count);
    }
    expect(room[6] == 0x23232323 && room[7] == 0x23232323);
}

void findObjects(Input& input) {
    Template search(input);
    call<Handle, Attribute*, Ulong>(kFindInitAt, Handle{1}, search.data(), search.count());
    Room found(4 * input.below(4));
    Ulong count = 0;
    call<Handle, Handle*, Ulong, Ulong*>(kFindAt, Handle{1}, static_cast<Handle*>(found.data()),
                                         found.size() / 4, &count);
    call<Handle>(kFindFinalAt, Handle{1});
}

void readAttributes(Input& input) {
    Template values(input);
    call<Handle, Handle, Attribute*, Ulong>(input.flag() ? kReadAt : kWriteAt, Handle{1},
                                            Handle{input.number<Ulong>()}, values.data(),
                                            values.count());
}

void makeObject(Input& input) {
    Template values(input);
    Handle object{};
    const Handle session{1};
    bridge::windows::Mechanism mechanism = {input.number<Ulong>(), nullptr, 0};
    switch (input.below(6)) {
        case 0:
            call<Handle, Handle, Attribute*, Ulong, Handle*>(
                kCopyAt, session, Handle{2}, values.data(), values.count(), &object);
            break;
        case 1:
            call<Handle, bridge::windows::Mechanism*, Attribute*, Ulong, Handle*>(
                kGenerateKeyAt, session, &mechanism, values.data(), values.count(), &object);
            break;
        case 2: {
            Template others(input);
            Handle other{};
            call<Handle, bridge::windows::Mechanism*, Attribute*, Ulong, Attribute*, Ulong, Handle*,
                 Handle*>(kGenerateKeyPairAt, session, &mechanism, values.data(), values.count(),
                          others.data(), others.count(), &object, &other);
            break;
        }
        case 3:
            call<Handle, bridge::windows::Mechanism*, Handle, CK_BYTE*, Ulong, Attribute*, Ulong,
                 Handle*>(kUnwrapKeyAt, session, &mechanism, Handle{2}, nullptr, 0u, values.data(),
                          values.count(), &object);
            break;
        case 4:
            call<Handle, bridge::windows::Mechanism*, Handle, Attribute*, Ulong, Handle*>(
                kDeriveKeyAt, session, &mechanism, Handle{2}, values.data(), values.count(),
                &object);
            break;
        default:
            call<Handle, Attribute*, Ulong, Handle*>(kCreateAt, session, values.data(),
                                                     values.count(), &object);
    }
    call<Handle, Handle>(kDestroyAt, session, object);
}

void sign(Input& input) {
    bridge::windows::Mechanism mechanism = {6, nullptr, 0};
    call<Handle, bridge::windows::Mechanism*, Handle>(kSignInitAt, Handle{1}, &mechanism,
                                                      Handle{2});
    Room signature(input.below(200));
    Ulong length = signature.size();
    call<Handle, CK_BYTE*, Ulong, CK_BYTE*, Ulong*>(
        kSignAt, Handle{1}, nullptr, 0u, static_cast<CK_BYTE*>(signature.data()), &length);
}

template <class Info, class... Arguments>
void readInfo(Place place, Arguments... arguments) {
    Room info(sizeof(Info));
    call<Arguments..., Info*>(place, arguments..., static_cast<Info*>(info.data()));
}

void tellInfo(Input& input) {
    const Handle handle{input.number<Ulong>()};
    readInfo<bridge::windows::Info>(kInfoAt);
    readInfo<bridge::windows::SlotInfo>(kSlotInfoAt, handle);
    readInfo<bridge::windows::TokenInfo>(kTokenInfoAt, handle);
    readInfo<bridge::windows::SessionInfo>(kSessionInfoAt, handle);
    readInfo<bridge::windows::MechanismInfo>(kMechanismInfoAt, handle, Ulong{6});
}

void openSession(Input& input) {
    Handle session{};
    void* application = nullptr;
    const Ulong opened = call<Handle, Ulong, void*, void*, Handle*>(
        kOpenAt, Handle{input.number<Ulong>()}, 6u, &application, nullptr, &session);
    expect(opened == CKR_OK || session == Handle{}, "what fails opens no session");
}

}  // namespace
}  // namespace zr::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace zr::fuzz;
    expect(!modulePath().empty());
    Input input(data, size);
    answerFrom(&input);
    static constexpr void (*calls[])(Input&) = {getLists, findObjects, readAttributes, makeObject,
                                                sign,     tellInfo,    openSession};
    while (!input.isAtEnd()) {
        calls[input.below(std::size(calls))](input);
    }
    return 0;
}
