#include <gtest/gtest.h>

#include <cmath>

#include "apps/studio/core/sound_loop.h"

namespace lumiset::studio {
namespace {

/// Every frame holds its own number, so that a test sees which one it got.
class NumberedSound : public media::SoundReader {
public:
    void seek(double seconds) override { m_next = std::llround(seconds * media::kSoundRate); }
    std::int64_t read(float* frames, std::int64_t count) override {
        for (std::int64_t i = 0; i < count; ++i, ++m_next) {
            frames[2 * i] = static_cast<float>(m_next);
            frames[2 * i + 1] = -static_cast<float>(m_next);
        }
        return count;
    }

private:
    std::int64_t m_next = 0;
};

TEST(SoundLoopTest, LoopsAsLongAsThePictures) {
    // Three frames at 29.97 a second: 4804.8 samples a round, so rounds are of 4805 and 4804.
    const double length = 3.0 * 1001.0 / 30000.0;
    SoundLoop sound(std::make_unique<NumberedSound>(), {1.0 + length / 2, 1.0, 1.0 + length});
    std::vector<float> block(2 * 1000);
    std::int64_t last = std::llround((1.0 + length / 2) * 48000.0) - 1;
    int rounds = 0;
    for (std::int64_t heard = 0; heard < 400000;) {
        sound.read(block.data(), 1000);
        for (std::size_t i = 0; i < block.size(); i += 2, ++heard) {
            const std::int64_t number = std::llround(block[i]);
            if (number != last + 1) {
                ASSERT_EQ(number, 48000) << "round " << rounds;
                ++rounds;
                // Where the pictures begin their round, to a sample, and still so after many of them.
                ASSERT_NEAR(static_cast<double>(heard), (rounds - 0.5) * length * 48000.0, 1.01);
            }
            last = number;
        }
    }
    EXPECT_EQ(rounds, 83);
    SoundLoop once(std::make_unique<NumberedSound>(), {0.5, 0.0, 0.0});
    once.read(block.data(), 1000);
    EXPECT_EQ(block[0], 24000.0F);
    EXPECT_EQ(block[2 * 999], 24999.0F) << "no loop";
}

TEST(SoundClockTest, RunsWithTheDeviceAndWithoutIt) {
    SoundClock clock;
    EXPECT_EQ(clock.seconds(99.0), 0.0) << "before the device began";
    double latest = 0.0;
    for (int told = 0; told < 400; ++told) {
        // Asked every 5 ms, a device that moves on by 21 ms at a time.
        const double now = 100.0 + told * 0.005;
        clock.told(std::floor((now - 100.0) / 0.021) * 0.021, now);
        for (const double later : {0.0, 0.003}) {
            const double seconds = clock.seconds(now + later);
            EXPECT_GE(seconds, latest) << "never backwards";
            EXPECT_NEAR(seconds, now + later - 100.0, 0.011);
            latest = seconds;
        }
    }
    EXPECT_NEAR(clock.seconds(105.0), 5.0, 0.03) << "the device is gone, the pictures go on";
    clock.reset();
    EXPECT_EQ(clock.seconds(200.0), 0.0);
}

}  // namespace
}  // namespace lumiset::studio
