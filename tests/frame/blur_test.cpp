#include <algorithm>
#include <cmath>
#include <random>
#include <utility>

#include "frame/filters/triangular_kernel.h"
#include "frame/operations/filter.h"
#include "frame/primitives/whole_division.h"
#include "tests/frame/filter_support.h"
#include "tests/support/host.h"

namespace lumiset {
namespace {

using test::framesAgree;
using test::GuardedFrame;
using test::onEveryInstructionSet;

/// What the blur is to give, spelled out: padded copies, whole kernels, one pass after the other.
class PlainBlur {
public:
    PlainBlur(const GuardedFrame& src, std::int32_t sizeX, std::int32_t sizeY)
        : m_width(src.frame.Width()),
          m_height(src.frame.Height()),
          m_channels(src.channels()),
          m_isFloat(isFloatFormat(src.frame.Format())) {
        m_samples.resize(static_cast<std::size_t>(m_width * m_height * m_channels));
        for (std::int32_t y = 0; y < m_height; ++y) {
            for (std::int32_t i = 0; i < m_width * m_channels; ++i) {
                const double v = m_isFloat ? static_cast<double>(src.row<float>(y)[i]) : src.row<std::uint8_t>(y)[i];
                at(i / m_channels, y, i % m_channels) = std::isfinite(v) ? v : 0.0;
            }
        }
        replicateRing();
        convolve(sizeY, false);
        replicateRing();
        convolve(sizeX, true);
    }

    [[nodiscard]] double result(std::int32_t x, std::int32_t y, std::int32_t c) { return at(x, y, c); }

private:
    double& at(std::int32_t x, std::int32_t y, std::int32_t c) {
        return m_samples[static_cast<std::size_t>((y * m_width + x) * m_channels + c)];
    }
    static std::int32_t inside(std::int32_t at, std::int32_t size) {
        const std::int32_t ring = std::min(2, (size - 1) / 2);
        return std::clamp(at, ring, size - 1 - ring);
    }
    void replicateRing() {
        std::vector<double> copy = m_samples;
        std::swap(copy, m_samples);
        for (std::int32_t y = 0; y < m_height; ++y) {
            for (std::int32_t x = 0; x < m_width; ++x) {
                for (std::int32_t c = 0; c < m_channels; ++c) {
                    const std::int32_t from = inside(y, m_height) * m_width + inside(x, m_width);
                    at(x, y, c) = copy[static_cast<std::size_t>(from * m_channels + c)];
                }
            }
        }
    }
    void convolve(std::int32_t size, bool horizontally) {
        const std::int32_t length = horizontally ? m_width : m_height;
        std::vector<double> taps;
        double total = 0;
        for (std::int32_t k = 0; k < size; ++k) {
            taps.push_back(std::min(k, size - 1 - k) + 1);
            total += taps.back();
        }
        std::vector<double> line(static_cast<std::size_t>(length));
        for (std::int32_t other = 0; other < (horizontally ? m_height : m_width); ++other) {
            for (std::int32_t c = 0; c < m_channels; ++c) {
                const auto sample = [&](std::int32_t i) -> double& {
                    return horizontally ? at(i, other, c) : at(other, i, c);
                };
                for (std::int32_t i = 0; i < length; ++i) {
                    double sum = 0;
                    for (std::int32_t k = 0; k < size; ++k) {
                        sum += taps[static_cast<std::size_t>(k)] * sample(std::clamp(i + k - size / 2, 0, length - 1));
                    }
                    line[static_cast<std::size_t>(i)] =
                        m_isFloat ? sum / total : std::floor((sum + std::floor(total / 2)) / total);
                }
                for (std::int32_t i = 0; i < length; ++i) {
                    sample(i) = line[static_cast<std::size_t>(i)];
                }
            }
        }
    }

