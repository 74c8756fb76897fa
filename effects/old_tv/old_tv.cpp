// A worn-out television set. In order: colour adjustment, a ghost of the picture, static, scan lines, tears
// where the horizontal sync is lost, a picture that rolls through, a travelling bright band, and a rounded tube
// with a soft edge on a black or transparent surround. What varies with time is a pure function of parameters
// and render time (plan.h), so any frame can be rendered alone.

#include <algorithm>
#include <cmath>
#include <new>
#include <optional>
#include <span>
#include <utility>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/old_tv/passes.h"
#include "effects/old_tv/plan.h"
#include "effects/old_tv/steps.h"
#include "effects/old_tv/tube.h"
#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/image_primitives.h"
#include "frame/scratch_block.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kNoise = 1,
    kChroma,
    kTintColor,
    kTint,
    kSaturation,
    kBrightness,
    kContrast,
    kGhosting,
    kResolution = 11,
    kIntensity,
    kSeverity = 15,
    kFrequency,
    kSpeed = 19,
    kPeriod,
    kVerticalBlank,
    kRate = 24,
    kOverlap,
    kCurvature = 28,
    kSoftenEdge,
    kOpacity,
    kParamCount = 32
};

constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("Video Quality", {0, 0, 0, 30}),
    sliderParam("Noise", 0.0F, {11, 20, 0, 30}, "Adds static to image"),
    sliderParam("Chroma", 0.5F, {77, 20, 0, 30}, "Adjusts hue of image", -100.0F),
    colorParam("Tint", 0x000000, {11, 115, 198, 30}, "Sets the tint color"),
    sliderParam("Tint", 0.5F, {77, 115, 0, 30}, "Adjusts mix of tint", -100.0F),
    sliderParam("Saturation", 0.5F, {11, 210, 0, 30}, "Adjusts color strength", -100.0F),
    sliderParam("Brightness", 0.5F, {77, 210, 0, 30}, "Adjusts brightness of image", -100.0F),
    sliderParam("Contrast", 0.5F, {11, 305, 0, 30}, "Sets image contrast", -100.0F),
    sliderParam("Ghosting", 0.0F, {77, 305, 0, 30}, "Adds ghosting to image"),
    groupClose("Video Quality", {0, 0, 138, 400}),
    groupOpen("Scan Lines", {154, 30, 0, 30}),
    sliderParam("Resolution", 0.5F, {165, 20, 0, 30}, "Sets thickness of scan lines", 10.0F, 200.0F),
    sliderParam("Intensity", 0.4F, {231, 20, 0, 30}, "Sets brightness of scan lines"),
    groupClose("Scan Lines", {154, 0, 136, 118}),
    groupOpen("Horizontal Sync", {163, 30, 0, 30}),
    sliderParam("Severity", 0.3F, {315, 20, 0, 30}, "Sets severity of horizontal sync errors"),
    sliderParam("Frequency", 0.85F, {381, 20, 0, 30}, "Sets frequency of horizontal sync errors"),
    groupClose("Horizontal Sync", {305, 0, 136, 118}),
    groupOpen("Vertical Sync", {154, 53, 0, 30}),
    sliderParam("Speed", 0.75F, {165, 151, 0, 30}, "Sets how quickly the image rolls", -100.0F),
    sliderParam("Period", 0.5F, {231, 151, 0, 30}, "Sets how frequently the image rolls", 0.0F, 10.0F),
    booleanParam("Vertical Blank", true, {165, 245, 132, 10}, "Adds a black bar as the image rolls"),
    groupClose("Vertical Sync", {154, 128, 136, 144}),
    groupOpen("Scan Phasing", {307, -56, 0, 30}),
    sliderParam("Rate", 0.5F, {315, 151, 0, 30}, "Sets how quickly the bright band moves", -100.0F),
    sliderParam("Overlap", 0.5F, {381, 151, 0, 30}, "Sets height of the bright band"),
    groupClose("Scan Phasing", {305, 129, 136, 118}),
    groupOpen("Shape", {14, 60, 0, 0}),
    sliderParam("Curvature", 0.9F, {165, 305, 0, 30}, "Sets the roundness of the TV image"),
    sliderParam("Soften Edge", 0.2F, {231, 305, 0, 30}, "Feathers edge of the TV image"),
    sliderParam("Opacity", 0.0F, {297, 305, 0, 30}, "Sets opacity of TV image border"),
    groupClose("Shape", {154, 282, 202, 118}),
});
static_assert(kParams.size() == kParamCount);

