#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QSettings>
#include <QTimer>
#include <cstdio>
#include <exception>
#include <span>
#include <string_view>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/main_window.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

/// Draws the window into a file as soon as everything in it is there, and ends the program.
void drawWhenReady(Studio& studio, MainWindow& window, const QString& file) {
    auto* timer = new QTimer(&window);
    QObject::connect(timer, &QTimer::timeout, &window, [&studio, &window, file, calm = 0]() mutable {
        calm = studio.preview.shot().picture != nullptr && studio.preview.engine().isIdle() ? calm + 1 : 0;
        if (calm > 4) {
            const bool saved = window.grab().save(file, nullptr, 92);
            if (!saved) {
                std::fprintf(stderr, "lumiset-studio: \"%s\" cannot be written.\n", qPrintable(file));
            }
            QCoreApplication::exit(saved ? 0 : 1);
        }
    });
    timer->start(200);
}

int run(QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Tunes looks of video effects on a clip, and exports it.");
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addPositionalArgument("files", "Clips, pictures, looks (.lumilook) and preset files.", "[files...]");
    const QCommandLineOption theme("theme", "Colours: system, light or dark.", "name");
    const QCommandLineOption size("size", "Size of the window, 1280x720 for example.", "size");
    const QCommandLineOption act("do", "Does one of the window's actions at first, \"compare\" for example.", "action");
    const QCommandLineOption screenshot("screenshot", "Draws the window into a picture file and ends.", "file");
    parser.addOptions({theme, size, act, screenshot});
    parser.process(application);
    const QStringList themes = {"system", "light", "dark"};
    const auto wanted = themes.indexOf(parser.value(theme));
    applyTheme(application,
               static_cast<Theme>(wanted >= 0 ? static_cast<int>(wanted) : QSettings().value("theme", 0).toInt()));
    Studio studio;
    MainWindow window(studio);
    if (const QStringList sides = parser.value(size).split('x'); sides.size() == 2) {
        window.resizeTo({sides[0].toInt(), sides[1].toInt()});
    }
    window.show();
    QTimer::singleShot(0, &window, [&] {
        const QStringList files = parser.positionalArguments();
        if (files.isEmpty()) {
            studio.openFile("scene:1280x720:4");
        } else {
            studio.openFiles(files);
        }
        for (const QString& name : parser.values(act)) {
            if (QAction* action = window.action(name)) {
                action->trigger();
            }
        }
        if (parser.isSet(screenshot)) {
            drawWhenReady(studio, window, parser.value(screenshot));
        } else {
            window.offerLeftover();
        }
    });
    return QApplication::exec();
}

}  // namespace
}  // namespace lumiset::studio

int main(int argc, char** argv) {
    // Answers without a display, too.
    for (const std::string_view argument : std::span(argv + 1, argv + argc)) {
        if (argument == "--help" || argument == "-h" || argument == "--version" || argument == "-v") {
            qputenv("QT_QPA_PLATFORM", "offscreen");
        }
    }
    QApplication application(argc, argv);
    QCoreApplication::setOrganizationName("lumiset");
    QCoreApplication::setApplicationName("studio");
    QCoreApplication::setApplicationVersion(LUMISET_VERSION);
    QGuiApplication::setApplicationDisplayName("Lumiset Studio");
    QGuiApplication::setDesktopFileName("lumiset-studio");
    try {
        return lumiset::studio::run(application);
    } catch (const std::exception& error) {
        QMessageBox::critical(nullptr, "Lumiset Studio", error.what());
        return 1;
    }
}
