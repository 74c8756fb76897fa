#include "effects/old_tv/passes.h"

#include <array>
#include <cmath>
#include <numbers>
#include <span>

#include "effects/old_tv/steps.h"
#include "effects/old_tv/tube.h"

namespace lumiset {

void OldTVPasses::addStatic(const OldTVSettings& settings, float time) {
    draw(kStatic, [&](ShaderProgram& program) {
        constexpr float kDeviation2 = 0.09F;
        const float bell = 1.0F / std::sqrt(2.0F * std::numbers::pi_v<float> * kDeviation2) / 1.5F;
        const float pictures = std::trunc(8.0F * time * std::sqrt(30.0F));
        program.SetFloat("fMean", 1.0F);
        program.SetFloat("fDeviation2", kDeviation2);
        program.SetFloat("fDev2", bell);
        program.SetFloat("fASeed", std::fmod(pictures, 100.0F));
        program.SetFloat("fTransparency", settings.noise);
    });
}

void OldTVPasses::tear(const TearEvent& tear, float severity) {
    std::array<TearStrip, kTearSteps> strips;
    const std::size_t count = tearStrips(tear, severity, m_frame.width(), m_frame.height(), strips);
    for (const TearStrip& strip : std::span(strips).first(count)) {
        const PixelRect rect{0, strip.top, m_frame.width(), strip.bottom};
        m_frame.passRects(kTear, *m_current, *m_other, std::span(&rect, 1), [&](ShaderProgram& program) {
            program.SetInt("nXSize", strip.offset);
            program.SetFloat("stripTop", static_cast<float>(strip.top));
            program.SetFloat("stripRows", static_cast<float>(strip.bottom - strip.top));
        });
    }
    swap();
}

void OldTVPasses::bendTube(float curvature) {
    if (curvature == 0.0F) {
        return;
    }
    for (const bool columns : {true, false}) {
        draw(kTube, [&](ShaderProgram& program) {
            const std::int32_t length = columns ? m_frame.height() : m_frame.width();
            program.SetFloat("depth", static_cast<float>(tubeCornerDepth(length, curvature)));
            program.SetFloat2("along", columns ? 1.0F : 0.0F, columns ? 0.0F : 1.0F);
            program.SetFloat("leastAlpha", m_isFloat ? 0.0F : 0.5F / 255.0F);
        });
    }
}

void OldTVPasses::softenEdge(float amount, const FrameFacts& facts) {
    if (amount == 0.0F) {
        return;
    }
    const TubeSoftness softness = tubeSoftness(amount, facts);
    const GPUTexture* from = m_current;
    for (int step = 0; step < 4; ++step) {
        const bool columns = step % 2 == 0;
        GPUTexture& to = m_frame.temporary(columns ? 2 : 3);
        m_frame.pass(kBoxAlpha, *from, to, [&](ShaderProgram& program) {
            program.SetInt("size", columns ? softness.columns : softness.rows);
            program.SetFloat2("axis", columns ? 1.0F : 0.0F, columns ? 0.0F : 1.0F);
            // Only what the first filter leaves all but opaque stays, so the second fades inwards alone: 253 of
            // 255, which 8 bits round to.
            const float opaque = m_isFloat ? 0.99216F : 252.5F / 255.0F;
            program.SetFloat("fTreshold", step == 1 ? opaque : 0.0F);
        });
        from = &to;
    }
    m_frame.pass(kSetAlpha, {*m_current, *from}, *m_other, [](ShaderProgram&) {});
    swap();
}

}  // namespace lumiset
