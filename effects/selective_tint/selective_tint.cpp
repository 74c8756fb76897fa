// Tints the inside and the outside of a shape that is pinned to four corners, each in its own colour and with its own
// choice of what colours of the picture take it; the mask of corner_mask.h decides between the two, and its feather
// is the gradient from one to the other. A tint follows the picture's brightness: black stays black, the middle tones
// take the tint's colour, and highlights are drawn towards white as far as the colour is bright.

#include <new>

#include "effects/corner_mask/corner_mask_gpu.h"
#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/selective_tint/tint_mix.h"
#include "frame/frame_operations.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kInnerGroup = kMaskGroupEnd + 1,
    kInnerColor,
    kInnerBlend,
    kInnerMask,
    kInnerGroupEnd,
    kOuterGroup,
    kOuterColor,
    kOuterBlend,
    kOuterMask,
    kOuterGroupEnd,
    kBlendMode,
    kParamCount
};

constexpr const char* kBlendModes[] = {"Normal", "Pop",         "Screen",     "Multiply", "Lighten",
                                       "Darken", "Color Dodge", "Color Burn", "Negation", "Hue"};
static_assert(std::size(kBlendModes) == static_cast<std::size_t>(TintMode::kCount));

constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("Shape", {0, 0, 0, 30}),
    pointParam("Top Left", 0.2F, 0.2F, {11, 18, 198, 30}, "Sets the top left corner of the mask area"),
    pointParam("Top Right", 0.8F, 0.2F, {209, 18, 198, 30}, "Sets the top right corner of the mask area"),
    pointParam("Bottom Left", 0.2F, 0.8F, {11, 108, 198, 30}, "Sets the bottom left corner of the mask area"),
    pointParam("Bottom Right", 0.8F, 0.8F, {209, 108, 198, 30}, "Sets the bottom right corner of the mask area"),
    sliderParam("Curve", 0.5001F, {407, 18, 66, 30}, "Sets the roundness of the mask"),
    sliderParam("Gradient", 0.0F, {407, 108, 198, 30}, "Sets amount of blending between inner and outer regions"),
    booleanParam("Test Mask", false, {11, 198, 132, 10}, "Shows area outside mask as negative image"),
    groupClose("Shape", {0, 0, 466, 228}),
    groupOpen("Inner Tint", {11, 258, -18, 30}),
    colorParam("Color", 0xC95E2B, {14, 254, 66, 30}, "Sets the tint color"),
    sliderParam("Blend", 0.0F, {88, 254, 66, 30}, "Adjusts mix of tint"),
    sliderParam("Mask", 0.0F, {162, 254, 66, 30}, "Selects what colors to apply tint"),
    groupClose("Inner Tint", {0, 236, 224, 108}),
    groupOpen("Outer Tint", {202, 290, -18, 120}),
    colorParam("Color", 0x00FF00, {256, 254, 66, 30}, "Sets the tint color"),
    sliderParam("Blend", 0.0F, {330, 254, 66, 30}, "Adjusts mix of tint"),
    sliderParam("Mask", 0.0F, {404, 254, 66, 30}, "Selects what colors to apply tint"),
    groupClose("Outer Tint", {242, 236, 224, 108}),
    choiceParam("Blend Mode", kBlendModes, 0, {7, 358, 100, 20}, "Selects how tint impacts source image"),
});
static_assert(kParams.size() == kParamCount);

struct PresetTint {
    std::uint32_t color;
    float blend;
    float mask;
};

// All presets blend normally.
constexpr auto row(const char* name, ParamValue::Point topLeft, ParamValue::Point topRight,
                   ParamValue::Point bottomLeft, ParamValue::Point bottomRight, float curve, float gradient,
                   bool testMask, PresetTint inner, PresetTint outer) {
    return preset(name, pointValue(topLeft.x, topLeft.y), pointValue(topRight.x, topRight.y),
                  pointValue(bottomLeft.x, bottomLeft.y), pointValue(bottomRight.x, bottomRight.y), sliderValue(curve),
                  sliderValue(gradient), booleanValue(testMask), colorValue(inner.color), sliderValue(inner.blend),
                  sliderValue(inner.mask), colorValue(outer.color), sliderValue(outer.blend), sliderValue(outer.mask),
                  choiceValue(0));
}

