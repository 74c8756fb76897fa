// Selective Color's softening in OpenGL against the processor's, in frames tall enough for many passes of the filter.

#include "tests/effects/gl_host_fixture.h"
#include "tests/support/comparison.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

class SelectiveColorParity : public WithGL {
protected:
    void compare(std::int32_t width, std::int32_t height, float soften, bool showMasks, std::int32_t format) {
        SCOPED_TRACE(::testing::Message()
                     << width << " by " << height << ", soften " << soften << ", format " << format);
        const EffectTester tester(8);
        ValueHost host;
        host.values[2].slider = 0.3F;
        host.values[6].slider = 0.3F;
        host.values[8].slider = soften;
        host.values[9].slider = 1.0F;
        host.values[10].boolean = showMasks ? 1 : 0;
        Picture source(width, height, {.format = format});
        drawTestCard(source);
        Picture expected(width, height, {.format = format});
        Picture result(width, height, {.format = format});
        const FrameRenderInfo info = frameInfo();
        ASSERT_TRUE(tester.render(host, source, expected, &info));
        hostkit::GPURenderer renderer(gl());
        ASSERT_TRUE(renderer.render(tester.effect(), host, source.desc(), result.desc(), info));
        const Difference apart = comparePictures(expected, result);
        EXPECT_GE(apart.psnr, 40.0) << "at most " << apart.largest << " levels apart, at " << apart.x << ", " << apart.y
                                    << "; see " << writeComparison(expected, result, "Selective Color softened");
    }
};

TEST_F(SelectiveColorParity, HoldsForFewPassesAndForMany) {
    for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
        for (const bool showMasks : {false, true}) {
            compare(90, 150, 1.0F, showMasks, format);   // 6 passes
            compare(120, 330, 0.5F, showMasks, format);  // 16, the most that are done one by one in floats
            compare(120, 330, 0.6F, showMasks, format);  // 19, done at once
        }
        compare(150, 800, 1.0F, true, format);  // 192, more than bytes are given
    }
}

}  // namespace
}  // namespace lumiset::test
