// Blurs the picture outside a shape that is pinned to four corners, or inside it: the mask of corner_mask.h decides
// between the source and its triangular blur. Transparency stays as it is.

#include <new>

#include "effects/corner_mask/corner_mask_gpu.h"
#include "effects/effect.h"
#include "effects/effect_list.h"
#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t { kDefocusGroup = kMaskGroupEnd + 1, kBlur, kInvert, kDefocusGroupEnd, kParamCount };

// Test Mask, Blur and Invert show each other's tool tips. Users have long known them so.
constexpr auto kParams = std::to_array<ParamRow>({
    groupOpen("Shape", {0, 0, 0, 30}),
    pointParam("Top Left", 0.25F, 0.25F, {11, 18, 198, 30}, "Sets the top left corner of the focus area"),
    pointParam("Top Right", 0.75F, 0.25F, {209, 18, 198, 30}, "Sets the top right corner of the focus area"),
    pointParam("Bottom Left", 0.25F, 0.75F, {11, 108, 198, 30}, "Sets the bottom left corner of the focus area"),
    pointParam("Bottom Right", 0.75F, 0.75F, {209, 108, 198, 30}, "Sets the bottom right corner of the focus area"),
    sliderParam("Curve", 0.5F, {407, 18, 66, 30}, "Sets the roundness of the mask"),
    sliderParam("Feather", 0.5F, {407, 108, 66, 30}, "Adjusts sharpness of edge of selected focus area"),
    booleanParam("Test Mask", false, {11, 198, 132, 10}, "Sets amount of focus blur"),
    groupClose("Shape", {0, 0, 466, 228}),
    groupOpen("Defocus", {0, 273, 0, 30}),
    sliderParam("Blur", 0.83F, {11, 253, 66, 30}, "Swaps in-focus and out-of-focus areas"),
    booleanParam("Invert", false, {77, 318, 132, 10}, "Show only the focus area of the image"),
    groupClose("Defocus", {0, 233, 150, 120}),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, ParamValue::Point topLeft, ParamValue::Point topRight,
                   ParamValue::Point bottomLeft, ParamValue::Point bottomRight, float curve, float feather,
                   bool testMask, float blur, bool invert) {
    return preset(name, pointValue(topLeft.x, topLeft.y), pointValue(topRight.x, topRight.y),
                  pointValue(bottomLeft.x, bottomLeft.y), pointValue(bottomRight.x, bottomRight.y), sliderValue(curve),
                  sliderValue(feather), booleanValue(testMask), sliderValue(blur), booleanValue(invert));
}

// clang-format off
constexpr PresetTable kPresets(
    row("Blinders", {0.1744F, 0.0F}, {0.8256F, 0.0F}, {0.3489F, 1.0F}, {0.6512F, 1.0F}, 0.2419F, 0.8101F, false, 0.5501F, false),
    row("Centered Oval", {0.25F, 0.25F}, {0.7501F, 0.25F}, {0.25F, 0.7501F}, {0.7501F, 0.7501F}, 1.0F, 0.62F, false, 0.6091F, false),
    row("Cross Focus", {0.0F, 0.02326F}, {1.0F, 0.0F}, {1.0F, 1.0F}, {0.0F, 1.0F}, 0.0F, 0.0F, false, 1.0F, false),
    row("Depth of Field", {0.0F, 0.3488F}, {1.0F, 0.3488F}, {0.0F, 0.4999F}, {1.0F, 0.5116F}, 0.0F, 1.0F, false, 0.3291F, false),
    row("Diagonal Focus", {0.0F, 0.0F}, {0.6279F, 0.3256F}, {0.4302F, 0.6047F}, {1.0F, 1.0F}, 0.56F, 0.805F, false, 1.0F, false),
    row("Lower Left Corner", {0.0F, 0.4999F}, {0.5001F, 0.4999F}, {0.0F, 1.0F}, {0.5001F, 1.0F}, 0.67F, 0.0F, false, 0.6791F, false),
    row("Lower Right Corner", {0.5001F, 0.4999F}, {1.0F, 0.4999F}, {0.5001F, 1.0F}, {1.0F, 1.0F}, 0.67F, 0.0F, false, 0.6791F, false),
    row("Overlay", {0.25F, 0.1199F}, {0.7501F, 0.1199F}, {0.25F, 0.8801F}, {0.75F, 0.8801F}, 0.0F, 0.0F, false, 0.79F, false),
    row("Peephole", {0.3749F, 0.3023F}, {0.6251F, 0.3025F}, {0.3749F, 0.6975F}, {0.6251F, 0.6975F}, 1.0F, 0.6001F, true, 0.7501F, false),
    row("Portrait", {0.25F, 0.1199F}, {0.7501F, 0.1199F}, {0.25F, 0.8801F}, {0.75F, 0.8801F}, 0.63F, 0.54F, false, 0.79F, false),
    row("Portrait", {0.25F, 0.1199F}, {0.7501F, 0.1199F}, {0.25F, 0.8801F}, {0.75F, 0.8801F}, 0.0F, 0.0F, false, 0.79F, false),
    row("Reset to None", {0.25F, 0.25F}, {0.7501F, 0.25F}, {0.25F, 0.7501F}, {0.7501F, 0.7501F}, 0.0F, 0.0F, false, 0.0F, false),
    row("Split Screen Left", {0.5116F, 0.0F}, {1.0F, 0.0F}, {0.5F, 1.0F}, {1.0F, 1.0F}, 0.0F, 0.0F, false, 0.3291F, false),
    row("Split Screen Right", {0.0F, 0.0F}, {0.5F, 0.0F}, {0.0F, 1.0F}, {0.5233F, 1.0F}, 0.0F, 0.0F, false, 0.3291F, false),
    row("TV Frame", {0.0F, 0.0F}, {1.0F, 0.0F}, {0.0F, 1.0F}, {1.0F, 1.0F}, 0.6F, 0.285F, true, 1.0F, false),
    row("Upper Left Corner", {0.0F, 0.0F}, {0.5F, 0.0F}, {0.0F, 0.4999F}, {0.5001F, 0.4999F}, 0.67F, 0.0F, false, 0.6791F, false),
    row("Upper Right Corner", {0.5001F, 0.0F}, {1.0F, 0.0F}, {0.5001F, 0.4999F}, {1.0F, 0.4999F}, 0.67F, 0.0F, false, 0.6791F, false),
    row("Vignette", {0.09995F, 0.09995F}, {0.9F, 0.09995F}, {0.09995F, 0.9001F}, {0.9F, 0.9001F}, 0.6F, 0.99F, false, 1.0F, false),
    row("Witness Protection", {0.2326F, 0.1163F}, {0.7674F, 0.1163F}, {0.2326F, 0.8605F}, {0.75F, 0.75F}, 1.0F, 0.48F, false, 1.0F, true));
// clang-format on

enum Program : std::size_t { kCopy, kFillValue, kResizeRegion, kBlurVertical, kBlurHorizontal, kMix, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kPlainCopyFrag},
    kFillValueProgram,
    kResizeRegionProgram,
    kBlurVerticalProgram,
    kBlurHorizontalProgram,
    {shaders::kPassVert, shaders::kMixByMaskFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Selective Focus",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .sharedPresetName = "Portrait",
    .needsTopDown = true,
    .mainProgram = &kPrograms[kMix],
};
static_assert(valid(kInfo));

/// Blur 1 is this share of the picture's width.
constexpr float kFullBlur = 0.1F;

struct Settings {
    CornerMaskSettings mask;
    bool testMask;
    float blur;
};

Settings readSettings(const ParamReader& params) {
    return {readCornerMask(params, params.boolean(kInvert)), params.boolean(kMaskTest), params.slider(kBlur)};
}

/// In stored pixels; a size below 1 in either direction blurs nothing.
struct BlurSize {
    float width;
    float height;
    [[nodiscard]] bool visible() const { return width >= 1.0F && height >= 1.0F; }
};

BlurSize blurSize(float blur, const FrameFacts& facts) {
    const PixelAspectScale aspect(facts.info, false, false);
    const float extent = aspect.FromStoredX(static_cast<float>(facts.width)) * blur * kFullBlur;
    return {aspect.ToStoredX(extent), aspect.ToStoredY(facts.fieldMode ? extent * 0.5F : extent)};
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const Settings settings = readSettings(params);
    const BlurSize size = blurSize(settings.blur, context);
    if (!settings.testMask && !size.visible()) {
        return FrameCopy(source, destination);
    }
    Frame mask;
    if (!makeCornerMask(settings.mask, context, source.Format(), mask)) {
        return false;
    }
    if (settings.testMask) {
        FrameFillColor(destination, 0);
    } else if (!FrameBlur(source, destination, size.width, size.height, &context.allocator, false)) {
        return false;
    }
    const std::int32_t alpha = AlphaIndex(source.Format());
    const auto mix = [&](std::int32_t y, std::int32_t rows) {
        FrameRows from(source, y, rows);
        FrameRows cover(mask, y, rows);
        FrameRows to(destination, y, rows);
        FrameCopyChannel(cover, to, 0, alpha);
        FrameAlphaOver(to, from, to, false);
        return FrameCopyChannel(from, to, alpha, alpha);
    };
    return inCachedRows(&context.allocator, {context.width, context.height}, source.Stride(), mix);
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const Settings settings = readSettings(params);
    const BlurSize size = blurSize(settings.blur, facts);
    MemoryAllocator heap;
    CornerOutline outline(heap);
    if (!outline.trace(settings.mask.shape, facts.width, facts.height) || !frame.create(4, kPrograms)) {
        return false;
    }
    const GPUTexture& sharp = frame.temporary(0);
    const GPUTexture& mask = frame.temporary(1);
    const GPUTexture& outside = frame.temporary(2);
    GPUTexture& other = frame.temporary(3);
    frame.pass(kCopy, frame.source(), sharp);
    if (!settings.testMask && !size.visible()) {
        return frame.finish(frame.temporary(0));
    }
    drawCornerMask(frame, {kFillValue, kResizeRegion, kBlurVertical, kBlurHorizontal}, settings.mask, facts, outline,
                   mask, other);
    if (settings.testMask) {
        fillTexture(frame, kFillValue, outside, 0.0F);
    } else {
        frame.blur(kBlurVertical, kBlurHorizontal, blurTaps(size.width), blurTaps(size.height), sharp, other, outside);
    }
    frame.pass(kMix, {sharp, outside, mask}, other);
    return frame.finish(other);
}

using CSelectiveFocus = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeSelectiveFocus() noexcept {
    return new (std::nothrow) CSelectiveFocus;
}

}  // namespace lumiset
