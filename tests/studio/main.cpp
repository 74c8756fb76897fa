// Windows under test are drawn into memory, unless a platform is asked for, and sound is written into a file.
#include <gtest/gtest.h>

#include <QApplication>
#include <QFile>
#include <QTemporaryDir>

#include "apps/studio/views/theme.h"

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QTemporaryDir own;
    QFile sound(own.filePath("alsoft.conf"));
    if (sound.open(QIODevice::WriteOnly)) {
        sound.write(
            "drivers=wave\nsample-type=int16\nfrequency=48000\n"
            "stereo-mode=headphones\nhrtf=true\ndefault-hrtf=default-48000\n"  // of that rate
            "[wave]\nfile=" +
            own.filePath("sound.wav").toUtf8() + "\n");
        sound.close();
    }
    qputenv("ALSOFT_CONF", sound.fileName().toUtf8());
    qputenv("LUMISET_RECORDING", own.filePath("sound.wav").toUtf8());
    testing::InitGoogleTest(&argc, argv);
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("lumiset");
    QCoreApplication::setApplicationName("studio_test");
    lumiset::studio::applyTheme(application, lumiset::studio::Theme::kDark);
    return RUN_ALL_TESTS();
}
