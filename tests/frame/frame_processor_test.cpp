#include "frame/frame_processor.h"

#include <cmath>
#include <cstring>
#include <functional>
#include <limits>

#include "tests/frame/operation_support.h"

namespace lumiset::test {
namespace {

class Processor {
public:
    ~Processor() { m_object->Release(); }
    IFrameProcessor* operator->() const { return m_object; }

private:
    IFrameProcessor* m_object = createFrameProcessor();
};

VideoFrameDesc descOf(const GuardedFrame& f) {
    VideoFrameDesc desc;
    f.frame.ToDesc(&desc);
    return desc;
}

TEST(FrameProcessor, CountsReferencesAndAnswersForItsTwoInterfaces) {
    IFrameProcessor* processor = createFrameProcessor();
    ASSERT_NE(processor, nullptr);
    EXPECT_EQ(processor->AddRef(), 2U);
    EXPECT_EQ(processor->Release(), 1U);
    for (const Guid& id : {IUnknown::kId, IFrameProcessor::kId}) {
        void* found = nullptr;
        EXPECT_EQ(processor->QueryInterface(id, &found), kResultOk);
        EXPECT_EQ(found, processor);
        EXPECT_EQ(processor->Release(), 1U);
    }
    void* found = processor;
    EXPECT_EQ(processor->QueryInterface(IHostAllocator::kId, &found), kResultNoInterface);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(processor->QueryInterface(IUnknown::kId, nullptr), kResultFail);
    EXPECT_EQ(processor->Release(), 0U);
}

/// Slot of a virtual function, as the common C++ ABI of this project's compilers encodes it in a member pointer.
template <class Member>
std::ptrdiff_t slotOf(Member member) {
    std::ptrdiff_t encoded = 0;
    std::memcpy(&encoded, &member, sizeof encoded);
    return (encoded - 1) / static_cast<std::ptrdiff_t>(sizeof(void*));
}

TEST(FrameProcessor, KeepsItsSlots) {
    using P = IFrameProcessor;
    const std::ptrdiff_t slots[] = {slotOf(&P::QueryInterface), slotOf(&P::AddRef),
                                    slotOf(&P::Release),        slotOf(&P::CopyImage),
                                    slotOf(&P::ResizeImage),    slotOf(&P::SwapChannelOrder),
                                    slotOf(&P::Yuv422ToBgra),   slotOf(&P::BgraToYuv422),
                                    slotOf(&P::SetChannel),     slotOf(&P::AlphaOver),
                                    slotOf(&P::SwapChannels),   slotOf(&P::PremultiplyAlpha),
                                    slotOf(&P::YuvToColor),     slotOf(&P::ColorToYuv),
                                    slotOf(&P::FlipVertical),   slotOf(&P::FlipVerticalCopy),
                                    slotOf(&P::CopyChannel),    slotOf(&P::InvertChannel),
                                    slotOf(&P::SquareSamples),  slotOf(&P::SquareRootSamples),
                                    slotOf(&P::LimitSamples),   slotOf(&P::DeleteThis),
                                    slotOf(&P::ResizeRegion)};
    for (std::ptrdiff_t i = 0; i < 23; ++i) {
        EXPECT_EQ(slots[i], i);
    }
}

/// Every operation on one record, in each of its places; the other places get a sound record.
std::vector<std::function<bool(const VideoFrameDesc*)>> everyOperation(const Processor& p,
                                                                       const VideoFrameDesc* sound) {
    static const std::uint32_t kOrder[4] = {0, 1, 2, 3};
    static const PixelRect kRegion{0, 0, 1, 1};
    const auto both = [&](auto operation) {
        return [=](const VideoFrameDesc* d) { return operation(d, sound) || operation(sound, d); };
    };
    return {
        both([&p](auto s, auto d) { return p->CopyImage(s, d); }),
        both([&p](auto s, auto d) { return p->ResizeImage(s, d, 1); }),
        both([&p](auto s, auto d) { return p->SwapChannelOrder(s, d); }),
        both([&p](auto s, auto d) { return p->Yuv422ToBgra(s, d, 255); }),
        both([&p](auto s, auto d) { return p->BgraToYuv422(s, d); }),
        both([&p](auto s, auto d) { return p->AlphaOver(d, s, s, false); }),
        both([&p](auto s, auto d) { return p->AlphaOver(d, s, d, false); }),
        both([&p](auto s, auto d) { return p->AlphaOver(d, d, s, true); }),
        both([&p](auto s, auto d) { return p->YuvToColor(s, d); }),
        both([&p](auto s, auto d) { return p->ColorToYuv(s, d); }),
        both([&p](auto s, auto d) { return p->FlipVerticalCopy(s, d); }),
        both([&p](auto s, auto d) { return p->CopyChannel(s, d, 0, 0); }),
        both([&p](auto s, auto d) { return p->ResizeRegion(s, &kRegion, d, 1); }),
        [&p](auto d) { return p->SetChannel(d, 0, 0); },
        [&p](auto d) { return p->SwapChannels(d, kOrder); },
        [&p](auto d) { return p->PremultiplyAlpha(d); },
        [&p](auto d) { return p->FlipVertical(d); },
        [&p](auto d) { return p->InvertChannel(d, 0); },
        [&p](auto d) { return p->SquareSamples(d); },
        [&p](auto d) { return p->SquareRootSamples(d); },
        [&p](auto d) { return p->LimitSamples(d, 1, 1, 1, 1); },
    };
}

TEST(FrameProcessor, RefusesRecordsThatCannotBeWalked) {
    const Processor p;
    for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
        GuardedFrame good(5, 4, format);
        GuardedFrame other(5, 4, format);
        const VideoFrameDesc sound = descOf(good);
        const VideoFrameDesc start = descOf(other);
        const std::vector<std::uint8_t> goodBytes = good.bytes();
        const std::vector<std::uint8_t> otherBytes = other.bytes();
        std::vector<VideoFrameDesc> bad(7, start);
        bad[0].data = nullptr;
        bad[1].width = 0;
        bad[2].height = -4;
        bad[3].stride = 5 * start.bytesPerPixel - 1;
        bad[4].stride = -(5 * start.bytesPerPixel - 1);
        bad[5].width = std::numeric_limits<std::int32_t>::max();
        bad[6].stride = 0;
        const auto operations = everyOperation(p, &sound);
        for (std::size_t i = 0; i < operations.size(); ++i) {
            EXPECT_FALSE(operations[i](nullptr)) << "operation " << i;
            for (const VideoFrameDesc& desc : bad) {
                if (i == 3 || i == 4) {  // two bytes a pixel suffice for one side of 4:2:2
                    VideoFrameDesc narrow = desc;
                    narrow.stride = desc.stride == start.stride ? desc.stride : desc.stride / 4;
                    EXPECT_FALSE(operations[i](&narrow)) << "operation " << i << ", record " << &desc - bad.data();
                } else {
                    EXPECT_FALSE(operations[i](&desc)) << "operation " << i << ", record " << &desc - bad.data();
                }
            }
        }
        EXPECT_EQ(good.bytes(), goodBytes);
        EXPECT_EQ(other.bytes(), otherBytes);
    }
}

TEST(FrameProcessor, RefusesFormatsThatAnOperationDoesNotHandle) {
    const Processor p;
    GuardedFrame bgra(5, 4, kFormatBgra8);
    GuardedFrame argbFloat(5, 4, kFormatArgbFloat);
    GuardedFrame bgraFloat(5, 4, kFormatBgraFloat);
    GuardedFrame maskFloat(5, 4, kFormatMaskFloat);
    const VideoFrameDesc b8 = descOf(bgra);
    const VideoFrameDesc af = descOf(argbFloat);
    const VideoFrameDesc bf = descOf(bgraFloat);
    const VideoFrameDesc mf = descOf(maskFloat);
    VideoFrameDesc unknown = b8;
    unknown.format = 2;
    const PixelRect region{0, 0, 2, 2};
    EXPECT_FALSE(p->SwapChannelOrder(&unknown, &b8));
    EXPECT_FALSE(p->SetChannel(&unknown, 0, 0));
    EXPECT_FALSE(p->ResizeImage(&bf, &bf, 0));
    EXPECT_FALSE(p->CopyImage(&bf, &bf));
    EXPECT_FALSE(p->YuvToColor(&bf, &bf));
    EXPECT_FALSE(p->ColorToYuv(&b8, &b8));
    EXPECT_TRUE(p->ColorToYuv(&af, &af));
    EXPECT_FALSE(p->Yuv422ToBgra(&b8, &bf, 0));
    EXPECT_FALSE(p->ResizeRegion(&mf, &region, &mf, 0));
    EXPECT_FALSE(p->ResizeRegion(&b8, &region, &bf, 0));
    for (const VideoFrameDesc* desc : {&b8, &mf}) {
        EXPECT_FALSE(p->SquareSamples(desc));
        EXPECT_FALSE(p->SquareRootSamples(desc));
        EXPECT_FALSE(p->LimitSamples(desc, 1, 1, 1, 1));
    }
    VideoFrameDesc crooked = bf;
    crooked.data = static_cast<std::uint8_t*>(bf.data) + 1;
    EXPECT_FALSE(p->SquareSamples(&crooked));
    EXPECT_FALSE(p->SetChannel(&b8, 4, 0));
    EXPECT_FALSE(p->SetChannel(&b8, 0, 256));
    EXPECT_FALSE(p->SetChannel(&b8, 0xFFFFFFFFU, 0));
    EXPECT_FALSE(p->CopyChannel(&b8, &b8, 0, 4));
    EXPECT_FALSE(p->InvertChannel(&mf, 4));
    EXPECT_FALSE(p->LimitSamples(&af, 1, std::numeric_limits<float>::quiet_NaN(), 1, 1));
}

TEST(FrameProcessor, CopiesWithoutReadingTheFormatWord) {
    const Processor p;
    std::mt19937 random(1);
    GuardedFrame src(6, 3, kFormatBgra8);
    GuardedFrame dst(6, 3, kFormatBgra8);
    src.randomize(random);
    VideoFrameDesc from = descOf(src);
    VideoFrameDesc to = descOf(dst);
    from.format = 77;
    to.format = kFormatMask8;
    EXPECT_TRUE(p->CopyImage(&from, &to));
    EXPECT_TRUE(framesAgree(dst, src));
    // From rows stored bottom-up each row is taken in the order of memory.
    dst.randomize(random);
    from.data = src.frame.PixelAddress(0, 2, 0);
    from.stride = -from.stride;
    EXPECT_TRUE(p->CopyImage(&from, &to));
    EXPECT_TRUE(framesAgree(dst, src));
}

TEST(FrameProcessor, SwapsChannelsByOrderOrNotAtAll) {
    const Processor p;
    for (const std::int32_t format : {kFormatBgra8, kFormatArgbFloat}) {
        GuardedFrame frame(1, 1, format);
        setSamples(frame, {0, 1, 2, 3});
        const VideoFrameDesc desc = descOf(frame);
        const std::uint32_t order[4] = {2, 0, 3, 3};
        EXPECT_TRUE(p->SwapChannels(&desc, order));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{2, 0, 3, 3}));
        const std::uint32_t bad[4] = {0, 1, 2, 4};
        EXPECT_FALSE(p->SwapChannels(&desc, bad));
        EXPECT_FALSE(p->SwapChannels(&desc, nullptr));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{2, 0, 3, 3}));
    }
}

