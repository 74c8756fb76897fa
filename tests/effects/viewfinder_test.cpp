// Viewfinder, rendered through the module's exports.

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/effect_tester.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kViewfinder = 6;
enum Param : std::uint32_t {
    kTintColor = 1,
    kTint,
    kBlackAndWhite,
    kSharpen,
    kResolution,
    kRecord = 8,
    kBattery,
    kSafeArea,
    kFocusBox,
    kCounter,
    kOutline,
    kHour = 16
};

constexpr std::int32_t kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

/// Everything off but these.
ValueHost hostWith(std::initializer_list<std::uint32_t> on) {
    ValueHost host;
    for (std::uint32_t index : {kBlackAndWhite, kSharpen}) {
        host.values[index].words[0] = 0;
    }
    for (std::uint32_t index = kRecord; index <= kOutline; ++index) {
        host.values[index].words[0] = 0;
    }
    for (const std::uint32_t index : on) {
        host.values[index].words[0] = 1;
    }
    return host;
}

Picture grey(std::int32_t width, std::int32_t height, Storage storage = {}) {
    Picture picture(width, height, storage);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t x = 0; x < width; ++x) {
            picture.setPixel(x, y, 100, 100, 100, 255);
        }
    }
    return picture;
}

Picture rendered(ValueHost host, Picture source, const FrameRenderInfo& info = frameInfo(),
                 const EffectTester& tester = EffectTester(kViewfinder)) {
    Picture result(source.width(), source.height(), source.storage());
    EXPECT_TRUE(tester.render(host, source, result, &info));
    return result;
}

/// What a viewer sees of a pixel: 'w', 'k' and 'r' for white, black and red, '.' for anything else.
char seen(const Picture& picture, std::int32_t x, std::int32_t y) {
    const double red = picture.get(x, y, kRed);
    const double green = picture.get(x, y, kGreen);
    return red > 250.0 && green > 250.0 ? 'w' : red < 5.0 && green < 5.0 ? 'k' : red > 250.0 && green < 5.0 ? 'r' : '.';
}

/// Columns and rows that hold a kind of pixel; right and bottom are the first ones outside.
PixelRect boundsOf(const Picture& picture, char kind) {
    PixelRect bounds{picture.width(), picture.height(), 0, 0};
    for (std::int32_t y = 0; y < picture.height(); ++y) {
        for (std::int32_t x = 0; x < picture.width(); ++x) {
            if (seen(picture, x, y) == kind) {
                bounds = {std::min(bounds.left, x), std::min(bounds.top, y), std::max(bounds.right, x + 1),
                          std::max(bounds.bottom, y + 1)};
            }
        }
    }
    return bounds;
}

/// The green samples of a rectangle of pixels.
std::vector<double> samplesIn(const Picture& picture, const PixelRect& rect) {
    std::vector<double> samples;
    for (std::int32_t y = rect.top; y < rect.bottom; ++y) {
        for (std::int32_t x = rect.left; x < rect.right; ++x) {
            samples.push_back(picture.get(x, y, kGreen));
        }
    }
    return samples;
}

TEST(Viewfinder, SafeAreaIsAFrameOfFourFifthsWithAShadowInsideAndBelow) {
    for (const std::int32_t format : kFormats) {
        // 300 by 200: lines of 2 pixels around 240 by 160 from (30, 20).
        const Picture result = rendered(hostWith({kSafeArea, kOutline}), grey(300, 200, {format}));
        std::string row;
        for (std::int32_t x = 28; x < 36; ++x) {
            row += seen(result, x, 100);
        }
        for (std::int32_t x = 266; x < 273; ++x) {
            row += seen(result, x, 100);
        }
        EXPECT_EQ(row, "..wwk.....wwk..");
        std::string column;
        for (std::int32_t y = 18; y < 25; ++y) {
            column += seen(result, 150, y);
        }
        for (std::int32_t y = 176; y < 183; ++y) {
            column += seen(result, 150, y);
        }
        EXPECT_EQ(column, "..wwk....wwk..");
        EXPECT_EQ(result.get(150, 100, kGreen), result.get(1, 1, kGreen)) << "it is not filled";
    }
}

TEST(Viewfinder, FocusBoxMarksItsFourCorners) {
    // 60 by 40 from (120, 80), strokes 20 and 13 long.
    const Picture result = rendered(hostWith({kFocusBox}), grey(300, 200));
    EXPECT_EQ(boundsOf(result, 'k').right, 0) << "no shadow without Outline";
    for (std::int32_t y = 78; y < 122; ++y) {
        for (std::int32_t x = 118; x < 182; ++x) {
            const std::int32_t dx = std::min(x - 120, 179 - x);
            const std::int32_t dy = std::min(y - 80, 119 - y);
            const bool marked = dx >= 0 && dy >= 0 && ((dx < 20 && dy < 2) || (dx < 2 && dy < 13));
            ASSERT_EQ(seen(result, x, y), marked ? 'w' : '.') << x << ", " << y;
        }
    }
}

