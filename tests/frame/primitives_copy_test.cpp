#include <array>

#include "frame/image_primitives.h"
#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

using U8 = std::uint8_t;

TEST(PrimitivesSupport, FindsAWrongResultAWriteBesideTheRegionAndAMissingCheck) {
    const auto fill = [](ImgSize size, Plane<U8> p) {
        return ImgSet8A4(p.data, p.step, std::array<U8, 3>{1, 2, 3}.data(), size);
    };
    const auto three = [](U8* p) { p[0] = 1, p[1] = 2, p[2] = 3; };
    EXPECT_EQ(findPixelFault<U8>({kColours}, fill, three), "");
    EXPECT_NE(findPixelFault<U8>({kColours}, fill, [](U8* p) { p[0] = 1, p[1] = 2, p[2] = 4; }), "");
    EXPECT_NE(findPixelFault<U8>({kColours}, fill, [&](U8* p) { three(p), p[3] = 9; }), "");
    const auto overrun = [&](ImgSize size, Plane<U8> p) {
        const ImgStatus status = fill(size, p);
        if (status == kImgOk) {
            p.row(size.height - 1)[size.width * 4]++;
        }
        return status;
    };
    EXPECT_NE((findPixelFault<U8>({kAllFour}, overrun, [&](U8* p) { three(p); })), "");
    const auto unchecked = [&](ImgSize size, Plane<U8> p) {
        return fill({size.width, size.height < 0 ? 1 : size.height}, p);
    };
    EXPECT_NE(findPixelFault<U8>({kColours}, unchecked, three), "");
    EXPECT_NE((findPixelFault<float>(
                  {kOneChannel}, [](ImgSize size, Plane<float> p) { return ImgSetFC1(p.data, p.step, NAN, size); },
                  [](float* p) { *p = 1; }, 0.5F)),
              "");
}

template <class T>
constexpr auto kCopyFirst = [](T* src, T* dst) { dst[0] = src[0]; };
template <class T>
constexpr auto kCopyThree = [](T* src, T* dst) { std::copy_n(src, 3, dst); };
template <class T>
constexpr auto kCopyFour = [](T* src, T* dst) { std::copy_n(src, 4, dst); };

/// The call of a primitive that takes a source and a destination and nothing else.
template <class T>
auto copyCall(ImgStatus (*primitive)(const T*, std::int32_t, T*, std::int32_t, ImgSize) noexcept) {
    return [primitive](ImgSize size, Plane<T> src, Plane<T> dst) {
        return primitive(src.data, src.step, dst.data, dst.step, size);
    };
}

TEST(PrimitivesCopy, MovesWholePixels) {
    EXPECT_EQ((findPixelFault<U8, U8>({kOneChannel, kOneChannel}, copyCall(ImgCopy8C1), kCopyFirst<U8>)), "");
    EXPECT_EQ((findPixelFault<U8, U8>({kAllFour, kAllFour}, copyCall(ImgCopy8C4), kCopyFour<U8>)), "");
    EXPECT_EQ((findPixelFault<float, float>({kOneChannel, kOneChannel}, copyCall(ImgCopyFC1), kCopyFirst<float>)), "");
    EXPECT_EQ((findPixelFault<float, float>({kAllFour, kAllFour}, copyCall(ImgCopyFC4), kCopyFour<float>)), "");
}

TEST(PrimitivesCopy, MovesColoursAndLeavesTheFourthSample) {
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        EXPECT_EQ((findPixelFault<U8, U8>({spec, spec}, copyCall(ImgCopy8A4), kCopyThree<U8>)), "");
        EXPECT_EQ((findPixelFault<float, float>({spec, spec}, copyCall(ImgCopyFA4), kCopyThree<float>)), "");
    }
}

