#include "bench/gpu.h"

#include <fmt/format.h>

#include <cstdio>
#include <regex>

#include "bench/best.h"
#include "bench/effect_subjects.h"
#include "bench/frames.h"
#include "bench/table.h"
#include "hostkit/gl/gpu_renderer.h"

namespace lumiset::bench {
namespace {

struct Times {
    Best rendering;      ///< from texture to texture
    Best withTransfers;  ///< from memory to memory
};

/// One effect on frames of one size; the first of them, which compiles its programs, is not counted.
bool measure(const Subject& subject, hostkit::GLHost& gl, hostkit::GPURenderer& renderer, const Pool& from,
             const Pool& to, int repetitions, Times& times) {
    constexpr double kTimeSeconds = 1.3;
    FrameRenderInfo info{};
    info.timeSeconds = kTimeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    info.pixelAspect = 1;
    hostkit::RenderHost host(subject.parameters, kTimeSeconds, subject.stage->allocator.get());
    hostkit::GLEffectHost glHost(host, gl);
    VideoFrameDesc source;
    from[0].ToDesc(&source);
    GPUTexture input = gl.makeTexture(source.width, source.height, kFormatBgra8);
    GPUTexture output = gl.makeTexture(source.width, source.height, kFormatBgra8);
    gl.upload(source, input);
    bool done = true;
    for (int i = 0; i <= repetitions && done; ++i) {
        VideoFrameDesc destination;
        from[static_cast<std::size_t>(i)].ToDesc(&source);
        to[static_cast<std::size_t>(i)].ToDesc(&destination);
        Times warmUp;
        Times& counted = i == 0 ? warmUp : times;
        counted.withTransfers.measure(
            [&] { done = renderer.render(*subject.effect.get(), host, source, destination, info); });
        gl.finish();
        counted.rendering.measure([&] {
            done = subject.effect->ProcessFrameGPU(0, &glHost, &gl, &input, nullptr, &output, &info) && done;
            gl.finish();
        });
    }
    gl.ReleaseTexture(&input);
    gl.ReleaseTexture(&output);
    return done && gl.checkErrors("rendering");
}

}  // namespace

bool measureGPU(const GPUOptions& options) {
    hostkit::GLHost gl([](const std::string& sentence) { fmt::print(stderr, "{}\n", sentence); });
    const hostkit::GLHost::Info driver = gl.info();
    fmt::print("{}: {}, OpenGL {}\n\n", driver.vendor, driver.renderer, driver.version);
    hostkit::GPURenderer renderer(gl);
    Table table(options.markdown);
    table.print({"8 bits, ms", "1080p", "frames/s", "transfers", "2160p", "frames/s", "transfers"});
    const Pool from[] = {Pool(kFormatBgra8, kWidth, kHeight, Content::kPicture),
                         Pool(kFormatBgra8, 2 * kWidth, 2 * kHeight, Content::kPicture)};
    const Pool to[] = {Pool(kFormatBgra8), Pool(kFormatBgra8, 2 * kWidth, 2 * kHeight)};
    const std::regex wanted(options.filter, std::regex::icase);
    bool done = true;
    bool any = false;
    for (const auto& subject : effectSubjects()) {
        if (!std::regex_search(subject->name, wanted)) {
            continue;
        }
        any = true;
        Row row{subject->name};
        for (std::size_t size = 0; size < 2; ++size) {
            Times times;
            if (!measure(*subject, gl, renderer, from[size], to[size], options.repetitions, times)) {
                row.insert(row.end(), {"refused", "", ""});
                done = false;
                continue;
            }
            row.push_back(fmt::format("{:.2f}", times.rendering.milliseconds));
            row.push_back(fmt::format("{:.0f}", 1e3 / times.rendering.milliseconds));
            row.push_back(fmt::format("{:.2f}", times.withTransfers.milliseconds));
        }
        table.print(row);
    }
    return done && any;
}

}  // namespace lumiset::bench
