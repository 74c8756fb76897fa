// One frame on many of the host's threads: the same bytes as on one, for every effect, preset, number of threads and
// order of the parts.

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/support/effect_tester.h"
#include "tests/support/host_threads.h"

namespace lumiset::test {
namespace {

Picture renderedBy(const EffectTester& tester, ValueHost& values, Picture& source, HostThreads& threads) {
    values.offers = &threads;
    Picture result(source.width(), source.height(), source.storage());
    const VideoFrameDesc from = source.desc();
    const VideoFrameDesc to = result.desc();
    const FrameRenderInfo info = frameInfo(1.25);
    EXPECT_TRUE(tester.effect().ProcessFrame(&values, &from, nullptr, &to, &info));
    EXPECT_EQ(threads.references(), 1);
    return result;
}

/// Large enough to be cut, in a row order that some effects turn.
Picture largePicture(std::int32_t format) {
    Picture picture(700, 380, {.format = format, .flipped = isFloatFormat(format), .padding = 12});
    drawTestCard(picture);
    return picture;
}

TEST(EveryPreset, IsTheSameOnAnyNumberOfThreads) {
    for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
        Picture source = largePicture(format);
        for (std::uint32_t effect = 0; EffectTester(effect).exists(); ++effect) {
            const EffectTester tester(effect);
            for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
                if (isFloatFormat(format) && preset % 3 != 0) {
                    continue;
                }
                SCOPED_TRACE(std::string(tester.effect().GetEffectName()) + ", " +
                             tester.effect().GetPresetName(preset) + ", format " + std::to_string(format));
                ValueHost values = tester.presetHost(preset);
                HostThreads one(1);
                const Picture expected = renderedBy(tester, values, source, one);
                EXPECT_EQ(one.runs(), 0);
                HostThreads backwards(2, true);
                EXPECT_EQ(renderedBy(tester, values, source, backwards).bytes(), expected.bytes());
                HostThreads many(preset % 3 == 0 ? 3 : preset % 3 == 1 ? 8 : 32);
                EXPECT_EQ(renderedBy(tester, values, source, many).bytes(), expected.bytes());
                // Blurs of floats take one more where threads are more than bands.
                EXPECT_GE(many.runs(), backwards.runs());
            }
        }
    }
}

TEST(EveryEffect, UsesTheHostsThreadsForLargeFramesOnly) {
    for (std::uint32_t effect = 0; EffectTester(effect).exists(); ++effect) {
        const EffectTester tester(effect);
        ValueHost values;
        HostThreads threads(4);
        Picture small(200, 150);
        drawTestCard(small);
        renderedBy(tester, values, small, threads);
        EXPECT_EQ(threads.runs(), 0) << tester.effect().GetEffectName();
        Picture large = largePicture(kFormatBgra8);
        renderedBy(tester, values, large, threads);
        EXPECT_GT(threads.runs(), 0) << tester.effect().GetEffectName();
    }
}

TEST(EveryEffect, SharesTheHostsThreadsAmongRenderThreads) {
    Picture source = largePicture(kFormatBgra8);
    for (std::uint32_t effect = 0; EffectTester(effect).exists(); ++effect) {
        const EffectTester tester(effect);
        ValueHost values;
        HostThreads one(1);
        const Picture expected = renderedBy(tester, values, source, one);
        HostThreads shared(3);
        std::vector<int> wrong(3, 0);
        {
            std::vector<std::jthread> renderers;
            for (int& mine : wrong) {
                renderers.emplace_back([&] {
                    ValueHost host;
                    host.offers = &shared;
                    Picture from = source;
                    Picture result(source.width(), source.height(), source.storage());
                    const VideoFrameDesc fromDesc = from.desc();
                    const VideoFrameDesc toDesc = result.desc();
                    const FrameRenderInfo info = frameInfo(1.25);
                    mine = tester.effect().ProcessFrame(&host, &fromDesc, nullptr, &toDesc, &info) &&
                                   result.bytes() == expected.bytes()
                               ? 0
                               : 1;
                });
            }
        }
        EXPECT_EQ(wrong, std::vector<int>(3, 0)) << tester.effect().GetEffectName();
    }
}

}  // namespace
}  // namespace lumiset::test