TEST(Viewfinder, RecordMarkStandsAtTheTopRightWithItsLightAndBlinks) {
    // Font of 16 rows: a mark 28 wide with 6 columns and 4 rows of margin, a light of 11 pixels 18 columns before.
    const Picture lit = rendered(hostWith({kRecord}), grey(300, 200), frameInfo(0.8));
    const PixelRect light = boundsOf(lit, 'r');
    EXPECT_GE(light.left, 248);
    EXPECT_LE(light.left, 250);
    EXPECT_GE(light.right, 257);
    EXPECT_LE(light.right, 259);
    EXPECT_GE(light.top, 6);
    EXPECT_LE(light.bottom, 17);
    const PixelRect mark = boundsOf(lit, 'w');
    EXPECT_GE(mark.left, 266);
    EXPECT_LE(mark.left, 269);
    EXPECT_GE(mark.right, 291);
    EXPECT_LE(mark.right, 294);
    EXPECT_GE(mark.top, 4);
    EXPECT_LE(mark.bottom, 20);
    const Picture dark = rendered(hostWith({kRecord}), grey(300, 200), frameInfo(0.801));
    EXPECT_EQ(boundsOf(dark, 'w').right, 0);
    EXPECT_EQ(boundsOf(dark, 'r').right, 0);
}

TEST(Viewfinder, BatteryStandsAtTheTopLeft) {
    const Picture result = rendered(hostWith({kBattery, kOutline}), grey(600, 400));
    const PixelRect battery = boundsOf(result, 'w');  // 78 by 32 from (2, 2), its picture a little smaller
    EXPECT_GE(battery.left, 3);
    EXPECT_LE(battery.left, 5);
    EXPECT_GE(battery.top, 3);
    EXPECT_LE(battery.top, 5);
    EXPECT_GE(battery.right, 74);
    EXPECT_LE(battery.right, 80);
    EXPECT_LE(battery.bottom, 34);
    EXPECT_GT(boundsOf(result, 'k').right, 0) << "the outline";
}

TEST(Viewfinder, CounterShowsTheSameDigitInEveryPlace) {
    // 400 by 200: cells of 8 by 16 from (168, 160).
    const auto cell = [](const Picture& picture, int place) {
        const std::int32_t left = 168 + 8 * place;
        return samplesIn(picture, {left, 160, left + 8, 176});
    };
    std::vector<std::vector<double>> digits;
    for (int second = 0; second < 10; ++second) {
        digits.push_back(cell(rendered(hostWith({kCounter}), grey(400, 200), frameInfo(second)), 7));
    }
    EXPECT_EQ(std::set(digits.begin(), digits.end()).size(), 10U);

    const Picture shown = rendered(hostWith({kCounter}), grey(400, 200), frameInfo(45296.0));
    int digit = 1;
    for (const int place : {0, 1, 3, 4, 6, 7}) {
        EXPECT_EQ(cell(shown, place), digits[static_cast<std::size_t>(digit)]) << digit;
        ++digit;
    }
    EXPECT_EQ(cell(shown, 2), cell(shown, 5));

    const PixelRect bounds = boundsOf(shown, 'w');
    EXPECT_TRUE(bounds.left >= 168 && bounds.left <= 172) << bounds.left;
    EXPECT_TRUE(bounds.right >= 228 && bounds.right <= 232) << bounds.right;
    EXPECT_TRUE(bounds.top >= 161 && bounds.top <= 163) << bounds.top;
    EXPECT_TRUE(bounds.bottom >= 173 && bounds.bottom <= 175) << bounds.bottom;

    // The last slider positions mean 23:59:59, and a second later a new day begins.
    ValueHost host = hostWith({kCounter});
    for (std::uint32_t i = 0; i < 3; ++i) {
        host.values[kHour + i].slider = 1.0F;
    }
    const Picture last = rendered(host, grey(400, 200));
    EXPECT_EQ(cell(last, 0), digits[2]);
    EXPECT_EQ(cell(last, 1), digits[3]);
    EXPECT_EQ(cell(last, 6), digits[5]);
    EXPECT_EQ(cell(last, 7), digits[9]);
    const Picture next = rendered(host, grey(400, 200), frameInfo(1.0));
    for (const int place : {0, 1, 3, 4, 6, 7}) {
        EXPECT_EQ(cell(next, place), digits[0]);
    }
}

TEST(Viewfinder, MarksAreOpaqueOnATransparentPicture) {
    for (const std::int32_t format : kFormats) {
        const Picture clear(300, 200, {format});
        const Picture result = rendered(hostWith({kRecord, kBattery, kSafeArea, kCounter, kOutline}), clear);
        double most = 0.0;
        for (std::int32_t y = 160; y < 176; ++y) {
            for (std::int32_t x = 118; x < 182; ++x) {
                most = std::max(most, result.get(x, y, kAlpha));
            }
        }
        EXPECT_GE(most, 250.0) << "the counter";
        EXPECT_NEAR(result.get(253, 11, kAlpha), 255.0, 1e-3) << "the light";
        EXPECT_NEAR(result.get(31, 100, kAlpha), 255.0, 1e-3) << "the safe area";
        EXPECT_EQ(result.get(150, 100, kAlpha), 0.0);
    }
}

