// A backdrop to put titles on, made of the clip itself: the picture is magnified, repeated without visible seams, sent
// drifting in a direction, softened and graded. The tiles are a pattern without an end that is looked at through a
// window (tiles.h); the window reaches so far beyond the frame that the blur finds the pattern there too, so
// the softened picture drifts as one piece. The drift is a pure function of the time, and finer than a pixel.

#include <algorithm>
#include <cmath>
#include <new>

#include "effects/background_generator/grade.h"
#include "effects/background_generator/tiles.h"
#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/unit_color.h"
#include "frame/frame_operations.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kMagnify = 1,
    kBlur,
    kColor,
    kTint,
    kSaturation,
    kBrightness,
    kClarity,
    kOpacity,
    kAngle = 11,
    kSpeed,
    kCrossFade,
    kStartPosition,
    kParamCount = 16
};

constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("Image", {0, 0, 0, 0}),
    sliderParam("Magnify", 0.0F, {11, 20, 198, 30}, "Enlarges the image up to ten times", 0.0F, 10.0F),
    sliderParam("Blur", 0.5F, {77, 20, 198, 30}, "Sets how soft the image is"),
    colorParam("Color", 0xFFFFFF, {143, 20, 198, 30}, "Sets the tint color"),
    sliderParam("Tint", 0.5F, {209, 20, 198, 30}, "Moves the image towards the tint color, or away from it", -100.0F,
                100.0F, false),
    sliderParam("Saturation", 0.5F, {11, 110, 198, 30}, "Adjusts color strength", -100.0F),
    sliderParam("Brightness", 0.5F, {77, 110, 198, 30}, "Fades the image to black or to white", -100.0F),
    sliderParam("Clarity", 0.0F, {143, 110, 198, 30}, "Lets the unblurred image show through"),
    sliderParam("Opacity", 1.0F, {209, 110, 198, 30}, "Sets opacity of image"),
    groupClose("Image", {0, 0, 0, 0}),
    groupOpen("Motion", {0, 0, 0, 0}),
    sliderParam("Angle", 0.5F, {11, 230, 198, 30}, "Sets where the image drifts: 0 right, 90 up, 180 left, 270 down",
                0.0F, 360.0F),
    sliderParam("Speed", 0.0F, {77, 230, 198, 30}, "Sets how quickly the image drifts"),
    sliderParam("Cross Fade", 0.0F, {143, 230, 198, 30}, "Blends the edges of repeated images so that no seam shows"),
    pointParam("Start position", 0.5F, 0.5F, {11, 320, 198, 30},
               "Sets which point of the image is in the middle at the start"),
    groupClose("Motion", {0, 0, 0, 0}),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, float magnify, float blur, std::uint32_t color, float tint, float saturation,
                   float brightness, float clarity, float opacity, float angle, float speed, float crossFade,
                   float startX, float startY) {
    return preset(name, sliderValue(magnify), sliderValue(blur), colorValue(color), sliderValue(tint),
                  sliderValue(saturation), sliderValue(brightness), sliderValue(clarity), sliderValue(opacity),
                  sliderValue(angle), sliderValue(speed), sliderValue(crossFade), pointValue(startX, startY));
}

