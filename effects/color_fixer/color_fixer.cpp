// A one-pass colour correction. A sampled colour that ought to be neutral sets a gain for each channel, the luma
// share sets the saturation, and two curves give the shoulders of film, the brightness and the output range.

#include <new>

#include "effects/color_fixer/grade.h"
#include "effects/effect.h"
#include "effects/effect_list.h"
#include "effects/gpu_image_ops.h"

namespace lumiset {
namespace {

enum Param : std::uint32_t {
    kSample,
    kCorrection,
    kSaturation,
    kBrightness,
    kFilmGamma,
    kMaxWhite,
    kMinBlack,
    kParamCount
};

constexpr auto kParams = std::to_array<ParamRow>({
    colorParam("Sample", 0xFFFFFF, {0, 0, 198, 30}, "Use to locate white value"),
    sliderParam("Correction", 1.0F, {66, 0, 198, 30}, "Sets strength of color correction"),
    sliderParam("Saturation", 0.5F, {132, 0, 198, 30}, "Adjusts color strength", -100.0F),
    sliderParam("Brightness", 0.5F, {0, 90, 198, 30}, "Adjusts brightness of image", -100.0F),
    sliderParam("Film Gamma", 0.5F, {66, 90, 220, 30}, "Recreates the brightness behavior of film"),
    sliderParam("Max White", 1.0F, {198, 90, 220, 30}, "Sets how bright the brightest parts of image are", 235.0F,
                255.0F),
    sliderParam("Min Black", 0.0F, {132, 90, 198, 30}, "Sets how dark the darkest parts of image are", 0.0F, 20.0F),
});
static_assert(kParams.size() == kParamCount);

constexpr auto row(const char* name, std::uint32_t sample, float correction, float saturation, float brightness,
                   float filmGamma, float maxWhite, float minBlack) {
    return preset(name, colorValue(sample), sliderValue(correction), sliderValue(saturation), sliderValue(brightness),
                  sliderValue(filmGamma), sliderValue(maxWhite), sliderValue(minBlack));
}

// A sample is the cast to take away: a warm one cools the picture.
constexpr PresetTable kPresets(                                          //
    row("Reset to None", 0xFFFFFF, 0.0F, 0.5F, 0.5F, 0.0F, 1.0F, 0.0F),  //
    row("Add Pop", 0xFFFFFF, 0.0F, 0.5751F, 0.5F, 0.3001F, 0.0F, 1.0F),  //
    row("Cool", 0x96BEE6, 1.0F, 0.5F, 0.5F, 0.15F, 1.0F, 0.0F),          //
    row("Cool Down", 0xBED2E1, 1.0F, 0.5F, 0.5F, 0.0F, 1.0F, 0.0F),      //
    row("Indoors", 0xAAD2FF, 1.0F, 0.49F, 0.53F, 0.1F, 1.0F, 0.0F),      //
    row("Outdoors", 0xF0DCC8, 1.0F, 0.55F, 0.5F, 0.2F, 1.0F, 0.0F),      //
    row("Remove Blue", 0xFFCDC3, 1.0F, 0.5F, 0.5F, 0.0F, 1.0F, 0.0F),    //
    row("Remove Green", 0xD0F0D0, 1.0F, 0.5F, 0.5F, 0.0F, 1.0F, 0.0F),   //
    row("Sepia", 0xFF8C46, 1.0F, 0.14F, 0.48F, 0.2F, 0.7F, 0.3F),        //
    row("Touch Up", 0xFFFFFF, 1.0F, 0.53F, 0.52F, 0.15F, 1.0F, 0.0F),    //
    row("Vibrant", 0xE6E1DC, 0.245F, 0.68F, 0.5F, 0.35F, 1.0F, 0.0F),    //
    row("Warm", 0xE6C8A5, 1.0F, 0.5F, 0.5F, 0.15F, 1.0F, 0.0F),          //
    row("Warm Up", 0xE1D2BE, 1.0F, 0.5F, 0.5F, 0.0F, 1.0F, 0.0F));

enum Program : std::size_t { kGrade, kProgramCount };

constexpr auto kPrograms = std::to_array<GPUProgramSource>({{shaders::kPassVert, shaders::kColorFixerFrag}});
static_assert(kPrograms.size() == kProgramCount);

constexpr EffectInfo kInfo{
    .name = "Color Fixer Pro",
    .flags = kFlagsEveryEffect,
    .params = kParams,
    .presets = kPresets,
    .mainProgram = &kPrograms[kGrade],
};
static_assert(valid(kInfo));

ColorFixerSettings readSettings(const ParamReader& params) {
    return {
        .sample = params.color(kSample),
        .correction = params.slider(kCorrection),
        .saturation = params.slider(kSaturation) * 2.0F - 1.0F,
        .brightness = (params.slider(kBrightness) - 0.5F) * 0.7F + 0.5F,
        .filmGamma = params.slider(kFilmGamma),
        .top = 1.0F - params.slider(kMaxWhite),
        .bottom = params.slider(kMinBlack),
    };
}

bool render(const ParamReader& params, const RenderContext& /*context*/, const Frame& source,
            Frame& destination) noexcept {
    gradeFrame(source, destination, readSettings(params));
    return true;
}

bool renderGPU(const ParamReader& params, const FrameFacts& /*facts*/, GPUFrame& frame) noexcept {
    const ColorFixerSettings settings = readSettings(params);
    if (!frame.create(1, kPrograms)) {
        return false;
    }
    frame.pass(kGrade, frame.source(), frame.temporary(0), [&](ShaderProgram& program) {
        constexpr double kLeastLevel = 0.00001 * 255.0;
        const std::array<double, 3> gains = neutralGains(settings, kLeastLevel);
        const float grayScale = -settings.saturation * 0.498F;
        program.SetFloat3("colorMult", static_cast<float>(gains[2]), static_cast<float>(gains[1]),
                          static_cast<float>(gains[0]));
        program.SetFloat("fGrayScale", grayScale);
        program.SetFloat("fColorScale", 0.498F - grayScale);
        program.SetFloat("fContrast", settings.filmGamma);
        program.SetFloat("fWarp", 0.0F);
        program.SetFloat("fOffset", settings.brightness);
        program.SetFloat("fWhiteLimit", settings.top);
        program.SetFloat("fBlackLimit", settings.bottom);
    });
    return frame.finish(frame.temporary(0));
}

using CImprovedColorbalance = EffectOf<kInfo, render, renderGPU>;

}  // namespace

IVideoGPUEffect* makeColorFixerPro() noexcept {
    return new (std::nothrow) CImprovedColorbalance;
}

}  // namespace lumiset
