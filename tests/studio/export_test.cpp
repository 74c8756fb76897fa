#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

#include "apps/studio/core/command_text.h"
#include "hostkit/names.h"
#include "tests/studio/studio_fixture.h"

namespace lumiset::studio {
namespace {

class ExportTest : public StudioFixture {
protected:
    /// Something of everything: keys, a strength, an effect that is off, values between what panels show.
    void makeLook() {
        Document& document = studio.document;
        document.addEffect("Old TV");
        document.applyPreset(0, "Messed Up");
        document.setValue(parameter("Noise"), ParamValue{.slider = 0.123456F});
        document.toggleKey(parameter("Noise"));
        document.addEffect("Selective Tint");
        document.setValue(parameter("Top Left"), ParamValue{.point = {0.3333F, 0.1F}});
        document.setStrength(100.0 / 3.0);
        document.addEffect("Viewfinder");
        document.setOff(2, true);
    }
    static QByteArray bytesOf(const QString& name) {
        QFile in(name);
        return in.open(QIODevice::ReadOnly) ? in.readAll() : QByteArray();
    }
    const ExportQueue::Item& item(quint64 number) const {
        for (const ExportQueue::Item& each : studio.exports.items()) {
            if (each.number == number) {
                return each;
            }
        }
        throw std::logic_error("no such item");
    }
    bool waitForExports() {
        return waitFor([&] { return !studio.exports.isBusy(); }, 60000);
    }
};

TEST_F(ExportTest, WritesTheBytesThatTheCommandLineWrites) {
    makeLook();
    studio.preview.setRange({5, 20});
    struct Case {
        const char* ending;
        const char* codec;
        int bits;
        int height;
    };
    for (const Case& each : {Case{"y4m", "", 0, 0}, Case{"mov", "prores", 10, 0}, Case{"mp4", "", 0, 0},
                             Case{"mkv", "ffv1", 0, 0}, Case{"y4m", "", 0, 100}}) {
        render::FileJob job = studio.jobFor(file("studio.") + each.ending);
        job.codec = each.codec;
        job.bits = each.bits;
        job.height = each.height;
        const quint64 number = studio.exports.add(job, studio.document.snapshot(), "test");
        ASSERT_TRUE(waitForExports());
        ASSERT_EQ(item(number).state, ExportQueue::State::kDone) << item(number).error.toStdString();
        job.output = (file("line.") + each.ending).toStdString();
        std::string line = lumisetCommand(studio.catalogue(), studio.document.look(), job);
        line.replace(0, 7, hostkit::shellWord(LUMISET_PROGRAM));
        ASSERT_EQ(QProcess::execute("sh", {"-c", toQt(line + " -q")}), 0) << line;
        const QByteArray written = bytesOf(toQt(job.output));
        EXPECT_GT(written.size(), 1000);
        EXPECT_TRUE(written == bytesOf(file("studio.") + each.ending)) << each.ending;
        EXPECT_EQ(written.startsWith("YUV4MPEG2 W178 H100 "), each.height != 0);
        QFile::remove(file("studio.") + each.ending);
        QFile::remove(toQt(job.output));
    }
}

TEST_F(ExportTest, AnEntryKeepsTheLookItWasAddedWith) {
    makeLook();
    studio.exports.setPaused(true);
    const quint64 first = studio.exports.add(studio.jobFor(file("a.y4m")), studio.document.snapshot(), "a");
    studio.document.removeEffect(0);
    const quint64 second = studio.exports.add(studio.jobFor(file("b.y4m")), studio.document.snapshot(), "b");
    QTest::qWait(50);
    EXPECT_EQ(item(first).state, ExportQueue::State::kWaiting) << "paused";
    EXPECT_FALSE(QFileInfo::exists(file("a.y4m")));
    studio.exports.setPaused(false);
    ASSERT_TRUE(waitForExports());
    EXPECT_EQ(item(second).state, ExportQueue::State::kDone);
    EXPECT_NE(bytesOf(file("a.y4m")), bytesOf(file("b.y4m")));
    studio.exports.removeFinished();
    EXPECT_TRUE(studio.exports.items().empty());
}

TEST_F(ExportTest, CancelledAndFailedOnesLeaveNothingAndTheRestGoesOn) {
    makeLook();
    render::FileJob endless = studio.jobFor(file("long.mkv"));
    endless.input = "scene:320x180:100000";
    endless.codec = "ffv1";
    const quint64 number = studio.exports.add(endless, studio.document.snapshot(), "long");
    render::FileJob broken = studio.jobFor(file("no/folder.mp4"));
    const quint64 failing = studio.exports.add(broken, studio.document.snapshot(), "broken");
    const quint64 good = studio.exports.add(studio.jobFor(file("good.y4m")), studio.document.snapshot(), "good");
    ASSERT_TRUE(waitFor([&] { return item(number).frames > 3; }));
    EXPECT_TRUE(item(number).secondsLeft());
    studio.exports.setPaused(true);
    QTest::qWait(400);
    const qint64 frames = item(number).frames;
    QTest::qWait(400);
    EXPECT_EQ(item(number).frames, frames) << "paused in the middle";
    studio.exports.cancel(number);
    ASSERT_TRUE(waitFor([&] { return item(number).state == ExportQueue::State::kCancelled; }));
    EXPECT_EQ(item(good).state, ExportQueue::State::kWaiting) << "the queue stays paused";
    studio.exports.setPaused(false);
    ASSERT_TRUE(waitForExports());
    EXPECT_EQ(item(number).state, ExportQueue::State::kCancelled);
    EXPECT_EQ(item(failing).state, ExportQueue::State::kFailed);
    EXPECT_FALSE(item(failing).error.isEmpty());
    EXPECT_EQ(item(good).state, ExportQueue::State::kDone);
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList("good.y4m"));
}

TEST_F(ExportTest, OnesInOpenGLAreCancelledToo) {
    makeLook();
    render::FileJob endless = studio.jobFor(file("long.mkv"));
    endless.input = "scene:320x180:100000";
    endless.gpu = true;
    const quint64 number = studio.exports.add(endless, studio.document.snapshot(), "long");
    ASSERT_TRUE(waitFor([&] { return item(number).frames > 3; }));
    studio.exports.cancel(number);
    EXPECT_TRUE(waitForExports());
}

TEST_F(ExportTest, ProposesNamesThatAreFree) {
    studio.document.addEffect("Outline");
    ASSERT_TRUE(QImage(8, 8, QImage::Format_RGB32).save(file("my shot.png")));
    open(file("my shot.png"));
    const QString first = studio.proposedOutput("png");
    EXPECT_EQ(QFileInfo(first).fileName(), "my shot_Untitled.png");
    QFile taken(first);
    ASSERT_TRUE(taken.open(QIODevice::WriteOnly));
    EXPECT_EQ(QFileInfo(studio.proposedOutput("png")).fileName(), "my shot_Untitled_2.png");
}

}  // namespace
}  // namespace lumiset::studio
