#pragma once

#include <QAction>
#include <QListView>
#include <QTest>

#include "apps/studio/views/main_window.h"
#include "apps/studio/views/viewer.h"
#include "tests/studio/studio_fixture.h"

namespace lumiset::studio {

/// The program with its window, the small scene shown pixel by pixel.
class WindowFixture : public StudioFixture {
protected:
    void SetUp() override {
        window.resize(1280, 720);
        window.show();
        // Without a window manager nobody else gives it the keys.
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
        StudioFixture::SetUp();
        window.viewer().setZoom(1.0);
        settle();
    }

    template <class Widget>
    Widget* control(const QString& name) {
        for (Widget* each : window.findChildren<Widget*>()) {
            if (each->accessibleName() == name && each->isVisible()) {
                return each;
            }
        }
        ADD_FAILURE() << "no control " << name.toStdString();
        return nullptr;
    }
    void trigger(const char* action) {
        QAction* found = window.action(action);
        ASSERT_NE(found, nullptr) << action;
        ASSERT_TRUE(found->isEnabled()) << action;
        found->trigger();
    }
    /// What the viewer shows of the picture, the chosen effect's handles aside.
    [[nodiscard]] QImage shown() { return window.viewer().grab(window.viewer().pictureRect().toRect()).toImage(); }

    MainWindow window{studio};
};

}  // namespace lumiset::studio
