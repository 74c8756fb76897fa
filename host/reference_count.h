#pragma once

#include <atomic>
#include <cstdint>

#include "host/unknown.h"

namespace lumiset {

/// The count behind `AddRef` and `Release`: born at 1, changed atomically.
class ReferenceCount {
public:
    std::uint32_t add() noexcept { return m_count.fetch_add(1, std::memory_order_relaxed) + 1; }
    /// At 0 the caller deletes the object.
    std::uint32_t release() noexcept { return m_count.fetch_sub(1, std::memory_order_acq_rel) - 1; }

private:
    std::atomic<std::uint32_t> m_count{1};
};

/// Counts the references of an object that offers the interfaces `Bases`.
template <class... Bases>
class Counted : public Bases... {
public:
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return m_references.add(); }
    std::uint32_t LUMISET_CALL Release() noexcept override {
        const std::uint32_t remaining = m_references.release();
        if (remaining == 0) {
            lastReleased();
        }
        return remaining;
    }

protected:
    ~Counted() = default;

private:
    /// Deletes the object, where it does not belong to somebody else.
    virtual void lastReleased() noexcept {}

    ReferenceCount m_references;
};

/// `QueryInterface` of an object with the one interface `Interface` beside `IUnknown`. `onNull` is the status
/// for a null `out`.
template <class Interface>
Result queryOneInterface(Interface* object, const Guid& iid, void** out, Result onNull) noexcept {
    if (out == nullptr) {
        return onNull;
    }
    if (iid != IUnknown::kId && iid != Interface::kId) {
        *out = nullptr;
        return kResultNoInterface;
    }
    *out = object;
    object->AddRef();
    return kResultOk;
}

}  // namespace lumiset
