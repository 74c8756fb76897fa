#pragma once

// One piece of work on the host's threads. Work is cut by sizes alone, and by the number of threads only where it gives
// the same however it is cut; what a part computes does not depend on the others. So a frame comes out the same whoever
// renders it.

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>

#include "frame/memory_allocator.h"
#include "frame/primitives/status.h"

namespace lumiset {

template <class Task>
void LUMISET_CALL callTask(void* task, std::uint32_t index) {
    (*static_cast<const Task*>(task))(static_cast<std::int32_t>(index));
}

/// Calls `task(i)` for every i below `count`: on the host's threads where `resources` (may be null) has some, else here
/// and in order. A task asks for no memory and runs no tasks of its own.
template <class Task>
void runTasks(const MemoryAllocator* resources, std::int32_t count, const Task& task) {
    IHostParallel* threads = resources != nullptr && count > 1 ? resources->Threads() : nullptr;
    if (threads != nullptr &&
        threads->Run(&callTask<Task>, const_cast<Task*>(&task), static_cast<std::uint32_t>(count))) {
        return;
    }
    for (std::int32_t i = 0; i < count; ++i) {
        task(i);
    }
}

/// Rows cut into bands of one height, the last one perhaps shorter.
struct Bands {
    std::int32_t height;  ///< of all
    std::int32_t rows;    ///< of a band

    [[nodiscard]] std::int32_t count() const { return (height + rows - 1) / rows; }
    [[nodiscard]] std::int32_t first(std::int32_t band) const { return band * rows; }
    [[nodiscard]] std::int32_t rowsOf(std::int32_t band) const { return std::min(rows, height - first(band)); }
};

/// Pixels of a band. A picture of fewer is not cut: waking a thread costs more than it would save.
inline constexpr std::int64_t kBandPixels = 64 * 1024;

/// Bands of at least `leastRows` rows, a multiple of `unit`. Few bands are an even number: they go evenly into the
/// threads of most machines.
inline Bands bandsOf(ImgSize size, std::int32_t leastRows = 1, std::int32_t unit = 1) {
    const std::int64_t least = std::max<std::int64_t>({kBandPixels / std::max(size.width, 1), leastRows, 1});
    const std::int64_t most = size.height / least;
    const std::int64_t count = std::max<std::int64_t>(most < 2 ? most : most / 2 * 2, 1);
    const std::int64_t rows = (size.height + count - 1) / count;
    return {size.height, static_cast<std::int32_t>(std::max<std::int64_t>((rows + unit - 1) / unit * unit, 1))};
}

/// The whole picture as one band, for work that gives the same however it is cut, where there are no threads.
inline Bands bandsForThreads(const MemoryAllocator* resources, ImgSize size, std::int32_t leastRows = 1,
                             std::int32_t unit = 1) {
    return resources != nullptr && resources->Threads() != nullptr ? bandsOf(size, leastRows, unit)
                                                                   : Bands{size.height, std::max(size.height, 1)};
}

/// Bands for work that is cheaper where it goes on from the band above than where it begins, and that gives the same
/// either way: each thread has some bands below each other, and takes of another's last ones when it is done with its
/// own.
class BandRuns {
public:
    BandRuns(const MemoryAllocator& resources, ImgSize size, std::int32_t unit)
        : m_resources(resources), m_bands(cut(size, threadsOf(resources), unit)) {
        const std::int32_t bands = std::max(m_bands.count(), 1);
        const std::int32_t threads = std::min(threadsOf(resources), bands);
        m_each = (bands + threads - 1) / threads;
        m_runs = (bands + m_each - 1) / m_each;
    }

    /// Tasks, of which each has its own memory.
    [[nodiscard]] std::int32_t tasks() const { return m_each * m_runs; }

    /// Calls `work(bands, band, task, goesOn)` for all bands; `goesOn` after the same task's call for the band above.
    template <class Work>
    void run(const Work& work) const {
        std::array<std::atomic<bool>, kEach * kMostThreads> taken{};
        runTasks(&m_resources, tasks(), [&](std::int32_t task) {
            const std::int32_t first = task % m_runs * m_each;
            const std::int32_t end = std::min(first + m_each, m_bands.count());
            const std::int32_t fromLast = task / m_runs;
            std::int32_t band = fromLast == 0 ? first : first + m_each - fromLast;
            for (bool goesOn = false; band < end && !taken[static_cast<std::size_t>(band)].exchange(true); ++band) {
                work(m_bands, band, task, goesOn);
                goesOn = true;
            }
        });
    }

private:
    static constexpr std::uint32_t kMostThreads = 64;
    static constexpr std::int32_t kEach = 4;  ///< bands of a thread

    static std::int32_t threadsOf(const MemoryAllocator& resources) {
        return static_cast<std::int32_t>(std::min(resources.ThreadCount(), kMostThreads));
    }
    static Bands cut(ImgSize size, std::int32_t threads, std::int32_t unit) {
        return threads > 1 ? bandsOf(size, (size.height - 1) / (kEach * threads) + 1, unit)
                           : Bands{size.height, std::max(size.height, 1)};
    }

    const MemoryAllocator& m_resources;
    Bands m_bands;
    std::int32_t m_each;  ///< bands of a run, but perhaps of the last
    std::int32_t m_runs;
};

/// Calls `work(first, rows)` for bands of the picture, whose results must not depend on how it is cut. True if every
/// call answered true.
template <class Work>
bool inBands(const MemoryAllocator* resources, ImgSize size, const Work& work) {
    const Bands bands = bandsForThreads(resources, size);
    std::atomic<bool> done = true;
    runTasks(resources, bands.count(), [&](std::int32_t band) {
        if (!work(bands.first(band), bands.rowsOf(band))) {
            done.store(false, std::memory_order_relaxed);
        }
    });
    return done.load(std::memory_order_relaxed);
}

/// Likewise for a few rows of `rowBytes` bytes at a time, so few that they stay in the processor's cache from one step
/// of `work` to the next.
template <class Work>
bool inCachedRows(const MemoryAllocator* resources, ImgSize size, std::int32_t rowBytes, const Work& work) {
    constexpr std::int32_t kCachedBytes = 128 * 1024;
    const std::int32_t most = std::max(kCachedBytes / std::max(rowBytes, 1), 1);
    return inBands(resources, size, [&](std::int32_t first, std::int32_t rows) {
        bool done = true;
        for (std::int32_t y = first; y < first + rows; y += most) {
            done = work(y, std::min(most, first + rows - y)) && done;
        }
        return done;
    });
}

}  // namespace lumiset
