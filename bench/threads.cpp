#include "bench/threads.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>
#include <regex>
#include <string>

#include "bench/best.h"
#include "bench/effect_subjects.h"
#include "bench/frames.h"
#include "bench/parts_meter.h"
#include "bench/table.h"
#include "hostkit/thread_pool.h"

namespace lumiset::bench {
namespace {

/// More threads than there are here, to tell what the parts of a frame allow.
constexpr std::uint32_t kManyThreads[] = {4, 8, 16, 32};

/// One frame's work on the calling thread (null) or with the help of others.
using FrameWork = std::function<bool(std::size_t n, IHostParallel* threads)>;

struct Gain {
    bool done = true;
    Best one;
    Best many;
    Best sideBySide;                                    ///< as many whole frames as there are threads, at the same time
    double whole = std::numeric_limits<double>::max();  ///< of the processor, in milliseconds, on one thread
    FrameParts parts;                                   ///< for `many`
    std::array<double, std::size(kManyThreads)> onManyThreads{};  ///< milliseconds that the parts allow

    [[nodiscard]] double factor() const { return one.milliseconds / many.milliseconds; }
};

/// Whole frames from the n-th on, at the same time, each on one thread.
bool renderSideBySide(const FrameWork& work, std::size_t n, std::uint32_t frames, IHostParallel& pool) {
    std::atomic<bool> done = true;
    auto frame = [&](std::uint32_t i) {
        if (!work(n + i, nullptr)) {
            done = false;
        }
    };
    const auto task = [](void* context, std::uint32_t i) { (*static_cast<decltype(frame)*>(context))(i); };
    return pool.Run(task, &frame, frames) && done;
}

/// The parts of a frame for so many threads, the best of some turns, of a long one the first.
template <class Run>
FrameParts measureParts(std::uint32_t threads, const Run& run) {
    constexpr double kLong = 1000;  // milliseconds
    PartsMeter meter(threads);
    FrameParts parts;
    for (std::size_t n = 0; n < 3 && parts.total() < kLong; ++n) {
        meter.start();
        run(n, &meter);
        FrameParts again = meter.stop();
        if (n == 0 || again.total() < parts.total()) {
            parts = std::move(again);
        }
    }
    return parts;
}

/// Turns on one thread and on many; the first, which makes what is kept, does not count.
Gain measureGain(const FrameWork& work, IHostParallel& pool, const ThreadsOptions& options) {
    Gain gain;
    const auto run = [&](std::size_t n, IHostParallel* threads) { gain.done = work(n, threads) && gain.done; };
    run(0, nullptr);
    run(0, &pool);
    renderSideBySide(work, 0, options.threads, pool);
    for (int i = 0; i < options.repetitions; ++i) {
        const auto n = static_cast<std::size_t>(i);
        gain.one.measure([&] { run(n, nullptr); });
        gain.many.measure([&] { run(n, &pool); });
        gain.sideBySide.measure([&] { gain.done = renderSideBySide(work, n, options.threads, pool) && gain.done; });
    }
    for (std::size_t n = 0; n < 3; ++n) {
        const double start = processorTime();
        run(n, nullptr);
        gain.whole = std::min(gain.whole, processorTime() - start);
    }
    gain.parts = measureParts(options.threads, run);
    std::transform(std::begin(kManyThreads), std::end(kManyThreads), gain.onManyThreads.begin(),
                   [&](std::uint32_t threads) { return measureParts(threads, run).onThreads(threads); });
    return gain;
}

Row titles(const ThreadsOptions& options, std::int32_t width, std::int32_t height) {
    Row row{fmt::format("{} x {}, ms", width, height),
            "1 thread",
            fmt::format("{} threads", options.threads),
            "gain",
            fmt::format("{} frames", options.threads),
            "serial",
            "cutting",
            "memcpys"};
    for (const std::uint32_t threads : kManyThreads) {
        row.push_back(fmt::format("{} threads", threads));
    }
    return row;
}

/// `copy` is that of a frame of the same format.
Row rowOf(const std::string& name, const Gain& gain, const Gain& copy, std::uint32_t threads) {
    Row row{name,
            fmt::format("{:.2f}", gain.one.milliseconds),
            fmt::format("{:.2f}", gain.many.milliseconds),
            fmt::format("{:.2f}", gain.factor()),
            fmt::format("{:.2f}", threads * gain.one.milliseconds / gain.sideBySide.milliseconds),
            fmt::format("{:.0f} %", 100 * gain.parts.serial / gain.whole),
            fmt::format("{:+.0f} %", 100 * (gain.parts.total() / gain.whole - 1)),
            fmt::format("{:.1f}", gain.one.milliseconds / copy.one.milliseconds)};
    for (const double many : gain.onManyThreads) {
        row.push_back(fmt::format("{:.1f}", gain.whole / many));
    }
    return row;
}

/// A copy of whole frames, in the bands of every effect.
FrameWork copying(const Pool& from, const Pool& to) {
    return [&from, &to](std::size_t n, IHostParallel* threads) {
        constexpr std::uint32_t kBands = 32;
        struct Copy {
            const std::uint8_t* from;
            std::uint8_t* to;
            std::size_t bytes;
        } copy{from.bytes(n), to.bytes(n),
               static_cast<std::size_t>(from.step()) * static_cast<std::size_t>(from.size().height) / kBands};
        const auto band = [](void* context, std::uint32_t i) {
            const auto& all = *static_cast<const Copy*>(context);
            std::memcpy(all.to + i * all.bytes, all.from + i * all.bytes, all.bytes);
        };
        for (std::uint32_t i = 0; i < kBands && threads == nullptr; ++i) {
            band(&copy, i);
        }
        return threads == nullptr || threads->Run(band, &copy, kBands);
    };
}

}  // namespace

bool measureThreads(const ThreadsOptions& options) {
    const std::int32_t width = options.ultraHD ? 3840 : kWidth;
    const std::int32_t height = options.ultraHD ? 2160 : kHeight;
    const auto pool = hostkit::ThreadPool::create(options.threads);
    Table table(options.markdown);
    table.print(titles(options, width, height));
    const std::regex wanted(options.filter, std::regex::icase);
    const auto subjects = effectSubjects();
    bool done = true;
    bool any = false;
    for (const auto& [format, suffix] : {std::pair{kFormatBgra8, "8"}, std::pair{kFormatBgraFloat, "float"}}) {
        const Pool from(format, width, height, Content::kPicture);
        const Pool to(format, width, height, Content::kNoise, options.threads);
        const Gain copy = measureGain(copying(from, to), *pool.get(), options);
        table.print(rowOf(fmt::format("memcpy, {}", suffix), copy, copy, options.threads));
        for (const auto& subject : subjects) {
            const std::string name = fmt::format("{}, {}", subject->name, suffix);
            if (!std::regex_search(name, wanted)) {
                continue;
            }
            const auto render = [&](std::size_t n, IHostParallel* threads) {
                return subject->render(from[n], to[n], threads);
            };
            const Gain gain = measureGain(render, *pool.get(), options);
            table.print(rowOf(name, gain, copy, options.threads));
            any = true;
            done = done && gain.done;
        }
    }
    return done && any;
}

}  // namespace lumiset::bench
