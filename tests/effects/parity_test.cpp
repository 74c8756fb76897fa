// The OpenGL renderers against the processor's: every preset, format, row order, field and pixel aspect.

#include <optional>

#include "tests/effects/failing_resources.h"
#include "tests/effects/gl_host_fixture.h"
#include "tests/effects/parity_table.h"
#include "tests/support/comparison.h"

namespace lumiset::test {
namespace {

class Parity : public WithGL {
protected:
    /// Renders a preset on both renderers and compares.
    void compare(const ParityRow& row, const EffectTester& tester, std::uint32_t preset, std::int32_t width,
                 std::int32_t height, const Storage& storage, const FrameRenderInfo& info) {
        ValueHost processorHost = tester.presetHost(preset);
        ValueHost gpuHost = processorHost;
        if (row.makeEqual != nullptr) {
            row.makeEqual(processorHost, gpuHost, {width, &info});
        }
        Picture source(width, height, storage);
        drawTestCard(source);
        if (width < row.leastWidth) {
            for (std::int32_t i = 0; i < width * height; ++i) {
                source.set(i % width, i / width, kAlpha, 255.0);
            }
        }
        const std::vector<std::uint8_t> before = source.bytes();
        Picture expected(width, height, storage);
        Picture result(width, height, storage);
        ASSERT_TRUE(tester.render(processorHost, source, expected, &info));
        ASSERT_TRUE(renderGPU(tester, gpuHost, source, result, info));
        EXPECT_EQ(source.bytes(), before);
        EXPECT_TRUE(result.guardsIntact());

        const ::testing::AssertionResult near =
            within(comparePictures(result, expected), source.isFloat() ? row.floats : row.bytes);
        if (!near) {
            const std::string name = std::string(tester.effect().GetEffectName()) + ' ' +
                                     tester.effect().GetPresetName(preset) + " format " +
                                     std::to_string(storage.format) + (storage.flipped ? " flipped" : "");
            ADD_FAILURE() << near.message() << "; see " << writeComparison(expected, result, name);
        }
    }

    bool renderGPU(const EffectTester& tester, ValueHost& host, Picture& source, Picture& destination,
                   const FrameRenderInfo& info) {
        hostkit::GPURenderer renderer(gl());
        return renderer.render(tester.effect(), host, source.desc(), destination.desc(), info);
    }
};

/// Calls `body(row, tester, preset)` for every preset of every effect.
template <class Body>
void forEveryGPUPreset(Body&& body) {
    for (const ParityRow& row : parityRows()) {
        const EffectTester tester(row.index);
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            SCOPED_TRACE(std::string(tester.effect().GetEffectName()) + ", " + tester.effect().GetPresetName(preset));
            body(row, tester, preset);
        }
    }
}

FrameRenderInfo withAspect(FrameRenderInfo info, double aspect) {
    info.flags |= FrameRenderInfo::kHasPixelAspect;
    info.pixelAspect = aspect;
    return info;
}

FrameRenderInfo asField(FrameRenderInfo info) {
    info.flags |= FrameRenderInfo::kHasField;
    info.field = 0;
    return info;
}

TEST_F(Parity, HoldsForEveryPresetFormatAndRowOrder) {
    forEveryGPUPreset([this](const ParityRow& row, const EffectTester& tester, std::uint32_t preset) {
        for (const std::int32_t format : {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat}) {
            for (const bool flipped : {false, true}) {
                SCOPED_TRACE(::testing::Message() << "format " << format << (flipped ? " flipped" : ""));
                compare(row, tester, preset, 85, 62, {format, flipped, !flipped && format == kFormatArgb8, 4 * format},
                        frameInfo(1.5));
            }
        }
    });
}

TEST_F(Parity, HoldsForFieldsAndEveryShapeOfPixel) {
    forEveryGPUPreset([this](const ParityRow& row, const EffectTester& tester, std::uint32_t preset) {
        for (const FrameRenderInfo& info :
             {asField(frameInfo(0.5)), withAspect(frameInfo(2.25), 1.4222), withAspect(frameInfo(4.0), 0.95),
              asField(withAspect(frameInfo(8.0), 1.0667))}) {
            SCOPED_TRACE(::testing::Message() << "field " << info.field << " aspect " << info.pixelAspect);
            compare(row, tester, preset, 84, 43, {kFormatBgra8}, info);
        }
    });
}

// Steps of whole pixels that small frames hide: a tube's strips, a ghost, marks that meet.
TEST_F(Parity, HoldsForWideAndForNarrowFrames) {
    constexpr std::uint32_t kViewfinder = 6;
    constexpr std::uint32_t kOldTV = 7;
    forEveryGPUPreset([this](const ParityRow& row, const EffectTester& tester, std::uint32_t preset) {
        if (row.index == kViewfinder) {
            compare(row, tester, preset, 60, 150, {kFormatArgb8}, frameInfo(0.5));
            compare(row, tester, preset, 64, 150, {kFormatArgb8}, frameInfo(0.5));
        } else if (row.index == kOldTV) {
            compare(row, tester, preset, 320, 200, {kFormatBgra8}, withAspect(frameInfo(2.25), 1.4222));
            compare(row, tester, preset, 320, 200, {kFormatBgraFloat}, asField(frameInfo(0.5)));
        }
    });
}

TEST_F(Parity, HoldsForTheSmallestFrames) {
    for (const ParityRow& row : parityRows()) {
        const EffectTester tester(row.index);
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 9}, {9, 1}, {2, 2}, {3, 5}}) {
            SCOPED_TRACE(::testing::Message() << width << " by " << height);
            for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
                compare(row, tester, preset, width, height, {kFormatBgra8}, frameInfo(1.5));
            }
        }
    }
}

