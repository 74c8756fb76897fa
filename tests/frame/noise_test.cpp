#include "frame/primitives/noise.h"

#include <cmath>
#include <limits>

#include "tests/frame/primitives_support.h"

namespace lumiset::test {
namespace {

constexpr std::uint32_t kSeeds[] = {0, 1, 2, 12345, 0xFFFFFFFFU};

std::vector<float> gaussian(std::uint32_t seed, ImgSize size) {
    std::vector<float> samples(static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    EXPECT_EQ(ImgAddGaussF(samples.data(), size.width * 4, 0.0F, 1.0F, &seed, size), kImgOk);
    return samples;
}

/// Correlation of samples `distance` apart, with mean 0 and deviation 1 as told.
double correlation(const std::vector<float>& samples, std::size_t distance) {
    double sum = 0;
    for (std::size_t i = distance; i < samples.size(); ++i) {
        sum += static_cast<double>(samples[i]) * static_cast<double>(samples[i - distance]);
    }
    return sum / static_cast<double>(samples.size() - distance);
}

TEST(GaussNoise, HasTheMeanDeviationAndTailsOfTheNormalDistribution) {
    constexpr ImgSize kSize{1000, 1000};
    constexpr double kCount = 1e6;
    for (const std::uint32_t seed : kSeeds) {
        SCOPED_TRACE(seed);
        const std::vector<float> samples = gaussian(seed, kSize);
        double sums[5] = {};
        for (const float sample : samples) {
            double power = 1;
            for (double& sum : sums) {
                sum += power;
                power *= static_cast<double>(sample);
            }
        }
        // Five deviations of each estimate.
        EXPECT_NEAR(sums[1] / kCount, 0, 5 / 1000.0);
        EXPECT_NEAR(sums[2] / kCount, 1, 5 * std::sqrt(2.0) / 1000);
        EXPECT_NEAR(sums[3] / kCount, 0, 5 * std::sqrt(15.0) / 1000);
        EXPECT_NEAR(sums[4] / kCount, 3, 5 * std::sqrt(96.0) / 1000);
        for (const double limit : {-4.0, -3.0, -2.0, -1.0, -0.25, 0.0, 0.25, 1.0, 2.0, 3.0, 4.0}) {
            const double share = std::erfc(-limit / std::sqrt(2.0)) / 2;
            const auto below = std::count_if(samples.begin(), samples.end(),
                                             [&](float sample) { return static_cast<double>(sample) < limit; });
            EXPECT_NEAR(static_cast<double>(below) / kCount, share, 5 * std::sqrt(share * (1 - share) / kCount))
                << "below " << limit;
        }
    }
}

TEST(GaussNoise, ShowsNoPatternAlongRowsOrColumnsOrBetweenSeeds) {
    const std::vector<float> samples = gaussian(7, {1000, 1000});
    for (const unsigned distance : {1U, 2U, 3U, 4U, 8U, 15U, 16U, 17U, 32U, 64U, 512U, 1000U, 1024U, 2000U}) {
        EXPECT_NEAR(correlation(samples, distance), 0, 5 / 1000.0) << "distance " << distance;
    }
    const std::vector<float> other = gaussian(8, {1000, 1000});
    double sum = 0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        sum += static_cast<double>(samples[i]) * static_cast<double>(other[i]);
    }
    EXPECT_NEAR(sum / 1e6, 0, 5 / 1000.0);
}

TEST(GaussNoise, AddsRoundsAndLimitsBytes) {
    // The 8-bit noise is the float noise of the same seed, rounded.
    constexpr ImgSize kSize{61, 37};
    std::vector<float> floats(61 * 37, 100.0F);
    std::vector<std::uint8_t> bytes(61 * 37, 100);
    std::uint32_t floatSeed = 5;
    std::uint32_t byteSeed = 5;
    ASSERT_EQ(ImgAddGaussF(floats.data(), 61 * 4, 20.0F, 90.0F, &floatSeed, kSize), kImgOk);
    ASSERT_EQ(ImgAddGauss8C1(bytes.data(), 61, 20.0F, 90.0F, &byteSeed, kSize), kImgOk);
    EXPECT_EQ(floatSeed, byteSeed);
    int limited = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        EXPECT_EQ(bytes[i], roundedByte(floats[i])) << i;
        limited += bytes[i] == 0 || bytes[i] == 255 ? 1 : 0;
    }
    EXPECT_GT(limited, 100);
}

TEST(UniformNoise, DrawsEachWholeNumberEquallyOften) {
    constexpr ImgSize kSize{1000, 1000};
    for (const std::uint32_t seed : kSeeds) {
        std::uint32_t state = seed;
        std::vector<std::uint8_t> samples(1000000, 100);
        ASSERT_EQ(ImgAddUniform8C1(samples.data(), 1000, -10, 9, &state, kSize), kImgOk);
        int counts[256] = {};
        for (const std::uint8_t sample : samples) {
            ++counts[sample];
        }
        for (int value = 0; value < 256; ++value) {
            const double expected = value >= 90 && value <= 109 ? 50000 : 0;
            EXPECT_NEAR(counts[value], expected, 5 * std::sqrt(expected * 0.95)) << "value " << value;
        }
    }
}

TEST(UniformNoise, LimitsSumsToBytes) {
    std::uint8_t samples[3] = {250, 128, 3};
    std::uint32_t seed = 1;
    ASSERT_EQ(ImgAddUniform8C1(samples, 3, 10, 10, &seed, {3, 1}), kImgOk);
    EXPECT_EQ(samples[0], 255);
    EXPECT_EQ(samples[1], 138);
    ASSERT_EQ(ImgAddUniform8C1(samples, 3, -65536, -65536, &seed, {3, 1}), kImgOk);
    EXPECT_EQ(samples[0] + samples[1] + samples[2], 0);
}

/// All three on planes of one size; bytes of the results and the seeds.
struct Noises {
    std::vector<std::uint8_t> uniform;
    std::vector<std::uint8_t> bytes;
    std::vector<float> floats;
    std::uint32_t seeds[3];
    friend bool operator==(const Noises& a, const Noises& b) {
        return a.uniform == b.uniform && a.bytes == b.bytes &&
               std::memcmp(a.floats.data(), b.floats.data(), a.floats.size() * 4) == 0 &&
               std::equal(a.seeds, a.seeds + 3, b.seeds);
    }
};

/// With `padding` samples after each row, which must stay.
Noises noisesOf(ImgSize size, std::int32_t padding, std::uint32_t seed) {
    const auto count = static_cast<std::size_t>(size.height * (size.width + padding));
    std::vector<std::uint8_t> uniform(count, 77);
    std::vector<std::uint8_t> bytes(count, 77);
    std::vector<float> floats(count, 77.0F);
    Noises result{{}, {}, {}, {seed, seed, seed}};
    const std::int32_t step = size.width + padding;
    EXPECT_EQ(ImgAddUniform8C1(uniform.data(), step, -50, 50, &result.seeds[0], size), kImgOk);
    EXPECT_EQ(ImgAddGauss8C1(bytes.data(), step, 0, 30, &result.seeds[1], size), kImgOk);
    EXPECT_EQ(ImgAddGaussF(floats.data(), step * 4, 0, 30, &result.seeds[2], size), kImgOk);
    for (std::size_t i = 0; i < count; ++i) {
        if (static_cast<std::int32_t>(i) % step < size.width) {
            result.uniform.push_back(uniform[i]);
            result.bytes.push_back(bytes[i]);
            result.floats.push_back(floats[i]);
        } else {
            EXPECT_TRUE(uniform[i] == 77 && bytes[i] == 77 && floats[i] == 77.0F) << "padding written";
        }
    }
    return result;
}

TEST(Noise, OfOneSeedIsOnePictureOnEveryInstructionSetAndForEveryStep) {
    for (const ImgSize size : {ImgSize{1, 1}, {3, 70}, {17, 9}, {70, 31}, {1031, 3}}) {
        const Noises first = noisesOf(size, 0, 99);
        for (const std::int64_t target : machineTargets()) {
            const ForcedTarget forced(target);
            EXPECT_TRUE(noisesOf(size, 0, 99) == first) << hwy::TargetName(target);
            EXPECT_TRUE(noisesOf(size, 5, 99) == first) << hwy::TargetName(target);
        }
    }
}

// Cut into parts it is the same, also where parts end in the middle of rows and blocks, and whoever makes which first.
TEST(Noise, InPartsIsTheWholeOnEveryInstructionSet) {
    for (const ImgSize size : {ImgSize{1, 1}, {1024, 127}, {1024, 128}, {363, 1001}, {4100, 1030}}) {
        SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
        const auto count = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height);
        for (const std::uint32_t seed : {0U, 0xFFFFFFFFU}) {
            const std::vector<float> whole = gaussian(seed, size);
            std::uint32_t after = seed;
            std::uint32_t afterParts = seed;
            std::vector<std::uint8_t> bytes(count, 127);
            ImgAddGauss8C1(bytes.data(), size.width, 0.0F, 127.0F, &after, size);
            for (const std::int64_t target : machineTargets()) {
                const ForcedTarget forced(target);
                afterParts = seed;
                GaussParts parts(afterParts, size, true);
                EXPECT_EQ(parts.count() > 1, count >= 128 * 1024);
                for (std::int32_t i = 0; i < parts.count(); ++i) {
                    parts.measure(i);
                }
                std::vector<float> floatParts(count);
                std::vector<std::uint8_t> byteParts(count, 127);
                for (std::int32_t i = parts.count() - 1; i >= 0; --i) {
                    EXPECT_EQ(parts.addF(i, floatParts.data(), size.width * 4, 0.0F, 1.0F), kImgOk);
                    EXPECT_EQ(parts.add8C1(i, byteParts.data(), size.width, 0.0F, 127.0F), kImgOk);
                }
                EXPECT_TRUE(floatParts == whole && byteParts == bytes) << seed << ' ' << hwy::TargetName(target);
                EXPECT_EQ(afterParts, after);
            }
        }
    }
}

