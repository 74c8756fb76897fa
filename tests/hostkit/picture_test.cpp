#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string>

#include "host/pixel_format.h"
#include "hostkit/picture.h"
#include "hostkit/thread_pool.h"
#include "tests/hostkit/fake_effect.h"

namespace lumiset::hostkit {
namespace {

constexpr std::int32_t kWidth = 3;
constexpr std::int32_t kHeight = 70;  // more than one band of rows

/// Levels that every type of sample has exactly.
int levelAt(std::int32_t x, std::int32_t y, int channel) {
    return (5 * x + 7 * y + 3 * channel) % 16;
}

std::uint8_t* placeOf(const PictureView& view, std::int32_t x, std::int32_t y, std::size_t channel) {
    return static_cast<std::uint8_t*>(view.data) + view.rowBytes * y + view.pixelBytes * x + view.channelBytes[channel];
}

void setLevel(const PictureView& view, std::uint8_t* place, int level) {
    const auto byte = static_cast<std::uint8_t>(level * 17);
    const auto word = static_cast<std::uint16_t>(level * 4369);
    const auto real = static_cast<float>(level) / 15.0F;
    const void* from = view.samples == SampleType::kUint8    ? static_cast<const void*>(&byte)
                       : view.samples == SampleType::kUint16 ? static_cast<const void*>(&word)
                                                             : static_cast<const void*>(&real);
    std::memcpy(place, from, sampleBytes(view.samples));
}

/// A sample as a float of 0 to 1.
float valueAt(const PictureView& view, std::int32_t x, std::int32_t y, std::size_t channel) {
    const std::uint8_t* place = placeOf(view, x, y, channel);
    std::uint16_t word = 0;
    float real = 0.0F;
    std::memcpy(&word, place, std::min<std::size_t>(2, sampleBytes(view.samples)));
    std::memcpy(&real, place, view.samples == SampleType::kFloat ? 4 : 0);
    return view.samples == SampleType::kFloat    ? real
           : view.samples == SampleType::kUint16 ? static_cast<float>(word) / 65535.0F
                                                 : static_cast<float>(word & 0xFFU) / 255.0F;
}

void fill(const PictureView& view) {
    for (std::int32_t y = 0; y < view.height; ++y) {
        for (std::int32_t x = 0; x < view.width; ++x) {
            for (int channel = 0; channel < (view.hasAlpha ? 4 : 3); ++channel) {
                setLevel(view, placeOf(view, x, y, static_cast<std::size_t>(channel)), levelAt(x, y, channel));
            }
        }
    }
}

/// An effect that gives red the blue, blue the green and green the red of the source, and tells where its frames lie.
struct Turning {
    test::FakeEffect effect;
    VideoFrameDesc source{};
    VideoFrameDesc destination{};
    EffectDescription description = describeEffect(effect, 0);
    std::vector<EffectStage> chain;