/// A preset stores a value for each parameter index; those of group markers are never read.
constexpr auto row(const char* name, float noise, float chroma, std::uint32_t tintColor, float tint, float saturation,
                   float brightness, float contrast, float ghosting, float resolution, float intensity, float severity,
                   float frequency, float speed, float period, bool verticalBlank, float rate, float overlap,
                   float curvature, float softenEdge, float opacity) {
    constexpr ParamValue none{};
    return preset(name, none, sliderValue(noise), sliderValue(chroma), colorValue(tintColor), sliderValue(tint),
                  sliderValue(saturation), sliderValue(brightness), sliderValue(contrast), sliderValue(ghosting), none,
                  none, sliderValue(resolution), sliderValue(intensity), none, none, sliderValue(severity),
                  sliderValue(frequency), none, none, sliderValue(speed), sliderValue(period),
                  booleanValue(verticalBlank), none, none, sliderValue(rate), sliderValue(overlap), none, none,
                  sliderValue(curvature), sliderValue(softenEdge), sliderValue(opacity), none);
}

// clang-format off
constexpr PresetTable kPresets(
    //                            Noise    Chroma   Tint      (mix)    Satur.   Bright.  Contrast  Ghosting  Resolut.  Intens.  Severity  Freq.    Speed    Period   Blank  Rate     Overlap  Curv.    Soften   Opacity
    row("Broken Antenna",         0.5501F, 0.5526F, 0x570DB3, 0.5001F, 0.5F,    0.6501F, 0.5501F,  0.9351F,  1.0F,     0.2001F, 0.3F,     0.6501F, 0.4501F, 0.0501F, true,  0.5251F, 0.2501F, 0.0F,    0.0F,    0.0F),
    row("Call the Repairman",     0.1001F, 0.0F,    0xFF8000, 0.5001F, 1.0F,    0.5001F, 0.5001F,  0.2001F,  0.3173F,  0.4801F, 0.2501F,  0.8001F, 0.8001F, 0.0001F, true,  0.5001F, 0.0001F, 0.2001F, 0.2001F, 1.0F),
    row("Console TV",             0.1001F, 0.4251F, 0xFF8000, 0.5001F, 0.5751F, 0.5001F, 0.5001F,  0.2101F,  0.4154F,  0.3551F, 0.2001F,  0.0501F, 0.5001F, 0.0001F, true,  0.5001F, 0.0001F, 0.3001F, 0.5001F, 0.0F),
    row("Grandpa's TV",           0.0F,    0.5001F, 0xFF8000, 0.5751F, 0.0F,    0.5001F, 0.5501F,  0.0301F,  0.2415F,  0.4001F, 0.1501F,  0.1001F, 0.4501F, 0.6701F, true,  0.5001F, 0.0F,    0.7451F, 1.0F,    0.0F),
    row("Greenscreen",            0.0F,    0.5001F, 0x40FF00, 0.7501F, 0.0F,    0.5001F, 0.5001F,  0.0001F,  0.4829F,  0.6501F, 0.0001F,  0.0001F, 0.5001F, 0.0001F, false, 0.5001F, 0.0001F, 0.2001F, 0.3001F, 0.0F),
    row("Messed Up",              0.2F,    0.565F,  0x0D3EAF, 0.355F,  0.5F,    0.55F,   0.58F,    0.275F,   0.5F,     0.4F,    0.3F,     0.85F,   0.75F,   0.5F,    true,  0.5F,    0.5F,    0.9F,    0.2F,    1.0F),
    row("Reset to None",          0.0F,    0.5F,    0x000000, 0.5F,    0.5F,    0.5001F, 0.5001F,  0.0F,     1.0F,     0.0F,    0.0F,     0.0F,    0.5001F, 0.5F,    true,  0.5F,    0.0F,    0.0F,    0.0F,    0.0F),
    row("Shoot the Screen",       0.0F,    0.6001F, 0xFF8000, 0.5001F, 0.5751F, 0.5001F, 0.5001F,  0.0301F,  0.323F,   0.4001F, 0.0001F,  0.0001F, 0.5001F, 0.0001F, true,  0.5251F, 0.6001F, 0.1501F, 0.3001F, 0.0F),
    row("Snow",                   1.0F,    0.5F,    0xFFFFFF, 0.5001F, 0.5F,    0.5001F, 0.5001F,  0.0001F,  0.4003F,  0.4F,    0.0F,     0.0F,    0.5001F, 0.0F,    true,  0.6251F, 1.0F,    0.2501F, 0.4001F, 0.0F),
    row("Transmission from Mars", 0.3001F, 0.5F,    0x570DB3, 0.7301F, 0.5F,    0.55F,   0.5751F,  0.2701F,  0.5F,     0.4F,    0.3F,     0.85F,   0.4501F, 0.0501F, true,  0.5501F, 0.5F,    0.7001F, 0.88F,   0.0F),
    row("Tube Time",              0.0F,    0.5001F, 0x570DB3, 0.5001F, 0.5F,    0.5001F, 0.5501F,  0.0001F,  0.6553F,  0.4001F, 0.0001F,  0.0001F, 0.5001F, 0.0001F, true,  0.5001F, 0.0F,    0.3501F, 0.2501F, 0.0F),
    row("Twilight Zone",          0.22F,   0.3401F, 0x570DB3, 0.5F,    0.01F,   0.4201F, 0.725F,   0.0001F,  0.3453F,  0.37F,   0.0001F,  0.0001F, 0.5001F, 0.0001F, true,  0.5001F, 0.0F,    0.3501F, 0.2501F, 1.0F));
