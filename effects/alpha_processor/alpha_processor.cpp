// Reshapes the alpha channel: shrinks or grows what is opaque by an ellipse, softens it by a triangular blur, inverts
// it, multiplies the colours by it, or shows it as a grey picture.

#include <algorithm>
#include <new>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "frame/bands.h"
#include "frame/frame_operations.h"
#include "frame/frame_rows.h"
#include "gpu/base_effect_helper.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t { kGrow, kBlur, kInvert, kPremultiply, kTestMask, kParamCount };

constexpr auto kParams = std::to_array<ParamRow>({
    sliderParam("Grow", 0.4F, {0, 0, 66, 30}, "Sets the size of the alpha mask", -100.0F),
    sliderParam("Blur", 0.5F, {66, 0, 66, 30}, "Sets how sharp the alpha mask is"),
    booleanParam("Invert", false, {132, 0, 132, 10}, "Inverts the alpha mask"),
    booleanParam("Premultiply", false, {132, 30, 132, 10}, "Blends transparent edges of alpha channel with background"),
    booleanParam("Test Mask", false, {132, 60, 132, 10}, "Shows the image as a black and white mask"),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, float grow, float blur, bool invert, bool premultiply, bool testMask) {
    return preset(name, sliderValue(grow), sliderValue(blur), booleanValue(invert), booleanValue(premultiply),
                  booleanValue(testMask));
}

constexpr PresetTable kPresets(                                      //
    row("Black and White Mask", 0.5F, 0.3162F, false, false, true),  //
    row("Black Halo", 0.8F, 0.77F, false, false, false),             //
    row("Clean Chromakey", 0.3801F, 0.2651F, false, false, false),   //
    row("Cutout", 0.5F, 0.1001F, false, false, false),               //
    row("Overlapping Cutout", 0.0F, 0.0F, true, false, false),       //
    row("Premultiply", 0.5001F, 0.0001F, false, false, true),        //
    row("Reset to None", 0.5001F, 0.0001F, false, false, false),     //
    row("Transparent Edges", 0.08F, 0.0F, false, false, false));

enum Program : std::size_t {
    kExtract,
    kBlurVertical,
    kBlurHorizontal,
    kDilate,
    kDilateRing,
    kErode,
    kErodeRing,
    kCompose,
    kProgramCount
};

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kOutlineExtractFrag},
    kBlurVerticalProgram,
    kBlurHorizontalProgram,
    kDilateEllipseProgram,
    kDilateRingProgram,
    kErodeEllipseProgram,
    kErodeRingProgram,
    {shaders::kPassVert, shaders::kAlphaProcessorComposeFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Alpha Processor",
    .flags = kFlagsEveryEffect | kFlagChangesAlpha,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kExtract],
};
static_assert(valid(kInfo));

struct Settings {
    float grow;
    float blur;
    bool invert;
    bool premultiply;
    bool testMask;
};

Settings readSettings(const ParamReader& params) {
    return {params.slider(kGrow), params.slider(kBlur), params.boolean(kInvert), params.boolean(kPremultiply),
            params.boolean(kTestMask)};
}

enum class Morphology { kNone, kErode, kDilate };

/// Sizes in stored pixels, for both renderers.
struct Sizes {
    Morphology morphology;
    EllipseSize ellipse;
    float blurWidth;  ///< 0: no blur
    float blurHeight;
};

std::int32_t wholeSize(float value) {
    constexpr float kMost = 32768.0F;  // keeps the numbers whole for the oddest shapes of a pixel
    return static_cast<std::int32_t>(std::min(value, kMost));
}

Sizes sizesOf(const Settings& settings, const FrameFacts& facts) {
    const PixelAspectScale aspect(facts.info, false, false);
    const auto width = static_cast<float>(facts.width);
    const auto height = static_cast<float>(facts.height);
    const float rowScale = facts.fieldMode ? 0.5F : 1.0F;
    const float fieldFactor = facts.fieldMode ? 2.0F : 1.0F;
    Sizes sizes{Morphology::kNone, {1, 1}, 0.0F, 0.0F};
    if (settings.grow < 0.5F) {
        const float amount = (4.0F - settings.grow * 8.0F) * 0.025F;
        sizes.morphology = Morphology::kErode;
        sizes.ellipse = {wholeSize(aspect.FromStoredY(height) * amount * aspect.aspect * fieldFactor),
                         wholeSize(aspect.FromStoredX(height) * amount * aspect.aspect)};
    } else if (settings.grow > 0.5F) {
        const float extent = aspect.FromStoredX(width) * (settings.grow - 0.5F) * 4.0F * 0.05F;
        sizes.morphology = Morphology::kDilate;
        sizes.ellipse = {wholeSize(std::max(aspect.ToStoredX(extent), 1.0F)),
                         wholeSize(std::max(aspect.ToStoredY(extent * rowScale), 1.0F))};
    }
    if (settings.blur > 0.0001F) {
        const float extent = aspect.FromStoredX(height) * settings.blur * 0.1F * aspect.aspect * fieldFactor;
        sizes.blurWidth = std::max(aspect.ToStoredX(extent), 3.0F);
        sizes.blurHeight = std::max(aspect.ToStoredY(extent * rowScale), 3.0F);
    }
    return sizes;
}

