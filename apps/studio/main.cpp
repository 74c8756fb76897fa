#include <QAction>
#include <QApplication>
#include <QCommandLineParser>
#include <QLocale>
#include <QMessageBox>
#include <QPainter>
#include <QSettings>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <string_view>
#include <utility>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/main_window.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/translation.h"
#include "platform/interruption.h"
#include "platform/monitor_pipe.h"
#include "platform/pending_file.h"

namespace lumiset::studio {
namespace {

/// The window, with every dialog that is open in front of its middle.
QPixmap drawn(MainWindow& window) {
    QPixmap picture = window.grab();
    QPainter painter(&picture);
    for (QWidget* each : QApplication::topLevelWidgets()) {
        if (each != &window && each->isVisible() && each->isWindow()) {
            const QPoint place = window.rect().center() - each->rect().center();
            painter.fillRect(QRect(place, each->size()).adjusted(-1, -1, 1, 1), Qt::black);
            painter.drawPixmap(place, each->grab());
        }
    }
    return picture;
}

/// Does actions of the window once the picture is there, and with a file's name draws the window into it as soon as
/// everything in it is there, and ends the program.
void act(Studio& studio, MainWindow& window, const QStringList& actions, const QString& file) {
    auto* timer = new QTimer(&window);
    QObject::connect(
        timer, &QTimer::timeout, &window, [&studio, &window, timer, waiting = actions, file, calm = 0]() mutable {
            calm = studio.preview.shot().picture != nullptr && studio.preview.engine().isIdle() ? calm + 1 : 0;
            if (calm > 0 && !waiting.isEmpty()) {
                const QString name = waiting.takeFirst();
                if (QAction* action = window.action(name)) {
                    action->trigger();
                } else {
                    std::fprintf(stderr, "lumiset-studio: There is no action \"%s\".\n", qPrintable(name));
                }
                calm = 0;
            } else if (calm > 4 && file.isEmpty()) {
                timer->stop();
            } else if (calm > 4) {
                const bool saved = drawn(window).save(file, nullptr, 92);
                if (!saved) {
                    std::fprintf(stderr, "lumiset-studio: \"%s\" cannot be written.\n", qPrintable(file));
                }
                QCoreApplication::exit(saved ? 0 : 1);
            }
        });
    timer->start(200);
}

/// Asked to end by the system the program keeps what is not saved for its next start, and waits for the frames under
/// way, which would look like a crash of the driver's in OpenGL. Asked again it ends at once.
void watchForInterruption(Studio& studio) {
    platform::prepareFarewell();
    platform::onInterruptionInThread([&studio, asked = false](int signal) mutable {
        if (std::exchange(asked, true)) {
            platform::bidFarewell();
            platform::PendingFile::removeAll();
            std::_Exit(128 + signal);
        }
        QMetaObject::invokeMethod(
            qApp,
            [&studio, signal] {
                studio.recovery.keep();
                QCoreApplication::exit(128 + signal);
            },
            Qt::QueuedConnection);
    });
}

int run(QApplication& application) {
    QCommandLineParser parser;
    parser.setApplicationDescription("Tunes looks of video effects on a clip, and exports it.");
    parser.addHelpOption();
    const QCommandLineOption version({"v", "version"}, "Prints the version and ends.");
    parser.addOption(version);
    parser.addPositionalArgument("files", "Clips, pictures, looks (.lumilook) and preset files.", "[files...]");
    const QCommandLineOption theme("theme", "Colours: system, light or dark.", "name");
    const QCommandLineOption size("size", "Size of the window, 1280x720 for example.", "size");
    const QCommandLineOption doing("do", "Does one of the window's actions at first, \"compare\" for example.",
                                   "action");
    const QCommandLineOption screenshot("screenshot", "Draws the window into a picture file and ends.", "file");
    parser.addOptions({theme, size, doing, screenshot});
    parser.process(application);
    if (parser.isSet(version)) {
        std::puts("lumiset-studio " LUMISET_VERSION);
        return 0;
    }
    translate(application, QLocale());
    const QStringList themes = {"system", "light", "dark"};
    const auto wanted = themes.indexOf(parser.value(theme));
    applyTheme(application, static_cast<Theme>(wanted >= 0 ? static_cast<int>(wanted)
                                                           : QSettings().value(kThemeSetting, 0).toInt()));
    const ThemeFollower follower(application);
    Studio studio;
    watchForInterruption(studio);
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
        if (parser.isSet(doing) || parser.isSet(screenshot)) {
            act(studio, window, parser.values(doing), parser.value(screenshot));
        }
        if (!parser.isSet(screenshot)) {
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
    QCoreApplication::setApplicationName("studio");  // of the settings' file
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
