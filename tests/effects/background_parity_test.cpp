// Background Generator in OpenGL against the processor: blurs so long that OpenGL does them on a reduced picture.

#include "tests/effects/gl_host_fixture.h"
#include "tests/support/comparison.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

class BackgroundParity : public WithGL {};

TEST_F(BackgroundParity, HoldsForLongBlurs) {
    constexpr std::uint32_t kBackgroundGenerator = 1;
    constexpr std::uint32_t kBlur = 2;
    constexpr std::uint32_t kAngle = 11;
    constexpr std::uint32_t kSpeed = 12;
    constexpr std::uint32_t kCrossFade = 13;
    const EffectTester tester(kBackgroundGenerator);
    for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
        for (const float blur : {0.52F, 0.7F, 1.0F}) {
            ValueHost host;
            host.values[kBlur].slider = blur;
            host.values[kAngle].slider = 0.3F;
            host.values[kSpeed].slider = 0.4F;
            host.values[kCrossFade].slider = 0.3F;
            Picture source(300, 401, {format});
            drawTestCard(source);
            Picture expected(300, 401, {format});
            Picture result = expected;
            FrameRenderInfo info = frameInfo(1.3);
            info.flags = FrameRenderInfo::kHasPixelAspect;
            info.pixelAspect = blur < 0.6F ? 1.0 : 1.4222;
            ASSERT_TRUE(tester.render(host, source, expected, &info));
            hostkit::GPURenderer renderer(gl());
            ASSERT_TRUE(renderer.render(tester.effect(), host, source.desc(), result.desc(), info));
            const Difference apart = comparePictures(expected, result);
            EXPECT_GE(apart.psnr, 45.0) << blur;
            EXPECT_LE(apart.largest, 3.0) << blur << " at " << apart.x << ", " << apart.y;
        }
    }
}

}  // namespace
}  // namespace lumiset::test