constexpr PresetTable kPresets(
    row("Reset to None", 0.0F, 0.0F, 0xFFFFFF, 0.5F, 0.5F, 0.5F, 0.0F, 1.0F, 0.5F, 0.0F, 0.0F, 0.5F, 0.5F),
    row("Color Stream", 0.25F, 0.6F, 0xFFFFFF, 0.5F, 0.8F, 0.5F, 0.0F, 1.0F, 0.5F, 0.22F, 1.0F, 0.5F, 0.5F),
    row("Dark Backdrop", 0.05F, 0.3F, 0x000000, 0.56F, 0.35F, 0.3F, 0.0F, 1.0F, 0.5F, 0.08F, 1.0F, 0.5F, 0.5F),
    row("Dreamy Haze", 0.05F, 0.45F, 0xFFFFFF, 0.62F, 0.42F, 0.58F, 0.25F, 1.0F, 0.0F, 0.07F, 1.0F, 0.5F, 0.5F),
    row("Rising Mist", 0.15F, 0.7F, 0xFFFFFF, 0.68F, 0.0F, 0.58F, 0.0F, 1.0F, 0.25F, 0.12F, 1.0F, 0.5F, 0.5F),
    row("Slow Drift", 0.05F, 0.08F, 0xFFFFFF, 0.5F, 0.5F, 0.5F, 0.0F, 1.0F, 0.5F, 0.12F, 1.0F, 0.5F, 0.5F),
    row("Soft Blue Wash", 0.1F, 0.6F, 0xFF6000, 0.82F, 0.12F, 0.42F, 0.0F, 1.0F, 0.5F, 0.08F, 1.0F, 0.5F, 0.5F),
    row("Warm Glow", 0.1F, 0.6F, 0x0070FF, 0.78F, 0.35F, 0.5F, 0.2F, 1.0F, 0.375F, 0.08F, 1.0F, 0.5F, 0.5F));

enum Program : std::size_t { kCopy, kCrossFadePattern, kTile, kReduce, kSoften, kGrade, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kResizeRegionFrag},
    {shaders::kPassVert, shaders::kBackgroundCrossFadeFrag},
    {shaders::kPassVert, shaders::kBackgroundTileFrag},
    {shaders::kPassVert, shaders::kBackgroundReduceFrag},
    {shaders::kPassVert, shaders::kBackgroundSoftenFrag},
    {shaders::kPassVert, shaders::kBackgroundGradeFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Background Generator",
    .flags = kFlagsEveryEffect | kFlagChangesAlpha | kFlagDependsOnTime,
    .params = kParams,
    .presets = kPresets,
    .needsTopDown = true,
    .mainProgram = &kPrograms[kGrade],
};
static_assert(valid(kInfo));

BackgroundGrade readGrade(const ParamReader& params) {
    const std::array<float, 3> color = unitColor(params.color(kColor));
    const float tint = 4.0F * params.slider(kTint) - 2.0F;
    const auto offset = [&](std::size_t channel) { return (color[channel] - 0.5F) * tint; };
    return {.clarity = params.slider(kClarity),
            .opacity = params.slider(kOpacity),
            .saturation = 2.0F * params.slider(kSaturation) - 1.0F,
            .brightness = 2.0F * params.slider(kBrightness) - 1.0F,
            .tints = {offset(0), offset(1), offset(2)}};
}

/// The blur's lengths in stored pixels, as `FrameBlur` takes them: both 0, or both 1 or more.
struct BlurTaps {
    std::int32_t columns;
    std::int32_t rows;
    [[nodiscard]] bool visible() const { return columns > 1 || rows > 1; }
};

BlurTaps blurTaps(float blur, const FrameFacts& facts) {
    constexpr float kFullBlur = 0.3F;  // Blur 1, of the height
    constexpr float kLongest = 1000.0F;
    const float rows = static_cast<float>(facts.height) * blur * kFullBlur;
    // A field's rows are twice as far apart; wide pixels are fewer for the same length.
    const float columns = rows * (facts.isField ? 2.0F : 1.0F) / PixelAspectScale(facts.info, false, false).aspect;
    if (std::max(rows, columns) < 1.0F) {
        return {0, 0};
    }
    const auto whole = [&](float taps) { return static_cast<std::int32_t>(std::clamp(taps, 1.0F, kLongest)); };
    return {whole(columns), whole(rows)};
}

/// Where everything lies, for both renderers.
struct Geometry {
    BlurTaps blur;
    TileAxis columns;
    TileAxis rows;

    /// The window is the source itself.
    [[nodiscard]] bool isIdentity() const {
        const auto plain = [](const TileAxis& axis) {
            return axis.isShift() && axis.first == 0.0 && axis.margin == 0 && axis.band == 0;
        };
        return plain(columns) && plain(rows);
    }
};