TEST(PrimitivesCopy, MovesSingleChannels) {
    for (int channel = 0; channel < 4; ++channel) {
        const PlaneSpec one = channelOfFour(channel);
        const PlaneSpec other = channelOfFour((channel + 3) % 4);
        EXPECT_EQ((findPixelFault<U8, U8>({one, other}, copyCall(ImgCopyChannel8C4), kCopyFirst<U8>)), "");
        EXPECT_EQ((findPixelFault<float, float>({one, other}, copyCall(ImgCopyChannelFC4), kCopyFirst<float>)), "");
        EXPECT_EQ((findPixelFault<U8, U8>({one, kOneChannel}, copyCall(ImgExtractChannel8), kCopyFirst<U8>)), "");
        EXPECT_EQ((findPixelFault<float, float>({one, kOneChannel}, copyCall(ImgExtractChannelF), kCopyFirst<float>)),
                  "");
        EXPECT_EQ((findPixelFault<U8, U8>({kOneChannel, one}, copyCall(ImgInsertChannel8), kCopyFirst<U8>)), "");
        EXPECT_EQ((findPixelFault<float, float>({kOneChannel, one}, copyCall(ImgInsertChannelF), kCopyFirst<float>)),
                  "");
    }
}

TEST(PrimitivesCopy, MovesAChannelWithinOnePlane) {
    for (const auto& [from, to] : {std::pair(0, 3), std::pair(3, 0), std::pair(1, 2)}) {
        const auto run = [from = from, to = to](ImgSize size, Plane<U8> p) {
            return p.data == nullptr ? kImgNullPointer
                                     : ImgCopyChannel8C4(p.data + from, p.step, p.data + to, p.step, size);
        };
        EXPECT_EQ(findPixelFault<U8>({kAllFour}, run, [from = from, to = to](U8* p) { p[to] = p[from]; }), "");
    }
}

TEST(PrimitivesCopy, ReordersChannels) {
    constexpr std::array<std::uint32_t, 4> kOrders[] = {{3, 2, 1, 0}, {1, 2, 3, 0}, {2, 2, 0, 3}};
    for (const auto& order : kOrders) {
        const auto meaning = [&](auto* src, auto* dst) {
            const std::array<std::remove_pointer_t<decltype(src)>, 4> old{src[0], src[1], src[2], src[3]};
            for (std::size_t i = 0; i < 4; ++i) {
                dst[i] = old[order[i]];
            }
        };
        EXPECT_EQ((findPixelFault<U8, U8>(
                      {kAllFour, kAllFour},
                      [&](ImgSize size, Plane<U8> src, Plane<U8> dst) {
                          return ImgReorderChannels8C4(src.data, src.step, dst.data, dst.step, order.data(), size);
                      },
                      meaning)),
                  "");
        EXPECT_EQ(
            (findPixelFault<float>(
                {kAllFour},
                [&](ImgSize size, Plane<float> p) { return ImgSwapChannelsFC4(p.data, p.step, order.data(), size); },
                [&](float* p) { meaning(p, p); })),
            "");
    }
}

TEST(PrimitivesCopy, SwapWithABadIndexWritesNothing) {
    std::array<U8, 4> pixel{1, 2, 3, 4};
    for (std::size_t i = 0; i < 4; ++i) {
        std::array<std::uint32_t, 4> order{3, 2, 1, 0};
        order[i] = 4;
        EXPECT_EQ(ImgSwapChannels8C4(pixel.data(), 4, order.data(), {1, 1}), kImgBadRange);
    }
    EXPECT_EQ(ImgSwapChannels8C4(pixel.data(), 4, nullptr, {1, 1}), kImgNullPointer);
    EXPECT_EQ(pixel, (std::array<U8, 4>{1, 2, 3, 4}));
}

