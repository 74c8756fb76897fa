#include <QElapsedTimer>
#include <QFile>
#include <cmath>

#include "tests/media/media_clip.h"
#include "tests/studio/studio_fixture.h"

namespace lumiset::studio {
namespace {

/// Sound goes into a file in place of a device, as fast as one would take it.
class PlaybackTest : public StudioFixture {
protected:
    void SetUp() override {
        media::writeFlashAndBeep(file("clip.mkv").toStdString());
        open(file("clip.mkv"));
    }
    static QString recording() { return qEnvironmentVariable("LUMISET_RECORDING"); }
    /// When the recording first is louder, in seconds; negative if never. It begins when the device is opened.
    static double firstLoudSecond(int than = 5000) {
        QFile in(recording());
        EXPECT_TRUE(in.open(QIODevice::ReadOnly));
        const QByteArray bytes = in.readAll();
        const qsizetype begin = bytes.indexOf("data") + 8;
        for (qsizetype at = begin; at + 3 < bytes.size(); at += 4) {
            const int left = static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[at]) |
                                                       static_cast<std::uint8_t>(bytes[at + 1]) << 8U);
            if (std::abs(left) > than) {
                return static_cast<double>(at - begin) / (4 * media::kSoundRate);
            }
        }
        return -1.0;
    }
};

TEST_F(PlaybackTest, TheSoundIsThePicturesClock) {
    studio.preview.setFrame(15);
    studio.player.setLoops(false);
    double flashSeconds = -1.0;
    QElapsedTimer clock;
    QObject::connect(&studio.preview, &Preview::frameChanged, &studio.player, [&] {
        if (studio.preview.frame() >= 25 && flashSeconds < 0.0) {
            flashSeconds = static_cast<double>(clock.elapsed()) / 1000.0;
            EXPECT_TRUE(studio.player.hasSound());
        }
    });
    studio.player.play();
    clock.start();
    ASSERT_TRUE(waitFor([&] { return !studio.player.isPlaying(); })) << "it ends with the clip";
    EXPECT_EQ(studio.preview.frame(), 49);
    const double beep = firstLoudSecond();
    EXPECT_GE(beep, 0.4) << "ten frames before the flash";
    EXPECT_NEAR(flashSeconds, beep, 0.15) << "both begin when the device does";
    EXPECT_LT(firstLoudSecond(15000), 0.0) << "20000 for two sides, without a room around it for headphones";
}

TEST_F(PlaybackTest, MutedAndShuttledClipsAreSilent) {
    studio.player.setMuted(true);
    studio.preview.setFrame(20);
    studio.player.setLoops(false);
    studio.player.play();
    ASSERT_TRUE(waitFor([&] { return !studio.player.isPlaying(); }));
    EXPECT_LT(firstLoudSecond(), 0.0);
    studio.player.setMuted(false);
    studio.player.play(2.0);
    QTest::qWait(100);
    EXPECT_FALSE(studio.player.hasSound());
    studio.player.shuttle(-1);
    EXPECT_EQ(studio.player.speed(), -1.0);
    EXPECT_FALSE(studio.player.hasSound());
}

}  // namespace
}  // namespace lumiset::studio
