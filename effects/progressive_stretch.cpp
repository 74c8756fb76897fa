// Fits a 4:3 picture to a wider frame without widening faces: the middle keeps more of its proportions than the
// sides, which take up the stretch. A crop zooms in and leaves less to stretch.

#include "effects/progressive_stretch.h"

#include <cmath>
#include <span>

#include "effects/gpu_image_ops.h"
#include "effects/stretch_curve.h"
#include "frame/frame_operations.h"
#include "frame/layout.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t { kStretch, kCrop, kParamCount };

constexpr auto kParams = std::to_array<ParamRow>({
    sliderParam("Stretch", 0.5F, {0, 0, 0, 30}, "Sets how much the image is stretched"),
    sliderParam("Crop", 0.0F, {66, 0, 0, 30}, "Zooms in on image"),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, float stretch, float crop) {
    return preset(name, sliderValue(stretch), sliderValue(crop));
}

constexpr PresetTable kPresets(              //
    row("Balanced", 0.5501F, 0.0F),          //
    row("Blurred Edges", 0.0501F, 0.2201F),  //
    row("Crop", 0.0F, 1.0F),                 //
    row("Edge Frame", 0.0F, 0.0F),           //
    row("Partial Crop", 0.185F, 0.56F),      //
    row("Uniform Stretch", 1.0F, 0.0F));

enum Program : std::size_t { kResize, kMoveColumns };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kResizeRegionFrag},
    {shaders::kPassVert, shaders::kProgressiveStretchFrag},
});

constexpr EffectInfo kInfo{
    .name = "Progressive Stretch",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presetNames = kPresets.names,
    .presetValues = kPresets.values,
    .presetSlots = kPresets.kSlots,
    .mainProgram = &kPrograms[kMoveColumns],
};
static_assert(valid(kInfo));

/// Where a column of the result comes from: between two neighbouring columns of the stretched picture.
struct ColumnTap {
    std::int32_t column;
    float along;  ///< 0..1 from `column` to the next
};

template <class L>
void stretchRow(const typename L::Sample* src, typename L::Sample* dst, std::span<const ColumnTap> taps) {
    for (const ColumnTap& tap : taps) {
        const typename L::Sample* a = src + 4 * static_cast<std::ptrdiff_t>(tap.column);
        if constexpr (L::kIsFloat) {
            for (int i = 0; i < 4; ++i) {
                dst[i] = a[i] * (1.0F - tap.along) + a[i + 4] * tap.along;
            }
        } else {
            const auto second = static_cast<std::uint32_t>(tap.along * 255.0F);
            for (int i = 0; i < 4; ++i) {
                const std::uint32_t sum = a[i] * (255U - second) + a[i + 4] * second;
                dst[i] = static_cast<std::uint8_t>((sum + 127U) / 255U);
            }
        }
        dst += 4;
    }
}

}  // namespace

CProgressiveStretch::CProgressiveStretch() : Effect(kInfo) {}

bool CProgressiveStretch::Render(const ParamReader& params, const RenderContext& context, const Frame& source,
                                 Frame& destination) noexcept {
    const std::int32_t width = context.width;
    const StretchRegion region = stretchRegion(width, context.height, params.slider(kCrop));
    if (width < 2 || region.width < 1 || region.height < 1) {
        return FrameCopy(source, destination);
    }
    Frame stretched;
    void* block = nullptr;
    if (!stretched.Allocate(width, context.height, source.BytesPerPixel(), &context.allocator, source.Format(),
                            source.Flipped()) ||
        !FrameResizeRect(source, stretched,
                         {region.left, region.top, region.left + region.width, region.top + region.height},
                         {0, 0, width, context.height}, kResizeLinear, 0.0, 0.0, 0.0, 0.0) ||
        !context.allocator.AllocBytes(&block, static_cast<std::uint32_t>(width) * sizeof(ColumnTap))) {
        return false;
    }
    const std::span taps(static_cast<ColumnTap*>(block), static_cast<std::size_t>(width));
    const StretchCurve curve(params.slider(kStretch), region.side, width >> 1);
    for (std::int32_t x = 0; x < width; ++x) {
        const float column = stretchedColumn(curve, width, x);
        const float whole = std::floor(column);
        taps[static_cast<std::size_t>(x)] = {static_cast<std::int32_t>(whole), column - whole};
    }
    const bool done = visitLayout(source.Format(), [&](auto layout) {
        using L = decltype(layout);
        using Sample = typename L::Sample;
        for (std::int32_t y = 0; y < context.height; ++y) {
            stretchRow<L>(reinterpret_cast<const Sample*>(stretched.PixelAddress(0, y, 0)),
                          reinterpret_cast<Sample*>(destination.PixelAddress(0, y, 0)), taps);
        }
        return true;
    });
    context.allocator.FreeBytes(block);
    return done;
}

bool CProgressiveStretch::RenderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const float crop = params.slider(kCrop);
    const StretchRegion region = stretchRegion(facts.width, facts.height, crop);
    if (!frame.create(2, kPrograms)) {
        return false;
    }
    // A picture of one column or row is too small to stretch: the whole of it is shown.
    const bool tooSmall = facts.width < 2 || region.width < 1 || region.height < 1;
    frame.pass(frame.program(kResize), frame.source(), frame.temporary(0), [&](ShaderProgram& program) {
        const StretchRegion shown = tooSmall ? StretchRegion{0, 0, facts.width, facts.height, 0} : region;
        program.SetFloat2("regionOrigin", static_cast<float>(shown.left), static_cast<float>(shown.top));
        program.SetFloat2("regionSize", static_cast<float>(shown.width), static_cast<float>(shown.height));
        program.SetFloat2("targetSize", static_cast<float>(facts.width), static_cast<float>(facts.height));
    });
    if (tooSmall) {
        return frame.finish(frame.temporary(0));
    }
    frame.pass(frame.program(kMoveColumns), frame.temporary(0), frame.temporary(1), [&](ShaderProgram& program) {
        program.SetFloat("uXSize", static_cast<float>(facts.width));
        program.SetFloat("fStretch", params.slider(kStretch));
        program.SetFloat("fCrop", crop);
    });
    return frame.finish(frame.temporary(1));
}

}  // namespace lumiset
