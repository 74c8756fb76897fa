// The uniforms by which hosts know the effects' passes: each stands in one program's text and has its value in one
// pass.

#include <memory>
#include <sstream>

#include "effects/effect_list.h"
#include "host/pixel_format.h"
#include "tests/gpu/fake_gpu_host.h"

namespace lumiset::test {
namespace {

using Uniforms = std::vector<std::string>;
using Values = std::map<std::uint32_t, ParamValue>;

struct Row {
    IVideoGPUEffect* (*make)() noexcept;
    Values values;
    Uniforms uniforms;  ///< with their values, or the names alone where these vary
};

/// The uniforms that each pass sets.
std::vector<Uniforms> passes() {
    std::vector<Uniforms> found;
    for (const std::string& call : fakeGL().calls) {
        if (call.rfind("Use ", 0) == 0) {
            found.emplace_back();
        } else if (call.rfind("Set ", 0) == 0) {
            found.back().push_back(call.substr(4));
        }
    }
    return found;
}

bool sets(const Uniforms& pass, const std::string& uniform) {
    return std::any_of(pass.begin(), pass.end(),
                       [&](const std::string& set) { return set == uniform || set.rfind(uniform + ' ', 0) == 0; });
}

TEST(Uniforms, HaveTheirNamesAndValuesInOnePass) {
    const ParamValue full{.slider = 1.0F};
    const ParamValue on{.words = {1, 0}};
    const Row rows[] = {
        {makeOldTv, {}, {"SwapChannels 1", "matrixRow0"}},
        {makeOldTv, {}, {"SwapChannelsSrc0 0", "size", "fTreshold"}},
        {makeBackgroundGenerator, {}, {"fShift"}},
        {makeBackgroundGenerator, {{13, full}}, {"fCrossFade"}},
        {makeBackgroundGenerator, {}, {"fMul 1", "SwapChannelsSrc0 0", "fSaturation"}},
        {makeSelectiveFocus, {}, {"SwapChannelsSrc0 0", "SwapChannelsSrc1 0", "SwapChannelsSrc2 0", "SwapChannels 0"}},
        {makeSelectiveTint,
         {{11, full}},
         {"colorGrad", "fMaskStrength 0", "fMaskCuttof", "fBlend 1", "fFadeRange", "fMaskVal1", "SwapChannels 1"}},
        {makeSelectiveTint, {{11, full}}, {"Color 1 1 1", "iBlendMode 0", "nInvert 0", "SwapChannels 0"}},
        {makeSelectiveTint, {{7, on}}, {"Color 1 1 1", "nInvert 1"}},
        {makeSelectiveColor,
         {},
         {"fKeyY", "fKeyCb", "fKeyCr", "fKeyGL", "fAcceptAngleTg", "fAcceptAngleCtg", "fNoiseLevel", "fValue",
          "fAngleRC", "fValueRC"}},
        {makeSelectiveColor, {{10, on}}, {"color1 0.690196 0.337255 0.27451", "color2 0.490196 0.760784 0.996078"}},
        {makeSelectiveColor, {{6, {.slider = 0.0F}}, {10, on}}, {"color 0.690196 0.337255 0.27451"}},
        {makeColorFixerPro,
         {},
         {"colorMult", "fGrayScale", "fColorScale", "fContrast 0.5", "fWarp 0", "fOffset 0.5", "fWhiteLimit 0",
          "fBlackLimit 0", "SwapChannelsSrc 1"}},
    };
    for (const Row& row : rows) {
        resetFakeGL();
        FakeGPUHost gpu;
        test::ValueHost host;
        host.offers = static_cast<IHostGL*>(&gpu);
        host.values = row.values;
        const GPUTexture source = gpu.texture("source", 60, 40, kFormatArgb8);
        GPUTexture destination = gpu.texture("destination", 60, 40, kFormatArgb8);
        IVideoGPUEffect* effect = row.make();
        SCOPED_TRACE(effect->GetEffectName() + (": " + row.uniforms.front()));
        EXPECT_TRUE(effect->ProcessFrameGPU(0, &host, &gpu, &source, nullptr, &destination, nullptr));
        const std::vector<Uniforms> drawn = passes();
        EXPECT_TRUE(std::any_of(drawn.begin(), drawn.end(), [&](const Uniforms& pass) {
            return std::all_of(row.uniforms.begin(), row.uniforms.end(),
                               [&](const std::string& uniform) { return sets(pass, uniform); });
        })) << ::testing::PrintToString(drawn);
        effect->Release();
    }
}

}  // namespace
}  // namespace lumiset::test