    Turning() {
        effect.render = [this](IEffectHost*, const VideoFrameDesc& from, const VideoFrameDesc& to,
                               const FrameRenderInfo&) {
            source = from;
            destination = to;
            const auto bytes = static_cast<std::size_t>(BytesPerChannel(from.format));
            const bool alphaFirst = AlphaIndex(from.format) == 0;
            for (std::int32_t y = 0; y < from.height; ++y) {
                for (std::int32_t x = 0; x < from.width; ++x) {
                    for (std::size_t channel = 0; channel < 4; ++channel) {
                        const std::size_t taken = channel == 3 ? 3 : (channel + 1) % 3;
                        const auto place = [&](const VideoFrameDesc& frame, std::size_t which) {
                            return rowOf(frame, y) + 4 * bytes * static_cast<std::size_t>(x) +
                                   bytes * (alphaFirst ? 3 - which : which);
                        };
                        std::memcpy(place(to, channel), place(from, taken), bytes);
                    }
                }
            }
            return true;
        };
        effect.AddRef();
        chain.push_back({ComPtr<IVideoGPUEffect>::adopt(&effect), ParameterStore(description)});
    }
};

/// What the destination differs from what `Turning` makes of `levelAt`; empty for nothing.
std::string faultIn(const PictureView& view, bool sourceHasAlpha, std::int32_t movedRows = 0) {
    for (std::int32_t y = 0; y < view.height; ++y) {
        for (std::int32_t x = 0; x < view.width; ++x) {
            const float alpha = sourceHasAlpha ? static_cast<float>(levelAt(x, y + movedRows, 3)) / 15.0F : 1.0F;
            for (int channel = 0; channel < (view.hasAlpha ? 4 : 3); ++channel) {
                const float color = static_cast<float>(levelAt(x, y + movedRows, (channel + 1) % 3)) / 15.0F;
                const float wanted = channel == 3 ? alpha : view.hasAlpha ? color : color * alpha;
                const float is = valueAt(view, x, y, static_cast<std::size_t>(channel));
                // Half a level where colours over black are rounded.
                if (!(std::abs(is - wanted) <= 0.51F / 255.0F)) {
                    return "at " + std::to_string(x) + ',' + std::to_string(y) + " channel " + std::to_string(channel) +
                           ": " + std::to_string(is) + ", not " + std::to_string(wanted);
                }
            }
        }
    }
    return {};
}

TEST(Picture, EveryLayoutIsTheSamePicture) {
    Turning turning;
    const auto pool = ThreadPool::create(2);
    PictureRenderer renderer(turning.chain, nullptr, pool.get());
    constexpr SampleType kTypes[] = {SampleType::kUint8, SampleType::kUint16, SampleType::kFloat};
    for (const char* const from : {"RGBA", "bgra", "ARGB", "ABGR", "RGB", "BGR"}) {
        for (const char* const to : {"RGBA", "BGRA", "ARGB", "ABGR", "RGB", "BGR"}) {
            for (const SampleType fromType : kTypes) {
                for (const SampleType toType : kTypes) {
                    // Rows have room to spare; the source stands on its head, and neither is aligned.
                    std::vector<std::uint8_t> memory(2 * kHeight * 80, 0x5A);
                    const PictureView source = interleavedPicture(memory.data() + (kHeight - 1) * 80 + 1, kWidth,
                                                                  kHeight, fromType, from, -80);
                    const PictureView destination =
                        interleavedPicture(memory.data() + kHeight * 80 + 1, kWidth, kHeight, toType, to, 80);
                    fill(source);
                    const std::vector<std::uint8_t> before(memory.begin(), memory.begin() + kHeight * 80);
                    renderer.render(source, destination, {});
                    EXPECT_EQ(faultIn(destination, source.hasAlpha), "")
                        << from << ' ' << sampleBytes(fromType) << " to " << to << ' ' << sampleBytes(toType);
                    EXPECT_TRUE(std::equal(before.begin(), before.end(), memory.begin())) << "the source is read only";
                    EXPECT_EQ(memory.back(), 0x5A);
                }
            }
        }
    }
}

TEST(Picture, EffectsWorkInPicturesThatTheModuleKnows) {
    Turning turning;
    PictureRenderer renderer(turning.chain);
    alignas(4) std::uint8_t from[kHeight * 80];
    alignas(4) std::uint8_t to[kHeight * 80];
    struct Case {
        const char* order;
        SampleType samples;
        int offset;
        int stride;
        bool worksIn;
    };
    for (const Case& each :
         {Case{"BGRA", SampleType::kUint8, 1, 79, true}, Case{"ARGB", SampleType::kUint8, 0, 80, true},
          Case{"BGRA", SampleType::kFloat, 4, 80, true}, Case{"ARGB", SampleType::kFloat, 0, 76, true},
          Case{"BGRA", SampleType::kFloat, 2, 80, false}, Case{"BGRA", SampleType::kFloat, 0, 78, false},
          Case{"BGRA", SampleType::kUint16, 0, 80, false}, Case{"RGBA", SampleType::kUint8, 0, 80, false},
          Case{"BGR", SampleType::kUint8, 0, 80, false}}) {
        SCOPED_TRACE(std::string(each.order) + " at " + std::to_string(each.offset));
        const auto viewIn = [&](std::uint8_t* memory, std::ptrdiff_t stride) {
            return interleavedPicture(memory + each.offset, kWidth, kHeight, each.samples, each.order, stride);
        };
        const PictureView source = viewIn(from, each.stride);
        const PictureView destination = viewIn(to + (kHeight - 1) * each.stride, -each.stride);
        fill(source);
        renderer.render(source, destination, {});
        EXPECT_EQ(faultIn(destination, source.hasAlpha), "");
        EXPECT_EQ(turning.source.data == source.data, each.worksIn);
        EXPECT_EQ(turning.destination.data == destination.data, each.worksIn);
    }
}

TEST(Picture, SourceAndDestinationMayOverlap) {
    Turning turning;
    PictureRenderer renderer(turning.chain);
    for (const char* const order : {"BGRA", "RGBA", "RGB"}) {
        std::vector<std::uint8_t> memory((kHeight + 2) * 80);
        const PictureView whole = interleavedPicture(memory.data(), kWidth, kHeight + 2, SampleType::kUint8, order, 80);
        for (const int moved : {0, 1, 2}) {
            fill(whole);
            PictureView source = whole;
            source.height = kHeight;
            source.data = memory.data() + moved * 80;
            PictureView destination = source;
            destination.data = memory.data() + 80;
            renderer.render(source, destination, {});
            EXPECT_EQ(faultIn(destination, source.hasAlpha, moved), "") << order << " moved by " << moved;
        }
    }
}

TEST(Picture, PixelsAndChannelsMayLieAnyhow) {
    Turning turning;
    PictureRenderer renderer(turning.chain);
    std::vector<std::uint8_t> memory(4 * kWidth * kHeight);
    // Planes, each with its columns from right to left.
    PictureView planes{memory.data() + kWidth - 1, kWidth, kHeight, SampleType::kUint8, kWidth, -1};
    planes.channelBytes = {2 * kWidth * kHeight, kWidth * kHeight, 0, 3 * kWidth * kHeight};
    fill(planes);
    renderer.render(planes, planes, {});
    EXPECT_EQ(faultIn(planes, true), "");
}

TEST(Picture, WhatIsNoPictureIsRefused) {
    Turning turning;
    PictureRenderer renderer(turning.chain);
    std::uint8_t memory[4 * 4 * 4];
    const auto make = [&](std::int32_t width, std::int32_t height, const char* order, std::ptrdiff_t rowBytes) {
        return interleavedPicture(memory, width, height, SampleType::kUint8, order, rowBytes);
    };
    EXPECT_THROW((void)make(4, 4, "RGBX", 0), std::invalid_argument);
    EXPECT_THROW((void)make(0, 4, "RGBA", 0), std::invalid_argument);
    EXPECT_THROW((void)make(4, -1, "RGBA", 0), std::invalid_argument);
    EXPECT_THROW((void)make(4, 4, "RGBA", 15), std::invalid_argument);
    EXPECT_THROW((void)make(4, 4, "RGBA", -15), std::invalid_argument);
    EXPECT_THROW((void)interleavedPicture(nullptr, 4, 4, SampleType::kUint8, "RGBA"), std::invalid_argument);
    EXPECT_THROW(renderer.render(make(4, 4, "RGBA", 0), make(4, 3, "RGBA", 0), {}), std::invalid_argument);
    EXPECT_THROW(renderer.render(PictureView(), PictureView(), {}), std::invalid_argument);
    EXPECT_EQ(turning.source.data, nullptr) << "no effect saw any of it";
}

}  // namespace
}  // namespace lumiset::hostkit