// clang-format on

using enum OldTVPasses::Program;

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kColorMatrixFrag},
    {shaders::kPassVert, shaders::kOldTvGhostFrag},
    {shaders::kPassVert, shaders::kOldTvStaticFrag},
    {shaders::kPassVert, shaders::kOldTvScanLinesFrag},
    {shaders::kPassVert, shaders::kOldTvTearFrag},
    {shaders::kPassVert, shaders::kOldTvRollFrag},
    {shaders::kPassVert, shaders::kOldTvBandFrag},
    {shaders::kPassVert, shaders::kOldTvTubeFrag},
    {shaders::kPassVert, shaders::kBoxAlphaFrag},
    {shaders::kPassVert, shaders::kSetAlphaFrag},
    {shaders::kPassVert, shaders::kOverColorFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Old TV",
    .flags = kFlagsEveryEffect | kFlagChangesAlpha | kFlagDependsOnTime,
    .params = kParams,
    .presets = kPresets,
    .needsTopDown = true,
    .mainProgram = &kPrograms[kColor],
};
static_assert(valid(kInfo));

OldTVSettings readSettings(const ParamReader& params) {
    const float ghosting = params.slider(kGhosting);
    return {
        .noise = params.slider(kNoise),
        .hue = 0.5F * params.slider(kChroma) + 0.25F,
        .tintColor = params.color(kTintColor),
        .tint = params.slider(kTint),
        .saturation = params.slider(kSaturation),
        .brightness = params.slider(kBrightness),
        .contrast = params.slider(kContrast),
        .ghosting = 0.5F * ghosting * ghosting,
        .resolution = params.slider(kResolution),
        .intensity = params.slider(kIntensity),
        .severity = params.slider(kSeverity),
        .frequency = params.slider(kFrequency),
        .rollSpeed = 2.0F * params.slider(kSpeed) - 1.0F,
        .rollPeriod = params.slider(kPeriod),
        .verticalBlank = params.boolean(kVerticalBlank),
        .bandRate = 2.0F * params.slider(kRate) - 1.0F,
        .bandHeight = params.slider(kOverlap),
        .curvature = params.slider(kCurvature),
        .softenEdge = params.slider(kSoftenEdge),
        .opacity = params.slider(kOpacity),
    };
}

/// Amounts up to this leave their step out.
constexpr float kOff = 0.001F;
/// A picture of fewer columns or rows has no tube.
constexpr std::int32_t kSmallestTube = 16;

/// What happens in a frame, for both renderers.
struct Events {
    float time;
    float cycleTime;  ///< what the bright band runs on
    std::optional<TearEvent> tear;
    std::optional<RollEvent> roll;
    bool hasTube;
};

Events findEvents(const OldTVSettings& settings, const FrameFacts& facts) {
    Events events{};
    events.time = eventTime(facts.timeSeconds);
    events.cycleTime = events.time;
    if (settings.frequency > kOff) {
        events.tear = findTear(settings.frequency, events.time);
    }
    // Tiny pictures have no tube, and what rolls and glows on it stays unseen.
    events.hasTube = facts.width >= kSmallestTube && facts.height >= kSmallestTube;
    const auto roll = findRoll(settings, facts.height, events.cycleTime);
    if (events.hasTube) {
        events.roll = roll;
    }
    return events;
}

