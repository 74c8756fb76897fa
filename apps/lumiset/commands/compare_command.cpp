#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <optional>

#include "apps/lumiset/commands/commands.h"
#include "apps/lumiset/messages.h"
#include "apps/lumiset/render/effect_options.h"
#include "apps/lumiset/render/interruption.h"
#include "apps/lumiset/render/moment.h"
#include "apps/lumiset/render/output_guard.h"
#include "hostkit/gl/gpu_renderer.h"
#include "hostkit/host_allocator.h"
#include "hostkit/thread_pool.h"
#include "media/sheet.h"
#include "render/gpu_refusal.h"
#include "render/picture_frame.h"

namespace lumiset::app {
namespace {

constexpr const char* kCompareIntroduction =
    R"(Renders one picture of INPUT on the processor and in OpenGL, and draws both with their difference.

INPUT is whatever "lumiset render" reads. The largest difference and the peak signal-to-noise ratio go to standard
output too. They count what can be seen: colours weigh as much as their pixel's alpha.
)";

constexpr const char* kCompareFooter = R"(
Example:
  lumiset compare title.mov compared.png --effect Outline --preset "Red Glow" --set Width=10 --time 1.5)";

constexpr int kWidestTile = 640;

/// How far two pictures of one size are apart, in levels of 255.
struct Difference {
    double squares = 0.0;
    std::int64_t samples = 0;
    float largest = 0.0F;
    int x = 0;  ///< where
    int y = 0;

    [[nodiscard]] std::string text() const {
        if (largest == 0.0F) {
            return "no difference";
        }
        const double psnr = 10.0 * std::log10(255.0 * 255.0 * static_cast<double>(samples) / squares);
        return fmt::format("PSNR {:.1f} dB, largest difference {:.0f} of 255 at {},{}", psnr, largest, x, y);
    }
};

std::array<float, 4> premultiplied(const std::uint8_t* pixel) {
    const auto alpha = static_cast<float>(pixel[3]);
    std::array<float, 4> result{};
    for (std::size_t c = 0; c < 3; ++c) {
        result[c] = static_cast<float>(pixel[c]) * alpha / 255.0F;
    }
    result[3] = alpha;
    return result;
}

/// Measures, and leaves the largest differences of each colour, or of the alpha, in `shown`: of a size that is no
/// larger, so that single pixels survive the shrinking.
Difference differenceOf(const media::Picture& a, const media::Picture& b, media::Picture& shown) {
    Difference result;
    result.samples = std::int64_t{4} * a.width * a.height;
    for (int y = 0; y < shown.height; ++y) {
        std::fill_n(shown.row(y), 4 * shown.width, std::uint8_t{0});
    }
    for (int y = 0; y < a.height; ++y) {
        std::uint8_t* row = shown.row(static_cast<int>(std::int64_t{y} * shown.height / a.height));
        for (int x = 0; x < a.width; ++x) {
            const std::array<float, 4> first = premultiplied(a.row(y) + 4 * x);
            const std::array<float, 4> second = premultiplied(b.row(y) + 4 * x);
            std::uint8_t* pixel = row + 4 * (std::int64_t{x} * shown.width / a.width);
            const float alpha = std::abs(first[3] - second[3]);
            for (std::size_t c = 0; c < 4; ++c) {
                const float apart = std::abs(first[c] - second[c]);
                result.squares += static_cast<double>(apart * apart);
                if (apart > result.largest) {
                    result.largest = apart;
                    result.x = x;
                    result.y = y;
                }
                pixel[c] = std::max(pixel[c], static_cast<std::uint8_t>(std::ceil(std::max(apart, alpha))));
            }
        }
    }
    return result;
}

/// Makes the differences as much brighter as the largest one allows; returns how many times.
int amplify(media::Picture& shown, float largest) {
    const int scale = std::clamp(static_cast<int>(255.0F / std::max(std::ceil(largest), 1.0F)), 1, 64);
    for (int y = 0; y < shown.height; ++y) {
        for (int x = 0; x < shown.width; ++x) {
            std::uint8_t* pixel = shown.row(y) + 4 * x;
            for (int c = 0; c < 3; ++c) {
                pixel[c] = static_cast<std::uint8_t>(std::min(255, pixel[c] * scale));
            }
            pixel[3] = 255;
        }
    }
    return scale;
}

media::Picture rendered(hostkit::Renderer& renderer, Moment& moment) {
    media::Picture result;
    result.allocate(moment.picture.width, moment.picture.height, moment.picture.depth);
    renderer.render(render::frameOf(moment.picture), render::frameOf(result),
                    render::contextOf(moment.picture, moment.format));
    return result;
}

