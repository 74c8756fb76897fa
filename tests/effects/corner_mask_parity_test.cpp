// The corner-pinned mask and the tints that OpenGL draws, against the processor's: shapes and modes that no preset has.

#include <random>

#include "tests/effects/gl_host_fixture.h"
#include "tests/support/comparison.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kSelectiveFocus = 3;
constexpr std::uint32_t kSelectiveTint = 4;

class CornerMaskParity : public WithGL {
protected:
    Difference difference(const EffectTester& tester, ValueHost& host, Picture& source) {
        const FrameRenderInfo info = frameInfo();
        Picture expected(source.width(), source.height(), source.storage());
        Picture result = expected;
        EXPECT_TRUE(tester.render(host, source, expected, &info));
        hostkit::GPURenderer renderer(gl());
        EXPECT_TRUE(renderer.render(tester.effect(), host, source.desc(), result.desc(), info));
        return comparePictures(expected, result);
    }
};

TEST_F(CornerMaskParity, DrawsEveryShapeToThePixel) {
    const EffectTester tester(kSelectiveFocus);
    std::mt19937 random(11);
    for (int i = 0; i < 60; ++i) {
        Picture white(97, 71, {.format = kFormatBgra8, .flipped = i % 2 == 1});
        for (std::int32_t y = 0; y < white.height(); ++y) {
            for (std::int32_t x = 0; x < white.width(); ++x) {
                white.setPixel(x, y, 255, 255, 255, 255);
            }
        }
        // Any order of corners, so many are crossed; every fifth has coordinates at the edges and corners in one place.
        const auto coordinate = [&] {
            const auto value = static_cast<float>(random() % 1001);
            return i % 5 == 0 ? static_cast<float>(random() % 3) / 2.0F : value / 1000.0F;
        };
        ValueHost host;
        for (std::uint32_t corner = 1; corner <= 4; ++corner) {
            host.values[corner].point = {coordinate(), coordinate()};
        }
        host.values[5].slider = coordinate();
        host.values[7].words[0] = 1;
        host.values[11].words[0] = random() % 2;
        for (const float feather : {0.0F, 0.3F, 0.9F}) {
            host.values[6].slider = feather;
            const Difference apart = difference(tester, host, white);
            // Without a feather the mask is the same; with one, its passes may round two levels apart.
            ASSERT_LE(apart.largest, feather == 0.0F ? 0.0 : 2.0)
                << "shape " << i << " feather " << feather << " at " << apart.x << ", " << apart.y;
        }
    }
}

TEST_F(CornerMaskParity, TintsByEveryModeAlike) {
    const EffectTester tester(kSelectiveTint);
    for (const std::int32_t format : {kFormatArgb8, kFormatBgraFloat}) {
        Picture source(85, 62, {.format = format});
        drawTestCard(source);
        for (std::uint32_t mode = 0; mode < 10; ++mode) {
            ValueHost host = tester.presetHost("Golden Glow");
            host.values[16].slider = 0.8F;
            host.values[19].words[0] = mode;
            EXPECT_LE(difference(tester, host, source).largest, format == kFormatArgb8 ? 3.0 : 0.1) << "mode " << mode;
        }
    }
}

}  // namespace
}  // namespace lumiset::test
