// Where the time of rendering a clip goes: decoding, conversion in, an effect, conversion out and encoding apart, in
// milliseconds a picture of processor time, beside the same steps of ffmpeg with the effect's frei0r plug-in.

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "hostkit/host_allocator.h"
#include "hostkit/module.h"
#include "hostkit/renderer.h"
#include "media/media.h"

namespace {

using namespace lumiset;

constexpr const char* kEffect = "Color Fixer Pro";
constexpr const char* kPreset = "Warm";
constexpr const char* kPlugin = "frei0r=lumiset_color_fixer_pro:Warm";
constexpr int kTurns = 5;

enum Step : std::size_t { kDecoding, kConversionIn, kEffectStep, kConversionOut, kEncoding, kStepCount };
constexpr const char* kStepNames[kStepCount] = {"decoding", "conversion in", kEffect, "conversion out", "encoding"};

/// Seconds of one turn over the whole clip.
using Steps = std::array<double, kStepCount>;

// Of the whole process, so that the libraries' own threads count too.
double processorSeconds() {
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <class Work>
auto timed(double& total, Work work) {
    const double begin = processorSeconds();
    auto result = work();
    total += processorSeconds() - begin;
    return result;
}

struct Ours {
    Steps steps{};
    double copy = 0;  ///< seconds that a memcpy of all pictures takes
    int pictures = 0;
};

VideoFrameDesc frameOf(media::Picture& picture) {
    return {picture.data.data(), picture.width, picture.height, picture.stride, 4, {0, 0}, kFormatBgra8, 0};
}

Ours renderOurselves(const std::vector<hostkit::EffectStage>& chain, const std::string& clip,
                     const std::string& output) {
    media::SourceOptions reading;
    reading.threads = 1;
    media::SinkOptions writing;
    writing.threads = 1;
    Ours ours;
    const auto source =
        timed(ours.steps[kDecoding], [&] { return media::openSource(clip, reading); });  // which decodes a picture
    const auto sink = media::openSink(output, source->format(), writing);
    const auto allocator = hostkit::PoolAllocator::create();
    hostkit::Renderer renderer(chain, kFormatBgra8, allocator.get());
    media::RawPicture raw;
    media::Picture from;
    media::Picture to;
    std::vector<std::uint8_t> copied;
    while (timed(ours.steps[kDecoding], [&] { return source->fetch(raw); })) {
        timed(ours.steps[kConversionIn], [&] { return source->convert(raw, from), 0; });
        to.allocate(from.width, from.height, from.depth);
        to.pts = from.pts;
        timed(ours.steps[kEffectStep], [&] { return renderer.render(frameOf(from), frameOf(to), {}), 0; });
        copied.resize(to.data.size());
        timed(ours.copy, [&] { return std::memcpy(copied.data(), to.data.data(), copied.size()); });
        media::ReadyPicture ready;
        if (ours.pictures++ == 0) {
            sink->write(to);  // which opens the encoder
        } else if (timed(ours.steps[kConversionOut], [&] { return sink->prepare(to, ready); })) {
            timed(ours.steps[kEncoding], [&] { return sink->write(ready), 0; });
        }
    }
    timed(ours.steps[kEncoding], [&] { return sink->finish(), 0; });
    return ours;
}

/// Processor time of a program that says nothing.
double runProgram(std::vector<std::string> words) {
    std::vector<char*> arguments;
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    pid_t process = 0;
    int status = 0;
    rusage used{};
    if (posix_spawnp(&process, arguments[0], nullptr, nullptr, arguments.data(), environ) != 0 ||
        wait4(process, &status, 0, &used) < 0 || status != 0) {
        throw std::runtime_error(fmt::format("{} fails.", fmt::join(words, " ")));
    }
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

/// The same clip through chains of ffmpeg's that are a step longer each; what one takes more than the one before it is
/// the step.
Steps renderInFFmpeg(const std::string& clip, const std::string& output) {
    const auto run = [&](const std::string& filters, const std::string& target) {
        std::vector<std::string> words = {"ffmpeg",          "-v", "error", "-nostdin", "-threads", "1",
                                          "-filter_threads", "1",  "-i",    clip,       "-an"};
        words.insert(words.end(), {"-vf", filters, "-threads", "1"});
        if (target.empty()) {
            words.insert(words.end(), {"-f", "null", "-"});
        } else {
            words.insert(words.end(), {"-y", target});
        }
        return runProgram(words);
    };
    const std::string in = "format=bgra";
    const std::string effect = in + "," + kPlugin;
    const std::string out = effect + ",format=yuv420p";
    const double times[] = {run("null", ""), run(in, ""), run(effect, ""), run(out, ""), run(out, output)};
    Steps steps{};
    for (std::size_t i = 0; i < kStepCount; i++) {
        steps[i] = i == 0 ? times[0] : times[i] - times[i - 1];
    }
    return steps;
}

double median(std::vector<double> values) {
    std::nth_element(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2), values.end());
    return values[values.size() / 2];
}

struct Median {
    std::vector<double> values;
    [[nodiscard]] double of(int pictures) const { return median(values) / pictures * 1e3; }
};

void printRow(const char* name, double ours, double copy, double theirs) {
    fmt::print("{:<22}{:>9.2f} ms{:>8.2f} memcpys{:>12.2f} ms{:>9.2f}\n", name, ours, ours / copy, theirs,
               theirs / ours);
}

void run(const std::string& clip, const std::string& folder) {
    const hostkit::Module module;
    const hostkit::EffectCatalogue catalogue(module.effectLibrary());
    const hostkit::EffectDescription& effect = catalogue.effect(kEffect);
    std::vector<hostkit::EffectStage> chain{
        {hostkit::ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(effect.index)),
         hostkit::ParameterStore(effect)}};
    chain[0].parameters.apply(effect.preset(kPreset));

    std::array<Median, kStepCount> ours;
    std::array<Median, kStepCount> theirs;
    Median copy;
    Median both;
    int pictures = 0;
    // In turns, so that what else the machine does meets both.
    for (int turn = 0; turn < kTurns; turn++) {
        const Ours mine = renderOurselves(chain, clip, folder + "/ours.y4m");
        const Steps other = renderInFFmpeg(clip, folder + "/ffmpeg.y4m");
        pictures = mine.pictures;
        for (std::size_t i = 0; i < kStepCount; i++) {
            ours[i].values.push_back(mine.steps[i]);
            theirs[i].values.push_back(other[i]);
        }
        copy.values.push_back(mine.copy);
        both.values.push_back((mine.steps[kConversionIn] + mine.steps[kConversionOut]) / mine.copy);
    }
    fmt::print("{} pictures, {} to y4m, one thread, medians of {} turns, processor time a picture\n", pictures, clip,
               kTurns);
    fmt::print("{:<22}{:>12}{:>16}{:>15}{:>9}\n", "", "here", "", "ffmpeg", "ratio");
    double oursInAll = 0;
    double theirsInAll = 0;
    const double copyTime = copy.of(pictures);
    for (std::size_t i = 0; i < kStepCount; i++) {
        oursInAll += ours[i].of(pictures);
        theirsInAll += theirs[i].of(pictures);
        printRow(kStepNames[i], ours[i].of(pictures), copyTime, theirs[i].of(pictures));
    }
    printRow("all of it", oursInAll, copyTime, theirsInAll);
    fmt::print("conversion both ways: {:.2f} memcpys of a picture, aim 12\n", median(both.values));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fmt::print(stderr, "usage: lumiset_media_bench CLIP FOLDER\n");
        return 2;
    }
    try {
        run(argv[1], argv[2]);
        return 0;
    } catch (const std::exception& error) {
        fmt::print(stderr, "lumiset_media_bench: {}\n", error.what());
        return 1;
    }
}
