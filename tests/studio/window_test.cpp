#include <QAbstractButton>
#include <QClipboard>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QLocale>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QScrollBar>
#include <QTabBar>
#include <QToolButton>
#include <QTranslator>
#include <algorithm>
#include <set>

#include "apps/studio/core/command_text.h"
#include "apps/studio/views/curve_view.h"
#include "apps/studio/views/export_dialog.h"
#include "apps/studio/views/message_bar.h"
#include "apps/studio/views/number_field.h"
#include "apps/studio/views/panel.h"
#include "apps/studio/views/strip.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/timeline.h"
#include "apps/studio/views/translation.h"
#include "apps/studio/views/value_slider.h"
#include "hostkit/names.h"
#include "tests/studio/window_fixture.h"

namespace lumiset::studio {
namespace {

class WindowTest : public WindowFixture {
protected:
    void drag(QWidget& widget, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
        QTest::mousePress(&widget, Qt::LeftButton, modifiers, from);
        for (int step = 1; step <= 5; ++step) {
            const QPoint place = from + (to - from) * step / 5;
            QMouseEvent move(QEvent::MouseMove, place, widget.mapToGlobal(place), Qt::NoButton, Qt::LeftButton,
                             modifiers);
            QApplication::sendEvent(&widget, &move);
        }
        QTest::mouseRelease(&widget, Qt::LeftButton, modifiers, to);
    }
    int steps() { return studio.document.undoStack().count(); }
};

TEST_F(WindowTest, ChoosingAPresetShowsThePixelsOfTheCommandLine) {
    auto* tabs = window.strip().findChild<QTabBar*>();
    tabs->setCurrentIndex(2);
    window.strip().findChild<QLineEdit*>()->setText("Messed Up");
    QListView& list = window.strip().list();
    ASSERT_EQ(list.model()->rowCount(), 1);
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, list.visualRect(list.model()->index(0, 0)).center());
    ASSERT_EQ(studio.document.look().effects.size(), 1U);
    studio.preview.setFrame(20);
    settle();
    render::FileJob job = studio.jobFor(file("frame_%02d.png"));
    job.startSeconds = 0.8;
    job.durationSeconds = 0.03;
    std::string line = lumisetCommand(studio.catalogue(), studio.document.look(), job);
    line.replace(0, 7, hostkit::shellWord(LUMISET_PROGRAM));
    ASSERT_EQ(QProcess::execute("sh", {"-c", toQt(line + " -q")}), 0) << line;
    QImage rendered(file("frame_01.png"));
    ASSERT_EQ(rendered.size(), QSize(320, 180));
    const QImage seen = shown().convertToFormat(QImage::Format_RGB32);
    int different = 0;
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 320; ++x) {
            if (qAlpha(rendered.pixel(x, y)) == 255) {
                different += (rendered.pixel(x, y) & 0xFFFFFFU) != (seen.pixel(x, y) & 0xFFFFFFU) ? 1 : 0;
            }
        }
    }
    // The frame of the window that has the keyboard lies outside of the small picture.
    EXPECT_EQ(different, 0);
}

TEST_F(WindowTest, DraggingACornerMovesTheNumberAndThePictureInOneStep) {
    studio.document.addEffect("Selective Tint");
    settle();
    const auto picture = studio.preview.shot().picture;
    const ParamValue before = studio.document.value(parameter("Top Left"));
    const QPointF corner =
        window.viewer().toScreen({static_cast<double>(before.point.x), static_cast<double>(before.point.y)});
    const QPointF target = window.viewer().toScreen({0.7, 0.41});  // past the right corner: they may cross
    const int count = steps();
    drag(window.viewer(), corner.toPoint(), target.toPoint(), Qt::ControlModifier);
    settle();
    EXPECT_EQ(steps(), count + 1);
    EXPECT_NEAR(static_cast<double>(studio.document.value(parameter("Top Left")).point.x), 0.7, 0.01);
    EXPECT_NEAR(control<NumberField>("Top Left X")->text().section(' ', 0, 0).toDouble(), 70.0, 1.0);
    EXPECT_NE(studio.preview.shot().picture->bytes, picture->bytes);
    trigger("undo");
    settle();
    EXPECT_EQ(studio.preview.shot().picture->bytes, picture->bytes);
    // Near a line of thirds it takes it, unless Ctrl is held.
    drag(window.viewer(), corner.toPoint(), window.viewer().toScreen({0.345, 0.49}).toPoint());
    EXPECT_EQ(studio.document.value(parameter("Top Left")).point.x, static_cast<float>(1.0 / 3.0));
    EXPECT_EQ(studio.document.value(parameter("Top Left")).point.y, 0.5F);
}