/// Steps that move pixels draw from one frame to the other and swap them; the others work in place.
struct FramePair {
    Frame* current;
    Frame* other;

    void swap() { std::swap(current, other); }
};

/// Grey noise is made in square pixels, so that wide pixels get wide grains; this is its size for a frame.
ImgSize squareNoiseSize(const RenderContext& context, bool isFloat) {
    constexpr float kLargest = 32767.0F;
    const float aspect = PixelAspectScale(context.info, true, false).aspect;
    if (std::fabs(aspect - 1.0F) < (isFloat ? 0.0001F : 0.001F)) {
        return {context.width, context.height};
    }
    const auto width = static_cast<float>(context.width);
    const auto height = static_cast<float>(context.height);
    return {static_cast<std::int32_t>(std::min(aspect < 1.0F ? width / aspect : width, kLargest)),
            static_cast<std::int32_t>(std::min(aspect < 1.0F ? height : height * aspect, kLargest))};
}

/// Black-and-white noise about a middle grey, in one part or in several for threads.
class Static {
public:
    Static(Frame& noise, float time, bool cut) : Static(noise, staticSeed(time), cut) {}

    [[nodiscard]] std::int32_t parts() const { return m_parts.count(); }
    /// First for every part.
    void prepare(std::int32_t part) {
        m_parts.measure(part);
        const std::int32_t first = rowBefore(part);
        const ImgSize rows{m_noise.Width(), rowBefore(part + 1) - first};
        if (rows.height == 0) {
            return;
        }
        if (isFloatFormat(m_noise.Format())) {
            ImgSetFC1(m_noise.row<float>(first), m_noise.Stride(), 0.5F, rows);
        } else {
            ImgSet8C1(m_noise.row<std::uint8_t>(first), m_noise.Stride(), 127, rows);
        }
    }
    /// Then for every part.
    void fill(std::int32_t part) const {
        if (isFloatFormat(m_noise.Format())) {
            m_parts.addF(part, m_noise.row<float>(0), m_noise.Stride(), 0.0F, 0.5F);
        } else {
            m_parts.add8C1(part, m_noise.Data(), m_noise.Stride(), 0.0F, 127.0F);
        }
    }

private:
    Static(Frame& noise, std::uint32_t seed, bool cut)
        : m_noise(noise), m_parts(seed, {noise.Width(), noise.Height()}, cut) {}
    [[nodiscard]] std::int32_t rowBefore(std::int32_t part) const {
        return static_cast<std::int32_t>(std::int64_t{m_noise.Height()} * part / m_parts.count());
    }

    Frame& m_noise;
    GaussParts m_parts;
};

/// Rows that the first steps work on while they are in the processor's cache.
std::int32_t cachedRows(const Frame& frame) {
    constexpr std::int32_t kCachedBytes = 256 * 1024;
    return std::max(kCachedBytes / std::max(frame.Stride(), 1), 1);
}

/// Calls `work(y, rows)` for as many rows at a time, from `first` on.
template <class Work>
void inCachedRows(const Frame& frame, std::int32_t first, std::int32_t count, const Work& work) {
    const std::int32_t step = cachedRows(frame);
    for (std::int32_t y = first; y < first + count; y += step) {
        work(y, std::min(step, first + count - y));
    }
}

Bands pictureParts(const RenderContext& context) {
    return bandsForThreads(&context.allocator, {context.width, context.height});
}

/// What the steps take from the reserve.
std::int64_t scratchBytes(const OldTVSettings& settings, const RenderContext& context, std::int32_t format) {
    const std::int32_t sampleBytes = BytesPerChannel(format);
    const ImgSize size{context.width, context.height};
    const auto image = [](ImgSize of, std::int32_t pixelBytes) {
        return MemoryAllocator::ReserveForImage(of.width, of.height, pixelBytes);
    };
    std::int64_t drawing = ScratchBlock::reserveFor(pictureParts(context).count() * ghostFloats(context.width) *
                                                    static_cast<std::int64_t>(sizeof(float)));
    if (settings.noise > kOff) {
        const ImgSize square = squareNoiseSize(context, isFloatFormat(format));
        drawing += image(size, sampleBytes) + image(square, sampleBytes) +
                   ScratchBlock::reserveFor(FrameResizeScratch(square, size, 1, kResizeLinear, context.allocator));
    }
    return image(size, formatBytesPerPixel(format)) +
           std::max(drawing, tubeScratch(settings.softenEdge, context, format));
}

