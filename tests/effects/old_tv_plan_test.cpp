// When an old television's errors happen and what they look like, against values worked out independently.

#include "effects/old_tv/plan.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

namespace lumiset {
namespace {

OldTVSettings rolling(float speed, float period, bool blank) {
    OldTVSettings settings{};
    settings.rollSpeed = speed;
    settings.rollPeriod = period;
    settings.verticalBlank = blank;
    return settings;
}

/// The offset of every row, from the picture's bottom up.
std::vector<std::int32_t> offsetsOf(const TearEvent& tear, float severity, std::int32_t width, std::int32_t height) {
    std::array<TearStrip, kTearSteps> strips;
    std::vector<std::int32_t> offsets;
    for (std::size_t i = 0, count = tearStrips(tear, severity, width, height, strips); i < count; ++i) {
        EXPECT_EQ(strips[i].bottom, height - static_cast<std::int32_t>(offsets.size()));
        offsets.insert(offsets.end(), static_cast<std::size_t>(strips[i].bottom - strips[i].top), strips[i].offset);
    }
    return offsets;
}

TEST(OldTVPlan, GeneratorStartsFromTheBitsOfItsSeed) {
    RandomSequence random(0.85F);
    for (const std::uint32_t expected : {23476U, 7244U, 3385U, 1860U}) {
        EXPECT_EQ(random.next(), expected);
    }
    RandomSequence again(1.0F);
    EXPECT_EQ(again.range(0.0F, 32767.0F), 16806.0F);
    EXPECT_EQ(again.range(2.0F, 2.0F), 2.0F);
}

TEST(OldTVPlan, TearsCoverTheirTimesAndNothingBetween) {
    struct Event {
        float start, length;
    };
    constexpr Event events[] = {{0.8149356F, 0.4547533F}, {1.9006803F, 0.3397351F}, {2.9994564F, 0.4441999F}};
    EXPECT_FALSE(findTear(0.85F, 0.0F).has_value());
    for (const Event& event : events) {
        EXPECT_FALSE(findTear(0.85F, event.start - 0.001F).has_value());
        EXPECT_FALSE(findTear(0.85F, event.start + event.length + 0.001F).has_value());
        const auto tear = findTear(0.85F, event.start + event.length / 4.0F);
        ASSERT_TRUE(tear.has_value());
        EXPECT_FLOAT_EQ(tear->start, event.start);
        EXPECT_NEAR(tear->phase, 0.25F, 1e-5F);
    }
    // At full frequency nothing lies between one tear and the next.
    for (float time = 0.0F; time < 20.0F; time += 0.037F) {
        EXPECT_TRUE(findTear(1.0F, time).has_value()) << time;
    }
}

TEST(OldTVPlan, TearsTurnRowsWithinThePictureAndNothingAtTheirEnds) {
    EXPECT_EQ(offsetsOf({1.9F, 0.0F}, 1.0F, 1280, 720), std::vector<std::int32_t>(720, 0));
    EXPECT_EQ(offsetsOf({1.9F, 0.5F}, 0.0F, 1280, 720), std::vector<std::int32_t>(720, 0));
    for (const std::int32_t rows : {1, 5, 720, 2500}) {
        const std::vector<std::int32_t> offsets = offsetsOf({1.9F, 0.5F}, 1.0F, 64, rows);
        ASSERT_EQ(offsets.size(), static_cast<std::size_t>(rows));
        for (const std::int32_t offset : offsets) {
            ASSERT_TRUE(offset >= 0 && offset < 64);
        }
    }
    // Neighbouring steps move by no more than the reach: 2.5 percent of the width in the middle of the event.
    const std::vector<std::int32_t> offsets = offsetsOf({1.9F, 0.5F}, 1.0F, 1000, 1001);
    int moved = 0;
    for (std::size_t row = 1; row < offsets.size(); ++row) {
        const int step = (offsets[row] - offsets[row - 1] + 1500) % 1000 - 500;
        ASSERT_LE(std::abs(step), 26);
        moved += step != 0 ? 1 : 0;
    }
    EXPECT_GT(moved, 800);
}

TEST(OldTVPlan, RollsForAsLongAsTheSpeedSaysThenPauses) {
    // Speed 0.5 rolls for 0.6 seconds; with Period 0.5 the first pause is 5.12 seconds, the second 5.83.
    const OldTVSettings settings = rolling(0.5F, 0.5F, false);
    float time = 0.3F;
    const auto half = findRoll(settings, 100, time);
    ASSERT_TRUE(half.has_value());
    EXPECT_EQ(half->upperSource, 50);
    EXPECT_EQ(half->upperRow, 0);
    EXPECT_EQ(half->lowerRow, 50);
    EXPECT_FLOAT_EQ(time, 0.3F);
    for (const float still : {0.61F, 5.6F, 0.6F + 5.1231F + 0.61F}) {
        time = still;
        EXPECT_FALSE(findRoll(settings, 100, time).has_value()) << still;
    }
    time = 0.6F + 5.1231F + 0.15F;
    const auto quarter = findRoll(settings, 100, time);
    ASSERT_TRUE(quarter.has_value());
    EXPECT_EQ(quarter->lowerRow, 75);
    EXPECT_NEAR(time, 0.15F, 1e-4F) << "later steps run on the time within the cycle";
}

TEST(OldTVPlan, RollsUpwardsOrDownwardsWithABlackBar) {
    float early = 0.06F;
    const auto up = findRoll(rolling(0.5F, 0.0F, true), 200, early);
    early = 0.06F;
    const auto down = findRoll(rolling(-0.5F, 0.0F, true), 200, early);
    ASSERT_TRUE(up.has_value() && down.has_value());
    EXPECT_EQ(up->lowerRow, 189);  // 90 percent of 210 rows
    EXPECT_EQ(down->lowerRow, 21);
    EXPECT_EQ(up->lowerRow - (up->upperRow - up->upperSource), 210) << "picture and bar";
    float any = 3.0F;
    EXPECT_FALSE(findRoll(rolling(0.0F, 0.5F, true), 200, any).has_value());
    EXPECT_EQ(any, 3.0F);
}

TEST(OldTVPlan, BandTravelsAndFadesAtItsEnds) {
    OldTVSettings settings{};
    settings.bandHeight = 0.5F;
    settings.bandRate = 0.5F;
    EXPECT_EQ(findBand(settings, 100, 0.0F).top, 100);
    EXPECT_EQ(findBand(settings, 100, 0.3F).top, 50);  // the cycle takes 0.6 seconds
    EXPECT_EQ(findBand(settings, 100, 0.15F).top, 75);
    settings.bandRate = -0.5F;
    EXPECT_EQ(findBand(settings, 100, 0.15F).top, 25);
    settings.bandRate = 0.0F;
    EXPECT_EQ(findBand(settings, 100, 7.7F).top, 100);
    const BrightBand band = findBand(settings, 100, 0.0F);
    EXPECT_EQ(band.bottom, 150);
    EXPECT_NEAR(band.gain(100), 0.0F, 0.01F);
    EXPECT_NEAR(band.gain(125), 1.0F, 0.01F);
    EXPECT_LT(band.gain(149), 0.2F);
}

TEST(OldTVPlan, EveryTimeEnds) {
    OldTVSettings settings = rolling(1.0F, 0.0F, true);
    for (const double seconds : {0.0, 36000.0, 999'999.9, 1e12, 1e300}) {
        float time = eventTime(seconds);
        EXPECT_LT(time, 1e6F);
        static_cast<void>(findTear(1.0F, time));
        static_cast<void>(findRoll(settings, 100, time));
        EXPECT_GE(time, 0.0F);
        EXPECT_LT(time, 1.0F);
    }
}

}  // namespace
}  // namespace lumiset
