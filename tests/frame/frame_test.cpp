#include "frame/frame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "tests/support/host.h"

namespace lumiset {
namespace {

TEST(Frame, NegativeStrideStartsAtTheLastStoredRowAndTurnsTheFlag) {
    std::vector<std::uint8_t> memory(2 * 4096);
    std::uint8_t* lastRow = memory.data() + 4096;
    for (const bool flipped : {false, true}) {
        const VideoFrameDesc desc{lastRow, 1024, 2, -4096, 4, {0, 0}, kFormatBgra8, static_cast<std::uint8_t>(flipped)};
        Frame frame;
        ASSERT_TRUE(frame.WrapDesc(&desc));
        EXPECT_EQ(frame.Data(), memory.data());
        EXPECT_EQ(frame.Stride(), 4096);
        EXPECT_EQ(frame.RowElements(), 1024);
        EXPECT_EQ(frame.Flipped(), !flipped);
        EXPECT_FALSE(frame.Owned());
    }
}

TEST(Frame, BitmapsKeepTheSignBitOfTheirHeight) {
    std::uint8_t pixels[2 * 3 * 4] = {};
    BitmapInfoHeader header{};
    header.bitCount = 32;
    for (const auto& [width, height] : {std::pair{3, 2}, {3, -2}, {0, 2}, {0, -2}}) {
        header.width = width;
        header.height = height;
        Frame frame;
        ASSERT_TRUE(frame.WrapBitmap(header, pixels));
        EXPECT_EQ(frame.Height(), 2);
        EXPECT_EQ(frame.Stride(), 4 * width);
        EXPECT_EQ(frame.Format(), kFormatBgra8);
        EXPECT_EQ(frame.Flipped(), height < 0);
    }
}

TEST(Frame, AllocatesAlignedRowsOfTheSizesItKnows) {
    for (const std::int32_t bytes : {1, 2, 3, 4, 16}) {
        Frame frame;
        ASSERT_TRUE(frame.Allocate(7, 3, bytes, nullptr, kFormatArgb8, true));
        EXPECT_EQ(frame.Stride() % 32, 0);
        EXPECT_GE(frame.Stride(), 7 * bytes);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(frame.Data()) % 32, 0U);
        EXPECT_EQ(frame.Format(), bytes == 1 ? kFormatMask8 : kFormatArgb8);
        EXPECT_TRUE(frame.Flipped());
        EXPECT_EQ(frame.PixelAddress(2, 1, 1), frame.Data() + frame.Stride() + 2 * bytes + 1);
    }
}

TEST(Frame, RefusesWhatItCannotAllocate) {
    struct Case {
        std::int32_t width, height, bytesPerPixel;
    };
    constexpr std::int32_t huge = std::numeric_limits<std::int32_t>::max();
    for (const Case& c : {Case{4, 4, 5}, Case{0, 4, 4}, Case{4, -1, 4}, Case{4, 4, 0}, Case{huge, huge, 16}}) {
        Frame frame;
        EXPECT_FALSE(frame.Allocate(c.width, c.height, c.bytesPerPixel, nullptr, kFormatBgra8, false));
        EXPECT_EQ(frame.PixelAddress(0, 0, 0), nullptr);
        EXPECT_EQ(frame.Width(), c.width);
    }
}

TEST(MemoryAllocator, UsesTheHostsMemoryAndGivesEverythingBack) {
    test::FailingHost host;
    {
        MemoryAllocator allocator(&host);
        EXPECT_EQ(host.references(), 2);
        Frame frame;
        ASSERT_TRUE(frame.Allocate(10, 2, 5, &allocator, kFormatBgra8, false));  // the host decides on sizes
        EXPECT_EQ(frame.Stride(), 96);
        EXPECT_EQ(host.outstanding(), 1U);
        Frame view;
        view.WrapSubRect(frame, 1, 1, 2, 1, false);
        view.Reset();
        EXPECT_EQ(host.outstanding(), 1U);
        void* bytes = nullptr;
        ASSERT_TRUE(allocator.AllocBytes(&bytes, 100));
        EXPECT_EQ(host.outstanding(), 2U);
        allocator.FreeBytes(bytes);
        allocator.FreeImage(nullptr);
    }
    EXPECT_EQ(host.outstanding(), 0U);
    EXPECT_EQ(host.references(), 1);
}

TEST(PixelFormats, AnswerMinusOneForCodesThatDoNotExist) {
    EXPECT_EQ(AlphaIndex(kFormatArgbFloat), 0);
    EXPECT_EQ(BytesPerChannel(kFormatArgbFloat), 4);
    EXPECT_EQ(MaskFormat(kFormatBgra8), kFormatMask8);
    EXPECT_EQ(AlphaIndex(kFormatMask8), -1);
    EXPECT_EQ(BytesPerChannel(kFormatMaskFloat), 4);
    EXPECT_EQ(MaskFormat(kFormatMaskFloat), -1);
    for (const std::int64_t code : {-1, 2, 5, 8, 9}) {
        EXPECT_EQ(AlphaIndex(code), -1);
        EXPECT_EQ(BytesPerChannel(code), -1);
        EXPECT_EQ(MaskFormat(code), -1);
    }
}

}  // namespace
}  // namespace lumiset
