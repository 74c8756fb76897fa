// Random clicks, drags and keys from a seed, which the log names. LUMISET_MONKEY_SECONDS says for how long, and
// LUMISET_MONKEY_SEED which ones.
#include <QAbstractButton>
#include <QDialog>
#include <QElapsedTimer>
#include <QMenu>
#include <QTimer>
#include <random>

#include "tests/studio/window_fixture.h"

namespace lumiset::studio {
namespace {

using MonkeyTest = WindowFixture;

TEST_F(MonkeyTest, FindsNothingToBreak) {
    const unsigned seed = qEnvironmentVariableIsSet("LUMISET_MONKEY_SEED")
                              ? static_cast<unsigned>(qEnvironmentVariableIntValue("LUMISET_MONKEY_SEED"))
                              : 20261122U;
    const int seconds = std::max(3, qEnvironmentVariableIntValue("LUMISET_MONKEY_SECONDS"));
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&random](int limit) {
        return static_cast<int>(std::uniform_int_distribution<int>(0, std::max(0, limit - 1))(random));
    };
    const std::string first = look();
    constexpr Qt::Key kKeys[] = {Qt::Key_Space,  Qt::Key_J,         Qt::Key_K,      Qt::Key_L,    Qt::Key_Left,
                                 Qt::Key_Right,  Qt::Key_I,         Qt::Key_O,      Qt::Key_X,    Qt::Key_F,
                                 Qt::Key_1,      Qt::Key_2,         Qt::Key_W,      Qt::Key_S,    Qt::Key_E,
                                 Qt::Key_M,      Qt::Key_Comma,     Qt::Key_Period, Qt::Key_Home, Qt::Key_End,
                                 Qt::Key_Delete, Qt::Key_Return,    Qt::Key_Escape, Qt::Key_Tab,  Qt::Key_Up,
                                 Qt::Key_Down,   Qt::Key_Backslash, Qt::Key_5,      Qt::Key_F9};
    constexpr const char* kActions[] = {"undo", "redo", "duplicate", "copy", "paste",
                                        "up",   "down", "resetAll",  "curve"};
    // A button's menu waits in a loop of its own until somebody closes it.
    QTimer closer;
    QObject::connect(&closer, &QTimer::timeout, [] {
        if (QWidget* popup = QApplication::activePopupWidget()) {
            popup->close();
        }
    });
    closer.start(20);
    QElapsedTimer clock;
    clock.start();
    int steps = 0;
    for (; clock.elapsed() < seconds * 1000; ++steps) {
        const auto widgets = window.findChildren<QWidget*>();
        QWidget* widget = widgets[below(static_cast<int>(widgets.size()))];
        const bool isDialogs = widget->window() != &window;
        if (!widget->isVisible() || isDialogs) {
            continue;
        }
        const QPoint from(below(widget->width()), below(widget->height()));
        switch (below(6)) {
            case 0:
            case 1:
                QTest::mouseClick(widget, Qt::LeftButton, {}, from);
                break;
            case 2: {
                QTest::mousePress(widget, Qt::LeftButton, {}, from);
                for (int move = 0; move < 4; ++move) {
                    const QPoint to(below(widget->width()), below(widget->height()));
                    QMouseEvent event(QEvent::MouseMove, to, widget->mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
                    QApplication::sendEvent(widget, &event);
                }
                QTest::mouseRelease(widget, Qt::LeftButton, {}, from);
                break;
            }
            case 3:
                QTest::mouseDClick(widget, Qt::LeftButton, {}, from);
                break;
            case 4:
                QTest::keyClick(widget, kKeys[below(std::size(kKeys))]);
                break;
            default:
                if (QAction* action = window.action(kActions[below(std::size(kActions))]); action->isEnabled()) {
                    action->trigger();
                }
        }
        if (steps % 25 == 0 && studio.document.look().effects.size() < 4) {
            const auto& effects = studio.catalogue().effects();
            studio.document.addEffect(effects[static_cast<std::size_t>(below(static_cast<int>(effects.size())))].name);
        }
        while (studio.document.look().effects.size() > 6) {
            studio.document.removeEffect(0);
        }
        for (QWidget* top : QApplication::topLevelWidgets()) {
            if (top != &window && top->isVisible()) {
                top->close();
            }
        }
        QCoreApplication::processEvents({}, 5);
        ASSERT_TRUE(window.isVisible()) << "after " << steps << " steps";
        ASSERT_LE(studio.preview.engine().cachedBytes(), cacheLimit());
    }
    studio.player.stop();
    studio.document.undoStack().setIndex(0);
    EXPECT_EQ(look(), first) << "undo all after " << steps << " steps";
    studio.preview.setCandidate(nullptr);
    studio.preview.setSourceHeld(false);
    studio.preview.setMaskHeld(false);
    settle();
    RecordProperty("steps", steps);
}

}  // namespace
}  // namespace lumiset::studio
