// Windows under test are drawn into memory, unless a platform is asked for.
#include <gtest/gtest.h>

#include <QApplication>

#include "apps/studio/views/theme.h"

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("lumiset");
    QCoreApplication::setApplicationName("studio_test");
    lumiset::studio::applyTheme(application, lumiset::studio::Theme::kDark);
    return RUN_ALL_TESTS();
}
