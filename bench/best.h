#pragma once

#include <algorithm>
#include <chrono>
#include <limits>

namespace lumiset::bench {

/// The least of several runs, in milliseconds of the clock on the wall.
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

}  // namespace lumiset::bench
