// A coloured band around whatever is opaque: the alpha shape is grown by an elliptical dilation, softened by
// a triangular blur, filled with the chosen colour, and the source is composited over it. Sizes are fractions
// of the picture's width in square pixels, so the band looks equally wide in both directions whatever the
// shape of a pixel; a field has half the rows, so its vertical sizes are halved.
//
// The OpenGL renderer takes the same steps. It softens by three pixels even where Soften is lower, and corrects
// the soft edge for the pixel's shape once more; large ellipses are grown in several passes and may differ from
// the true ellipse by about a pixel along their edge.

#include <algorithm>
#include <new>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/unit_color.h"
#include "frame/frame_operations.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t { kWidth, kSoften, kColor, kOpacity, kParamCount };

constexpr auto kParams = std::to_array<ParamRow>({
    sliderParam("Width", 0.5F, {0, 0, 0, 30}, "Sets size of outline"),
    sliderParam("Soften", 0.5F, {66, 0, 0, 30}, "Blurs edges of outline"),
    colorParam("Color", 0x000000, {0, 90, 198, 30}, "Sets color of outline"),
    sliderParam("Opacity", 0.5F, {66, 90, 198, 30}, "Sets visibility of outline"),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, float width, float soften, std::uint32_t color, float opacity) {
    return preset(name, sliderValue(width), sliderValue(soften), colorValue(color), sliderValue(opacity));
}

// "Pumkin" is the preset's name: projects refer to it.
constexpr PresetTable kPresets(                                  //
    row("Angelic Halo", 1.0F, 1.0F, 0xFFFFFF, 0.9001F),          //
    row("Bad Chromakey", 0.119535F, 1.0F, 0x00FF80, 0.492958F),  //
    row("Bold Red", 0.397027F, 0.0F, 0x0000FF, 1.0F),            //
    row("Inked Lines", 0.1F, 0.0F, 0x000000, 1.0F),              //
    row("Pumkin Glow", 0.472476F, 0.487587F, 0x0080FF, 1.0F),    //
    row("Red Glow", 0.603323F, 1.0F, 0x0000FF, 1.0F),            //
    row("Reset to None", 0.0F, 0.0F, 0xF0F0F0, 0.0F),            //
    row("Solid Black", 1.0F, 0.0F, 0x000000, 1.0F),              //
    row("Subtle Edge Definition", 0.0F, 0.59F, 0x000000, 0.575F));

enum Program : std::size_t { kExtract, kBlurVertical, kBlurHorizontal, kCompose, kEllipse, kRing, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kOutlineExtractFrag},
    kBlurVerticalProgram,
    kBlurHorizontalProgram,
    {shaders::kPassVert, shaders::kOutlineComposeFrag},
    kDilateEllipseProgram,
    kDilateRingProgram,
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Outline",
    .flags = kFlagsEveryEffect | kFlagChangesAlpha,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kExtract],
};
static_assert(valid(kInfo));

/// Width 1 and Soften 1 are this share of the picture's width.
constexpr float kFullSize = 0.1F;

struct Settings {
    float width;
    float soften;
    std::uint32_t color;  ///< 0x00BBGGRR
    float opacity;
};

Settings readSettings(const ParamReader& params) {
    return {params.slider(kWidth), params.slider(kSoften), params.color(kColor), params.slider(kOpacity)};
}

/// Sizes in stored pixels, for both renderers.
struct Sizes {
    EllipseSize ellipse;
    float blurWidth;
    float blurHeight;
    std::int32_t gpuBlurWidth;
    std::int32_t gpuBlurHeight;
};

Sizes sizesOf(const Settings& settings, const FrameFacts& facts) {
    constexpr float kMost = 32768.0F;  // keeps the numbers whole for the oddest shapes of a pixel
    constexpr float kLeastGPUBlur = 3.0F;
    constexpr float kMostGPUBlur = 1000.0F;  // as `FrameBlur`
    const PixelAspectScale aspect(facts.info, false, false);
    const float full = aspect.FromStoredX(static_cast<float>(facts.width)) * kFullSize;
    const float rowScale = facts.fieldMode ? 0.5F : 1.0F;
    const float diameter = full * settings.width;
    const float blur = full * settings.soften;
    const auto whole = [](float value, float least, float most) {
        return static_cast<std::int32_t>(std::min(std::max(least, value), most));
    };
    return {{whole(aspect.ToStoredX(diameter), 1.0F, kMost), whole(aspect.ToStoredY(diameter * rowScale), 1.0F, kMost)},
            aspect.ToStoredX(blur),
            aspect.ToStoredY(blur * rowScale),
            whole(aspect.ToStoredX(blur * aspect.aspect), kLeastGPUBlur, kMostGPUBlur),
            whole(aspect.ToStoredY(blur * aspect.aspect * rowScale), kLeastGPUBlur, kMostGPUBlur)};
}

/// 0x00BBGGRR to the 0x00RRGGBB that fills take.
constexpr std::uint32_t swapRedAndBlue(std::uint32_t color) {
    return (color & 0x0000FF00U) | ((color & 0xFFU) << 16U) | ((color >> 16U) & 0xFFU);
}

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const Settings settings = readSettings(params);
    const Sizes sizes = sizesOf(settings, context);

    const std::int32_t alpha = AlphaIndex(source.Format());
    const std::int32_t maskFormat = MaskFormat(source.Format());
    const std::int32_t maskBytes = BytesPerChannel(source.Format());
    Frame shape;
    Frame grown;
    if (!shape.Allocate(context.width, context.height, maskBytes, &context.allocator, maskFormat, source.Flipped()) ||
        !grown.Allocate(context.width, context.height, maskBytes, &context.allocator, maskFormat, source.Flipped())) {
        return false;
    }
    FrameCopyChannel(source, shape, alpha, 0);
    // Without memory either step is left out.
    if (!FrameDilate(shape, grown, sizes.ellipse.width, sizes.ellipse.height, &context.allocator)) {
        FrameCopy(shape, grown);
    }
    if (!FrameBlur(grown, shape, sizes.blurWidth, sizes.blurHeight, &context.allocator, true)) {
        FrameCopy(grown, shape);
    }

    // The opacity goes on the mask: the same product as on the filled frame's alpha, at a quarter of the cost.
    const float opacity[4] = {settings.opacity, 1.0F, 1.0F, 1.0F};
    FrameMultiplyColor(shape, shape, opacity);
    FrameFillColor(destination, swapRedAndBlue(settings.color));
    FrameCopyChannel(shape, destination, 0, alpha);
    FrameAlphaOver(source, destination, destination, false);
    return true;
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const Settings settings = readSettings(params);
    const Sizes sizes = sizesOf(settings, facts);
    if (!frame.create(2, kPrograms)) {
        return false;
    }
    PicturePasses shape(frame);
    shape.take(kExtract);
    growByEllipse(shape, kEllipse, kRing, sizes.ellipse);
    shape.blur(kBlurVertical, kBlurHorizontal, sizes.gpuBlurWidth, sizes.gpuBlurHeight);
    shape.drawWithSource(kCompose, [&](ShaderProgram& program) {
        const auto [red, green, blue] = unitColor(settings.color);
        program.SetFloat3("colors", red, green, blue);
        program.SetFloat("opacity", settings.opacity);
    });
    return frame.finish(shape.picture());
}

using COutline = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeOutline() noexcept {
    return new (std::nothrow) COutline;
}

}  // namespace lumiset