// clang-format off
constexpr PresetTable kPresets(
    row("Blue Vignette", {0.1249F, 0.07495F}, {0.8751F, 0.07495F}, {0.1249F, 0.9251F}, {0.8751F, 0.9251F}, 0.442F, 0.2363F, false, {0x55AAFF, 0.165F, 0.0F}, {0xB43905, 1.0F, 0.0F}),
    row("Center Spotlight", {0.25F, 0.25F}, {0.7501F, 0.25F}, {0.25F, 0.7501F}, {0.7501F, 0.7501F}, 0.7833F, 0.3545F, false, {0xF0FCC9, 1.0F, 1.0F}, {0x000000, 0.8645F, 0.0F}),
    row("Death Ray", {0.3721F, 0.0F}, {0.6163F, 0.0F}, {0.3721F, 1.0F}, {0.7093F, 1.0F}, 0.0F, 0.15F, false, {0x00FFFF, 1.0F, 0.0F}, {0xC08000, 0.0F, 0.0F}),
    row("Enhanced Blue Sky", {0.0F, 0.0F}, {1.0F, 0.0F}, {0.0F, 0.6744F}, {1.0F, 0.5814F}, 0.0F, 0.3333F, false, {0xFF8000, 1.0F, 1.0F}, {0x000000, 0.0F, 0.0F}),
    row("Golden Glow", {0.3023F, 0.09302F}, {0.7558F, 0.06977F}, {0.2674F, 0.8605F}, {0.8605F, 0.8372F}, 0.0F, 0.6F, false, {0x0CCAFF, 1.0F, 0.22F}, {0xBA6909, 0.35F, 0.27F}),
    row("Heat Lamp", {0.0F, 0.0F}, {1.0F, 0.0F}, {0.186F, 0.5814F}, {0.8721F, 0.4419F}, 0.0F, 1.0F, false, {0x0000FF, 1.0F, 0.775F}, {0xC08000, 0.2351F, 1.0F}),
    row("Instant Tan", {0.2442F, 0.2326F}, {0.7209F, 0.1628F}, {0.407F, 0.7442F}, {0.7093F, 0.6977F}, 0.585F, 0.29F, false, {0x314B9B, 0.715F, 1.0F}, {0xC08000, 0.0F, 0.0F}),
    row("Moonlit Night", {0.7501F, 0.0F}, {1.0F, 0.0F}, {0.7501F, 0.2791F}, {1.0F, 0.3499F}, 1.0F, 0.67F, false, {0xFFFFFF, 1.0F, 0.0F}, {0xB43905, 1.0F, 0.0F}),
    row("Negative", {0.0F, 1.0F}, {0.0F, 1.0F}, {0.0F, 1.0F}, {0.0F, 1.0F}, 0.0F, 0.3052F, true, {0x000000, 0.4112F, 0.0F}, {0x000000, 0.0F, 0.0F}),
    row("Orange and Teal", {0.0F, 0.2299F}, {1.0F, 0.2299F}, {0.0F, 0.9F}, {1.0F, 0.9F}, 0.0F, 0.5F, false, {0x4080FF, 0.3001F, 0.0F}, {0xC08000, 0.6501F, 0.0F}),
    row("Reset to None", {0.77F, 0.7209F}, {0.0F, 0.0F}, {0.0F, 0.0F}, {0.0F, 0.0F}, 0.0F, 0.0F, false, {0x000000, 0.0F, 0.0F}, {0x000000, 0.0F, 0.0F}),
    row("Strange Frame", {0.09995F, 0.09995F}, {0.9F, 0.09995F}, {0.09995F, 0.9001F}, {0.9F, 0.9001F}, 0.4651F, 0.0852F, true, {0x000000, 0.4112F, 0.0F}, {0x000000, 0.0F, 0.0F}),
    row("Tractor Beam", {0.3721F, 0.0F}, {0.6163F, 0.0F}, {0.3721F, 1.0F}, {0.7093F, 1.0F}, 0.0F, 0.15F, false, {0xFF8000, 1.0F, 0.0F}, {0xC08000, 0.2351F, 1.0F}));
