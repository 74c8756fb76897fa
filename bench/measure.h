#pragma once

#include <optional>
#include <string>
#include <vector>

#include "bench/bench_case.h"

namespace lumiset::bench {

struct Measurement {
    std::string name;
    double milliseconds = 0;
    double memcpyMilliseconds = 0;  ///< of the case's base, in the same run
    double aim = 0;                 ///< in memcpys, 0 for none
    std::optional<double> opencvMilliseconds;
    std::string error;  ///< empty: none

    [[nodiscard]] double memcpys() const { return milliseconds / memcpyMilliseconds; }
    [[nodiscard]] bool missed() const { return error.empty() && aim > 0 && !(memcpys() <= aim); }
};

/// Runs all cases several times in random order, the copies that they are compared with among them. A time is the
/// median of its repetitions, in time of the processor, so that other programs disturb it little.
std::vector<Measurement> measure(const Cases& cases, int repetitions);

}  // namespace lumiset::bench
