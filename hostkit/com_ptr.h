#pragma once

#include <utility>

#include "host/unknown.h"

namespace lumiset::hostkit {

/// Holds one reference to an interface and gives it back. One pointer is used by one thread at a time; its copies may
/// be used by others, as objects count their references atomically.
template <class Interface>
class ComPtr {
public:
    ComPtr() = default;
    /// Takes over the reference that the caller was given, as from a create call.
    static ComPtr adopt(Interface* object) {
        ComPtr pointer;
        pointer.m_object = object;
        return pointer;
    }
    /// Takes a reference of its own to an object that somebody else holds, or null.
    static ComPtr held(Interface* object) {
        if (object != nullptr) {
            object->AddRef();
        }
        return adopt(object);
    }
    ComPtr(const ComPtr& other) : m_object(other.m_object) {
        if (m_object != nullptr) {
            m_object->AddRef();
        }
    }
    ComPtr(ComPtr&& other) noexcept : m_object(std::exchange(other.m_object, nullptr)) {}
    ComPtr& operator=(ComPtr other) noexcept {
        std::swap(m_object, other.m_object);
        return *this;
    }
    ~ComPtr() {
        if (m_object != nullptr) {
            m_object->Release();
        }
    }

    [[nodiscard]] Interface* get() const { return m_object; }
    Interface* operator->() const { return m_object; }
    explicit operator bool() const { return m_object != nullptr; }

    /// Asks the object for another interface; empty when it does not have it.
    template <class Other>
    [[nodiscard]] ComPtr<Other> query() const {
        void* out = nullptr;
        if (m_object == nullptr || m_object->QueryInterface(Other::kId, &out) != kResultOk) {
            return {};
        }
        return ComPtr<Other>::adopt(static_cast<Other*>(out));
    }

private:
    Interface* m_object = nullptr;
};

}  // namespace lumiset::hostkit