TEST(Viewfinder, BlackAndWhiteTakesTheTintsLight) {
    for (const std::int32_t format : kFormats) {
        Picture source(2, 2, {format});
        source.setPixel(1, 1, 100, 150, 50, 77);
        ValueHost host = hostWith({kBlackAndWhite});
        host.values[kTintColor].words[0] = 0x0000FF;  // red
        const Picture plain = rendered(host, source);
        for (const Channel channel : {kRed, kGreen, kBlue}) {
            EXPECT_NEAR(plain.get(1, 1, channel), 123.65, 0.5);
        }
        host.values[kTint].slider = 1.0F;
        const Picture red = rendered(host, source);
        EXPECT_NEAR(red.get(1, 1, kRed), 123.65, 0.5);
        EXPECT_EQ(red.get(1, 1, kGreen), 0.0);
        EXPECT_EQ(red.get(1, 1, kBlue), 0.0);
        EXPECT_NEAR(red.get(1, 1, kAlpha), 77.0, 1e-3);
    }
}

TEST(Viewfinder, ResolutionLeavesSoManyLines) {
    Picture source(4, 600, {kFormatBgraFloat});
    for (std::int32_t y = 0; y < 600; ++y) {
        for (std::int32_t x = 0; x < 4; ++x) {
            source.setPixel(x, y, 0.4 * y, 0.4 * y, 0.4 * y, 255);
        }
    }
    for (const auto& [resolution, lines] : {std::pair{0.0F, 30U}, {0.5F, 165U}, {0.98F, 294U}, {0.99F, 600U}}) {
        ValueHost host = hostWith({});
        host.values[kResolution].slider = resolution;
        const Picture result = rendered(host, source);
        const std::vector<double> column = samplesIn(result, {0, 0, 1, 600});
        EXPECT_EQ(std::set(column.begin(), column.end()).size(), lines) << resolution;
    }
}

TEST(Viewfinder, SharpensTwice) {
    Picture source = grey(9, 9);
    source.setPixel(4, 4, 108, 108, 108, 255);
    const Picture plain = rendered(hostWith({}), source);
    const Picture sharp = rendered(hostWith({kSharpen}), source);
    // A lone pixel d above its ground becomes 2 d, its neighbours -d / 8; again, it becomes 4 d + 8 (d / 8) / 8.
    const double above = plain.get(4, 4, kGreen) - plain.get(0, 0, kGreen);
    EXPECT_NEAR(sharp.get(4, 4, kGreen) - plain.get(0, 0, kGreen), 4.125 * above, 2.0);
    EXPECT_NEAR(sharp.get(2, 2, kGreen) - plain.get(0, 0, kGreen), above / 64.0, 1.0);
}

TEST(Viewfinder, IsTheSamePictureInBothRowOrders) {
    const EffectTester tester(kViewfinder);
    FrameRenderInfo field = frameInfo(5.0);
    field.field = 0;
    field.flags = FrameRenderInfo::kHasField | FrameRenderInfo::kHasPixelAspect;
    field.pixelAspect = 16.0 / 15.0;
    for (const FrameRenderInfo& info : {frameInfo(5.0), field}) {
        for (std::uint32_t preset = 0; preset < tester.presetCount(); ++preset) {
            for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
                Picture upright(211, 157, {format});
                Picture turned(211, 157, {format, true});
                drawTestCard(upright);
                drawTestCard(turned);
                const Picture a = rendered(tester.presetHost(preset), upright, info, tester);
                const Picture b = rendered(tester.presetHost(preset), turned, info, tester);
                EXPECT_EQ(samplesIn(a, {0, 0, 211, 157}), samplesIn(b, {0, 0, 211, 157})) << preset;
            }
        }
    }
}

TEST(Viewfinder, RendersFramesOfTwoSizesFromManyThreads) {
    const EffectTester tester(kViewfinder);
    std::vector<Picture> expected;
    for (const std::int32_t height : {100, 180}) {
        expected.push_back(rendered(ValueHost(), grey(240, height), frameInfo(1234.0), tester));
    }
    std::vector<int> wrong(4, 0);
    {
        std::vector<std::jthread> threads;
        for (std::size_t thread = 0; thread < wrong.size(); ++thread) {
            threads.emplace_back([&, thread] {
                for (std::size_t round = 0; round < 6; ++round) {
                    const Picture& same = expected[(thread + round / 2) % 2];
                    const Picture result = rendered(ValueHost(), grey(240, same.height()), frameInfo(1234.0), tester);
                    wrong[thread] += result.bytes() == same.bytes() ? 0 : 1;
                }
            });
        }
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace lumiset::test
