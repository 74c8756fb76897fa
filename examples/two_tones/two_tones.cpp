// A print in two inks: a pixel's brightness (the luma of ITU-R BT.601) runs from the colour of the shadows to that of
// the highlights. Transparency stays as it is.

#include "examples/two_tones/two_tones.h"

#include <array>
#include <new>

#include "effects/effect.h"
#include "effects/shaders/shader_texts.h"
#include "effects/unit_color.h"
#include "examples/two_tones/shader_texts.h"
#include "frame/rows.h"
#include "gpu/gpu_frame.h"

namespace lumiset {
namespace {

// ---- The tables
enum Param : std::uint32_t { kShadows, kHighlights, kAmount, kParamCount };

constexpr auto kParams = std::to_array<ParamRow>({
    colorParam("Shadows", 0x502814, {0, 0, 198, 30}, "Sets what black becomes"),
    colorParam("Highlights", 0xC8E6FF, {66, 0, 198, 30}, "Sets what white becomes"),
    sliderParam("Amount", 1.0F, {132, 0, 198, 30}, "Sets how much of the two tones is seen"),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, std::uint32_t shadows, std::uint32_t highlights, float amount) {
    return preset(name, colorValue(shadows), colorValue(highlights), sliderValue(amount));
}

// Colours are 0xBBGGRR.
constexpr PresetTable kPresets(                       //
    row("Reset to None", 0x000000, 0xFFFFFF, 0.0F),   //
    row("Old Photograph", 0x10243C, 0xC8E6FF, 0.9F),  //
    row("Blueprint", 0x80300C, 0xFFF8F0, 1.0F));

enum Program : std::size_t { kPaint, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({{shaders::kPassVert, shaders::kTwoTonesFrag}});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Two Tones",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kPaint],
};
static_assert(valid(kInfo));

// ---- The settings
// What both renderers need, read and made safe in one place.
struct Settings {
    std::array<float, 3> shadows;  // red, green, blue, 0..1
    std::array<float, 3> highlights;
    float amount;
};

Settings readSettings(const ParamReader& params) {
    return {unitColor(params.color(kShadows)), unitColor(params.color(kHighlights)), params.slider(kAmount)};
}

// ---- On the processor
// One loop for the four formats: a Layout tells the samples' type and places, and it is chosen before the loop.
template <class L>
void paintRow(const typename L::Sample* source, typename L::Sample* destination, std::int32_t width,
              const Settings& settings) {
    constexpr float kWhite = L::kIsFloat ? 1.0F : 255.0F;
    constexpr float kRounding = L::kIsFloat ? 0.0F : 0.5F;
    constexpr std::array<int, 3> kPlaces = {L::kRed, L::kGreen, L::kBlue};
    for (std::int32_t x = 0; x < width; ++x, source += 4, destination += 4) {
        const float luma = 0.299F * static_cast<float>(source[L::kRed]) +
                           0.587F * static_cast<float>(source[L::kGreen]) +
                           0.114F * static_cast<float>(source[L::kBlue]);
        for (std::size_t c = 0; c < 3; ++c) {
            const auto sample = static_cast<float>(source[kPlaces[c]]);
            const float tone = settings.shadows[c] * kWhite + (settings.highlights[c] - settings.shadows[c]) * luma;
            const float mixed = sample + (tone - sample) * settings.amount;
            destination[kPlaces[c]] = static_cast<typename L::Sample>(mixed + kRounding);
        }
        destination[L::kAlpha] = source[L::kAlpha];
    }
}

bool render(const ParamReader& params, const RenderContext& /*context*/, const Frame& source,
            Frame& destination) noexcept {
    const Settings settings = readSettings(params);
    return visitRows(
        source.Format(), destination,
        [&](auto layout, std::int32_t /*y*/, auto* to, const auto* from) {
            paintRow<decltype(layout)>(from, to, source.Width(), settings);
        },
        source);
}

// ---- In OpenGL
// One pass from the source to a temporary texture, and from there to the destination in its channel and row order.
bool renderGPU(const ParamReader& params, const FrameFacts& /*facts*/, GPUFrame& frame) noexcept {
    const Settings settings = readSettings(params);
    if (!frame.create(1, kPrograms)) {
        return false;
    }
    frame.pass(kPaint, frame.source(), frame.temporary(0), [&](ShaderProgram& program) {
        program.SetFloat3("shadows", settings.shadows[0], settings.shadows[1], settings.shadows[2]);
        program.SetFloat3("highlights", settings.highlights[0], settings.highlights[1], settings.highlights[2]);
        program.SetFloat("amount", settings.amount);
    });
    return frame.finish(frame.temporary(0));
}

// ---- The effect
using CTwoTones = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeTwoTones() noexcept {
    return new (std::nothrow) CTwoTones;
}

}  // namespace lumiset
