#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "hostkit/frame_buffer.h"
#include "hostkit/host_allocator.h"

namespace lumiset::hostkit {
namespace {

constexpr PixelFormat kFormats[] = {kFormatBgra8, kFormatArgb8, kFormatBgraFloat, kFormatArgbFloat};

/// A picture whose samples all differ, as 8-bit B, G, R, A.
FrameBuffer ramp(std::int32_t width, std::int32_t height) {
    FrameBuffer frame(width, height, kFormatBgra8);
    for (std::int32_t y = 0; y < height; ++y) {
        for (std::int32_t i = 0; i < 4 * width; ++i) {
            frame.row(y)[i] = static_cast<std::uint8_t>(31 * y + 7 * i + 3);
        }
    }
    return frame;
}

TEST(ConvertFrame, GoesThereAndBackThroughEveryFormatAndRowOrder) {
    const FrameBuffer source = ramp(37, 5);
    for (const PixelFormat first : kFormats) {
        for (const PixelFormat second : kFormats) {
            FrameBuffer a(37, 5, first, {.flipped = true, .paddingBytes = 100});
            FrameBuffer b(37, 5, second);
            FrameBuffer back(37, 5, kFormatBgra8, {.flipped = true});
            convertFrame(source.desc(), a.desc());
            convertFrame(a.desc(), b.desc());
            convertFrame(b.desc(), back.desc());
            for (std::int32_t y = 0; y < 5; ++y) {
                EXPECT_EQ(std::memcmp(back.row(y), source.row(y), 4 * 37), 0) << first << ' ' << second << " row " << y;
            }
        }
    }
}

TEST(ConvertFrame, PutsEachChannelInItsPlaceAndRounds) {
    FrameBuffer bgra(1, 1, kFormatBgra8);
    FrameBuffer argb(1, 1, kFormatArgbFloat);
    const std::uint8_t pixel[4] = {51, 102, 255, 0};
    std::memcpy(bgra.row(0), pixel, 4);
    convertFrame(bgra.desc(), argb.desc());
    float samples[4];
    std::memcpy(samples, argb.row(0), sizeof samples);
    EXPECT_FLOAT_EQ(samples[0], 0.0F);
    EXPECT_FLOAT_EQ(samples[1], 1.0F);
    EXPECT_FLOAT_EQ(samples[2], 0.4F);
    EXPECT_FLOAT_EQ(samples[3], 0.2F);

    const float wild[4] = {std::numeric_limits<float>::quiet_NaN(), -3.0F, 7.0F, 100.5F / 255.0F};
    std::memcpy(argb.row(0), wild, sizeof wild);
    convertFrame(argb.desc(), bgra.desc());
    EXPECT_EQ(bgra.row(0)[3], 0);
    EXPECT_EQ(bgra.row(0)[2], 0);
    EXPECT_EQ(bgra.row(0)[1], 255);
    EXPECT_EQ(bgra.row(0)[0], 101);
}

TEST(ConvertFrame, LeavesAllBeyondTheCommonPartAlone) {
    const FrameBuffer source = ramp(3, 2);
    FrameBuffer big(5, 4, kFormatBgra8, {.paddingBytes = 64});
    std::memset(big.desc().data, 0xEE, static_cast<std::size_t>(big.desc().stride) * 4);
    convertFrame(source.desc(), big.desc());
    EXPECT_EQ(std::memcmp(big.row(1), source.row(1), 12), 0);
    EXPECT_EQ(big.row(1)[12], 0xEE);
    EXPECT_EQ(big.row(2)[0], 0xEE);
}

TEST(FieldOf, WalksEverySecondRowOfThePictureInBothRowOrders) {
    for (const std::int32_t height : {1, 2, 5, 6}) {
        for (const bool flipped : {false, true}) {
            FrameBuffer frame(1, height, kFormatBgra8, {.flipped = flipped});
            for (std::int32_t y = 0; y < height; ++y) {
                frame.row(y)[0] = static_cast<std::uint8_t>(y);
            }
            for (const bool bottom : {false, true}) {
                const VideoFrameDesc field = fieldOf(frame.desc(), bottom);
                ASSERT_EQ(field.height, bottom ? height / 2 : height - height / 2);
                if (field.height == 0) {
                    continue;
                }
                FrameBuffer rows(1, field.height, kFormatBgra8);
                convertFrame(field, rows.desc());
                for (std::int32_t y = 0; y < field.height; ++y) {
                    EXPECT_EQ(rows.row(y)[0], 2 * y + (bottom ? 1 : 0)) << height << ' ' << flipped;
                }
            }
        }
    }
}

TEST(FrameBuffer, RefusesSizesAndFormatsThatCannotBe) {
    EXPECT_THROW(FrameBuffer(0, 1, kFormatBgra8), std::invalid_argument);
    EXPECT_THROW(FrameBuffer(1, 1, kFormatMask8), std::invalid_argument);
    EXPECT_THROW(FrameBuffer(INT32_MAX, INT32_MAX, kFormatArgbFloat), std::length_error);
}

TEST(PoolAllocator, GivesFreedBlocksOutAgainUpToItsLimit) {
    const ComPtr<IHostAllocator> pool = PoolAllocator::create(20000);
    void* block = nullptr;
    std::int32_t stride = 0;
    ASSERT_NE(pool->AllocImage(&block, 33, 100, 4, &stride), 0);
    EXPECT_GE(stride, 33 * 4);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 64, 0U);
    std::memset(block, 1, static_cast<std::size_t>(stride) * 100);
    pool->FreeImage(block);
    void* again = nullptr;
    ASSERT_NE(pool->AllocImage(&again, 33, 100, 4, &stride), 0);
    EXPECT_EQ(again, block);
    void* other = nullptr;
    pool->AllocBytes(&other, 19201);
    EXPECT_NE(other, nullptr);
    pool->FreeImage(again);
    pool->FreeBytes(other);  // Past the limit: freed, which the sanitizer builds watch.
    pool->FreeBytes(nullptr);
    EXPECT_EQ(pool->AllocImage(&block, INT32_MAX, 1, 16, &stride), 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(pool->AllocImage(&block, 0, 1, 4, &stride), 0);
}

}  // namespace
}  // namespace lumiset::hostkit