/// Throws `hostkit::GLError` where the effect does not render in OpenGL.
media::Picture renderedInGL(IEffectLibrary& library, const std::vector<hostkit::EffectStage>& chain, Moment& moment,
                            std::string& driver) {
    std::string reason;
    hostkit::GLHost gl([&reason](const std::string& message) { reason += ' ' + message; });
    driver = gl.info().renderer;
    hostkit::GPURenderer gpu(gl);
    hostkit::Renderer renderer(chain, kFormatBgra8);
    renderer.setFirstChoice([&](std::span<const hostkit::EffectCall> calls, const VideoFrameDesc& source,
                                const VideoFrameDesc& destination, const FrameRenderInfo& info) {
        const std::size_t done = gpu.render(calls, source, destination, info);
        if (done < calls.size()) {
            throw hostkit::GLError(printable(render::refusalInOpenGL(library, calls[done].effect.GetEffectName())) +
                                   reason);
        }
        return done;
    });
    return rendered(renderer, moment);
}

struct CompareOptions {
    explicit CompareOptions(CLI::App& command) : effects(command, EffectOptions::kOneEffect), guard(command) {
        command.add_option("INPUT", input, "what to read")->required();
        command.add_option("OUTPUT", output, "the sheet to write [compared.png]");
        command.add_option("--time,-t", time, "which picture, in seconds or h:m:s [2.2, or halfway in shorter clips]")
            ->option_text("TIME");
        command.add_option("--tile", tileWidth, "width of a picture on the sheet in pixels [the input's, at most 640]")
            ->check(CLI::Range(32, 4096))
            ->option_text("PIXELS");
    }
    EffectOptions effects;
    OutputGuard guard;
    std::string input;
    std::string output = "compared.png";
    std::string time;
    int tileWidth = 0;
};

int compare(const CompareOptions& options, Program& program) {
    const EffectRequest request = options.effects.request();
    const std::vector<hostkit::EffectStage> chain =
        buildChain(program.effectLibrary(), program.catalogue(), {request}, options.input);
    std::vector<std::string> inputs = filesRead(program.catalogue(), {request});
    inputs.push_back(options.input);
    options.guard.check(options.output, inputs);
    Moment moment = readMoment(options.input,
                               options.time.empty() ? std::nullopt : std::optional(parseTime(options.time, "--time")));
    // In the middle of a frame in OpenGL a sudden end would look like a crash of the driver's.
    watchForInterruption();
    std::unique_ptr<media::Sink> sink;
    const auto checkInterruption = [&] {
        if (const int signal = interruptingSignal(); signal != 0) {
            sink.reset();
            endInterrupted(signal, options.output);
        }
    };
    const hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    const auto pool = hostkit::ThreadPool::create(hostkit::wantedThreads());
    hostkit::Renderer renderer(chain, kFormatBgra8, allocator.get(), pool.get());
    std::string driver;
    const media::Picture inGL = renderedInGL(program.effectLibrary(), chain, moment, driver);
    checkInterruption();
    const media::Picture onProcessor = rendered(renderer, moment);

    media::Sheet::Plan plan;
    plan.tileWidth = options.tileWidth > 0 ? options.tileWidth : std::clamp(moment.picture.width, 32, kWidestTile);
    plan.columns = 3;
    plan.pictureWidth = moment.picture.width;
    plan.pictureHeight = moment.picture.height;
    plan.pixelAspect = moment.format.pixelAspect.value();
    media::Picture shown;
    shown.allocate(
        std::min(moment.picture.width, plan.tileWidth),
        std::max(1, std::min(moment.picture.height, moment.picture.height * plan.tileWidth / moment.picture.width)),
        media::Depth::kEightBit);
    const Difference difference = differenceOf(onProcessor, inGL, shown);
    const int scale = amplify(shown, difference.largest);
    plan.title = request.preset.empty() ? chain.front().parameters.effect().name
                                        : chain.front().parameters.effect().name + ": " + request.preset;
    plan.note = fmt::format("{}, at {}, by {}", difference.text(), secondsText(moment.picture.timeSeconds), driver);
    plan.labels = {"Processor", "OpenGL", fmt::format("Difference, {} times", scale)};
    media::Sheet sheet(plan);
    sheet.place(0, onProcessor);
    sheet.place(1, inGL);
    sheet.place(2, shown);
    sink = media::openSink(options.output, sheet.format());
    sink->write(sheet.picture());
    checkInterruption();
    sink->finish();
    if (options.output == "-") {  // where the sheet has gone
        tell(difference.text() + '\n');
    } else {
        printText(difference.text() + '\n');
    }
    return kDone;
}

}  // namespace

void addCompareCommand(CLI::App& app, Program& program) {
    CLI::App& command =
        addCommand(app, "compare", "Draws both renderers' pictures with their difference", kCompareIntroduction);
    command.footer(kCompareFooter);
    const auto options = std::make_shared<CompareOptions>(command);
    program.onChosen(command, [options, &program] { return compare(*options, program); });
}

}  // namespace lumiset::app
