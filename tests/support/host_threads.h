#pragma once

#include <atomic>
#include <cstdint>
#include <thread>
#include <vector>

#include "host/host_interfaces.h"

namespace lumiset::test {

/// A host's threads: as many as told, new ones for each piece of work. With `backwards` all calls come on the caller's,
/// the last one first: what depends on their order shows.
class HostThreads : public IHostParallel {
public:
    explicit HostThreads(std::uint32_t count, bool backwards = false) : m_count(count), m_backwards(backwards) {}
    HostThreads(const HostThreads&) = delete;
    HostThreads& operator=(const HostThreads&) = delete;
    virtual ~HostThreads() = default;

    [[nodiscard]] int references() const { return m_references; }
    [[nodiscard]] int runs() const { return m_runs; }

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IHostParallel::kId ? static_cast<IHostParallel*>(this) : nullptr;
        return *out != nullptr ? (AddRef(), kResultOk) : kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return static_cast<std::uint32_t>(++m_references); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return static_cast<std::uint32_t>(--m_references); }
    std::uint32_t LUMISET_CALL GetThreadCount() noexcept override { return m_count; }
    bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept override {
        ++m_runs;
        if (m_backwards) {
            for (std::uint32_t i = count; i-- > 0;) {
                task(context, i);
            }
            return true;
        }
        std::atomic<std::uint32_t> next = 0;
        const auto work = [&] {
            for (std::uint32_t i = next++; i < count; i = next++) {
                task(context, i);
            }
        };
        std::vector<std::jthread> others;
        for (std::uint32_t i = 1; i < m_count && i < count; ++i) {
            others.emplace_back(work);
        }
        work();
        return true;
    }

private:
    std::uint32_t m_count;
    bool m_backwards;
    std::atomic<int> m_references{1};
    std::atomic<int> m_runs{0};
};

}  // namespace lumiset::test
