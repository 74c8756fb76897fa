// What holds for every effect, every preset and every layout: loops over what the module itself tells.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <vector>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::int32_t kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

/// Compares what is seen: colours count as much as their alpha.
Difference compareVisibly(const Picture& a, const Picture& b) {
    const auto seenIn = [](const Picture& picture) {
        return [&picture](std::int32_t x, std::int32_t y, std::int32_t channel) {
            const double value = picture.get(x, y, static_cast<Channel>(channel));
            return channel == kAlpha ? value : value * picture.get(x, y, kAlpha) / 255.0;
        };
    };
    return differenceOf(a.width(), a.height(), 4, seenIn(a), seenIn(b));
}

/// Compares `b` with the nearest of what `a` shows up to `rows` rows away. Even kernels and corner-anchored
/// scaling work in stored order: in the other row order each moves the picture by a row. Rows near the border,
/// where they may come from outside, are left out.
Difference compareWithinRows(const Picture& a, const Picture& b, std::int32_t rows) {
    constexpr std::int32_t kBorder = 5;
    const auto sample = [&](std::int32_t x, std::int32_t y, std::int32_t channel) {
        return b.get(x, y + kBorder, static_cast<Channel>(channel));
    };
    const auto nearest = [&](std::int32_t x, std::int32_t y, std::int32_t channel) {
        double low = HUGE_VAL;
        double high = -HUGE_VAL;
        for (std::int32_t row = y + kBorder - rows; row <= y + kBorder + rows; ++row) {
            low = std::min(low, a.get(x, row, static_cast<Channel>(channel)));
            high = std::max(high, a.get(x, row, static_cast<Channel>(channel)));
        }
        return std::min(std::max(low, sample(x, y, channel)), high);
    };
    return differenceOf(a.width(), a.height() - 2 * kBorder, 4, sample, nearest);
}

/// How far an effect's 8-bit picture may lie from its float picture, and what is switched off to compare them.
struct DepthRow {
    std::string_view effect;
    double levels;
    void (*prepare)(ValueHost& host);
};
constexpr DepthRow kDepthRows[] = {
    // Whole-number gains and weights, stretched by two steep curves.
    {"Color Fixer Pro", 6.0, nullptr},
    // The key's whole numbers put a few pixels on the other side of its edges.
    {"Selective Color", 80.0, nullptr},
    // Static is another picture in float, and the soft edge begins at 253 of 255, which 8 bits round to; the other
    // steps truncate one after the other.
    {"Old TV", 12.0,
     [](ValueHost& host) {
         host.values[1].slider = 0.0F;
         host.values[29].slider = 0.0F;
     }},
    // Sharpening is cut off at white and black in 8 bits alone.
    {"Viewfinder", 3.0, [](ValueHost& host) { host.values[4].words[0] = 0; }},
};
DepthRow depthRow(const EffectTester& tester) {
    for (const DepthRow& row : kDepthRows) {
        if (row.effect == tester.effect().GetEffectName()) {
            return row;
        }
    }
    return {tester.effect().GetEffectName(), 3.0, nullptr};
}

/// Calls `check(tester, host, description)` for every preset of every effect of this build.
template <class Check>
void forEveryPreset(Check check) {
    for (std::uint32_t index = 0; index < effectCount(); ++index) {
        const EffectTester tester(index);
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            ValueHost host = tester.presetHost(preset);
            SCOPED_TRACE(std::string(tester.effect().GetEffectName()) + ", " + tester.effect().GetPresetName(preset));
            check(tester, host);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    }
}

Picture rendered(const EffectTester& tester, ValueHost& host, Picture& source, Storage storage,
                 const FrameRenderInfo& info = frameInfo(1.25)) {
    Picture result(source.width(), source.height(), storage);
    EXPECT_TRUE(tester.render(host, source, result, &info));
    return result;
}

/// Whether no sample of a float picture is infinite or no number; bytes always are finite.
bool isFinite(const Picture& picture) {
    const auto samples = [&](std::int32_t x, std::int32_t y, std::int32_t channel) {
        return picture.get(x, y, static_cast<Channel>(channel));
    };
    const auto zero = [](std::int32_t, std::int32_t, std::int32_t) { return 0.0; };
    return std::isfinite(differenceOf(picture.width(), picture.height(), 4, samples, zero).largest);
}

Picture testCard(std::int32_t width, std::int32_t height, Storage storage, bool sparks = true) {
    Picture picture(width, height, storage);
    drawTestCard(picture, false, sparks);
    return picture;
}