/// Static, where `noise` is one, and scan lines.
bool drawOver(Frame& frame, const Frame* noise, const OldTVSettings& settings, const RenderContext& context) {
    return inBands(&context.allocator, {context.width, context.height}, [&](std::int32_t first, std::int32_t count) {
        inCachedRows(frame, first, count, [&](std::int32_t y, std::int32_t rows) {
            if (noise != nullptr) {
                Frame to;
                Frame grey;
                to.WrapSubRect(frame, 0, y, context.width, rows, false);
                grey.WrapSubRect(*noise, 0, y, context.width, rows, false);
                addStatic(to, grey, static_cast<std::uint8_t>(settings.noise * 255.0F));
            }
            for (std::int32_t row = y; settings.intensity > kOff && row < y + rows; ++row) {
                darkenRow(frame, row, scanLineFactor(settings, frame.Height(), frame.Height() - 1 - row));
            }
        });
        return true;
    });
}

/// Colour, ghost, static and scan lines, which leave every pixel in its row.
bool drawPicture(const Frame& source, Frame& frame, const OldTVSettings& settings, const RenderContext& context,
                 float time) {
    const std::int32_t format = source.Format();
    const bool hasStatic = settings.noise > kOff;
    const ImgSize square = squareNoiseSize(context, isFloatFormat(format));
    const bool isSquare = square.width == context.width && square.height == context.height;
    const std::int64_t lumaFloats = ghostFloats(context.width);
    const Bands parts = pictureParts(context);
    ScratchBlock block(context.allocator);
    block.add<float>(parts.count() * lumaFloats);
    Frame noise;
    Frame squareNoise;
    const auto allocate = [&](Frame& mask, ImgSize size) {
        return mask.Allocate(size.width, size.height, BytesPerChannel(format), &context.allocator, MaskFormat(format),
                             false);
    };
    if (!block.allocate() || (hasStatic && (!allocate(noise, {context.width, context.height}) ||
                                            (!isSquare && !allocate(squareNoise, square))))) {
        return false;
    }
    auto* luma = block.take<float>(parts.count() * lumaFloats);
    // The height, not the width, measures the ghost's distance: its look depends on it.
    const auto shift = static_cast<std::int32_t>(settings.ghosting * 0.5F * static_cast<float>(context.height));
    const auto colorPart = [&](std::int32_t part) {
        inCachedRows(frame, parts.first(part), parts.rowsOf(part), [&](std::int32_t y, std::int32_t rows) {
            Frame from;
            Frame to;
            from.WrapSubRect(source, 0, y, context.width, rows, false);
            to.WrapSubRect(frame, 0, y, context.width, rows, false);
            ColorAdjust(from, to, settings.contrast, settings.brightness, settings.saturation, settings.hue,
                        settings.tintColor, settings.tint, nullptr);
            addGhost(to, shift, luma + part * lumaFloats);
        });
    };
    std::optional<Static> made;
    if (hasStatic) {
        made.emplace(isSquare ? noise : squareNoise, time, parts.count() > 1);
    }
    const std::int32_t others = hasStatic ? made->parts() : 0;
    const MemoryAllocator* threads = parts.count() > 1 ? &context.allocator : nullptr;
    runTasks(threads, parts.count() + others, [&](std::int32_t i) {
        if (i < others) {
            made->prepare(i);
        } else {
            colorPart(i - others);
        }
    });
    runTasks(threads, others, [&](std::int32_t i) { made->fill(i); });
    if (hasStatic && !isSquare && !FrameResizeInto(squareNoise, noise, kResizeLinear)) {
        return false;
    }
    return drawOver(frame, hasStatic ? &noise : nullptr, settings, context);
}

void applyTear(FramePair& frames, const TearEvent& tear, const OldTVSettings& settings) {
    std::array<TearStrip, kTearSteps> strips;
    const std::size_t count =
        tearStrips(tear, settings.severity, frames.current->Width(), frames.current->Height(), strips);
    tearRows(*frames.current, *frames.other, std::span(strips).first(count));
    frames.swap();
}

