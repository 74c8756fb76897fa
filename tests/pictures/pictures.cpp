// Renders a set of pictures through the module's exports: every preset of every effect in every format, and every
// operation of the frame processor, on sources made by whole numbers alone. One build writes the results to a file,
// another build of the module compares its own with that file:
//   pictures write FILE
//   pictures compare FILE

#include <cstdio>
#include <string>

#include "tests/pictures/result_file.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::int32_t kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};
constexpr std::int32_t kWidth = 95;
constexpr std::int32_t kHeight = 54;

/// Colour ramps with noise; alpha with a hard-edged disc and a ramp.
Picture drawnPicture(std::int32_t width, std::int32_t height, std::int32_t format, std::uint32_t seed) {
    Picture picture(width, height, {.format = format, .padding = 12});
    std::uint32_t state = seed;
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            state = state * 1664525U + 1013904223U;
            const auto noise = static_cast<std::int32_t>(state >> 27U);
            const std::int32_t dx = 5 * x - 2 * width;
            const std::int32_t dy = 5 * y - 3 * height;
            const bool disc = dx * dx + dy * dy < height * height;
            const std::int32_t ramp = std::max(0, (4 * x - 3 * width) * 255 / width);
            picture.setPixel(x, y, (x * 255 / width + noise) % 256, (y * 255 / height + 2 * noise) % 256,
                             (x * y + noise) % 256, disc ? 255 : ramp);
        }
    }
    return picture;
}

void take(ResultFile& results, const std::string& name, bool done, const Picture& picture) {
    results.take({name + ", format " + std::to_string(picture.storage().format) + (done ? "" : ", refused"),
                  picture.isFloat(), picture.bytes()});
}

void renderPreset(ResultFile& results, const EffectTester& tester, std::uint32_t preset) {
    ValueHost host = tester.presetHost(preset);
    FrameRenderInfo field = frameInfo(12.48);
    field.flags = FrameRenderInfo::kHasField | FrameRenderInfo::kHasPixelAspect;
    field.field = 1;
    field.pixelAspect = 64.0 / 45.0;
    const std::string name =
        std::string(tester.effect().GetEffectName()) + ", " + tester.effect().GetPresetName(preset);
    for (const std::int32_t format : kFormats) {
        for (const FrameRenderInfo& info : {frameInfo(1.5), field}) {
            Picture source = drawnPicture(kWidth, kHeight, format, preset);
            Picture target = drawnPicture(kWidth, kHeight, format, 99);
            const bool done = tester.render(host, source, target, &info);
            take(results, name + (info.flags != 0 ? ", field" : ""), done, target);
        }
    }
}

struct Frames {
    IFrameProcessor& processor;
    const VideoFrameDesc* source;
    const VideoFrameDesc* other;
    const VideoFrameDesc* target;
};

struct Operation {
    const char* name;
    bool (*run)(const Frames& frames);
};

template <std::uint32_t Mode>
bool resizeImage(const Frames& f) {
    return f.processor.ResizeImage(f.source, f.target, Mode);
}

template <std::uint32_t Mode>
bool resizeRegion(const Frames& f) {
    const PixelRect region{7, 5, 40, 33};
    return f.processor.ResizeRegion(f.source, &region, f.target, Mode);
}

VideoFrameDesc packedVideo(VideoFrameDesc desc) {
    desc.bytesPerPixel = 2;
    return desc;
}

constexpr std::uint32_t kOrder[4] = {2, 0, 3, 1};

constexpr Operation kOperations[] = {
    {"CopyImage", [](const Frames& f) { return f.processor.CopyImage(f.source, f.target); }},
    {"ResizeImage, nearest", resizeImage<0>},
    {"ResizeImage, linear", resizeImage<1>},
    {"ResizeImage, cubic", resizeImage<2>},
    {"SwapChannelOrder", [](const Frames& f) { return f.processor.SwapChannelOrder(f.source, f.target); }},
    {"Yuv422ToBgra",
     [](const Frames& f) {
         const VideoFrameDesc video = packedVideo(*f.source);
         return f.processor.Yuv422ToBgra(&video, f.target, 200);
     }},
    {"BgraToYuv422",
     [](const Frames& f) {
         const VideoFrameDesc video = packedVideo(*f.target);
         return f.processor.BgraToYuv422(f.source, &video);
     }},
    {"SetChannel", [](const Frames& f) { return f.processor.SetChannel(f.target, 1, 77); }},
    {"AlphaOver, straight", [](const Frames& f) { return f.processor.AlphaOver(f.target, f.source, f.other, false); }},
    {"AlphaOver, premultiplied",
     [](const Frames& f) { return f.processor.AlphaOver(f.target, f.source, f.other, true); }},
    {"SwapChannels", [](const Frames& f) { return f.processor.SwapChannels(f.target, kOrder); }},
    {"PremultiplyAlpha", [](const Frames& f) { return f.processor.PremultiplyAlpha(f.target); }},
    {"YuvToColor", [](const Frames& f) { return f.processor.YuvToColor(f.source, f.target); }},
    {"ColorToYuv", [](const Frames& f) { return f.processor.ColorToYuv(f.source, f.target); }},
    {"FlipVertical", [](const Frames& f) { return f.processor.FlipVertical(f.target); }},
    {"FlipVerticalCopy", [](const Frames& f) { return f.processor.FlipVerticalCopy(f.source, f.target); }},
    {"CopyChannel", [](const Frames& f) { return f.processor.CopyChannel(f.source, f.target, 0, 2); }},
    {"InvertChannel", [](const Frames& f) { return f.processor.InvertChannel(f.target, 2); }},
    {"SquareSamples", [](const Frames& f) { return f.processor.SquareSamples(f.target); }},
    {"SquareRootSamples", [](const Frames& f) { return f.processor.SquareRootSamples(f.target); }},
    {"LimitSamples", [](const Frames& f) { return f.processor.LimitSamples(f.target, 0.2F, 0.4F, 0.6F, 0.8F); }},
    {"ResizeRegion, nearest", resizeRegion<0>},
    {"ResizeRegion, linear", resizeRegion<1>},
    {"ResizeRegion, cubic", resizeRegion<2>},
};

void runOperation(ResultFile& results, IFrameProcessor& processor, const Operation& operation) {
    for (const std::int32_t format : kFormats) {
        Picture source = drawnPicture(kWidth, kHeight, format, 1);
        Picture other = drawnPicture(kWidth, kHeight, format, 2);
        Picture target = drawnPicture(71, 63, format, 3);
        const VideoFrameDesc from = source.desc();
        const VideoFrameDesc second = other.desc();
        const VideoFrameDesc to = target.desc();
        const bool done = operation.run({processor, &from, &second, &to});
        take(results, operation.name, done, target);
    }
}

void renderAll(ResultFile& results) {
    for (std::uint32_t index = 0; index < effectCount(); ++index) {
        const EffectTester tester(index);
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            renderPreset(results, tester, preset);
        }
    }
    const Held<IEffectLibrary> library(GetEffectsLibrary());
    const Held<IFrameProcessor> processor(library->CreateFrameProcessor());
    for (const Operation& operation : kOperations) {
        runOperation(results, *processor, operation);
    }
}

}  // namespace
}  // namespace lumiset::test

int main(int argc, char** argv) {
    using namespace lumiset::test;
    const std::string mode = argc == 3 ? argv[1] : "";
    if (mode != "write" && mode != "compare") {
        std::fputs("usage: pictures write|compare FILE\n", stderr);
        return 2;
    }
    ResultFile results(argv[2], mode == "write");
    renderAll(results);
    return results.finish() ? 0 : 1;
}
