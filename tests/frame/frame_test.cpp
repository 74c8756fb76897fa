#include "frame/frame.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

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
    header.width = 3;
    header.bitCount = 32;
    for (const std::int32_t height : {2, -2}) {
        header.height = height;
        Frame frame;
        ASSERT_TRUE(frame.WrapBitmap(header, pixels));
        EXPECT_EQ(frame.Height(), 2);
        EXPECT_EQ(frame.Stride(), 12);
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

/// A host whose allocator counts what is outstanding.
class CountingHost final : public IEffectHost, public IHostAllocator {
public:
    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override {
        *out = iid == IHostAllocator::kId ? static_cast<IHostAllocator*>(this) : nullptr;
        references += *out != nullptr ? 1 : 0;
        return *out != nullptr ? kResultOk : kResultNoInterface;
    }
    std::uint32_t LUMISET_CALL AddRef() noexcept override { return static_cast<std::uint32_t>(++references); }
    std::uint32_t LUMISET_CALL Release() noexcept override { return static_cast<std::uint32_t>(--references); }
    void LUMISET_CALL GetParamValue(std::uint32_t, ParamValue*, std::uint32_t) noexcept override {}
    void LUMISET_CALL Reserved4() noexcept override {}
    void LUMISET_CALL Reserved5() noexcept override {}
    void LUMISET_CALL Reserved6() noexcept override {}
    void LUMISET_CALL Reserved7() noexcept override {}
    void LUMISET_CALL GetHostName(const char**) noexcept override {}
    void LUMISET_CALL AllocBytes(void** out, std::uint32_t size) noexcept override {
        *out = new std::uint8_t[size];
        ++outstanding;
    }
    void LUMISET_CALL FreeBytes(void* block) noexcept override {
        delete[] static_cast<std::uint8_t*>(block);
        --outstanding;
    }
    std::uint8_t LUMISET_CALL AllocImage(void** out, std::int32_t width, std::int32_t height,
                                         std::int32_t bytesPerPixel, std::int32_t* strideOut) noexcept override {
        *strideOut = width * bytesPerPixel + 5;
        AllocBytes(out, static_cast<std::uint32_t>(*strideOut * height));
        return answer;
    }
    void LUMISET_CALL FreeImage(void* block) noexcept override { FreeBytes(block); }

    int references = 1;
    int outstanding = 0;
    std::uint8_t answer = 1;
};

TEST(MemoryAllocator, UsesTheHostsMemoryAndGivesEverythingBack) {
    CountingHost host;
    {
        MemoryAllocator allocator(&host);
        EXPECT_EQ(host.references, 2);
        Frame frame;
        ASSERT_TRUE(frame.Allocate(10, 2, 5, &allocator, kFormatBgra8, false));  // the host decides on sizes
        EXPECT_EQ(frame.Stride(), 55);
        EXPECT_EQ(host.outstanding, 1);
        Frame view;
        view.WrapSubRect(frame, 1, 1, 2, 1, false);
        view.Reset();
        EXPECT_EQ(host.outstanding, 1);
        void* bytes = nullptr;
        ASSERT_TRUE(allocator.AllocBytes(&bytes, 100));
        EXPECT_EQ(host.outstanding, 2);
        allocator.FreeBytes(bytes);
        allocator.FreeImage(nullptr);
    }
    EXPECT_EQ(host.outstanding, 0);
    EXPECT_EQ(host.references, 1);
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
