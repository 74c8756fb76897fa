// What the window offers in bars, and what comes of files that are dropped on it.
#include <QDropEvent>
#include <QFile>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>

#include "apps/studio/views/message_bar.h"
#include "tests/studio/interlaced_clip.h"
#include "tests/studio/window_fixture.h"

namespace lumiset::studio {
namespace {

class OffersTest : public WindowFixture {
protected:
    QString picture(const QString& name) {
        const QString file = folder.filePath(name);
        EXPECT_TRUE(QImage(16, 16, QImage::Format_RGB32).save(file));
        return file;
    }
    /// As a desktop does it.
    void dropFiles(const QStringList& files) {
        QMimeData data;
        QList<QUrl> urls;
        for (const QString& file : files) {
            urls << QUrl::fromLocalFile(file);
        }
        data.setUrls(urls);
        QDragEnterEvent enter(window.rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &enter);
        EXPECT_TRUE(enter.isAccepted());
        QDropEvent drop(window.rect().center(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&window, &drop);
    }
    QStringList choices() {
        QStringList texts;
        for (const QPushButton* button : window.messages().findChildren<QPushButton*>()) {
            texts << button->text();
        }
        return texts;
    }
};

TEST_F(OffersTest, WhatIsOfferedWaitsUntilItIsAnswered) {
    bool restored = false;
    MessageBar& bar = window.messages();
    bar.tell(MessageBar::Kind::kWarning, "offer", {{"Restore", [&] { restored = true; }}});
    bar.tell(MessageBar::Kind::kNote, "note");
    EXPECT_EQ(bar.text(), "note");
    open("scene:320x180:1");
    control<QToolButton>("Close the message")->click();
    ASSERT_EQ(bar.text(), "offer") << "below the note, though a clip was opened";
    bar.choose(0);
    EXPECT_TRUE(restored);
    EXPECT_TRUE(bar.isHidden());

    Studio fresh;
    MainWindow other(fresh);
    other.show();
    fresh.openFile(file("gone.mp4"));
    ASSERT_TRUE(waitFor([&] { return fresh.preview.clip() != nullptr; })) << "the scene in its place";
    EXPECT_TRUE(other.messages().text().contains("gone.mp4")) << other.messages().text().toStdString();
    other.close();
    EXPECT_FALSE(other.isVisible()) << "there is nothing to ask";
}

TEST_F(OffersTest, DroppedLooksCanBeUndoneAndOpenedOnesAskFirst) {
    const QString file = LUMISET_SOURCE "/looks/only_red.lumilook";
    studio.document.addEffect("Viewfinder");
    const std::string mine = look();
    window.drop({file});
    EXPECT_NE(look(), mine);
    EXPECT_EQ(studio.document.undoStack().undoText(), "Look Only Red");
    trigger("undo");
    EXPECT_EQ(look(), mine);
    window.open({file});
    auto* question = window.findChild<QMessageBox*>("saveQuestion");
    ASSERT_NE(question, nullptr) << "unsaved work";
    QTest::mouseClick(question->button(QMessageBox::Cancel), Qt::LeftButton);
    EXPECT_EQ(look(), mine);
}

TEST_F(OffersTest, PicturesOfASeriesAreOpenedTogetherWhereThatIsWanted) {
    const QString first = picture("shot_7.png");
    picture("shot_8.png");
    open(first);
    ASSERT_TRUE(window.messages().text().contains("numbered series")) << window.messages().text().toStdString();
    window.messages().choose(0);
    ASSERT_TRUE(waitFor([&] { return studio.clip() == file("shot_%01d.png"); }));
    EXPECT_EQ(studio.preview.clip()->frameCount, 2);
}

TEST_F(OffersTest, FoldersAndSeveralClipsAreDropped) {
    ASSERT_TRUE(QDir(folder.path()).mkpath("shots"));
    for (const char* name : {"shots/a_1.png", "shots/a_2.png", "shots/a_3.png"}) {
        picture(name);
    }
    dropFiles({file("shots")});
    ASSERT_TRUE(waitFor([&] { return studio.clip().contains("a_%01d.png:1-3"); }));
    EXPECT_EQ(studio.preview.clip()->frameCount, 3);

    const QStringList clips = {picture("one.png"), picture("two.png"), picture("shots/two.png")};
    studio.document.addEffect("Outline");
    studio.exports.setPaused(true);
    dropFiles(clips);
    ASSERT_TRUE(waitFor([&] { return studio.clip() == clips[0]; }));
    ASSERT_TRUE(window.messages().text().startsWith("These are 3 clips")) << window.messages().text().toStdString();
    window.messages().choose(0);
    QSet<QString> outputs;
    QStringList inputs;
    for (const ExportQueue::Item& item : studio.exports.items()) {
        inputs << toQt(item.job.input);
        outputs << toQt(item.job.output);
        EXPECT_EQ(item.look->effects.size(), 1U);
    }
    EXPECT_EQ(inputs, clips);
    EXPECT_EQ(outputs.size(), 3) << "two of one name";
    studio.exports.cancelAll();
}

TEST_F(OffersTest, AMissingClipIsLookedForAndFaultsGoWithTheNextClip) {
    studio.document.addEffect("Outline");
    const QString clip = picture("clip.png");
    open(clip);
    ASSERT_TRUE(studio.save(file("mine.lumilook")));
    open("scene:320x180:1");
    QFile::remove(clip);
    studio.openFile(file("mine.lumilook"));
    ASSERT_TRUE(waitFor([&] { return window.messages().text().contains("clip.png"); }));
    EXPECT_EQ(choices(), QStringList("Find…"));
    open("scene:320x180:2");
    EXPECT_FALSE(window.messages().text().contains("clip.png")) << "it is no longer of interest";
    studio.openFile(file("none.mp4"));
    ASSERT_TRUE(waitFor([&] { return window.messages().text().contains("none.mp4"); }));
    open("scene:320x180:1");
    EXPECT_FALSE(window.messages().text().contains("none.mp4"));
}

TEST_F(OffersTest, FieldsAreChosenForInterlacedClipsAlone) {
    EXPECT_FALSE(window.action("fieldFirst")->isEnabled());
    writeInterlaced(file("fields.mkv").toStdString(), false);
    open(file("fields.mkv"));
    const auto row = [&](const char* action) {
        trigger(action);
        const auto wanted = studio.preview.wish().fields;
        EXPECT_TRUE(waitFor([&] { return isShown() && studio.preview.shot().wish.fields == wanted; }));
        const DisplayPicture& shown = *studio.preview.shot().picture;
        return static_cast<int>(shown.pixel(shown.size.width / 2, shown.size.height / 2)[1]);
    };
    EXPECT_EQ(row("fieldFirst"), 50);
    EXPECT_EQ(row("fieldSecond"), 200);
    EXPECT_TRUE(window.action("fieldSecond")->isChecked());
}

}  // namespace
}  // namespace lumiset::studio
