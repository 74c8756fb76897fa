#pragma once

#include <cstdint>
#include <vector>

#include "host/host_interfaces.h"
#include "host/reference_count.h"

namespace lumiset::bench {

/// Of this thread, in milliseconds.
double processorTime();

/// How one frame divides: what must be done by one thread, and the pieces of work that several may share. In
/// milliseconds of the processor.
struct FrameParts {
    double serial = 0;
    std::vector<std::vector<double>> pieces;  ///< for each call of `Run`, the time of each part

    [[nodiscard]] double total() const;
    /// On so many threads, each taking the next part when it is free, which cost nothing to wake and have all the
    /// memory that they ask for.
    [[nodiscard]] double onThreads(std::uint32_t threads) const;
};

/// So many threads that a frame is divided for, but that are one: it calls the parts in order and times each.
class PartsMeter final : public Counted<IHostParallel> {
public:
    explicit PartsMeter(std::uint32_t threads) : m_threads(threads) {}
    /// Begins a frame.
    void start();
    /// Ends it.
    [[nodiscard]] FrameParts stop();

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    std::uint32_t LUMISET_CALL GetThreadCount() noexcept override { return m_threads; }
    bool LUMISET_CALL Run(ParallelTask task, void* context, std::uint32_t count) noexcept override;

private:
    std::uint32_t m_threads;
    FrameParts m_parts;
    double m_last = 0;  ///< the processor's time when the last piece ended
};

}  // namespace lumiset::bench