/// The band wraps once at the picture's height.
void applyBand(Frame& frame, const BrightBand& band) {
    inBands(frame.Resources(), {frame.Width(), frame.Height()}, [&](std::int32_t first, std::int32_t rows) {
        for (std::int32_t y = first; y < first + rows; ++y) {
            for (const std::int32_t at : {y, y + frame.Height()}) {
                if (at >= band.top && at < band.bottom) {
                    brightenRow(frame, y, band.gain(at));
                }
            }
        }
        return true;
    });
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const OldTVSettings settings = readSettings(params);
    const Events events = findEvents(settings, context);
    const bool tears = events.tear.has_value();
    const bool rolls = events.roll.has_value();

    Frame scratch;
    if (!context.allocator.Reserve(scratchBytes(settings, context, source.Format())) ||
        !scratch.Allocate(context.width, context.height, source.BytesPerPixel(), &context.allocator, source.Format(),
                          false)) {
        return false;
    }
    // These steps swap the frames; the last one shall leave the picture in the destination.
    const bool hasSurround = settings.opacity >= kOff;
    FramePair frames{&destination, &scratch};
    if (tears != (rolls != hasSurround)) {
        frames.swap();
    }
    bool done = drawPicture(source, *frames.current, settings, context, events.time);
    if (tears) {
        applyTear(frames, *events.tear, settings);
    }
    if (rolls) {
        rollPicture(*frames.current, *frames.other, *events.roll);
        frames.swap();
    }
    if (events.hasTube) {
        applyBand(*frames.current, findBand(settings, context.height, events.cycleTime));
        done = done && bendTube(*frames.current, *frames.other, settings.curvature, context.allocator) &&
               softenTubeEdge(*frames.current, settings.softenEdge, context);
    }
    if (hasSurround) {
        FrameFillColor(*frames.other, static_cast<std::uint32_t>(settings.opacity * 255.0F) << 24U);
        FrameAlphaOver(*frames.current, *frames.other, *frames.other, false);
        frames.swap();
    }
    return done && (frames.current == &destination || FrameCopy(*frames.current, destination));
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const OldTVSettings settings = readSettings(params);
    const Events events = findEvents(settings, facts);
    if (!frame.create(4, kPrograms)) {
        return false;
    }
    OldTVPasses passes(frame);
    float matrix[3][4];
    BuildColorMatrix(settings.contrast, settings.brightness, settings.saturation, settings.hue, settings.tintColor,
                     settings.tint, kFormatBgraFloat, matrix, true);
    passes.adjustColor(kColor, matrix);
    if (settings.ghosting > 0.0F) {
        passes.draw(kGhost, [&](ShaderProgram& program) {
            program.SetFloat("fGhosting", settings.ghosting);
            program.SetInt("nSizeX", facts.width);
            program.SetInt("nSizeY", facts.height);
        });
    }
    if (settings.noise > kOff) {
        passes.addStatic(settings, events.time);
    }
    if (settings.intensity > 0.0F) {
        passes.draw(kScanLines, [&](ShaderProgram& program) {
            program.SetFloat("fIntensity", settings.intensity);
            program.SetFloat("fResolution", settings.resolution);
            program.SetInt("nSizeY", facts.height);
            program.SetFloat("fLenMin", kFewestScanLineTurns);
            program.SetFloat("fLenMax", kMostScanLineTurns);
        });
    }
    if (events.tear.has_value()) {
        passes.tear(*events.tear, settings.severity);
    }
    if (events.roll.has_value()) {
        passes.draw(kRoll, [&](ShaderProgram& program) {
            program.SetFloat("upperSource", static_cast<float>(events.roll->upperSource));
            program.SetFloat("upperRow", static_cast<float>(events.roll->upperRow));
            program.SetFloat("lowerRow", static_cast<float>(events.roll->lowerRow));
        });
    }
    if (events.hasTube) {
        const BrightBand band = findBand(settings, facts.height, events.cycleTime);
        passes.draw(kBand, [&](ShaderProgram& program) {
            program.SetFloat("shiftVal", static_cast<float>(band.top));
            program.SetInt("nLen", band.bottom - band.top);
        });
        passes.bendTube(settings.curvature);
        passes.softenEdge(settings.softenEdge, facts);
    }
    if (settings.opacity >= kOff) {
        passes.draw(kSurround,
                    [&](ShaderProgram& program) { program.SetFloat4("Color", 0.0F, 0.0F, 0.0F, settings.opacity); });
    }
    return frame.finish(passes.picture());
}

using COldTV = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeOldTv() noexcept {
    return new (std::nothrow) COldTV;
}

}  // namespace lumiset
