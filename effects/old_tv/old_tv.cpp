// A worn-out television set. In order: colour adjustment, a ghost of the picture, static, scan lines, tears
// where the horizontal sync is lost, a picture that rolls through, a travelling bright band, and a rounded tube
// with a soft edge on a black or transparent surround. What varies with time is a pure function of parameters
// and render time (plan.h), so any frame can be rendered alone.

#include <algorithm>
#include <new>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/old_tv/passes.h"
#include "effects/old_tv/picture.h"
#include "effects/old_tv/plan.h"
#include "effects/old_tv/tube.h"
#include "frame/frame_operations.h"

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

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const OldTVSettings settings = readSettings(params);
    const OldTVEvents events = findEvents(settings, context.width, context.height, context.timeSeconds);
    const std::int32_t format = source.Format();
    const TubeLook tube{events.hasTube ? settings.curvature : 0.0F, events.hasTube ? settings.softenEdge : 0.0F,
                        settings.opacity >= kOldTVOff ? settings.opacity : 0.0F};
    const bool bends = tube.curvature > 0.0F;
    const std::int64_t frameBytes =
        bends ? MemoryAllocator::ReserveForImage(context.width, context.height, source.BytesPerPixel()) : 0;
    Frame flat;
    if (!context.allocator.Reserve(
            frameBytes + std::max(pictureScratch(settings, context, format), tubeScratch(tube, context, format))) ||
        (bends &&
         !flat.Allocate(context.width, context.height, source.BytesPerPixel(), &context.allocator, format, false))) {
        return false;
    }
    Frame& picture = bends ? flat : destination;
    return drawPicture(source, picture, settings, events, context) && drawTube(picture, destination, tube, context);
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const OldTVSettings settings = readSettings(params);
    const OldTVEvents events = findEvents(settings, facts.width, facts.height, facts.timeSeconds);
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
    if (settings.noise > kOldTVOff) {
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
    if (settings.opacity >= kOldTVOff) {
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