TEST_F(Parity, RendersOnlyTheRectangleThatFramesOfTwoSizesHaveInCommon) {
    for (const ParityRow& row : parityRows()) {
        const EffectTester tester(row.index);
        for (const bool flipped : {false, true}) {
            for (const auto& [width, height] : {std::pair{90, 50}, {60, 70}, {100, 30}}) {
                SCOPED_TRACE(::testing::Message() << "to " << width << " by " << height);
                const Storage storage{kFormatBgra8, flipped};
                const FrameRenderInfo info = frameInfo();
                Picture source(80, 60, storage);
                drawTestCard(source);
                Picture expected(width, height, storage);
                Picture result(width, height, storage);
                for (Picture* picture : {&expected, &result}) {
                    drawTestCard(*picture, true);
                }
                ValueHost processorHost = tester.presetHost(0U);
                ValueHost gpuHost = processorHost;
                if (row.makeEqual != nullptr) {
                    row.makeEqual(processorHost, gpuHost, {std::min(width, 80), &info});
                }
                ASSERT_TRUE(tester.render(processorHost, source, expected, &info));
                ASSERT_TRUE(renderGPU(tester, gpuHost, source, result, info));
                EXPECT_TRUE(within(comparePictures(result, expected), row.bytes));
            }
        }
    }
}

TEST_F(Parity, FailsWithoutATraceWithoutATextureProgramOrTarget) {
    for (const ParityRow& row : parityRows()) {
        const EffectTester tester(row.index);
        Picture source(40, 30);
        drawTestCard(source);
        Picture ground(40, 30);
        drawTestCard(ground, true);
        GPUTexture from = gl().makeTexture(40, 30, kFormatBgra8);
        GPUTexture to = gl().makeTexture(40, 30, kFormatBgra8);
        gl().upload(source.desc(), from);
        gl().upload(ground.desc(), to);
        const GPUTexture toBefore = to;
        const int live = gl().liveObjects();
        ValueHost host = tester.presetHost(0U);
        hostkit::GLEffectHost glHost(host, gl());
        const FrameRenderInfo info = frameInfo();
        std::optional<Picture> whole;
        bool refused = true;
        for (int failAt = 0; refused; ++failAt) {
            SCOPED_TRACE(::testing::Message() << "call " << failAt << " is refused");
            FailingResources resources(gl(), failAt);
            const bool rendered = tester.effect().ProcessFrameGPU(0, &glHost, &resources, &from, nullptr, &to, &info);
            refused = resources.hasFailed();
            EXPECT_EQ(gl().liveObjects(), live);
            EXPECT_EQ(to.width, toBefore.width);
            EXPECT_EQ(to.format, toBefore.format);
            Picture after(40, 30);
            gl().download(to, after.desc());
            if (rendered && !whole.has_value()) {
                whole = after;
            }
            EXPECT_EQ(after.bytes(), rendered ? whole->bytes() : ground.bytes());
            EXPECT_TRUE(rendered || refused);
            ASSERT_LT(failAt, 200);
        }
        EXPECT_NE(whole->bytes(), ground.bytes());
        gl().ReleaseTexture(&from);
        gl().ReleaseTexture(&to);
    }
}

TEST(Difference, SeesEveryChannelAndWhatIsNotANumber) {
    Picture a(4, 3, {.format = kFormatBgraFloat});
    Picture b = a;
    EXPECT_EQ(comparePictures(a, b).psnr, 999.0);
    b.set(2, 1, kAlpha, 51.0);
    const Difference one = comparePictures(a, b);
    EXPECT_NEAR(one.largest, 51.0, 1e-4);
    EXPECT_EQ(one.x, 2);
    EXPECT_EQ(one.y, 1);
    EXPECT_NEAR(one.psnr, 10.0 * std::log10(25.0 * 48.0), 1e-3);  // 255 / 51 is 5; one of 48 samples
    b.set(3, 0, kRed, std::nan(""));
    EXPECT_EQ(comparePictures(a, b).psnr, 0.0);
    EXPECT_TRUE(std::isinf(comparePictures(a, b).largest));
    EXPECT_FALSE(within(comparePictures(a, b), {1e9, 0.0}));
    EXPECT_TRUE(within(one, {51.1, 30.0}));
    EXPECT_FALSE(within(one, {51.1, 31.0}));
    EXPECT_FALSE(within(one, {50.9, 30.0}));
}

}  // namespace
}  // namespace lumiset::test