    std::int32_t m_width;
    std::int32_t m_height;
    std::int32_t m_channels;
    bool m_isFloat;
    std::vector<double> m_samples;
};

/// The blurred frame in the format of `expected`, reordered and with its alpha as it should be.
void blurPlainly(const GuardedFrame& src, GuardedFrame& expected, std::int32_t sizeX, std::int32_t sizeY,
                 bool includeAlpha) {
    PlainBlur blur(src, sizeX, sizeY);
    const std::int32_t format = expected.frame.Format();
    const bool reorder = src.frame.Format() != format && AlphaIndex(format) == 3;
    for (std::int32_t y = 0; y < expected.frame.Height(); ++y) {
        for (std::int32_t i = 0; i < expected.samplesPerRow(); ++i) {
            const std::int32_t x = i / expected.channels();
            const std::int32_t c = i % expected.channels();
            const std::int32_t from = reorder ? 3 - c : c;
            const bool kept = c == AlphaIndex(format) && !includeAlpha;
            const std::int32_t at = x * expected.channels() + from;
            if (isFloatFormat(format)) {
                expected.row<float>(y)[i] = kept ? src.row<float>(y)[at] : static_cast<float>(blur.result(x, y, from));
            } else {
                expected.row<std::uint8_t>(y)[i] =
                    kept ? src.row<std::uint8_t>(y)[at] : static_cast<std::uint8_t>(blur.result(x, y, from));
            }
        }
    }
}

constexpr std::pair<std::int32_t, std::int32_t> kFormatPairs[] = {
    {kFormatBgra8, kFormatBgra8},         {kFormatArgb8, kFormatArgb8},         {kFormatArgb8, kFormatBgra8},
    {kFormatBgra8, kFormatArgb8},         {kFormatBgraFloat, kFormatBgraFloat}, {kFormatArgbFloat, kFormatArgbFloat},
    {kFormatArgbFloat, kFormatBgraFloat}, {kFormatMask8, kFormatMask8},         {kFormatMaskFloat, kFormatMaskFloat}};

void expectPlainBlur(std::int32_t width, std::int32_t height, std::int32_t sizeX, std::int32_t sizeY,
                     std::mt19937& random) {
    for (const auto& [from, to] : kFormatPairs) {
        for (const bool includeAlpha : {false, true}) {
            SCOPED_TRACE(::testing::Message() << width << " x " << height << " by " << sizeX << " x " << sizeY
                                              << ", format " << from << " to " << to << ", alpha " << includeAlpha);
            GuardedFrame src(width, height, from, 8);
            GuardedFrame dst(width, height, to);
            GuardedFrame expected(width, height, to);
            src.randomize(random);
            const auto before = src.bytes();
            blurPlainly(src, expected, sizeX, sizeY, includeAlpha);
            ASSERT_TRUE(FrameBlur(src.frame, dst.frame, static_cast<float>(sizeX) + 0.9F,
                                  static_cast<float>(sizeY) + 0.9F, nullptr, includeAlpha));
            ASSERT_TRUE(framesAgree(dst, expected, isFloatFormat(to) ? 2e-7F : 0.0F));
            ASSERT_EQ(src.bytes(), before);
        }
    }
}

TEST(FrameBlur, IsTheTriangularKernelOnPicturesOfEverySize) {
    onEveryInstructionSet([] {
        std::mt19937 random(7);
        for (std::int32_t size = 1; size <= 70; ++size) {
            const auto other = static_cast<std::int32_t>(random() % 70 + 1);
            expectPlainBlur(size, other, static_cast<std::int32_t>(random() % 20 + 1),
                            static_cast<std::int32_t>(random() % 20 + 1), random);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    });
}

TEST(FrameBlur, IsTheTriangularKernelForEveryKindOfSize) {
    onEveryInstructionSet([] {
        std::mt19937 random(8);
        constexpr std::pair<std::int32_t, std::int32_t> kSizes[] = {{1, 1},     {1, 2},     {2, 1},   {3, 4},
                                                                    {41, 90},   {190, 191}, {307, 5}, {308, 9},
                                                                    {509, 510}, {511, 512}, {999, 3}, {1000, 1000}};
        for (const auto& [sizeX, sizeY] : kSizes) {
            expectPlainBlur(37, 21, sizeX, sizeY, random);
            if (::testing::Test::HasFatalFailure()) {
                return;
            }
        }
    });
}

// Every sum that a size can give, not only those that a picture happens to have.
TEST(TriangularKernel, DividesEverySumOfASizeExactly) {
    std::int32_t bySingle = 0;
    for (const std::int32_t size : {1, 2, 3, 4, 5, 8, 9, 16, 51, 64, 100, 191, 256, 307, 400, 511, 1000}) {
        const std::int32_t divisor = TriangularKernel(size).divisor;
        const auto factor = roundingFactor(divisor);
        const WholeDivision whole(std::max(divisor, 2));
        bySingle += factor ? 1 : 0;
        std::int32_t wrong = 0;
        for (std::int32_t sum = 0; sum <= 255 * divisor; ++sum) {
            const std::int32_t expected = (sum + divisor / 2) / divisor;
            if (factor) {
                const float bits = static_cast<float>(sum) * *factor + 8388608.0F;
                wrong += static_cast<std::int32_t>(bits - 8388608.0F) != expected;
            }
            if (divisor > 1) {
                const auto biased = static_cast<std::uint64_t>(sum + divisor / 2);
                wrong += static_cast<std::int32_t>((biased * whole.factor) >> (32 + whole.shift)) != expected;
            }
        }
        EXPECT_EQ(wrong, 0) << "size " << size;
    }
    EXPECT_GE(bySingle, 10);
}

TEST(FrameBlur, LimitsAndCopies) {
    std::mt19937 random(3);
    GuardedFrame src(30, 20, kFormatBgra8);
    GuardedFrame a(30, 20, kFormatBgra8);
    GuardedFrame b(30, 20, kFormatBgra8);
    src.randomize(random);
    for (const auto& [x, y] : {std::pair{0.9F, 5.0F}, {5.0F, 0.0F}, {-3.0F, 4.0F}, {std::nanf(""), 4.0F}}) {
        ASSERT_TRUE(FrameBlur(src.frame, a.frame, x, y, nullptr, true));
        EXPECT_TRUE(framesAgree(a, src));
    }
    ASSERT_TRUE(FrameBlur(src.frame, a.frame, 5000.0F, 1000.0F, nullptr, true));
    ASSERT_TRUE(FrameBlur(src.frame, b.frame, 1000.0F, 1e30F, nullptr, true));
    EXPECT_TRUE(framesAgree(a, b));
}

TEST(FrameBlur, WorksInPlaceAndOnTheCommonRectangle) {
    std::mt19937 random(4);
    for (const auto format : {kFormatArgb8, kFormatMaskFloat}) {
        GuardedFrame src(40, 30, format);
        src.randomize(random);
        GuardedFrame cropped(23, 17, format);
        for (std::int32_t y = 0; y < 17; ++y) {
            std::memcpy(cropped.row<std::uint8_t>(y), src.row<std::uint8_t>(y),
                        static_cast<std::size_t>(23 * src.frame.BytesPerPixel()));
        }
        GuardedFrame expected(23, 17, format);
        ASSERT_TRUE(FrameBlur(cropped.frame, expected.frame, 9.0F, 6.0F, nullptr, false));
        GuardedFrame dst(23, 17, format);
        ASSERT_TRUE(FrameBlur(src.frame, dst.frame, 9.0F, 6.0F, nullptr, false));
        EXPECT_TRUE(framesAgree(dst, expected));
        ASSERT_TRUE(FrameBlur(cropped.frame, cropped.frame, 9.0F, 6.0F, nullptr, false));
        EXPECT_TRUE(framesAgree(cropped, expected));
    }
}

TEST(FrameBlur, KeepsNonFiniteSamplesToThemselvesAndLeavesNoGhosts) {
    GuardedFrame src(64, 48, kFormatMaskFloat);
    for (std::int32_t y = 0; y < 48; ++y) {
        std::fill_n(src.row<float>(y), 64, 0.25F);
    }
    src.row<float>(20)[20] = std::nanf("");
    src.row<float>(21)[21] = INFINITY;
    src.row<float>(22)[22] = 60000.0F;
    GuardedFrame dst(64, 48, kFormatMaskFloat);
    ASSERT_TRUE(FrameBlur(src.frame, dst.frame, 9.0F, 9.0F, nullptr, true));
    for (std::int32_t y = 0; y < 48; ++y) {
        for (std::int32_t x = 0; x < 64; ++x) {
            ASSERT_TRUE(std::isfinite(dst.row<float>(y)[x]));
            if (x < 16 || x > 26 || y < 16 || y > 26) {
                ASSERT_EQ(dst.row<float>(y)[x], 0.25F) << x << ", " << y;
            }
        }
    }
    EXPECT_LT(dst.row<float>(20)[16], 0.25F);
    EXPECT_GT(dst.row<float>(22)[26], 1.0F);
}

TEST(FrameBlur, AnswersFalseWithoutMemoryAndForFramesThatDoNotFit) {
    for (const auto format : {kFormatBgra8, kFormatMask8, kFormatArgbFloat, kFormatMaskFloat}) {
        for (const bool inPlace : {false, true}) {
            GuardedFrame src(20, 10, format);
            GuardedFrame dst(20, 10, format);
            std::mt19937 random(5);
            src.randomize(random);
            const auto before = inPlace ? src.bytes() : dst.bytes();
            const int calls = test::failEachAllocation([&](IEffectHost* host) {
                MemoryAllocator allocator(host);
                Frame& target = inPlace ? src.frame : dst.frame;
                const bool done = FrameBlur(src.frame, target, 7.0F, 7.0F, &allocator, true);
                if (!done) {
                    EXPECT_EQ(inPlace ? src.bytes() : dst.bytes(), before);
                }
                return done;
            });
            EXPECT_GE(calls, 1);
        }
    }
    GuardedFrame colour(8, 8, kFormatBgra8);
    GuardedFrame floats(8, 8, kFormatBgraFloat);
    GuardedFrame floatMask(8, 8, kFormatMaskFloat);
    Frame empty;
    EXPECT_FALSE(FrameBlur(colour.frame, floats.frame, 3.0F, 3.0F, nullptr, true));
    EXPECT_FALSE(FrameBlur(colour.frame, floatMask.frame, 3.0F, 3.0F, nullptr, true));
    EXPECT_FALSE(FrameBlur(colour.frame, empty, 3.0F, 3.0F, nullptr, true));
    EXPECT_FALSE(FrameBlur(empty, colour.frame, 3.0F, 3.0F, nullptr, true));
}

}  // namespace
}  // namespace lumiset