TEST_F(WindowTest, SlidersAreDraggedTypedIntoResetAndScrolledOver) {
    studio.document.addEffect("Outline");
    auto* slider = control<ValueSlider>("Width");
    auto* number = control<NumberField>("Width");
    const double start = slider->exactValue();
    const int count = steps();
    drag(*slider, slider->rect().center(), slider->rect().center() - QPoint(slider->width() / 4, 0));
    EXPECT_EQ(steps(), count + 1) << "a drag is one step";
    EXPECT_LT(slider->exactValue(), start);
    EXPECT_EQ(static_cast<float>(slider->exactValue()), studio.document.value(parameter("Width")).slider);

    slider->setFocus();
    QTest::keyClicks(slider, "7");  // a digit goes to the number
    QTest::keyClicks(number, "2.5");
    QTest::keyClick(number, Qt::Key_Return);
    EXPECT_EQ(studio.document.value(parameter("Width")).slider, 0.725F);
    EXPECT_EQ(number->text(), "72.5 %");
    EXPECT_TRUE(window.viewer().hasFocus() || QGuiApplication::platformName() == "offscreen");
    number->begin("99");
    QTest::keyClick(number, Qt::Key_Escape);
    EXPECT_EQ(number->text(), "72.5 %") << "Esc gives the old one back";
    number->begin("999");
    QTest::keyClick(number, Qt::Key_Return);
    EXPECT_EQ(studio.document.value(parameter("Width")).slider, 0.725F) << "out of range";
    EXPECT_FALSE(window.messages().text().isEmpty());

    const int now = steps();
    QWheelEvent wheel(slider->rect().center(), slider->mapToGlobal(slider->rect().center()), {}, {0, -120},
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(slider, &wheel);
    EXPECT_EQ(steps(), now) << "the wheel changes nothing";
    QTest::mouseDClick(slider, Qt::LeftButton, {}, slider->rect().center());
    EXPECT_EQ(slider->exactValue(), start);
}

TEST_F(WindowTest, EscapeInADragGivesTheOldValueBack) {
    studio.document.addEffect("Outline");
    const std::string before = look();
    auto* slider = control<ValueSlider>("Width");
    QTest::mousePress(slider, Qt::LeftButton, {}, slider->rect().center());
    QMouseEvent move(QEvent::MouseMove, slider->rect().center() - QPoint(30, 0), slider->mapToGlobal(QPoint(60, 8)),
                     Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(slider, &move);
    EXPECT_NE(look(), before);
    QTest::keyClick(slider, Qt::Key_Escape);
    QTest::mouseRelease(slider, Qt::LeftButton, {}, slider->rect().center());
    EXPECT_EQ(look(), before);
}

TEST_F(WindowTest, TheWipeShowsBothSidesWithoutRendering) {
    studio.document.addEffect("Color Fixer Pro");
    studio.document.applyPreset(0, "Sepia");
    settle();
    const QImage after = shown();
    studio.preview.setSourceHeld(true);
    settle();
    const QImage source = shown();
    studio.preview.setSourceHeld(false);
    trigger("compare");
    settle();
    const auto sameColumn = [&](const QImage& a, int x) {
        for (int y = 60; y < 75; ++y) {  // between the badges and the handle of the wipe
            if (a.pixel(x, y) != shown().pixel(x, y)) {
                return false;
            }
        }
        return true;
    };
    EXPECT_TRUE(sameColumn(source, 60));
    EXPECT_TRUE(sameColumn(after, 260));
    const auto number = studio.preview.shot().wish.number;
    const QRect picture = window.viewer().pictureRect().toRect();
    drag(window.viewer(), QPoint(picture.center().x(), picture.top() + 30),
         QPoint(picture.left() + 300, picture.top() + 30));
    EXPECT_TRUE(sameColumn(source, 260)) << "the line is to the right of it now";
    EXPECT_EQ(studio.preview.shot().wish.number, number) << "a wipe never renders";
    studio.preview.takeSnapshot();
    studio.document.applyPreset(0, "Cool");
    settle();
    EXPECT_TRUE(sameColumn(after, 260)) << "the snapshot to the left";
}

TEST_F(WindowTest, KeysAreSetInThePanelAndDraggedInTheCurve) {
    studio.document.addEffect("Outline");
    control<QAbstractButton>("Key Width")->click();
    EXPECT_TRUE(window.curve().isVisible());
    studio.preview.setFrame(25);
    control<NumberField>("Width")->begin("80");
    QTest::keyClick(control<NumberField>("Width"), Qt::Key_Return);
    const auto times = [&] {
        return keyTimes(*studio.document.selectedEffect(), std::nullopt, studio.document.clipSeconds());
    };
    ASSERT_EQ(times(), (std::vector<double>{0.0, 1.0}));
    auto* timeline = window.findChild<Timeline*>();
    const int count = steps();
    const QPoint key = window.curve().placeOf(1.0).toPoint();
    drag(window.curve(), key, QPoint(static_cast<int>(timeline->xOf(40.0)), key.y()));
    EXPECT_EQ(steps(), count + 1);
    EXPECT_EQ(times(), (std::vector<double>{0.0, 1.6}));
    QTest::keyClick(&window.curve(), Qt::Key_Delete);
    EXPECT_EQ(times(), (std::vector<double>{0.0}));
    trigger("undo");
    studio.preview.setFrame(10);
    trigger("nextKey");
    EXPECT_EQ(studio.preview.frame(), 40);
    trigger("previousKey");
    EXPECT_EQ(studio.preview.frame(), 0);
}

TEST_F(WindowTest, HoveringPreviewsAndLeavingRestores) {
    studio.document.addEffect("Outline");
    settle();
    const auto picture = studio.preview.shot().picture;
    const std::string before = look();
    QListView& list = window.strip().list();
    list.setFocus();
    emit list.entered(list.model()->index(1, 0));
    ASSERT_TRUE(waitFor([&] { return studio.preview.candidate() != nullptr && isShown(); }));
    EXPECT_NE(studio.preview.shot().picture->bytes, picture->bytes);
    EXPECT_EQ(look(), before);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(list.viewport(), &leave);
    settle();
    EXPECT_EQ(studio.preview.shot().picture->bytes, picture->bytes);
    EXPECT_TRUE(
        waitFor([&] { return !list.model()->index(0, 0).data(Thumbnails::kPictureRole).value<QImage>().isNull(); }));
}

TEST_F(WindowTest, TheMaskIsTheChosenEffectsWhateverIsHoveredOver) {
    studio.document.addEffect("Selective Tint");
    studio.preview.setMaskHeld(true);
    const std::string mask = hostkit::lookToJson(studio.catalogue(), *studio.preview.wish().look);
    EXPECT_NE(mask, look());
    studio.preview.setCandidate(std::make_shared<const hostkit::Look>());
    EXPECT_EQ(hostkit::lookToJson(studio.catalogue(), *studio.preview.wish().look), mask);
}

TEST_F(WindowTest, PlaysLoopsAndSteps) {
    studio.preview.setRange({10, 14});
    trigger("play");
    std::set<qint64> seen;
    QObject::connect(&studio.preview, &Preview::frameChanged, &window, [&] { seen.insert(studio.preview.frame()); });
    ASSERT_TRUE(waitFor([&] { return seen.size() >= 4; }));
    EXPECT_GE(*seen.begin(), 10);
    EXPECT_LE(*seen.rbegin(), 14);
    EXPECT_TRUE(studio.player.isPlaying());
    QTest::keyClick(&window, Qt::Key_Space);
    EXPECT_FALSE(studio.player.isPlaying());
    trigger("first");
    QTest::keyClick(&window, Qt::Key_Right);
    EXPECT_EQ(studio.preview.frame(), 11);
    EXPECT_EQ(timeCode(90061, 25.0), "01:00:02:11");
}

TEST_F(WindowTest, PicksAColourOfTheEffectsInput) {
    studio.document.addEffect("Color Fixer Pro");
    studio.document.applyPreset(0, "Sepia");
    settle();
    control<QAbstractButton>("Pick from the picture: Sample")->click();
    ASSERT_TRUE(window.viewer().isPicking());
    settle();
    const QPoint place = window.viewer().toScreen({0.5, 0.5}).toPoint();
    const QRgb source = shown().pixel(160, 90);
    QTest::mouseClick(&window.viewer(), Qt::LeftButton, {}, place);
    EXPECT_FALSE(window.viewer().isPicking());
    const auto red = [&] { return static_cast<int>(studio.document.value(parameter("Sample")).color & 0xFFU); };
    ASSERT_TRUE(waitFor([&] { return studio.document.undoStack().undoText().startsWith("Set Sample"); }));
    EXPECT_NEAR(red(), qRed(source), 25) << "the mean around it, before the sepia";
}

TEST_F(WindowTest, AsksBeforeWorkIsLostAndClosesWhileRendering) {
    studio.document.addEffect("Old TV");
    window.close();
    auto* question = window.findChild<QMessageBox*>("saveQuestion");
    ASSERT_NE(question, nullptr);
    QTest::mouseClick(question->button(QMessageBox::Cancel), Qt::LeftButton);
    EXPECT_TRUE(window.isVisible());
    studio.openFile("scene:1920x1080:2");  // slow to render
    ASSERT_TRUE(waitFor([&] { return studio.clip().startsWith("scene:1920"); }));
    window.close();
    question = window.findChildren<QMessageBox*>("saveQuestion").back();
    QTest::mouseClick(question->button(QMessageBox::Discard), Qt::LeftButton);
    EXPECT_FALSE(window.isVisible());
    // What is under way ends with the objects, which the sanitizers watch.
}

TEST_F(WindowTest, ExportsAtTheSizeThatIsChosen) {
    open("scene:640x360:1");
    studio.document.addEffect("Outline");
    studio.exports.setPaused(true);
    trigger("export");
    auto* dialog = window.findChild<ExportDialog*>();
    ASSERT_NE(dialog, nullptr);
    const auto boxes = dialog->findChildren<QComboBox*>();
    const auto sizes = std::find_if(boxes.begin(), boxes.end(),
                                    [](const QComboBox* each) { return each->itemText(1) == "426 × 240"; });
    ASSERT_NE(sizes, boxes.end());
    EXPECT_EQ(dialog->job().width, 0) << "as the clip";
    (*sizes)->setCurrentIndex(1);
    dialog->findChild<QLineEdit*>()->setText(file("small.mp4"));
    for (QPushButton* button : dialog->findChildren<QPushButton*>()) {
        if (button->text() == "Copy as Command Line") {
            button->click();
        }
    }
    EXPECT_TRUE(QApplication::clipboard()->text().contains("small.mp4")) << "this export";
    EXPECT_TRUE(QApplication::clipboard()->text().contains(" --size 426x240"));
    QTest::keyClick(dialog->findChild<QLineEdit*>(), Qt::Key_Return);  // adds, and does not cancel
    ASSERT_EQ(studio.exports.items().size(), 1U);
    EXPECT_EQ(studio.exports.items().front().job.width, 426);
    EXPECT_EQ(studio.exports.items().front().size, (Size{426, 240})) << "the queue shows it";
}

TEST_F(WindowTest, ExportsFromInToOutWhereOneIsSet) {
    const auto isOffered = [&](FrameRange range) {
        studio.preview.setRange(range);
        const ExportDialog dialog(studio);
        const auto boxes = dialog.findChildren<QComboBox*>();
        return std::any_of(boxes.begin(), boxes.end(),
                           [](const QComboBox* each) { return each->currentText().startsWith("From In to Out"); });
    };
    EXPECT_FALSE(isOffered({0, 49}));
    EXPECT_TRUE(isOffered({1, 49}));
    EXPECT_TRUE(isOffered({0, 48}));
}

TEST_F(WindowTest, SpeaksOtherLanguagesAndFollowsTheTheme) {
    translate(*qApp, QLocale("de_DE"));
    EXPECT_EQ(MainWindow::tr("&File"), "&Datei");
    MainWindow german(studio);
    EXPECT_EQ(german.action("play")->text(), "Abs&pielen oder anhalten");
    for (QTranslator* texts : qApp->findChildren<QTranslator*>()) {
        QCoreApplication::removeTranslator(texts);
    }
    const auto ink = [] {
        const QImage drawn = themeIcon("play").pixmap(32, 32).toImage();
        int light = 0;
        for (int i = 0; i < 32 * 32; ++i) {
            light += drawn.pixelColor(i % 32, i / 32).lightness() * drawn.pixelColor(i % 32, i / 32).alpha() / 255;
        }
        return light;
    };
    const int dark = ink();
    trigger("theme1");
    EXPECT_LT(ink(), dark / 2) << "dark ink on light ground";
    trigger("theme2");
}

TEST_F(WindowTest, IconsTellWhatIsOn) {
    const auto drawn = [&](const char* action, QIcon::Mode mode = QIcon::Normal) {
        return window.action(action)->icon().pixmap(32, 32, mode).toImage();
    };
    const QImage play = drawn("play");
    studio.player.play();
    EXPECT_NE(drawn("play"), play);
    studio.player.stop();
    EXPECT_EQ(drawn("play"), play);
    const QImage sound = drawn("mute");
    window.action("mute")->setChecked(true);
    EXPECT_NE(drawn("mute"), sound);
    EXPECT_TRUE(studio.player.isMuted());
    EXPECT_NE(drawn("play", QIcon::Disabled), play);
    for (const QToolButton* button : window.findChildren<QToolButton*>()) {
        EXPECT_TRUE(!button->icon().isNull() || !button->isVisible() || !button->text().isEmpty());
        EXPECT_TRUE(button->defaultAction() == nullptr || !button->icon().isNull()) << button->text().toStdString();
    }
}

TEST_F(WindowTest, EverythingHasANameAndItsPlace) {
    studio.document.addEffect("Background Generator");
    for (const QSize size : {QSize(1280, 720), QSize(2560, 1440)}) {
        window.resize(size);
        QCoreApplication::processEvents();
        for (QWidget* widget : window.findChildren<QWidget*>()) {
            const bool counts = widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus) != 0 &&
                                !widget->objectName().startsWith("qt_");
            const auto* button = qobject_cast<QAbstractButton*>(widget);
            if (counts && !(button != nullptr && !button->text().isEmpty()) && widget != &window) {
                EXPECT_FALSE(widget->accessibleName().isEmpty())
                    << widget->metaObject()->className() << " below " << widget->parent()->metaObject()->className();
            }
        }
        EXPECT_GE(window.viewer().width(), size.width() - 460);
        auto* panel = window.findChild<Panel*>();
        EXPECT_EQ(panel->horizontalScrollBar()->maximum(), 0) << "nothing is cut off";
    }
    QSet<QString> keys;
    for (const QAction* action : window.actions()) {
        for (const QKeySequence& key : action->shortcuts()) {
            EXPECT_FALSE(keys.contains(key.toString())) << key.toString().toStdString() << " is taken twice";
            keys.insert(key.toString());
        }
    }
}

}  // namespace
}  // namespace lumiset::studio