Geometry findGeometry(const ParamReader& params, const FrameFacts& facts) {
    const auto start = params.point(kStartPosition);
    const PatternPosition position =
        positionAt(facts.timeSeconds, params.slider(kAngle), params.slider(kSpeed), start.x, start.y);
    const BlurTaps blur = blurTaps(params.slider(kBlur), facts);
    // Beyond the taps themselves the blur spoils two pixels at each end.
    const auto margin = [&](std::int32_t taps) { return blur.visible() ? taps / 2 + 3 : 0; };
    const float magnify = params.slider(kMagnify);
    const float crossFade = params.slider(kCrossFade);
    // The rows of a top field lie a quarter of their distance above the middle, those of a bottom field below it.
    constexpr double kFieldPhase = 0.25;
    const double rowPhase = !facts.fieldMode ? 0.0 : facts.info->field == 0 ? -kFieldPhase : kFieldPhase;
    return {blur, tileAxis(facts.width, margin(blur.columns), crossFade, magnify, position.x, 0.0),
            tileAxis(facts.height, margin(blur.rows), crossFade, magnify, position.y, rowPhase)};
}

/// The same texture with its picture in a corner.
GPUTexture part(GPUTexture texture, std::int32_t width, std::int32_t height) {
    texture.width = width;
    texture.height = height;
    return texture;
}

/// The pattern's picture in one of the first two temporaries.
GPUTexture drawPattern(GPUFrame& frame, const Geometry& geometry) {
    const TileAxis& columns = geometry.columns;
    const TileAxis& rows = geometry.rows;
    const auto width = static_cast<float>(columns.length);
    const auto height = static_cast<float>(rows.length);
    const GPUTexture upright = part(frame.temporary(0), columns.length, rows.length);
    frame.pass(kCopy, frame.source(), upright, [&](ShaderProgram& program) {
        program.SetFloat2("regionOrigin", 0.0F, 0.0F);
        program.SetFloat2("regionSize", width, height);
        program.SetFloat2("targetSize", width, height);
    });
    if (columns.band == 0 && rows.band == 0) {
        return upright;
    }
    const GPUTexture pattern = part(frame.temporary(1), columns.period, rows.period);
    frame.pass(kCrossFadePattern, upright, pattern, [&](ShaderProgram& program) {
        program.SetFloat2("period", static_cast<float>(columns.period), static_cast<float>(rows.period));
        program.SetFloat2("fCrossFade", static_cast<float>(columns.band), static_cast<float>(rows.band));
    });
    return pattern;
}

