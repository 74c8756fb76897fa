// The window's actions and their menus. Every one has its key in the menu, and its name for tests.

#include <QActionGroup>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QSettings>
#include <QUndoStack>
#include <algorithm>

#include "apps/studio/core/command_text.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/curve_view.h"
#include "apps/studio/views/main_window.h"
#include "apps/studio/views/message_bar.h"
#include "apps/studio/views/strip.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/viewer.h"

namespace lumiset::studio {
namespace {

/// A new icon lays its buttons out anew, so it is set where it is another one alone.
void setIconNamed(QAction& action, const QString& name) {
    if (action.data().toString() != name) {
        action.setData(name);
        action.setIcon(themeIcon(name));
    }
}

}  // namespace

QAction* MainWindow::add(const QString& name, const QString& text, const QString& icon, const QList<QKeySequence>& keys,
                         const std::function<void()>& act) {
    auto* made = new QAction(text, this);
    made->setObjectName(name);
    made->setShortcuts(keys);
    if (!icon.isEmpty()) {
        made->setIcon(themeIcon(icon));
    }
    const QString key = keys.isEmpty() ? QString() : " (" + keys.front().toString(QKeySequence::NativeText) + ")";
    made->setToolTip(QString(text).remove('&').remove(QStringLiteral("…")) + key);
    connect(made, &QAction::triggered, this, act);
    addAction(made);
    return made;
}

void MainWindow::addFileActions() {
    add("new", tr("&New Look"), {}, {QKeySequence::New}, [this] { whenSaved([this] { m_studio.newDocument(); }); });
    add("open", tr("&Open…"), {}, {QKeySequence::Open}, [this] { openDialog(); });
    add("scene", tr("Open the Built-in &Scene"), {}, {}, [this] { m_studio.openFile("scene:1280x720:4"); });
    add("save", tr("&Save Look"), {}, {QKeySequence::Save}, [this] { save(); });
    add("saveAs", tr("Save Look &As…"), {}, {QKeySequence("Ctrl+Shift+S")}, [this] { saveAs(); });
    add("savePreset", tr("Save Preset File…"), {}, {}, [this] { savePreset(); });
    add("saveFrame", tr("Save This &Frame…"), "camera", {QKeySequence("Ctrl+Shift+E")}, [this] { saveFrame(); });
    add("quit", tr("&Quit"), {}, {QKeySequence("Ctrl+Q")}, [this] { close(); });
    add("export", tr("&Export…"), {}, {QKeySequence("Ctrl+E")}, [this] { exportClip(); });
    add("queue", tr("&Queue…"), "queue", {}, [this] { showQueue(); });
    add("copyCommand", tr("&Copy as Command Line"), {}, {QKeySequence("Ctrl+Shift+C")}, [this] { copyCommand(); });
    add("copyFfmpeg", tr("Copy as &ffmpeg Line"), {}, {}, [this] { copyPluginsCommand(PluginHost::kFfmpeg); });
    add("copyMelt", tr("Copy as &melt Line"), {}, {}, [this] { copyPluginsCommand(PluginHost::kMelt); });
    add("about", tr("&About Lumiset Studio"), {}, {}, [this] { about(); });
}

void MainWindow::addEditActions() {
    QUndoStack& stack = m_studio.document.undoStack();
    QAction* undo = stack.createUndoAction(this, tr("Undo"));
    undo->setObjectName("undo");
    undo->setShortcut(QKeySequence::Undo);
    QAction* redo = stack.createRedoAction(this, tr("Redo"));
    redo->setObjectName("redo");
    redo->setShortcuts({QKeySequence("Ctrl+Shift+Z"), QKeySequence("Ctrl+Y")});
    addActions({undo, redo});
    const auto chosen = [this] { return m_studio.document.selected(); };
    add("copy", tr("&Copy Effect"), {}, {QKeySequence::Copy}, [this] { copyEffect(); });
    add("paste", tr("&Paste Effect"), {}, {QKeySequence::Paste}, [this] { pasteEffect(); });
    add("duplicate", tr("&Duplicate Effect"), "duplicate", {QKeySequence("Ctrl+D")},
        [this, chosen] { m_studio.document.duplicateEffect(chosen()); });
    add("remove", tr("&Remove Effect"), "remove", {QKeySequence::Delete},
        [this, chosen] { m_studio.document.removeEffect(chosen()); });
    add("off", tr("Effect &On or Off"), {}, {QKeySequence("E")}, [this, chosen] {
        if (const LookEffect* effect = m_studio.document.selectedEffect()) {
            m_studio.document.setOff(chosen(), !effect->off);
        }
    });
    add("up", tr("Move Effect &Up"), {}, {QKeySequence("Alt+Up")},
        [this, chosen] { m_studio.document.moveEffect(chosen(), chosen() - 1); });
    add("down", tr("Move Effect Dow&n"), {}, {QKeySequence("Alt+Down")},
        [this, chosen] { m_studio.document.moveEffect(chosen(), chosen() + 1); });
    add("resetAll", tr("Reset All &Values"), "reset", {}, [this] { m_studio.document.resetAll(); });
    add("search", tr("&Find a Preset"), {}, {QKeySequence::Find}, [this] { m_strip->focusSearch(); });
}

void MainWindow::addViewActions() {
    add("fit", tr("&Fit"), "fit", {QKeySequence("F")}, [this] { m_viewer->setZoom(0.0); });
    add("full", tr("&100 %"), {}, {QKeySequence("1")}, [this] { m_viewer->setZoom(1.0); });
    add("double", tr("&200 %"), {}, {QKeySequence("2")}, [this] { m_viewer->setZoom(2.0); });
    add("compare", tr("&Compare: Wipe, Side by Side, Off"), "wipe", {QKeySequence("W")}, [this] {
        const Preview::Compare now = m_studio.preview.compare();
        m_studio.preview.setCompare(now == Preview::Compare::kOff    ? Preview::Compare::kWipe
                                    : now == Preview::Compare::kWipe ? Preview::Compare::kSideBySide
                                                                     : Preview::Compare::kOff);
    });
    add("snapshot", tr("Take &Snapshot to Compare With"), "camera", {QKeySequence("S")}, [this] {
        m_studio.preview.takeSnapshot();
        if (m_studio.preview.compare() == Preview::Compare::kOff) {
            m_studio.preview.setCompare(Preview::Compare::kWipe);
        }
    });
    m_befores = new QActionGroup(this);
    const std::pair<const char*, QString> befores[] = {
        {"beforeSource", tr("Compare with the S&ource")},
        {"beforeSnapshot", tr("Compare with the Sna&pshot")},
        {"beforeWithout", tr("Compare with the Look &Without This Effect")}};
    int number = 0;
    for (const auto& [name, text] : befores) {
        QAction* made = add(name, text, {}, {},
                            [this, number] { m_studio.preview.setBefore(static_cast<Preview::Before>(number)); });
        made->setCheckable(true);
        m_befores->addAction(made);
        ++number;
    }
    QAction* curve = add("curve", tr("C&urve"), "curve", {QKeySequence("C")}, [] {});
    curve->setCheckable(true);
    connect(curve, &QAction::toggled, this, [this](bool on) { m_curve->setVisible(on); });
    add("pictureOnly", tr("&Picture Only"), {}, {QKeySequence("F9")}, [this] {
        const bool shows = m_right->isHidden();
        m_right->setVisible(shows);
        m_strip->setVisible(shows);
    })->setCheckable(true);
    add("fullScreen", tr("F&ull Screen"), {}, {QKeySequence("F11")},
        [this] { setWindowState(windowState() ^ Qt::WindowFullScreen); });
    QAction* gpu = add("gpu", tr("Render in Open&GL"), {}, {}, [] {});
    gpu->setCheckable(true);
    connect(gpu, &QAction::toggled, this, [this](bool on) {
        m_studio.preview.setUsesGpu(on);
        if (on) {
            m_messages->tell(MessageBar::Kind::kNote,
                             tr("OpenGL renders now. Its noise differs from the processor's, so "
                                "export with the one that you looked at."));
        }
    });
    m_fields = new QActionGroup(this);
    const std::pair<const char*, QString> fields[] = {{"fieldsWoven", tr("&Both Fields")},
                                                      {"fieldFirst", tr("First Field A&lone")},
                                                      {"fieldSecond", tr("S&econd Field Alone")}};
    number = 0;
    for (const auto& [name, text] : fields) {
        QAction* made =
            add(name, text, {}, {}, [this, number] { m_studio.preview.setFields(static_cast<Fields>(number)); });
        made->setCheckable(true);
        m_fields->addAction(made);
        ++number;
    }
    m_themes = new QActionGroup(this);
    const int theme = QSettings().value(kThemeSetting, 0).toInt();
    const QString themes[] = {tr("System Colours"), tr("Light"), tr("Dark")};
    for (int i = 0; i < 3; ++i) {
        QAction* made = add(QStringLiteral("theme%1").arg(i), themes[i], {}, {}, [i] {
            QSettings().setValue(kThemeSetting, i);
            applyTheme(*qApp, static_cast<Theme>(i));
        });
        made->setCheckable(true);
        made->setChecked(i == theme);
        m_themes->addAction(made);
    }
}

void MainWindow::addPlaybackActions() {
    Player& player = m_studio.player;
    Preview& preview = m_studio.preview;
    add("play", tr("&Play or Stop"), "play", {QKeySequence("Space")}, [&player] {
        if (player.isPlaying()) {
            player.stop();
        } else {
            player.play();
        }
    });
    add("shuttleBack", tr("Play &Backwards, Again Faster"), {}, {QKeySequence("J")}, [&player] { player.shuttle(-1); });
    add("stop", tr("&Stop"), {}, {QKeySequence("K")}, [&player] { player.stop(); });
    add("shuttle", tr("Play &Forwards, Again Faster"), {}, {QKeySequence("L")}, [&player] { player.shuttle(1); });
    add("back", tr("Frame B&ack"), "back", {QKeySequence("Left")}, [&player] { player.step(-1); });
    add("forward", tr("Frame F&orward"), "forward", {QKeySequence("Right")}, [&player] { player.step(1); });
    add("secondBack", tr("Second Back"), {}, {QKeySequence("Shift+Left")}, [&player] { player.stepSeconds(-1.0); });
    add("secondForward", tr("Second Forward"), {}, {QKeySequence("Shift+Right")},
        [&player] { player.stepSeconds(1.0); });
    add("first", tr("To &In"), "first", {QKeySequence("Home")},
        [&] { player.step(preview.range().first - preview.frame()); });
    add("last", tr("To &Out"), "last", {QKeySequence("End")},
        [&] { player.step(preview.range().last - preview.frame()); });
    add("setIn", tr("Set I&n"), {}, {QKeySequence("I")}, [&] {
        preview.setRange({preview.frame(), std::max<qint64>(preview.frame(), preview.range().last)});
    });
    add("setOut", tr("Set O&ut"), {}, {QKeySequence("O")}, [&] {
        preview.setRange({std::min<qint64>(preview.frame(), preview.range().first), preview.frame()});
    });
    add("clearRange", tr("&Clear In and Out"), {}, {QKeySequence("X")}, [&] {
        if (preview.clip() != nullptr) {
            preview.setRange({0, preview.clip()->frameCount - 1});
        }
    });
    add("previousKey", tr("Previous &Key"), {}, {QKeySequence(",")}, [this] { goToKey(-1); });
    add("nextKey", tr("Ne&xt Key"), {}, {QKeySequence(".")}, [this] { goToKey(1); });
    QAction* loop = add("loop", tr("&Loop"), "loop", {QKeySequence("Ctrl+L")}, [] {});
    loop->setCheckable(true);
    loop->setChecked(player.loops());
    connect(loop, &QAction::toggled, this, [&player](bool on) { player.setLoops(on); });
    QAction* mute = add("mute", tr("&Mute"), "sound", {QKeySequence("Shift+M")}, [] {});
    mute->setCheckable(true);
    connect(mute, &QAction::toggled, this, [this, &player](bool on) {
        player.setMuted(on);
        setIconNamed(*action("mute"), on ? "mute" : "sound");
        QSettings().setValue("playback/muted", on);
    });
    mute->setChecked(QSettings().value("playback/muted").toBool());
}

void MainWindow::fillAddMenu(QMenu& menu) {
    for (const EffectDescription& effect : m_studio.catalogue().effects()) {
        menu.addAction(toQt(effect.name), this, [this, name = effect.name] { m_studio.document.addEffect(name); });
    }
}

void MainWindow::fillRecent(QMenu& menu, const QStringList& files) {
    for (const QString& file : files) {
        menu.addAction(file.section('/', -1), this, [this, file] { open({file}); })->setToolTip(file);
    }
}

void MainWindow::buildMenus() {
    const auto fill = [this](QMenu* menu, const QStringList& names) {
        for (const QString& name : names) {
            if (name.isEmpty()) {
                menu->addSeparator();
            } else {
                menu->addAction(action(name));
            }
        }
        return menu;
    };
    QMenu* file = menuBar()->addMenu(tr("&File"));
    fill(file, {"new", "open"});
    QMenu* recent = file->addMenu(tr("Open &Recent"));
    connect(recent, &QMenu::aboutToShow, this, [this, recent] {
        recent->clear();
        recent->setToolTipsVisible(true);
        fillRecent(*recent, m_studio.recentClips());
        recent->addSeparator();
        fillRecent(*recent, m_studio.recentDocuments());
    });
    fill(file, {"scene", "", "save", "saveAs", "savePreset", "", "saveFrame", "", "quit"});
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    fill(edit, {"undo", "redo", ""});
    fillAddMenu(*edit->addMenu(tr("&Add Effect")));
    fill(edit, {"copy", "paste", "duplicate", "remove", "off", "up", "down", "", "resetAll", "search"});
    QMenu* view = menuBar()->addMenu(tr("&View"));
    fill(view,
         {"fit", "full", "double", "", "compare", "snapshot", "beforeSource", "beforeSnapshot", "beforeWithout", ""});
    view->addAction(tr("Hold \\ for the Source"))->setEnabled(false);
    view->addAction(tr("Hold M for the Effect's Mask"))->setEnabled(false);
    fill(view, {""});
    fill(view->addMenu(tr("F&ields of Interlaced Clips")), {"fieldsWoven", "fieldFirst", "fieldSecond"});
    fill(view, {"", "curve", "pictureOnly", "fullScreen", "", "gpu"});
    fill(view->addMenu(tr("&Colours")), {"theme0", "theme1", "theme2"});
    fill(menuBar()->addMenu(tr("&Playback")),
         {"play",        "shuttleBack",   "stop", "shuttle", "loop", "mute",  "",       "back",       "forward",
          "secondBack",  "secondForward", "",     "first",   "last", "setIn", "setOut", "clearRange", "",
          "previousKey", "nextKey"});
    fill(menuBar()->addMenu(tr("E&xport")),
         {"export", "queue", "", "saveFrame", "", "copyCommand", "copyFfmpeg", "copyMelt"});
    fill(menuBar()->addMenu(tr("&Help")), {"about"});
}

void MainWindow::refreshActions() {
    const Document& document = m_studio.document;
    const int chosen = document.selected();
    const int count = static_cast<int>(document.look().effects.size());
    for (const char* name : {"copy", "duplicate", "remove", "off", "resetAll", "savePreset"}) {
        action(name)->setEnabled(chosen >= 0);
    }
    action("up")->setEnabled(chosen > 0);
    action("down")->setEnabled(chosen >= 0 && chosen < count - 1);
    for (const char* name : {"save", "saveAs", "copyCommand", "copyFfmpeg", "copyMelt"}) {
        action(name)->setEnabled(count > 0);
    }
    const bool playing = m_studio.player.isPlaying();
    setIconNamed(*action("play"), playing ? "pause" : "play");
    const Preview& preview = m_studio.preview;
    for (const char* name : {"export", "saveFrame", "snapshot"}) {
        action(name)->setEnabled(preview.clip() != nullptr);
    }
    action("mute")->setEnabled(preview.clip() != nullptr && !preview.clip()->origin.path.empty());
    m_fields->setEnabled(preview.clip() != nullptr && preview.clip()->format.interlaced);
    m_fields->actions()[static_cast<int>(preview.fields())]->setChecked(true);
    action("beforeSnapshot")->setEnabled(preview.hasSnapshot());
    m_befores->actions()[static_cast<int>(preview.before())]->setChecked(true);
    setIconNamed(*action("compare"), preview.compare() == Preview::Compare::kSideBySide ? "sides" : "wipe");
}

}  // namespace lumiset::studio
