// The example that authors of effects start from.

#include "examples/two_tones/two_tones.h"

#include "tests/effects/gl_host_fixture.h"
#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::int32_t kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

const EffectTester& twoTones() {
    static const EffectTester tester(Held<IVideoGPUEffect>{makeTwoTones()});
    return tester;
}

// ---- Levels worked out by hand
TEST(TwoTones, DrawsBlackAndWhiteInTheTwoColoursAndGreysBetween) {
    for (const std::int32_t format : kFormats) {
        Picture source(3, 1, {.format = format});
        source.setPixel(0, 0, 0, 0, 0, 255);
        source.setPixel(1, 0, 255, 255, 255, 40);
        source.setPixel(2, 0, 102, 102, 102, 0);  // four tenths of white
        ValueHost host;
        host.values[0].color = 0x000A64;  // red 100, green 10, blue 0
        host.values[1].color = 0xFA0AC8;  // red 200, green 10, blue 250
        Picture result(3, 1, {.format = format});
        ASSERT_TRUE(twoTones().render(host, source, result));
        const double expected[3][4] = {{100, 10, 0, 255}, {200, 10, 250, 40}, {140, 10, 100, 0}};
        for (std::int32_t x = 0; x < 3; ++x) {
            for (const Channel channel : {kRed, kGreen, kBlue, kAlpha}) {
                EXPECT_NEAR(result.get(x, 0, channel), expected[x][channel], 0.01) << format << ": " << x;
            }
        }
    }
}

// ---- A property
TEST(TwoTones, LeavesThePictureAloneWithoutAmount) {
    for (const std::int32_t format : kFormats) {
        Picture source(37, 5, {.format = format, .padding = 12});
        drawTestCard(source);
        Picture result(37, 5, {.format = format, .padding = 12});
        ValueHost host = twoTones().presetHost("Reset to None");
        ASSERT_TRUE(twoTones().render(host, source, result));
        EXPECT_EQ(result.bytes(), source.bytes()) << format;
    }
}

// ---- Both renderers
using TwoTonesInGL = WithGL;

TEST_F(TwoTonesInGL, RendersWhatTheProcessorRenders) {
    hostkit::GPURenderer renderer(gl());
    for (std::uint32_t preset = 0; preset < twoTones().presetCount(); ++preset) {
        for (const std::int32_t format : kFormats) {
            Picture source(64, 40, {.format = format});
            drawTestCard(source);
            Picture onProcessor(64, 40, {.format = format});
            Picture inGL(64, 40, {.format = format});
            ValueHost host = twoTones().presetHost(preset);
            ASSERT_TRUE(twoTones().render(host, source, onProcessor));
            ASSERT_TRUE(renderer.render(twoTones().effect(), host, source.desc(), inGL.desc(), frameInfo()));
            EXPECT_TRUE(within(comparePictures(inGL, onProcessor), {.largest = 1.0}))
                << twoTones().effect().GetPresetName(preset) << ", format " << format;
        }
    }
}

}  // namespace
}  // namespace lumiset::test
