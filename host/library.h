// What the command asks of the component library itself: a provider, and names for its results.
#pragma once

#include <zrkey/zrkey.h>

#include <string>
#include <utility>

namespace zr::host {

/// One reference to an object of the library.
template <typename T>
class ComRef {
public:
    ComRef() = default;
    ComRef(const ComRef& other) : m_object(other.m_object) {
        if (m_object != nullptr) {
            m_object->AddRef();
        }
    }
    ComRef(ComRef&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComRef& operator=(ComRef other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComRef() { reset(nullptr); }

    T* get() const { return m_object; }
    T* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }
    /// Takes over the caller's reference.
    void reset(T* object) {
        T* old = std::exchange(m_object, object);
        if (old != nullptr) {
            old->Release();
        }
    }
    /// Gives the reference up to the caller.
    T* release() { return std::exchange(m_object, nullptr); }
    /// For an out argument that hands out a reference.
    void** receive() {
        reset(nullptr);
        return reinterpret_cast<void**>(&m_object);
    }

private:
    T* m_object = nullptr;
};

/// Makes a provider through the library's class factory.
/// @param provider  receives it; null on failure.
HRESULT createProvider(ComRef<ITokenProvider>& provider);

/// The name of a result; empty when it has none here.
std::string resultName(HRESULT result);

/// "0x80004005"
std::string resultNumber(HRESULT result);

/// A result for people: "E_FAIL (0x80004005)", or the number alone when it has no name here.
std::string resultText(HRESULT result);

}  // namespace zr::host