class CAlphaProcessor final : public CBaseEffectHelper, public Effect {
public:
    CAlphaProcessor() : Effect(kInfo) {}

protected:
    bool Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                Frame& destination) noexcept override;
    bool RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept override;
};

/// Puts the new alpha, in `shape`, into a copy of the source, or shows it.
bool compose(const Frame& source, const Frame& shape, const Settings& settings, const RenderContext& context,
             Frame& destination) {
    const std::int32_t alpha = AlphaIndex(source.Format());
    const auto work = [&](std::int32_t y, std::int32_t rows) {
        FrameRows from(source, y, rows);
        FrameRows mask(shape, y, rows);
        FrameRows to(destination, y, rows);
        if (settings.invert && !FrameInvert(mask, mask)) {
            return false;
        }
        if (settings.testMask) {
            return FrameSpreadGrayToColor(mask, to);
        }
        return FrameCopy(from, to) && FrameCopyChannel(mask, to, 0, alpha) &&
               (!settings.premultiply || FramePremultiplyAlpha(to, to));
    };
    return inCachedRows(&context.allocator, {context.width, context.height}, source.Stride(), work);
}

bool CAlphaProcessor::Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                             Frame& destination) noexcept {
    const Settings settings = readSettings(params);
    const Sizes sizes = sizesOf(settings, context);
    const std::int32_t alpha = AlphaIndex(source.Format());
    Frame shape;
    Frame other;
    for (Frame* mask : {&shape, &other}) {
        if (!mask->Allocate(context.width, context.height, BytesPerChannel(source.Format()), &context.allocator,
                            MaskFormat(source.Format()), source.Flipped())) {
            return false;
        }
    }
    FrameCopyChannel(source, shape, alpha, 0);
    const EllipseSize ellipse = sizes.ellipse;
    const bool sized = ellipse.width >= 1 && ellipse.height >= 1;  // an erosion may come to less than a pixel
    const auto reshape = sizes.morphology == Morphology::kErode ? FrameErode : FrameDilate;
    if (sized && sizes.morphology != Morphology::kNone) {
        if (!reshape(shape, other, ellipse.width, ellipse.height, &context.allocator)) {
            return false;
        }
    } else {
        FrameCopy(shape, other);
    }
    if (!FrameBlur(other, shape, sizes.blurWidth, sizes.blurHeight, &context.allocator, true)) {
        return false;
    }
    return compose(source, shape, settings, context, destination);
}

bool CAlphaProcessor::RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    constexpr float kMostTaps = 1000.0F;  // as `FrameBlur`
    const Settings settings = readSettings(params);
    const Sizes sizes = sizesOf(settings, facts);
    if (!frame.create(2, kPrograms)) {
        return false;
    }
    PicturePasses shape(frame);
    shape.take(kExtract);
    if (sizes.morphology != Morphology::kNone && sizes.ellipse.width >= 1 && sizes.ellipse.height >= 1) {
        const bool erodes = sizes.morphology == Morphology::kErode;
        growByEllipse(shape, erodes ? kErode : kDilate, erodes ? kErodeRing : kDilateRing, sizes.ellipse);
    }
    if (sizes.blurWidth >= 1.0F) {
        shape.blur(kBlurVertical, kBlurHorizontal, static_cast<std::int32_t>(std::min(sizes.blurWidth, kMostTaps)),
                   static_cast<std::int32_t>(std::min(sizes.blurHeight, kMostTaps)));
    }
    shape.drawWithSource(kCompose, [&](ShaderProgram& program) {
        program.SetInt("invert", settings.invert ? 1 : 0);
        program.SetInt("multiply", settings.premultiply ? 1 : 0);
        program.SetInt("testMask", settings.testMask ? 1 : 0);
    });
    return CBaseEffectHelper::FinishFrame(frame, shape.picture());
}

}  // namespace

IVideoGPUEffect* makeAlphaProcessor() noexcept {
    return new (std::nothrow) CAlphaProcessor;
}

}  // namespace lumiset