TEST(PrimitivesFill, SetsSamples) {
    static constexpr U8 kBytes[] = {200, 0, 255, 7};
    static constexpr float kReals[] = {0.25F, -3.0F, 1.0F, 7.5F};
    const auto setFour = [](auto* p, const auto* values, int count) { std::copy_n(values, count, p); };
    EXPECT_EQ(findPixelFault<U8>(
                  {kOneChannel}, [](ImgSize s, Plane<U8> p) { return ImgSet8C1(p.data, p.step, 200, s); },
                  [](U8* p) { *p = 200; }),
              "");
    EXPECT_EQ(findPixelFault<float>(
                  {kOneChannel}, [](ImgSize s, Plane<float> p) { return ImgSetFC1(p.data, p.step, 0.3F, s); },
                  [](float* p) { *p = 0.3F; }),
              "");
    EXPECT_EQ(findPixelFault<U8>(
                  {kAllFour}, [](ImgSize s, Plane<U8> p) { return ImgSet8C4(p.data, p.step, kBytes, s); },
                  [&](U8* p) { setFour(p, kBytes, 4); }),
              "");
    EXPECT_EQ(findPixelFault<float>(
                  {kAllFour}, [](ImgSize s, Plane<float> p) { return ImgSetFC4(p.data, p.step, kReals, s); },
                  [&](float* p) { setFour(p, kReals, 4); }),
              "");
    for (const PlaneSpec& spec : {kColours, kColoursAfterAlpha}) {
        EXPECT_EQ(findPixelFault<U8>(
                      {spec}, [](ImgSize s, Plane<U8> p) { return ImgSet8A4(p.data, p.step, kBytes, s); },
                      [&](U8* p) { setFour(p, kBytes, 3); }),
                  "");
        EXPECT_EQ(findPixelFault<float>(
                      {spec}, [](ImgSize s, Plane<float> p) { return ImgSetFA4(p.data, p.step, kReals, s); },
                      [&](float* p) { setFour(p, kReals, 3); }),
                  "");
    }
    for (int channel = 0; channel < 4; ++channel) {
        EXPECT_EQ(
            findPixelFault<U8>(
                {channelOfFour(channel)},
                [](ImgSize s, Plane<U8> p) { return ImgSetChannel8C4(p.data, p.step, 77, s); }, [](U8* p) { *p = 77; }),
            "");
        EXPECT_EQ(findPixelFault<float>(
                      {channelOfFour(channel)},
                      [](ImgSize s, Plane<float> p) { return ImgSetChannelFC4(p.data, p.step, 0.5F, s); },
                      [](float* p) { *p = 0.5F; }),
                  "");
    }
}

TEST(PrimitivesMemory, RowsAreAlignedAndPadded) {
    std::int32_t stride = 0;
    const auto check = [&](void* block, std::int32_t expectedStride) {
        EXPECT_NE(block, nullptr);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 32, 0U);
        EXPECT_EQ(stride, expectedStride);
        std::memset(block, 1, static_cast<std::size_t>(stride) * 3);
        ImgFree(block);
    };
    check(ImgAllocRows8C1(33, 3, &stride), 64);
    check(ImgAllocRows8C2(16, 3, &stride), 32);
    check(ImgAllocRows8C3(11, 3, &stride), 64);
    check(ImgAllocRows8C4(9, 3, &stride), 64);
    check(ImgAllocRowsFC4(3, 3, &stride), 64);
    void* bytes = ImgAlloc(100);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(bytes) % 32, 0U);
    ImgFree(bytes);
    ImgFree(nullptr);
}

TEST(PrimitivesMemory, ImpossibleSizesGiveNull) {
    std::int32_t stride = 5;
    EXPECT_EQ(ImgAllocRows8C4(0, 3, &stride), nullptr);
    EXPECT_EQ(stride, 0);
    EXPECT_EQ(ImgAllocRowsFC4(1 << 28, 3, &stride), nullptr);
    EXPECT_EQ(ImgAllocRows8C1(3, 3, nullptr), nullptr);
    EXPECT_EQ(ImgAlloc(0), nullptr);
}

}  // namespace
}  // namespace lumiset::test
