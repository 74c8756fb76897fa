#include "media/scene_parts.h"
#include "media/stroke_text.h"

namespace lumiset::media {

void drawText(SceneCanvas& canvas, std::string_view text, Vec origin, float height, float strokeWidth, Color color,
              float alpha, float softness) {
    const float reach = strokeWidth + softness + canvas.pixel();
    for (const TextLetter& letter : layOutText(text, origin, height)) {
        const Box box = {letter.box.left - reach, letter.box.top - reach, letter.box.right + reach,
                         letter.box.bottom + reach};
        canvas.draw(box, [&](Vec p) -> Paint {
            const float d = letter.distanceTo(p);
            const float covered = softness > 0 ? smooth(strokeWidth / 2 + softness, strokeWidth / 2 - softness, d)
                                               : canvas.lineCoverage(d, strokeWidth / 2);
            return {color, covered * alpha};
        });
    }
}

void drawTitle(SceneCanvas& canvas) {
    constexpr float kHeight = 0.115F;
    constexpr float kStroke = 0.026F;
    const float left = -0.5F * textWidth("LUMISET", kHeight);
    // Half of the letters stands over the window's edge.
    const Vec at = {left, -canvas.half().y + 0.035F};
    drawText(canvas, "LUMISET", at + Vec{0.006F, 0.010F}, kHeight, kStroke, {0.02F, 0.05F, 0.14F}, 0.55F, 0.012F);
    drawText(canvas, "LUMISET", at, kHeight, kStroke, {0.99F, 0.96F, 0.90F}, 1, 0);
    drawText(canvas, "LUMISET", at, kHeight, 0.006F, {0.90F, 0.36F, 0.12F}, 1, 0);
    constexpr std::string_view kLine = "A SCENE TO TRY EFFECTS ON: SKIN, SKY, LEAVES, FINE LINES";
    constexpr float kSmall = 0.0165F;
    const Vec below = {-0.5F * textWidth(kLine, kSmall), at.y + kHeight + 0.032F};
    drawText(canvas, kLine, below + Vec{0.0015F, 0.002F}, kSmall, 0.004F, {0.05F, 0.15F, 0.4F}, 0.7F, 0.004F);
    drawText(canvas, kLine, below, kSmall, 0.0027F, {1, 1, 1}, 0.95F, 0);
}

}  // namespace lumiset::media