TEST(FrameProcessor, CompositesIntoItsFirstArgument) {
    const Processor p;
    GuardedFrame dst(1, 1, kFormatBgra8);
    GuardedFrame top(1, 1, kFormatBgra8);
    GuardedFrame bottom(1, 1, kFormatBgra8);
    setSamples(top, {10, 20, 30, 255});
    setSamples(bottom, {90, 90, 90, 255});
    const VideoFrameDesc d = descOf(dst);
    const VideoFrameDesc t = descOf(top);
    const VideoFrameDesc b = descOf(bottom);
    EXPECT_TRUE(p->AlphaOver(&d, &t, &b, false));
    EXPECT_EQ(samplesIn(dst), samplesIn(top));
    EXPECT_FALSE(p->AlphaOver(&d, &t, nullptr, false));
}

TEST(FrameProcessor, TurnsRowsOver) {
    const Processor p;
    for (const std::int32_t format : kAllFormats) {
        std::mt19937 random(3);
        GuardedFrame frame(3, 5, format);
        frame.randomize(random);
        const std::vector<double> before = samplesIn(frame);
        GuardedFrame small(3, 3, format);
        const VideoFrameDesc desc = descOf(frame);
        const VideoFrameDesc smallDesc = descOf(small);
        EXPECT_TRUE(p->FlipVerticalCopy(&desc, &smallDesc));
        EXPECT_TRUE(p->FlipVertical(&desc));
        for (std::int32_t i = 0; i < frame.samplesPerRow(); ++i) {
            const auto old = [&](std::int32_t y) {
                return before[static_cast<std::size_t>(y * frame.samplesPerRow() + i)];
            };
            for (std::int32_t y = 0; y < 5; ++y) {
                EXPECT_EQ(sampleAt(frame, y, i), old(4 - y));
            }
            for (std::int32_t y = 0; y < 3; ++y) {
                EXPECT_EQ(sampleAt(small, y, i), old(2 - y));
            }
        }
        EXPECT_TRUE(p->FlipVerticalCopy(&desc, &desc)) << "turns one picture back over";
        EXPECT_EQ(samplesIn(frame), before);
        EXPECT_TRUE(frame.guardsIntact());
        EXPECT_TRUE(small.guardsIntact());
    }
}

