#pragma once

// The one host of the tests: parameter values by index, and whatever other interfaces a test lends it.

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <new>
#include <unordered_set>
#include <utility>

#include "frame/memory_allocator.h"
#include "host/host_interfaces.h"

namespace lumiset::test {

/// Answers parameter values that were set, and leaves the others at the default that the effect filled in.
class ValueHost : public IEffectHost {
public:
    ValueHost() = default;
    ValueHost(const ValueHost&) = default;
    ValueHost& operator=(const ValueHost&) = default;
    virtual ~ValueHost() = default;

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = nullptr;
        return offers != nullptr ? offers->QueryInterface(iid, out) : kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return 2; }
    std::uint32_t LUMISET_CALL Release() noexcept override { return 1; }
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t) noexcept override {
        if (const auto found = values.find(index); found != values.end()) {
            *out = found->second;
        }
    }
    void LUMISET_CALL Reserved4() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved5() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved6() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL Reserved7() noexcept override { ADD_FAILURE(); }
    void LUMISET_CALL GetHostName(const char** out) noexcept override { *out = name; }

    std::map<std::uint32_t, ParamValue> values;
    IUnknown* offers = nullptr;  ///< answers for interfaces beside the host's own; may be null
    const char* name = "Tests";
};

/// A host whose allocator fails at one call and counts what it has handed out. New blocks are filled, so that
/// a result which depends on unwritten scratch memory shows.
class FailingHost final : public ValueHost, public IHostAllocator {
public:
    static constexpr int kNever = -1;

    /// `failAt` counts allocations from 0; with `sticky` all that follow fail too. New blocks hold the byte `filling`.
    explicit FailingHost(int failAt = kNever, const ValueHost& host = {}, bool sticky = false, int filling = 0xA5)
        : ValueHost(host), m_failAt(failAt), m_sticky(sticky), m_filling(filling) {}
    FailingHost(const FailingHost&) = delete;
    FailingHost& operator=(const FailingHost&) = delete;
    ~FailingHost() override {
        for (void* block : m_blocks) {
            ::operator delete(block, kAlignment);
        }
    }

    [[nodiscard]] int calls() const { return m_calls; }
    [[nodiscard]] std::size_t outstanding() const { return m_blocks.size(); }
    [[nodiscard]] int references() const { return m_references; }
    /// False once a block came back that was not out.
    [[nodiscard]] bool freesAreValid() const { return m_freesAreValid; }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IHostAllocator::kId ? static_cast<IHostAllocator*>(this) : nullptr;
        return *out != nullptr ? (AddRef(), kResultOk) : ValueHost::QueryInterface(iid, out);
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return static_cast<std::uint32_t>(++m_references); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return static_cast<std::uint32_t>(--m_references); }

    void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept override { *out = allocate(size); }
    void LUMISET_CALL FreeBytes(void* block) noexcept override { release(block); }
    std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept override {
        *strideOut = (width * bytesPerPixel + 31) / 32 * 32 + 32;
        *out = allocate(static_cast<std::size_t>(*strideOut) * static_cast<std::size_t>(height));
        return *out != nullptr ? 1 : 0;
    }
    void LUMISET_CALL FreeImage(void* block) noexcept override { release(block); }

private:
    void* allocate(std::size_t size) {
        const int call = m_calls++;
        if (m_failAt != kNever && (call == m_failAt || (m_sticky && call > m_failAt))) {
            return nullptr;
        }
        void* block = ::operator new(size, kAlignment);
        std::memset(block, m_filling, size);
        m_blocks.insert(block);
        return block;
    }

    void release(void* block) {
        if (m_blocks.erase(block) == 0) {
            m_freesAreValid = false;
            return;
        }
        ::operator delete(block, kAlignment);
    }

    static constexpr std::align_val_t kAlignment{MemoryAllocator::kAlignment};

    int m_failAt;
    bool m_sticky;
    int m_filling;
    int m_calls = 0;
    int m_references = 1;
    bool m_freesAreValid = true;
    std::unordered_set<void*> m_blocks;
};

/// Calls `operation(IEffectHost*)` with a host that fails at allocation 0, then at 1, and so on until an allocation
/// of that number is not asked for. Every failing call must answer false, the last one true; no call may keep a
/// block or a reference. Returns the number of allocations.
template <class Operation>
int failEachAllocation(Operation&& operation, const ValueHost& values = {}) {
    for (int failAt = 0; failAt < 1000; ++failAt) {
        SCOPED_TRACE(::testing::Message() << "allocation " << failAt << " fails");
        FailingHost host(failAt, values);
        const bool done = operation(static_cast<IEffectHost*>(&host));
        EXPECT_EQ(host.outstanding(), 0U);
        EXPECT_EQ(host.references(), 1);
        EXPECT_TRUE(host.freesAreValid());
        if (host.calls() <= failAt) {
            EXPECT_TRUE(done);
            return failAt;
        }
        EXPECT_FALSE(done);
    }
    ADD_FAILURE() << "the operation does not stop to ask for memory";
    return -1;
}

}  // namespace lumiset::test
