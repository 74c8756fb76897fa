// The key of Selective Color with every instruction set, against its plain arithmetic.

#include "effects/selective_color/key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "effects/effect_list.h"
#include "gpu/base_effect_helper.h"
#include "tests/frame/filter_support.h"

namespace lumiset {
namespace {

using test::GuardedFrame;
using test::onEveryInstructionSet;

TEST(ColorKey, HoldsWholeNumbersForBytes) {
    const ColorKey red = colorKey(0x0000FF, 0.25F, true);
    EXPECT_EQ(red.keyY, 65.0F);
    EXPECT_EQ(red.cosine, -40.0F);
    EXPECT_EQ(red.sine, 120.0F);
    EXPECT_EQ(red.radius, 118.0F);
    EXPECT_EQ(red.level, 63.0F);
    EXPECT_EQ(red.tangent, 6.0F);
    EXPECT_EQ(red.cotangent, 38.0F);
    EXPECT_FALSE(red.keepsWholeWedge);
    EXPECT_TRUE(colorKey(0x0000FF, 0.47F, true).keepsWholeWedge);

    const ColorKey narrow = colorKey(0x0000FF, 0.0F, true);
    EXPECT_EQ(narrow.tangent, 0.0F);
    EXPECT_EQ(narrow.cotangent, 255.0F);
    EXPECT_EQ(colorKey(0x0000FF, 1.0F, true).tangent, 255.0F);

    const ColorKey grey = colorKey(0x7F7F7F, 0.0F, false);
    EXPECT_EQ(grey.cosine, 0.0F);
    EXPECT_EQ(grey.radius, 0.0F);
    EXPECT_TRUE(grey.keepsWholeWedge);
}

/// One pixel's mask in plain whole numbers.
std::uint8_t plainMask(std::int32_t red, std::int32_t green, std::int32_t blue, std::int32_t alpha,
                       const ColorKey& key) {
    const auto whole = [](float v) { return static_cast<std::int32_t>(v); };
    const std::int32_t y = (257 * red + 504 * green + 98 * blue) / 1000;
    const std::int32_t cb = (-148 * red - 291 * green + 439 * blue) / 1000;
    const std::int32_t cr = (439 * red - 368 * green - 71 * blue) / 1000;
    const std::int32_t x = (cb * whole(key.cosine) + cr * whole(key.sine)) >> 7;
    const std::int32_t z = (cr * whole(key.cosine) - cb * whole(key.sine)) >> 7;
    if (std::abs(z) > (x * whole(key.tangent)) >> 4) {
        return static_cast<std::uint8_t>(alpha);
    }
    const std::int32_t detour = std::min(std::abs((z * whole(key.cotangent)) >> 4), 128);
    const std::int32_t luma = std::abs(y - whole(key.keyY)) * 6 / 10;
    const std::int32_t radius = whole(key.radius);
    const std::int32_t level = whole(key.level);
    if (z * z + (x - radius) * (x - radius) + luma * luma < level * level || radius <= level) {
        return 0;
    }
    const std::int32_t reach = std::max(x - detour, 0);
    return static_cast<std::uint8_t>((alpha * std::clamp(255 - reach * 255 / (radius - level) + luma, 0, 255)) >> 8);
}

TEST(KeyMask, IsTheSameOnEveryInstructionSetAndAtEveryWidth) {
    constexpr std::uint32_t colors[] = {0x0000FF, 0x4656B0, 0xFEC27D, 0x408000, 0x2D2C54, 0x808080, 0x00FFFF};
    onEveryInstructionSet([&] {
        std::mt19937 random(21);
        for (std::int32_t width = 1; width <= 70; ++width) {
            const bool alphaFirst = width % 2 == 0;
            GuardedFrame source(width, 5, alphaFirst ? kFormatArgb8 : kFormatBgra8);
            GuardedFrame mask(width, 5, kFormatMask8);
            source.randomize(random);
            const float range = static_cast<float>(random() % 60) / 100.0F;
            const ColorKey key = colorKey(colors[random() % std::size(colors)], range, true);
            keyMask(source.frame, mask.frame, key);
            EXPECT_TRUE(mask.guardsIntact());
            for (std::int32_t y = 0; y < 5; ++y) {
                for (std::int32_t x = 0; x < width; ++x) {
                    const std::uint8_t* p = source.row<std::uint8_t>(y) + 4 * x;
                    ASSERT_EQ(mask.row<std::uint8_t>(y)[x], alphaFirst ? plainMask(p[1], p[2], p[3], p[0], key)
                                                                       : plainMask(p[2], p[1], p[0], p[3], key))
                        << x << "," << y << " of " << width;
                }
            }
        }
    });
}

TEST(KeyMask, OfFloatsFallsAlongTheKeysOwnHue) {
    onEveryInstructionSet([] {
        const ColorKey key = colorKey(0x0000FF, 0.25F, false);
        constexpr std::int32_t width = 37;
        GuardedFrame source(width, 1, kFormatBgraFloat);
        GuardedFrame mask(width, 1, kFormatMaskFloat);
        for (std::int32_t x = 0; x < width; ++x) {
            const float away = static_cast<float>(x) / 255.0F;
            const float pixel[4] = {0.4F - away, 0.4F - away, 0.4F + away, 0.5F};
            std::copy_n(pixel, 4, source.row<float>(0) + std::ptrdiff_t{4} * x);
        }
        keyMask(source.frame, mask.frame, key);
        EXPECT_TRUE(mask.guardsIntact());
        const double radius = std::hypot(0.148, 0.439) * 255.0;
        for (std::int32_t x = 1; x < width; ++x) {
            const double along = 2.0 * x / 255.0 * radius * 127.0 / 128.0;
            const double luma = 0.859 * (102.0 - x) + 0.257 * 2.0 * x;
            const double value = 1.0 - along / (radius - 63.75) + std::abs(luma - 0.257 * 255.0) * 0.6 / 255.0;
            ASSERT_NEAR(mask.row<float>(0)[x], 0.5 * std::clamp(value, 0.0, 1.0), 1e-4) << x;
        }
    });
}

TEST(KeyMask, PutsFloatGreysIntoTheWedgeLikeBytes) {
    onEveryInstructionSet([] {
        constexpr std::int32_t width = 256;
        GuardedFrame source(width, 1, kFormatArgbFloat);
        GuardedFrame mask(width, 1, kFormatMaskFloat);
        for (std::int32_t x = 0; x < width; ++x) {
            const float grey = static_cast<float>(x) / 255.0F;
            const float pixel[4] = {1.0F, grey, grey, grey};
            std::copy_n(pixel, 4, source.row<float>(0) + std::ptrdiff_t{4} * x);
        }
        for (const std::uint32_t color : {0x4656B0U, 0xFEC27DU}) {
            keyMask(source.frame, mask.frame, colorKey(color, 0.5F, false));
            for (std::int32_t x = 0; x < width; ++x) {
                ASSERT_EQ(mask.row<float>(0)[x], 0.0F) << x;
            }
        }
    });
}

TEST(AlphaProcessor, HasAnotherBaseBeforeTheEffect) {
    IVideoGPUEffect* handedOut = makeAlphaProcessor();
    void* object = dynamic_cast<void*>(handedOut);
    EXPECT_EQ(dynamic_cast<CBaseEffectHelper*>(handedOut), object);
    EXPECT_NE(static_cast<void*>(handedOut), object);
    EXPECT_EQ(handedOut->Release(), 0U);
}

}  // namespace
}  // namespace lumiset
