#include "media/scene_parts.h"

namespace lumiset::media {
namespace {

Paint over(Paint top, Paint below) {
    const float alpha = top.alpha + below.alpha * (1 - top.alpha);
    return alpha <= 0 ? Paint{} : Paint{mix(below.color, top.color, top.alpha / alpha), alpha};
}

}  // namespace

void drawPortrait(SceneCanvas& canvas) {
    const auto cover = [&](float d) { return canvas.coverage(d); };
    // She stands at the lower edge, however tall the frame is.
    const float bottom = canvas.half().y;
    const Vec head = {0.47F, bottom - 0.455F};
    const Color skin = {0.91F, 0.68F, 0.54F};
    const Color skinShade = {0.70F, 0.44F, 0.33F};
    const Color skinLight = {0.99F, 0.83F, 0.70F};
    const Color hair = {0.30F, 0.16F, 0.09F};

    canvas.draw({0.12F, head.y - 0.245F, 0.82F, bottom}, [&](Vec at) -> Paint {
        const Vec p = at - head;
        Paint result;

        // Hair behind the head, falling to the shoulders, strands along its length.
        const float strand = fractalNoise({p.x * 95 + 6 * std::sin(p.y * 9), p.y * 5}, 3);
        float back = ellipse(p, {0, -0.035F}, {0.152F, 0.168F});
        back =
            smoothUnion(back, roundedBox(p, {0, 0.075F}, {0.140F + 0.012F * std::sin(p.y * 30), 0.135F}, 0.07F), 0.05F);
        const Color hairTone = mix(hair * 0.75F, {0.47F, 0.27F, 0.14F}, smooth(0.2F, 0.9F, strand));
        result = over({hairTone, cover(back)}, result);

        // Shoulders in a knitted jersey, cut by the window's lower edge.
        float jersey = ellipse(p, {0, 0.46F}, {0.285F, 0.245F});
        jersey = smoothUnion(jersey, roundedBox(p, {0, 0.52F}, {0.27F, 0.17F}, 0.1F), 0.05F);
        const float neckline = ellipse(p, {0, 0.195F}, {0.082F, 0.072F});
        jersey = std::max(jersey, -neckline);
        const float knit = 0.5F + 0.5F * std::sin(p.x * 420) * std::sin(p.y * 300 + 2 * std::sin(p.x * 420));
        Color wool = mix({0.03F, 0.34F, 0.40F}, {0.12F, 0.58F, 0.62F}, clamp01(0.45F - p.x * 1.4F + 0.25F * knit));
        wool = mix(wool, {0.96F, 0.93F, 0.84F}, cover(std::abs(length({p.x * 0.85F, p.y - 0.16F}) - 0.168F) - 0.011F));

        // Neck and throat, shaded below the chin.
        float neck =
            std::max(std::abs(p.x) - 0.056F - 0.05F * smooth(0.16F, 0.28F, p.y), std::abs(p.y - 0.18F) - 0.10F);
        neck = std::min(neck, neckline);
        const float chinShadow = smooth(0.26F, 0.14F, p.y + 0.3F * p.x);
        result = over({mix(skin, skinShade, 0.25F + 0.65F * chinShadow), cover(neck)}, result);
        result = over({wool, cover(jersey)}, result);

        // Face: an egg, lit from the left.
        const float jaw = 1 - 0.55F * smooth(0.0F, 0.16F, p.y);
        float face = ellipse({p.x / (0.72F + 0.28F * jaw), p.y}, {0, 0.015F}, {0.108F, 0.142F});
        const float light = clamp01(0.52F - p.x * 4.2F - p.y * 1.6F);
        Color tone = mix(mix(skinShade, skin, smooth(0, 0.5F, light)), skinLight, smooth(0.55F, 1.1F, light));
        const float pores = latticeNoise(static_cast<int>(p.x * 700), static_cast<int>(p.y * 700)) - 0.5F;
        tone = tone * (1 + 0.018F * pores);
        for (const float side : {-1.0F, 1.0F}) {
            const float cheek = length({(p.x - side * 0.058F) / 1.25F, p.y - 0.052F});
            tone = mix(tone, {0.90F, 0.45F, 0.40F}, 0.38F * smooth(0.045F, 0.0F, cheek));
        }
        // Nose: a shaded side, a light ridge, two nostrils.
        const float noseWidth = 0.008F + 0.016F * smooth(-0.02F, 0.05F, p.y);
        const float noseSide = smooth(noseWidth, 0.0F, std::abs(p.x - noseWidth * 0.9F)) * smooth(-0.035F, 0.03F, p.y) *
                               smooth(0.066F, 0.052F, p.y);
        tone = mix(tone, skinShade, 0.45F * noseSide);
        tone = mix(tone, {1.0F, 0.92F, 0.84F}, 0.5F * smooth(0.010F, 0, length({p.x + 0.003F, (p.y - 0.043F) * 0.8F})));
        for (const float side : {-1.0F, 1.0F}) {
            tone = mix(tone, {0.42F, 0.19F, 0.15F},
                       0.8F * cover(ellipse(p, {side * 0.0115F, 0.0615F}, {0.0055F, 0.0028F})));
        }
        // Mouth.
        const float curve = p.y - 0.096F + 6.0F * p.x * p.x;
        const float mouth = std::max(std::abs(p.x) - 0.040F, 0.0F);
        const float upper = ellipse({p.x, curve + 0.005F - 0.004F * std::cos(p.x * 150)}, {0, 0}, {0.038F, 0.0085F});
        const float lower = ellipse({p.x, curve - 0.006F}, {0, 0}, {0.034F, 0.0105F});
        const Color lips = mix({0.72F, 0.20F, 0.22F}, {0.90F, 0.45F, 0.43F}, smooth(0.004F, 0.014F, curve));
        tone = mix(tone, lips, cover(std::min(upper, lower)));
        tone = mix(tone, {0.38F, 0.07F, 0.09F}, canvas.lineCoverage(std::abs(curve) + mouth, 0.0016F));
        // Eyes, lids and brows.
        for (const float side : {-1.0F, 1.0F}) {
            const Vec q = {(p.x - side * 0.0445F) * side, p.y + 0.012F};
            const float white = std::max(circle(q, {0.0F, 0.0165F}, 0.0285F), circle(q, {0.0F, -0.0185F}, 0.0285F));
            const float open = cover(white);
            const Vec gaze = {q.x * side - 0.001F, q.y + 0.0015F};
            Color eye = mix({0.96F, 0.95F, 0.94F}, {0.70F, 0.66F, 0.66F}, smooth(0.004F, -0.012F, q.y));
            const float iris = length(gaze);
            const float spokes = 0.5F + 0.5F * std::sin(18 * std::atan2(gaze.y, gaze.x));
            eye = mix(eye, mix({0.10F, 0.32F, 0.26F}, {0.36F, 0.62F, 0.44F}, spokes * smooth(0.010F, 0.004F, iris)),
                      cover(iris - 0.0112F));
            eye = mix(eye, {0.03F, 0.03F, 0.04F}, cover(iris - 0.0050F));
            eye = mix(eye, {1, 1, 1}, cover(circle(gaze, {-0.0038F, -0.0042F}, 0.0024F)));
            tone = mix(tone, skinShade, 0.5F * smooth(0.016F, 0.0F, white) * smooth(0.004F, -0.01F, q.y));
            tone = mix(tone, eye, open);
            const float lid = std::abs(circle(q, {0.0F, 0.0165F}, 0.0285F));
            tone = mix(tone, {0.16F, 0.08F, 0.06F},
                       canvas.lineCoverage(std::max(lid, std::max(std::abs(q.x) - 0.025F, q.y)), 0.0021F));
            const float arch = std::abs(q.y + 0.036F - 3.0F * (q.x - 0.004F) * (q.x - 0.004F) - 0.10F * q.x);
            tone = mix(tone, hair * 0.8F,
                       0.9F * cover(std::max(arch - 0.0052F + 0.10F * std::max(q.x, 0.0F), std::abs(q.x) - 0.030F)));
        }
        result = over({tone, cover(face)}, result);

        // Parted hair over the forehead.
        float fringe =
            std::max(ellipse(p, {0, -0.045F}, {0.132F, 0.130F}), -ellipse(p, {0.030F, 0.050F}, {0.118F, 0.132F}));
        fringe = std::max(fringe, p.y - 0.03F - 0.25F * std::abs(p.x));
        const float shine = smooth(0.035F, 0, std::abs(p.y + 0.122F - 1.4F * p.x * p.x));
        const float fall = fractalNoise({(p.x - p.y * 0.7F) * 110, (p.x + p.y) * 9}, 3);
        Color front = mix(hair * 0.8F, {0.45F, 0.25F, 0.13F}, smooth(0.2F, 0.9F, fall));
        front = mix(front, {0.86F, 0.62F, 0.38F}, 0.55F * shine * smooth(0.35F, 0.8F, fall));
        result = over({front, cover(fringe)}, result);
        return result;
    });
}

void drawBalloons(SceneCanvas& canvas, double seconds, const float* cover) {
    struct Balloon {
        float x, y, size;
        float swing, lift, period, phase;
        Color color;
    };
    static constexpr Balloon kBalloons[] = {
        {-0.150F, -0.060F, 0.070F, 0.030F, 0.060F, 6.0F, 0.0F, {0.90F, 0.05F, 0.08F}},
        {0.060F, -0.170F, 0.052F, 0.040F, 0.050F, 5.0F, 0.3F, {1.00F, 0.78F, 0.02F}},
        {0.200F, 0.020F, 0.060F, 0.030F, 0.070F, 7.0F, 0.6F, {0.04F, 0.32F, 0.92F}},
        {-0.020F, 0.090F, 0.046F, 0.050F, 0.050F, 4.5F, 0.15F, {0.05F, 0.68F, 0.22F}},
        {0.760F, -0.230F, 0.075F, 0.070F, 0.090F, 8.0F, 0.5F, {0.86F, 0.05F, 0.70F}},
        {-0.790F, -0.300F, 0.060F, 0.055F, 0.080F, 6.5F, 0.8F, {0.98F, 0.42F, 0.02F}},
    };
    for (const Balloon& balloon : kBalloons) {
        const auto turn = [&](double period) {
            return static_cast<float>(2 * std::numbers::pi * (seconds / period + static_cast<double>(balloon.phase)));
        };
        const double period = static_cast<double>(balloon.period);
        const Vec center = {balloon.x + balloon.swing * std::sin(turn(period * 1.31)),
                            balloon.y + balloon.lift * std::sin(turn(period))};
        const float tilt = 0.18F * std::cos(turn(period * 1.31));
        const float s = balloon.size;
        canvas.drawBehind(
            {center.x - 1.6F * s, center.y - 1.5F * s, center.x + 1.6F * s, center.y + 4.2F * s}, cover,
            [&](Vec at) -> Paint {
                const Vec q = (at - center) * (1 / s);
                const Vec p = {q.x + tilt * q.y, q.y - tilt * q.x};
                // The string waves below the knot.
                const float sway = 0.10F * std::sin(q.y * 2.6F + turn(2.0)) * smooth(1.2F, 2.4F, q.y) - tilt * 1.2F;
                const bool nearString = std::abs(q.x - sway) < 0.1F;
                if (q.y > 1.5F ? !nearString : dot(q, q) > 2.2F) {
                    return {};
                }
                Paint paint;
                if (q.y > 1.2F && q.y < 4.0F) {
                    paint = {{0.96F, 0.96F, 0.96F}, 0.85F * canvas.lineCoverage(std::abs(q.x - sway) * s, 0.0011F)};
                }
                const float narrow = 1 - 0.22F * smooth(-0.2F, 1.2F, p.y);
                const float body = ellipse({p.x / narrow, p.y}, {0, 0}, {0.88F, 1.08F}) * s;
                const float knot =
                    std::max(std::abs(p.x) - 0.10F - 0.35F * (p.y - 1.12F), std::abs(p.y - 1.14F) - 0.09F) * s;
                const float rim = length({p.x / 0.88F, p.y / 1.08F});
                Color color = mix(balloon.color, balloon.color * 0.45F, smooth(0.35F, 1.1F, rim + 0.25F * (p.x + p.y)));
                color = mix(color, {1, 1, 1}, 0.28F * smooth(0.95F, 0.2F, length({p.x + 0.35F, p.y + 0.42F})));
                const float gleam = ellipse({p.x + 0.36F + 0.25F * p.y, p.y + 0.50F}, {0, 0}, {0.11F, 0.20F});
                color = mix(color, {1, 1, 1}, 0.85F * smooth(0.05F, -0.06F, gleam));
                return over({color, canvas.coverage(std::min(body, knot))}, paint);
            });
    }
}

}  // namespace lumiset::media
