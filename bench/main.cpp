#include <fmt/format.h>
#include <hwy/targets.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <exception>
#include <regex>
#include <string>

#include "bench/bench_case.h"
#include "bench/gpu.h"
#include "bench/measure.h"
#include "bench/threads.h"

namespace {

using lumiset::bench::Case;
using lumiset::bench::Cases;
using lumiset::bench::Measurement;

void printTable(const std::vector<Measurement>& results) {
    fmt::print("{:<46}{:>10}{:>10}{:>8}  {:<7}{:>11}{:>9}\n", "1920 x 1080, one thread", "ms", "memcpys", "aim", "",
               "OpenCV ms", "faster");
    for (const Measurement& result : results) {
        if (!result.error.empty()) {
            fmt::print("{:<46}  error: {}\n", result.name, result.error);
            continue;
        }
        fmt::print("{:<46}{:>10.3f}{:>10.2f}{:>8}  {:<7}", result.name, result.milliseconds, result.memcpys(),
                   result.aim > 0 ? fmt::format("{:g}", result.aim) : "", result.missed() ? "missed" : "");
        if (result.opencvMilliseconds) {
            fmt::print("{:>11.3f}{:>8.1f}x", *result.opencvMilliseconds,
                       *result.opencvMilliseconds / result.milliseconds);
        }
        fmt::print("\n");
    }
}

void printJson(const std::vector<Measurement>& results) {
    fmt::print("[\n");
    for (const Measurement& result : results) {
        fmt::print(R"(  {{"name": "{}", "milliseconds": {:.5f}, "memcpyMilliseconds": {:.5f}, )", result.name,
                   result.milliseconds, result.memcpyMilliseconds);
        fmt::print(R"("aimMemcpys": {}, "opencvMilliseconds": {}, "missed": {}, "error": "{}"}}{})",
                   result.aim > 0 ? fmt::format("{:g}", result.aim) : "null",
                   result.opencvMilliseconds ? fmt::format("{:.5f}", *result.opencvMilliseconds) : "null",
                   result.missed(), result.error, &result == &results.back() ? "\n" : ",\n");
    }
    fmt::print("]\n");
}

/// Fastest instruction set that Highway may choose from here on.
bool limitInstructionSet(const std::string& name) {
    std::int64_t allowed = 0;
    for (std::int64_t sets = hwy::SupportedTargets(); sets != 0; sets &= sets - 1) {
        const std::int64_t set = sets & -sets;
        if (name == hwy::TargetName(set)) {
            allowed = set;
        }
    }
    if (allowed == 0) {
        return false;
    }
    hwy::SetSupportedTargetsForTest(allowed);
    hwy::GetChosenTarget().Update(allowed);
    return true;
}

}  // namespace

int main(int argc, char** argv) try {
    CLI::App app{"Times the image primitives, frame operations and effects on one thread."};
    bool json = false;
    bool list = false;
    std::string filter;
    std::string instructionSet;
    int repetitions = 7;
    std::uint32_t threads = 1;
    bool ultraHD = false;
    bool markdown = false;
    bool gpu = false;
    app.add_flag("--json", json, "Print the results as JSON");
    app.add_flag("--list", list, "Print the names of the cases and stop");
    app.add_option("--filter", filter, "Run the cases whose names match this regular expression");
    app.add_option("--repetitions", repetitions, "Times that each case is measured")->check(CLI::Range(1, 1000));
    app.add_option("--set", instructionSet, "Instruction set of the module's loops: AVX3, AVX2, SSE4, EMU128");
    app.add_option("--threads", threads, "Time the effects on one thread and on so many, in time on the wall")
        ->check(CLI::Range(2, 256));
    app.add_flag("--uhd", ultraHD, "With --threads: frames of 3840 x 2160 instead of 1920 x 1080");
    app.add_flag("--gpu", gpu, "Time the effects in OpenGL, without and with transfers");
    app.add_flag("--markdown", markdown, "With --threads or --gpu: print a table in Markdown");
    CLI11_PARSE(app, argc, argv);
    if (!instructionSet.empty() && !limitInstructionSet(instructionSet)) {
        fmt::print(stderr, "This machine has no instruction set {}.\n", instructionSet);
        return 2;
    }

    if (gpu) {
        return lumiset::bench::measureGPU({filter, repetitions, markdown}) ? 0 : 1;
    }
    if (threads > 1) {
        return lumiset::bench::measureThreads({threads, filter, ultraHD, repetitions, markdown}) ? 0 : 1;
    }

    Cases all;
    addPixelPrimitives(all);
    addFilterPrimitives(all);
    addGeometryPrimitives(all);
    addOperations(all);
    addOpenFX(all);
    addEffects(all);
    const std::regex wanted(filter, std::regex::icase);
    Cases cases;
    for (Case& one : all) {
        if (std::regex_search(one.name, wanted)) {
            cases.push_back(std::move(one));
        }
    }
    if (list) {
        for (const Case& one : cases) {
            fmt::print("{}\n", one.name);
        }
        return 0;
    }
    if (cases.empty()) {
        fmt::print(stderr, "No case matches {}; --list prints their names.\n", filter);
        return 2;
    }
    const std::vector<Measurement> results = lumiset::bench::measure(cases, repetitions);
    json ? printJson(results) : printTable(results);
    return std::all_of(results.begin(), results.end(), [](const Measurement& result) { return result.error.empty(); })
               ? 0
               : 1;
} catch (const std::regex_error&) {
    fmt::print(stderr, "--filter is not a regular expression.\n");
    return 2;
} catch (const std::exception& error) {
    fmt::print(stderr, "{}\n", error.what());
    return 1;
}