// clang-format on

enum Program : std::size_t {
    kCopy,
    kTint,
    kFillValue,
    kResizeRegion,
    kBlurVertical,
    kBlurHorizontal,
    kMix,
    kProgramCount
};

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kPlainCopyFrag},
    {shaders::kPassVert, shaders::kSelectiveTintFrag},
    kFillValueProgram,
    kResizeRegionProgram,
    kBlurVerticalProgram,
    kBlurHorizontalProgram,
    {shaders::kPassVert, shaders::kSelectiveTintMixFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Selective Tint",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .needsTopDown = true,
    .mainProgram = &kPrograms[kTint],
};
static_assert(valid(kInfo));

struct Settings {
    CornerMaskSettings mask;
    TintRegion inside;
    TintRegion outside;
    TintMode mode;
    [[nodiscard]] bool showsSource() const {
        return inside.kind == TintRegion::Kind::kSource && outside.kind == TintRegion::Kind::kSource;
    }
};

Settings readSettings(const ParamReader& params) {
    Settings settings{readCornerMask(params, false), plainRegion(TintRegion::Kind::kSource),
                      plainRegion(TintRegion::Kind::kNegative), TintMode{params.choice(kBlendMode)}};
    if (!params.boolean(kMaskTest)) {
        settings.inside =
            tintedRegion({params.color(kInnerColor), params.slider(kInnerBlend), params.slider(kInnerMask)});
        settings.outside =
            tintedRegion({params.color(kOuterColor), params.slider(kOuterBlend), params.slider(kOuterMask)});
    }
    return settings;
}

/// A region's tint and how much of it each pixel takes.
void tintPass(GPUFrame& frame, const TintRegion& region, const GPUTexture& to) {
    frame.pass(kTint, frame.source(), to, [&](ShaderProgram& program) {
        program.SetFloat3("colorGrad", region.color[0], region.color[1], region.color[2]);
        program.SetFloat("fBlend", region.blend);
        program.SetFloat("fMaskStrength", region.toneMask);
        program.SetFloat("fMaskCuttof", kToneCutoff);
        program.SetFloat("fFadeRange", kToneFade);
        program.SetFloat("fMaskVal1", kToneSoftness);
    });
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const Settings settings = readSettings(params);
    if (settings.showsSource()) {
        return FrameCopy(source, destination);
    }
    Frame mask;
    if (!makeCornerMask(settings.mask, context, source.Format(), mask)) {
        return false;
    }
    tintFrame(source, mask, destination, settings.inside, settings.outside, settings.mode);
    return true;
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const Settings settings = readSettings(params);
    MemoryAllocator heap;
    CornerOutline outline(heap);
    if (!outline.trace(settings.mask.shape, facts.width, facts.height) || !frame.create(5, kPrograms)) {
        return false;
    }
    GPUTexture& picture = frame.temporary(0);
    const GPUTexture& inside = frame.temporary(1);
    const GPUTexture& outside = frame.temporary(2);
    const GPUTexture& mask = frame.temporary(3);
    GPUTexture& other = frame.temporary(4);
    frame.pass(kCopy, frame.source(), picture);
    if (settings.showsSource()) {
        return frame.finish(picture);
    }
    tintPass(frame, settings.inside, inside);
    tintPass(frame, settings.outside, outside);
    drawCornerMask(frame, {kFillValue, kResizeRegion, kBlurVertical, kBlurHorizontal}, settings.mask, facts, outline,
                   mask, other);
    frame.pass(kMix, {picture, inside, outside, mask}, other, [&](ShaderProgram& program) {
        program.SetInt("iBlendMode", static_cast<std::int32_t>(settings.mode));
        program.SetInt("nInvert", settings.outside.kind == TintRegion::Kind::kNegative ? 1 : 0);
        program.SetFloat3("Color", 1.0F, 1.0F, 1.0F);
    });
    return frame.finish(other);
}

using CMaskedGradientTint = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeSelectiveTint() noexcept {
    return new (std::nothrow) CMaskedGradientTint;
}

}  // namespace lumiset
