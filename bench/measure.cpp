#include "bench/measure.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <opencv2/core.hpp>

#include "bench/frames.h"

namespace lumiset::bench {
namespace {

constexpr double kSecondsPerRepetition = 0.02;

/// Keeps the time of every repetition by benchmark.
class Collector final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.error_occurred) {
                errors[run.run_name.function_name] = run.error_message;
            } else if (run.run_type == Run::RT_Iteration) {
                times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
            }
        }
    }

    [[nodiscard]] double median(const std::string& name) const {
        const auto found = times.find(name);
        if (found == times.end()) {
            return 0;
        }
        std::vector<double> sorted = found->second;
        std::sort(sorted.begin(), sorted.end());
        return sorted[sorted.size() / 2];
    }

    std::map<std::string, std::vector<double>> times;
    std::map<std::string, std::string> errors;
};

template <class Work>
void add(const std::string& name, int repetitions, const Work& work) {
    benchmark::RegisterBenchmark(name.c_str(),
                                 [work](benchmark::State& state) {
                                     std::size_t n = 0;
                                     for (auto _ : state) {
                                         if (!work(n++)) {
                                             state.SkipWithError("refused");
                                             break;
                                         }
                                     }
                                 })
        ->Unit(benchmark::kMillisecond)
        ->MinTime(kSecondsPerRepetition)
        ->Repetitions(repetitions);
}

struct BaseFrames {
    const char* name;
    const Pool& from;
    const Pool& to;
};

BaseFrames framesOf(Base base) {
    Frames& all = frames();
    switch (base) {
        case Base::kFrame8:
            return {"memcpy/frame8", all.a8, all.out8};
        case Base::kFrameFloat:
            return {"memcpy/frameFloat", all.aF, all.outF};
        case Base::kMask8:
            return {"memcpy/mask8", all.aMask8, all.bMask8};
        case Base::kMaskFloat:
            break;
    }
    return {"memcpy/maskFloat", all.aMaskF, all.bMaskF};
}

}  // namespace

std::vector<Measurement> measure(const Cases& cases, int repetitions) {
    char program[] = "lumiset_bench";
    char interleaved[] = "--benchmark_enable_random_interleaving=true";
    char* arguments[] = {program, interleaved, nullptr};
    int count = 2;
    benchmark::Initialize(&count, arguments);
    cv::setNumThreads(1);

    for (const Base base : {Base::kFrame8, Base::kFrameFloat, Base::kMask8, Base::kMaskFloat}) {
        const BaseFrames copied = framesOf(base);
        std::memset(copied.to.bytes(0), 0, 1);  // The frames are made here.
        std::memset(copied.from.bytes(0), 0, 1);
        add(copied.name, repetitions, [copied](std::size_t n) {
            const auto bytes = static_cast<std::size_t>(copied.from.step()) * kHeight;
            std::memcpy(copied.to.bytes(n), copied.from.bytes(n), bytes);
            benchmark::ClobberMemory();
            return true;
        });
    }
    for (const Case& one : cases) {
        one.run(0);  // Frames and tables are made at their first use.
        add(one.name, repetitions, one.run);
        if (one.opencv) {
            one.opencv(0);
            add("opencv/" + one.name, repetitions, [work = one.opencv](std::size_t n) {
                work(n);
                return true;
            });
        }
    }
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);

    std::vector<Measurement> results;
    for (const Case& one : cases) {
        Measurement result{one.name,     collector.median(one.name), collector.median(framesOf(one.base).name), one.aim,
                           std::nullopt, collector.errors[one.name]};
        if (one.opencv) {
            result.opencvMilliseconds = collector.median("opencv/" + one.name);
        }
        results.push_back(result);
    }
    return results;
}

}  // namespace lumiset::bench
