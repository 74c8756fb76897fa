#include "bench/threads.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <regex>
#include <span>
#include <string>
#include <vector>

#include "bench/effect_subjects.h"
#include "bench/frames.h"
#include "bench/parts_meter.h"
#include "hostkit/thread_pool.h"

namespace lumiset::bench {
namespace {

/// The least of several runs, in milliseconds.
struct Best {
    double milliseconds = std::numeric_limits<double>::max();

    template <class Work>
    void measure(const Work& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        const std::chrono::duration<double, std::milli> taken = std::chrono::steady_clock::now() - start;
        milliseconds = std::min(milliseconds, taken.count());
    }
};

/// More threads than there are here, to tell what the parts of a frame allow.
constexpr std::uint32_t kManyThreads[] = {4, 8, 16, 32};

using Row = std::vector<std::string>;

void printRow(const ThreadsOptions& options, const Row& row) {
    if (options.markdown) {
        fmt::print("| {} |\n", fmt::join(row, " | "));
    } else {
        fmt::print("{:<50}", row.front());
        for (const std::string& cell : std::span(row).subspan(1)) {
            fmt::print("{:>11}", cell);
        }
        fmt::print("\n");
    }
    std::fflush(stdout);
}

Row titles(const ThreadsOptions& options, std::int32_t width, std::int32_t height) {
    Row row{fmt::format("{} x {}, ms", width, height),
            "1 thread",
            fmt::format("{} threads", options.threads),
            "gain",
            "serial",
            "cutting"};
    for (const std::uint32_t threads : kManyThreads) {
        row.push_back(fmt::format("{} at most", threads));
    }
    return row;
}

}  // namespace

bool measureThreads(const ThreadsOptions& options) {
    const std::int32_t width = options.ultraHD ? 3840 : kWidth;
    const std::int32_t height = options.ultraHD ? 2160 : kHeight;
    const auto pool = hostkit::ThreadPool::create(options.threads);
    const Row head = titles(options, width, height);
    printRow(options, head);
    if (options.markdown) {
        fmt::print("|---|{}\n", fmt::join(Row(head.size() - 1, "---:|"), ""));
    }
    const std::regex wanted(options.filter, std::regex::icase);
    const auto subjects = effectSubjects();
    bool done = true;
    bool any = false;
    for (const auto& [format, suffix] : {std::pair{kFormatBgra8, "8"}, std::pair{kFormatBgraFloat, "float"}}) {
        const Pool from(format, width, height, Content::kPicture);
        const Pool to(format, width, height);
        for (const auto& subject : subjects) {
            const std::string name = fmt::format("{}, {}", subject->name, suffix);
            if (!std::regex_search(name, wanted)) {
                continue;
            }
            any = true;
            Best one;
            Best many;
            for (int i = 0; i <= options.repetitions && done; ++i) {
                const auto n = static_cast<std::size_t>(i);
                const Frame& source = from[n];
                const Frame& target = to[n];
                Best warmUp;
                (i == 0 ? warmUp : one).measure([&] { done = subject->render(source, target) && done; });
                (i == 0 ? warmUp : many).measure([&] { done = subject->render(source, target, pool.get()) && done; });
            }
            FrameParts parts;
            PartsMeter meter;
            double whole = std::numeric_limits<double>::max();
            for (std::size_t n = 0; n < 3; ++n) {
                const double start = processorTime();
                done = subject->render(from[n], to[n]) && done;
                whole = std::min(whole, processorTime() - start);
                meter.start();
                done = subject->render(from[n], to[n], &meter) && done;
                FrameParts again = meter.stop();
                if (n == 0 || again.total() < parts.total()) {
                    parts = std::move(again);
                }
            }
            Row row{name,
                    fmt::format("{:.2f}", one.milliseconds),
                    fmt::format("{:.2f}", many.milliseconds),
                    fmt::format("{:.2f}", one.milliseconds / many.milliseconds),
                    fmt::format("{:.0f} %", 100 * parts.serial / whole),
                    fmt::format("{:+.0f} %", 100 * (parts.total() / whole - 1))};
            for (const std::uint32_t threads : kManyThreads) {
                row.push_back(fmt::format("{:.1f}", whole / parts.onThreads(threads)));
            }
            printRow(options, row);
        }
    }
    return done && any;
}

}  // namespace lumiset::bench
