#pragma once

#include <QMainWindow>
#include <functional>

class QActionGroup;
class QMenu;
class QSplitter;

namespace lumiset {
namespace hostkit {
struct ParameterDescription;
}
namespace studio {

enum class PluginHost;
class CurveView;
class MessageBar;
class Panel;
class QueueWindow;
class StackView;
class Strip;
class Studio;
class Timeline;
class Viewer;

/// The window: the picture, what is done to it, and what else could be.
class MainWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit MainWindow(Studio& studio);
    ~MainWindow() override;

    [[nodiscard]] Viewer& viewer() { return *m_viewer; }
    [[nodiscard]] MessageBar& messages() { return *m_messages; }
    [[nodiscard]] StackView& stack() { return *m_stack; }
    [[nodiscard]] Strip& strip() { return *m_strip; }
    [[nodiscard]] CurveView& curve() { return *m_curve; }
    /// An action by the name of what it does, for tests and screenshots: "play", "undo".
    [[nodiscard]] QAction* action(const QString& name) const;
    void offerLeftover();
    /// Files of any kind, as `Studio::openFiles`, once unsaved work has been seen to where a look takes its place.
    void open(const QStringList& files);
    /// The same of what has been dropped: a look changes the document by a step that can be undone.
    void drop(const QStringList& files);
    /// The window with everything in it as large as it is the first time.
    void resizeTo(QSize size);

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QWidget* buildLeft();
    QWidget* buildRight();
    // The actions, by their menus; in main_actions.cpp.
    QAction* add(const QString& name, const QString& text, const QString& icon, const QList<QKeySequence>& keys,
                 const std::function<void()>& act);
    void addFileActions();
    void addEditActions();
    void addViewActions();
    void addPlaybackActions();
    void buildMenus();
    void fillAddMenu(QMenu& menu);
    void fillRecent(QMenu& menu, const QStringList& files);
    void refreshActions();
    // What the actions do; in main_dialogs.cpp.
    void openDialog();
    /// `then` follows when the look is saved.
    void save(const std::function<void()>& then = {});
    void saveAs(const std::function<void()>& then = {});
    void savePreset();
    void saveFrame();
    void exportClip();
    void showQueue();
    void copyCommand();
    void copyPluginsCommand(PluginHost host);
    void copyEffect();
    void pasteEffect();
    void offerClips(const QStringList& clips);
    void offerSequence(const QString& name);
    void tellMissing(const QString& clip);
    void pick(const hostkit::ParameterDescription& parameter);
    void goToKey(int direction);
    void about();
    /// Asks what to do with unsaved work, then goes on.
    void whenSaved(const std::function<void()>& goOn);
    void refreshTitle();

    Studio& m_studio;
    MessageBar* m_messages;
    Viewer* m_viewer;
    Timeline* m_timeline;
    CurveView* m_curve;
    StackView* m_stack;
    Panel* m_panel;
    Strip* m_strip;
    QSplitter* m_across;
    QSplitter* m_down;
    QWidget* m_right = nullptr;
    QWidget* m_transport = nullptr;
    QueueWindow* m_queue = nullptr;
    QActionGroup* m_themes = nullptr;
    QActionGroup* m_befores = nullptr;
    QActionGroup* m_fields = nullptr;
    bool m_closing = false;
};

}  // namespace studio
}  // namespace lumiset