/// The window, blurred by way of the first two temporaries, in the first one.
GPUTexture soften(GPUFrame& frame, const GPUTexture& window, const ReducedBlur& columns, const ReducedBlur& rows) {
    const GPUTexture first = part(frame.temporary(0), columns.length, rows.length);
    const GPUTexture second = part(frame.temporary(1), columns.length, rows.length);
    const bool reduced = columns.factor > 1 || rows.factor > 1;
    if (reduced) {
        frame.pass(kReduce, window, first, [&](ShaderProgram& program) {
            program.SetInt("columns", columns.factor);
            program.SetInt("rows", rows.factor);
            program.SetFloat2("targetSize", static_cast<float>(columns.length), static_cast<float>(rows.length));
        });
    }
    const auto along = [&](const ReducedBlur& blur, float x, float y, const GPUTexture& from, const GPUTexture& to) {
        frame.pass(kSoften, from, to, [&](ShaderProgram& program) {
            program.SetFloat2("axis", x, y);
            program.SetFloat("halfWidth", blur.halfWidth);
            program.SetFloat("centre", blur.centre);
        });
    };
    along(rows, 0.0F, 1.0F, reduced ? first : window, second);
    along(columns, 1.0F, 0.0F, second, first);
    return first;
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const BackgroundGrade grade = readGrade(params);
    const Geometry geometry = findGeometry(params, context);
    if (geometry.isIdentity()) {
        gradeBackground(source, source, destination, grade);
        return true;
    }
    const auto allocate = [&](Frame& frame) {
        return frame.Allocate(geometry.columns.windowLength(), geometry.rows.windowLength(), source.BytesPerPixel(),
                              &context.allocator, source.Format(), source.Flipped());
    };
    Frame window;
    if (!allocate(window) || !fillWindow(source, window, geometry.columns, geometry.rows, context.allocator)) {
        return false;
    }
    Frame blurred;
    const Frame* soft = &window;
    if (geometry.blur.visible() && grade.clarity < 1.0F) {
        soft = &blurred;
        if (!allocate(blurred) || !FrameBlur(window, blurred, static_cast<float>(geometry.blur.columns),
                                             static_cast<float>(geometry.blur.rows), &context.allocator, true)) {
            return false;
        }
    }
    Frame softView;
    Frame sharpView;
    softView.WrapSubRect(*soft, geometry.columns.margin, geometry.rows.margin, context.width, context.height,
                         source.Flipped());
    sharpView.WrapSubRect(window, geometry.columns.margin, geometry.rows.margin, context.width, context.height,
                          source.Flipped());
    gradeBackground(softView, sharpView, destination, grade);
    return true;
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const BackgroundGrade grade = readGrade(params);
    const Geometry geometry = findGeometry(params, facts);
    const std::int32_t windowWidth = geometry.columns.windowLength();
    const std::int32_t windowHeight = geometry.rows.windowLength();
    if (!frame.create(4, kPrograms, windowWidth, windowHeight)) {
        return false;
    }
    const GPUTexture pattern = drawPattern(frame, geometry);
    const GPUTexture& window = frame.temporary(2);
    frame.pass(kTile, pattern, window, [&](ShaderProgram& program) {
        program.SetFloat2("windowSize", static_cast<float>(windowWidth), static_cast<float>(windowHeight));
        program.SetFloat2("fShift", static_cast<float>(geometry.columns.first),
                          static_cast<float>(geometry.rows.first));
        program.SetFloat("texelStep", static_cast<float>(geometry.columns.step));
    });
    GPUTexture soft = window;
    ReducedBlur columns{1, windowWidth, 0.0F, 0.0F};
    ReducedBlur rows{1, windowHeight, 0.0F, 0.0F};
    if (geometry.blur.visible() && grade.clarity < 1.0F) {
        columns = reducedBlur(geometry.blur.columns, windowWidth);
        rows = reducedBlur(geometry.blur.rows, windowHeight);
        soft = soften(frame, window, columns, rows);
    }
    GPUTexture result = part(frame.temporary(3), facts.width, facts.height);
    frame.pass(kGrade, {soft, window}, result, [&](ShaderProgram& program) {
        const auto setVectors = [&](const char* name, float LevelCurve::*member) {
            std::array<float, 3> values{};
            for (std::size_t i = 0; i < values.size(); ++i) {
                values[i] = levelCurve(grade.tints[i], grade.brightness).*member;
            }
            program.SetFloat3(name, values[0], values[1], values[2]);
        };
        program.SetFloat2("frameSize", static_cast<float>(facts.width), static_cast<float>(facts.height));
        program.SetFloat2("margin", static_cast<float>(geometry.columns.margin),
                          static_cast<float>(geometry.rows.margin));
        program.SetFloat2("reduction", static_cast<float>(columns.factor), static_cast<float>(rows.factor));
        program.SetFloat("clarity", grade.clarity);
        program.SetFloat("fMul", grade.opacity);
        program.SetInt("hasSaturation", grade.hasSaturation() ? 1 : 0);
        program.SetFloat("fSaturation", lumaWeight(grade, !isFloatFormat(frame.source().format)) / 128.0F);
        program.SetInt("hasLevels", grade.hasLevels() ? 1 : 0);
        setVectors("gain", &LevelCurve::gain);
        setVectors("offset", &LevelCurve::offset);
        setVectors("least", &LevelCurve::least);
        setVectors("spread", &LevelCurve::spread);
        setVectors("floorLevel", &LevelCurve::floor);
    });
    return frame.finish(result);
}

using CBackgroundGenerator = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeBackgroundGenerator() noexcept {
    return new (std::nothrow) CBackgroundGenerator;
}

}  // namespace lumiset