TEST(Noise, OfTheNextCallIsAnother) {
    const Noises first = noisesOf({40, 30}, 0, 3);
    for (const std::uint32_t seed : first.seeds) {
        EXPECT_NE(seed, 3U);
        const Noises next = noisesOf({40, 30}, 0, seed);
        EXPECT_NE(next.bytes, first.bytes);
        EXPECT_NE(next.uniform, first.uniform);
    }
}

TEST(Noise, ChecksItsArguments) {
    std::uint8_t bytes[6] = {1, 2, 3, 4, 5, 6};
    float floats[6] = {};
    std::uint32_t seed = 4;
    const float nan = std::numeric_limits<float>::quiet_NaN();
    EXPECT_EQ(ImgAddUniform8C1(nullptr, 3, 0, 9, &seed, {3, 2}), kImgNullPointer);
    EXPECT_EQ(ImgAddUniform8C1(bytes, 3, 0, 9, nullptr, {3, 2}), kImgNullPointer);
    EXPECT_EQ(ImgAddUniform8C1(bytes, 2, 0, 9, &seed, {3, 2}), kImgBadStep);
    EXPECT_EQ(ImgAddUniform8C1(bytes, 3, 9, 8, &seed, {3, 2}), kImgBadRange);
    EXPECT_EQ(ImgAddUniform8C1(bytes, 3, -65537, 8, &seed, {3, 2}), kImgBadRange);
    EXPECT_EQ(ImgAddUniform8C1(bytes, 3, 0, 65537, &seed, {3, 2}), kImgBadRange);
    EXPECT_EQ(ImgAddGauss8C1(bytes, 3, 0, 1, &seed, {0, 2}), kImgBadSize);
    EXPECT_EQ(ImgAddGauss8C1(bytes, 3, nan, 1, &seed, {3, 2}), kImgBadRange);
    EXPECT_EQ(ImgAddGaussF(floats, 12, 0, -1, &seed, {3, 2}), kImgBadRange);
    EXPECT_EQ(ImgAddGaussF(floats, 11, 0, 1, &seed, {3, 2}), kImgBadStep);
    EXPECT_EQ(seed, 4U);
    EXPECT_TRUE(std::equal(bytes, bytes + 6, std::begin({1, 2, 3, 4, 5, 6})));
}

}  // namespace
}  // namespace lumiset::test
