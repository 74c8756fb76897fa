// Fits a 4:3 picture to a wider frame without widening faces: the middle keeps more of its proportions than the
// sides, which take up the stretch. A crop zooms in and leaves less to stretch.

#include <cmath>
#include <new>
#include <span>

#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"
#include "effects/progressive_stretch/stretch_curve.h"
#include "effects/progressive_stretch/stretch_rows.h"
#include "frame/frame_operations.h"
#include "frame/scratch_block.h"

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

enum Program : std::size_t { kResize, kMoveColumns, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({
    {shaders::kPassVert, shaders::kResizeRegionFrag},
    {shaders::kPassVert, shaders::kProgressiveStretchFrag},
});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Progressive Stretch",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kMoveColumns],
};
static_assert(valid(kInfo));

bool render(const ParamReader& params, const RenderContext& context, const Frame& source, Frame& destination) noexcept {
    const std::int32_t width = context.width;
    const StretchRegion region = stretchRegion(width, context.height, params.slider(kCrop));
    if (width < 2 || region.width < 1 || region.height < 1) {
        return FrameCopy(source, destination);
    }
    const auto columns = static_cast<std::size_t>(width);
    ScratchBlock block(context.allocator);
    block.add<StretchTap>(2 * width);
    if (!block.allocate()) {
        return false;
    }
    const std::span resized(block.take<StretchTap>(2 * width), columns);
    const std::span stretched(resized.data() + columns, columns);
    const StretchCurve curve(params.slider(kStretch), region.side, width >> 1);
    for (std::int32_t x = 0; x < width; ++x) {
        const float column = stretchedColumn(curve, width, x);
        const float whole = std::floor(column);
        resized[static_cast<std::size_t>(x)] = resizeTap(x, width, region.width);
        stretched[static_cast<std::size_t>(x)] = {static_cast<std::int32_t>(whole), column - whole};
    }
    return stretchRows({source, destination, region, resized, stretched}, context.allocator);
}

bool renderGPU(const ParamReader& params, const FrameFacts& facts, GPUFrame& frame) noexcept {
    const float crop = params.slider(kCrop);
    const StretchRegion region = stretchRegion(facts.width, facts.height, crop);
    if (!frame.create(2, kPrograms)) {
        return false;
    }
    // A picture of one column or row is too small to stretch: the whole of it is shown.
    const bool tooSmall = facts.width < 2 || region.width < 1 || region.height < 1;
    frame.pass(kResize, frame.source(), frame.temporary(0), [&](ShaderProgram& program) {
        const StretchRegion shown = tooSmall ? StretchRegion{0, 0, facts.width, facts.height, 0} : region;
        program.SetFloat2("regionOrigin", static_cast<float>(shown.left), static_cast<float>(shown.top));
        program.SetFloat2("regionSize", static_cast<float>(shown.width), static_cast<float>(shown.height));
        program.SetFloat2("targetSize", static_cast<float>(facts.width), static_cast<float>(facts.height));
    });
    if (tooSmall) {
        return frame.finish(frame.temporary(0));
    }
    frame.pass(kMoveColumns, frame.temporary(0), frame.temporary(1), [&](ShaderProgram& program) {
        program.SetFloat("uXSize", static_cast<float>(facts.width));
        program.SetFloat("fStretch", params.slider(kStretch));
        program.SetFloat("fCrop", crop);
    });
    return frame.finish(frame.temporary(1));
}

using CProgressiveStretch = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeProgressiveStretch() noexcept {
    return new (std::nothrow) CProgressiveStretch;
}

}  // namespace lumiset