TEST(EveryPreset, GivesOnePictureInEveryLayout) {
    forEveryPreset([](const EffectTester& tester, ValueHost& host) {
        const DepthRow depth = depthRow(tester);
        if (depth.prepare != nullptr) {
            depth.prepare(host);
        }
        std::vector<Picture> results;
        for (const std::int32_t format : kFormats) {
            Picture source = testCard(67, 41, {.format = format});
            results.push_back(rendered(tester, host, source, {.format = format}));
        }
        EXPECT_TRUE(within(comparePictures(results[0], results[1]), {})) << "8-bit layouts";
        EXPECT_TRUE(within(comparePictures(results[2], results[3]), {})) << "float layouts";
        EXPECT_TRUE(within(compareVisibly(results[0], results[2]), {depth.levels})) << "8-bit against float";
    });
}

TEST(EveryPreset, StoresNeitherPaddingNorOrderNorStrideInThePicture) {
    forEveryPreset([](const EffectTester& tester, ValueHost& host) {
        for (const std::int32_t format : kFormats) {
            Picture plainSource = testCard(45, 30, {.format = format}, false);
            const Picture plain = rendered(tester, host, plainSource, {.format = format});
            for (const Storage& storage : {Storage{format, false, true, 12}, Storage{format, true, false, 4},
                                           Storage{format, true, true, 0}, Storage{format, false, false, 36}}) {
                Picture source = testCard(45, 30, storage, false);
                const std::vector<std::uint8_t> before = source.bytes();
                Picture result = rendered(tester, host, source, storage);
                EXPECT_EQ(source.bytes(), before) << "the source is only read";
                EXPECT_TRUE(result.guardsIntact());
                EXPECT_TRUE(within(compareWithinRows(plain, result, 2), {3.0}));
                if (storage.flipped == storage.negativeStride) {
                    EXPECT_TRUE(within(comparePictures(plain, result), {})) << "stored in the same order";
                }

                // A destination in the other row order holds the same picture.
                Storage other = storage;
                other.flipped = !other.flipped;
                const Picture turned = rendered(tester, host, source, other);
                EXPECT_TRUE(within(comparePictures(result, turned), {}));
            }
        }
    });
}

TEST(EveryPreset, KeepsAlphaUnlessTheEffectTellsOtherwise) {
    constexpr std::uint32_t kChangesAlpha = 0x0004;
    forEveryPreset([](const EffectTester& tester, ValueHost& host) {
        // A stretch moves whole pixels, alpha with them.
        if ((tester.effect().GetEffectFlags() & kChangesAlpha) != 0 ||
            tester.effect().GetEffectName() == std::string_view("Progressive Stretch")) {
            return;
        }
        for (const std::int32_t format : kFormats) {
            Picture source = testCard(61, 45, {.format = format});
            Picture result = rendered(tester, host, source, {.format = format});
            for (std::int32_t i = 0; i < 61 * 45; ++i) {
                ASSERT_EQ(result.get(i % 61, i / 61, kAlpha), source.get(i % 61, i / 61, kAlpha)) << "pixel " << i;
            }
        }
    });
}

TEST(EveryPreset, WritesEveryPixelOfEverySizeAndNothingElse) {
    forEveryPreset([](const EffectTester& tester, ValueHost& host) {
        // The last one is wide enough for steps that work in bands of rows to have several.
        constexpr std::int32_t sizes[][2] = {{1, 1}, {1, 9},   {9, 1},  {2, 2},   {3, 5},
                                             {7, 4}, {17, 13}, {64, 3}, {61, 59}, {3001, 23}};
        for (const std::int32_t format : {kFormatArgb8, kFormatBgraFloat}) {
            for (const auto& size : sizes) {
                SCOPED_TRACE(::testing::Message() << size[0] << "x" << size[1]);
                Picture source = testCard(size[0], size[1], {.format = format, .padding = 4});
                const Picture result = rendered(tester, host, source, {.format = format, .padding = 4});
                EXPECT_TRUE(result.guardsIntact());
                EXPECT_TRUE(isFinite(result));
                // What lay in the destination does not show: every pixel was written.
                EXPECT_EQ(rendered(tester, host, source, {.format = format, .padding = 4, .fill = 0x5A}).bytes(),
                          result.bytes());
            }
        }
    });
}

}  // namespace
}  // namespace lumiset::test
