// The uniforms by which hosts know the effects' passes: each stands in one program's text and has its value in one
// pass.

#include <memory>
#include <sstream>

#include "effects/background_generator/background_generator.h"
#include "effects/color_fixer/color_fixer.h"
#include "effects/old_tv/old_tv.h"
#include "effects/selective_color/selective_color.h"
#include "effects/selective_focus/selective_focus.h"
#include "effects/selective_tint/selective_tint.h"
#include "tests/gpu/fake_gpu_host.h"

namespace lumiset::testing {
namespace {

using Uniforms = std::vector<std::string>;
using Values = std::map<std::uint32_t, ParamValue>;

struct Row {
    Effect* (*make)();
    Values values;
    Uniforms uniforms;  ///< with their values, or the names alone where these vary
};

template <class EffectClass>
Effect* make() {
    return new EffectClass;
}

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
        {make<COldTV>, {}, {"SwapChannels 1", "matrixRow0"}},
        {make<COldTV>, {}, {"SwapChannelsSrc0 0", "size", "fTreshold"}},
        {make<CBackgroundGenerator>, {}, {"fShift"}},
        {make<CBackgroundGenerator>, {{13, full}}, {"fCrossFade"}},
        {make<CBackgroundGenerator>, {}, {"fMul 1", "SwapChannelsSrc0 0", "fSaturation"}},
        {make<CSelectiveFocus>,
         {},
         {"SwapChannelsSrc0 0", "SwapChannelsSrc1 0", "SwapChannelsSrc2 0", "SwapChannels 0"}},
        {make<CMaskedGradientTint>,
         {{11, full}},
         {"colorGrad", "fMaskStrength 0", "fMaskCuttof", "fBlend 1", "fFadeRange", "fMaskVal1", "SwapChannels 1"}},
        {make<CMaskedGradientTint>, {{11, full}}, {"Color 1 1 1", "iBlendMode 0", "nInvert 0", "SwapChannels 0"}},
        {make<CMaskedGradientTint>, {{7, on}}, {"Color 1 1 1", "nInvert 1"}},
        {make<CSelectColor>,
         {},
         {"fKeyY", "fKeyCb", "fKeyCr", "fKeyGL", "fAcceptAngleTg", "fAcceptAngleCtg", "fNoiseLevel", "fValue",
          "fAngleRC", "fValueRC"}},
        {make<CSelectColor>, {{10, on}}, {"color1 0.690196 0.337255 0.27451", "color2 0.490196 0.760784 0.996078"}},
        {make<CSelectColor>, {{6, {.slider = 0.0F}}, {10, on}}, {"color 0.690196 0.337255 0.27451"}},
        {make<CImprovedColorbalance>,
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
        Effect* effect = row.make();
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
}  // namespace lumiset::testing
