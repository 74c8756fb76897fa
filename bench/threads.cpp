#include "bench/threads.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <limits>
#include <regex>

#include "bench/effect_subjects.h"
#include "bench/frames.h"
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

void printRow(const ThreadsOptions& options, const std::string& name, const std::string& one, const std::string& many,
              const std::string& gain) {
    if (options.markdown) {
        fmt::print("| {} | {} | {} | {} |\n", name, one, many, gain);
    } else {
        fmt::print("{:<54}{:>12}{:>12}{:>8}\n", name, one, many, gain);
    }
}

}  // namespace

bool measureThreads(const ThreadsOptions& options) {
    const std::int32_t width = options.ultraHD ? 3840 : kWidth;
    const std::int32_t height = options.ultraHD ? 2160 : kHeight;
    const auto pool = hostkit::ThreadPool::create(options.threads);
    printRow(options, fmt::format("{} x {}, ms", width, height), "1 thread", fmt::format("{} threads", options.threads),
             "gain");
    if (options.markdown) {
        fmt::print("|---|---:|---:|---:|\n");
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
            printRow(options, name, fmt::format("{:.2f}", one.milliseconds), fmt::format("{:.2f}", many.milliseconds),
                     fmt::format("{:.2f}", one.milliseconds / many.milliseconds));
        }
    }
    return done && any;
}

}  // namespace lumiset::bench