TEST(FrameProcessor, SquaresRootsAndLimitsFloatSamples) {
    const Processor p;
    for (const std::int32_t format : {kFormatBgraFloat, kFormatArgbFloat}) {
        GuardedFrame frame(2, 1, format);
        setSamples(frame, {0.5, 2, 0, 1, 0.25, -3, 4, 0.75});
        const VideoFrameDesc desc = descOf(frame);
        EXPECT_FALSE(p->SquareRootSamples(&desc));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{0.5, 2, 0, 1, 0.25, -3, 4, 0.75}));
        EXPECT_TRUE(p->SquareSamples(&desc));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{0.25, 4, 0, 1, 0.0625, 9, 16, 0.5625}));
        EXPECT_TRUE(p->SquareRootSamples(&desc));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{0.5, 2, 0, 1, 0.25, 3, 4, 0.75}));
        EXPECT_TRUE(p->LimitSamples(&desc, 0.5F, 2.5F, 1, 0.875F));
        EXPECT_EQ(samplesIn(frame), (std::vector<double>{0.5, 2, 0, 0.875, 0.25, 2.5, 1, 0.75}));
    }
}

TEST(FrameProcessor, ResizesARegionClippedToTheSizeOfTheDestination) {
    const Processor p;
    for (const std::int32_t format : kColorFormats) {
        SCOPED_TRACE(format);
        std::mt19937 random(4);
        GuardedFrame src(8, 6, format);
        src.randomize(random);
        GuardedFrame dst(4, 2, format);
        const VideoFrameDesc from = descOf(src);
        const VideoFrameDesc to = descOf(dst);
        const auto expectCopyOf = [&](std::int32_t left, std::int32_t top) {
            for (std::int32_t y = 0; y < 2; ++y) {
                for (std::int32_t i = 0; i < 16; ++i) {
                    EXPECT_EQ(sampleAt(dst, y, i), sampleAt(src, top + y, left * 4 + i));
                }
            }
        };
        const PixelRect exact{3, 2, 6, 3};
        EXPECT_TRUE(p->ResizeRegion(&from, &exact, &to, 0));
        expectCopyOf(3, 2);
        const PixelRect clipped{1, 1, 7, 5};
        EXPECT_TRUE(p->ResizeRegion(&from, &clipped, &to, 2));
        expectCopyOf(1, 1);
        const PixelRect half{2, 0, 3, 0};  // twice as wide and high
        EXPECT_TRUE(p->ResizeRegion(&from, &half, &to, 0));
        EXPECT_EQ(sampleAt(dst, 0, 0), sampleAt(src, 0, 8));
        EXPECT_EQ(sampleAt(dst, 1, 15), sampleAt(src, 0, 15));
        const std::vector<std::uint8_t> before = dst.bytes();
        const std::int32_t huge = std::numeric_limits<std::int32_t>::max();
        for (const PixelRect& bad : {PixelRect{-1, 0, 2, 1}, PixelRect{6, 0, 8, 1}, PixelRect{2, 1, 1, 1},
                                     PixelRect{8, 0, huge, 1}, PixelRect{0, 5, 1, huge}}) {
            EXPECT_FALSE(p->ResizeRegion(&from, &bad, &to, 0)) << bad.left << ", " << bad.top;
        }
        EXPECT_FALSE(p->ResizeRegion(&from, nullptr, &to, 0));
        EXPECT_EQ(dst.bytes(), before);
    }
}

TEST(FrameProcessor, ResizesWithLinearInterpolationInAnyOtherMode) {
    const Processor p;
    std::mt19937 random(5);
    GuardedFrame src(9, 7, kFormatBgra8);
    src.randomize(random);
    GuardedFrame linear(23, 11, kFormatBgra8);
    GuardedFrame other(23, 11, kFormatBgra8);
    const VideoFrameDesc from = descOf(src);
    const VideoFrameDesc toLinear = descOf(linear);
    const VideoFrameDesc toOther = descOf(other);
    EXPECT_TRUE(p->ResizeImage(&from, &toLinear, 1));
    for (const std::uint32_t mode : {3U, 4U, 0xFFFFFFFFU}) {
        EXPECT_TRUE(p->ResizeImage(&from, &toOther, mode));
        EXPECT_TRUE(framesAgree(other, linear));
    }
    EXPECT_TRUE(p->ResizeImage(&from, &toOther, 2));
    EXPECT_FALSE(framesAgree(other, linear));
}

}  // namespace
}  // namespace lumiset::test
