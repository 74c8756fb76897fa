#include "apps/studio/views/main_window.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QMimeData>
#include <QSettings>
#include <QSplitter>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>

#include "apps/studio/model/numbered_pictures.h"
#include "apps/studio/model/stack_model.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/curve_view.h"
#include "apps/studio/views/message_bar.h"
#include "apps/studio/views/panel.h"
#include "apps/studio/views/queue_window.h"
#include "apps/studio/views/stack_view.h"
#include "apps/studio/views/strip.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/timeline.h"
#include "apps/studio/views/transport.h"
#include "apps/studio/views/viewer.h"
#include "render/gpu_refusal.h"

namespace lumiset::studio {
namespace {

constexpr int kLargeScreen = 1300;  // height from which on there is room for two rows of pictures

}  // namespace

MainWindow::MainWindow(Studio& studio) : m_studio(studio) {
    setWindowIcon(QIcon(":/icons/lumiset-studio.svg"));
    setAcceptDrops(true);
    addFileActions();
    addEditActions();
    addViewActions();
    addPlaybackActions();
    buildMenus();

    m_messages = new MessageBar;
    m_right = buildRight();
    m_across = new QSplitter(Qt::Horizontal);
    m_across->addWidget(buildLeft());
    m_across->addWidget(m_right);
    m_across->setStretchFactor(0, 1);
    m_across->setStretchFactor(1, 0);
    m_strip = new Strip(studio);
    m_down = new QSplitter(Qt::Vertical);
    m_down->addWidget(m_across);
    m_down->addWidget(m_strip);
    m_down->setStretchFactor(0, 1);
    m_down->setStretchFactor(1, 0);
    for (QSplitter* splitter : {m_across, m_down}) {
        splitter->setChildrenCollapsible(false);
        splitter->setHandleWidth(3);
    }
    auto* body = new QWidget;
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_messages);
    layout->addWidget(m_down, 1);
    setCentralWidget(body);
    setFocusProxy(m_viewer);

    const QSettings settings;
    if (!restoreGeometry(settings.value("window/geometry").toByteArray())) {
        resize(1280, 720);
    }
    resizeTo(size());
    m_across->restoreState(settings.value("window/across").toByteArray());
    m_down->restoreState(settings.value("window/down").toByteArray());
    m_curve->setVisible(settings.value("window/curve", !m_curve->isHidden()).toBool());
    action("curve")->setChecked(!m_curve->isHidden());

    connect(&studio, &Studio::failed, this,
            [this](const QString& text) { m_messages->tell(MessageBar::Kind::kError, text); });
    connect(&studio, &Studio::told, this, [this](const QString& text) {
        std::vector<MessageBar::Choice> choices;
        if (render::crashesAreReported()) {
            choices.push_back({tr("Try OpenGL Again"), [this] { m_studio.preview.retryGpu(); }});
        }
        m_messages->tell(MessageBar::Kind::kWarning, text, choices);
    });
    connect(&studio, &Studio::clipFailed, this, [this](const QString& text) {
        m_messages->tell(MessageBar::Kind::kError, text, {}, MessageBar::Topic::kClip);
    });
    connect(&studio, &Studio::clipMissing, this, &MainWindow::tellMissing);
    connect(&studio, &Studio::clipsOffered, this, &MainWindow::offerClips);
    connect(&studio.document, &Document::titleChanged, this, &MainWindow::refreshTitle);
    connect(&studio.preview, &Preview::clipOpened, this, [this] {
        if (!m_studio.isStandIn()) {
            m_messages->withdraw(MessageBar::Topic::kClip);
            if (const auto whole = sequenceAround(m_studio.clip())) {
                offerSequence(*whole);
            }
        }
        refreshTitle();
    });
    connect(&studio.exports, &ExportQueue::finished, this, [this](quint64 number) {
        for (const ExportQueue::Item& item : m_studio.exports.items()) {
            if (item.number == number && item.state == ExportQueue::State::kDone) {
                m_messages->tell(MessageBar::Kind::kNote, tr("Exported to %1").arg(toQt(item.job.output)),
                                 {{tr("Queue"), [this] { showQueue(); }}});
            } else if (item.number == number && item.state == ExportQueue::State::kFailed) {
                m_messages->tell(MessageBar::Kind::kError, tr("Export failed. %1").arg(item.error));
            }
        }
    });
    for (const auto signal : {&Document::structureChanged, &Document::selectionChanged, &Document::lookChanged}) {
        connect(&studio.document, signal, this, &MainWindow::refreshActions);
    }
    connect(&studio.player, &Player::changed, this, &MainWindow::refreshActions);
    connect(&studio.preview, &Preview::modeChanged, this, &MainWindow::refreshActions);
    connect(&studio.preview, &Preview::clipOpened, this, &MainWindow::refreshActions);
    connect(m_viewer, &Viewer::zoomChanged, this, &MainWindow::refreshActions);
    refreshActions();
    refreshTitle();
    m_viewer->setFocus();
}

MainWindow::~MainWindow() = default;

void MainWindow::resizeTo(QSize size) {
    resize(size);
    const bool large = size.height() >= kLargeScreen;
    m_across->setSizes({size.width() - (large ? 420 : 360), large ? 420 : 360});
    m_down->setSizes({size.height() - (large ? 252 : 144), large ? 252 : 144});
    m_curve->setVisible(large);
}

QWidget* MainWindow::buildLeft() {
    m_viewer = new Viewer(m_studio);
    m_timeline = new Timeline(m_studio);
    m_curve = new CurveView(m_studio, *m_timeline);
    m_curve->setFixedHeight(110);
    m_transport = new Transport(m_studio,
                                {action("first"), action("back"), action("play"), action("forward"), action("last"),
                                 nullptr, action("loop"), action("mute")},
                                {action("snapshot"), action("compare"), nullptr, action("fit"), action("curve")});
    auto* left = new QWidget;
    auto* layout = new QVBoxLayout(left);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_viewer, 1);
    layout->addWidget(m_transport);
    layout->addWidget(m_timeline);
    layout->addWidget(m_curve);
    return left;
}

QWidget* MainWindow::buildRight() {
    auto* title = new QLabel(tr("Effects"));
    QFont bold = title->font();
    bold.setBold(true);
    title->setFont(bold);
    auto* add = new QToolButton;
    add->setIcon(themeIcon("add"));
    add->setAutoRaise(true);
    add->setPopupMode(QToolButton::InstantPopup);
    add->setToolTip(tr("Add an effect"));
    add->setAccessibleName(tr("Add an effect"));
    auto* effects = new QMenu(add);
    fillAddMenu(*effects);
    add->setMenu(effects);
    auto* head = new QHBoxLayout;
    head->setContentsMargins(12, kStep, kStep, kStep);
    head->setSpacing(2);
    head->addWidget(title);
    head->addStretch(1);
    for (const char* name : {"duplicate", "remove"}) {
        auto* button = new QToolButton;
        button->setDefaultAction(action(name));
        button->setAutoRaise(true);
        button->setAccessibleName(action(name)->text().remove('&'));
        head->addWidget(button);
    }
    head->addWidget(add);
    auto* model = new StackModel(m_studio.document, this);
    m_stack = new StackView(m_studio, *model);
    m_stack->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(m_stack, &QWidget::customContextMenuRequested, this, [this](const QPoint& place) {
        auto* menu = new QMenu(this);
        menu->setAttribute(Qt::WA_DeleteOnClose);
        menu->addActions({action("off"), action("up"), action("down"), action("duplicate"), action("copy"),
                          action("paste"), action("remove"), action("savePreset"), action("copyCommand")});
        menu->popup(m_stack->viewport()->mapToGlobal(place));
    });
    m_panel = new Panel(m_studio);
    connect(m_panel, &Panel::pickWanted, this, &MainWindow::pick);
    connect(m_panel, &Panel::curveWanted, this, [this](const ParameterDescription& parameter) {
        m_curve->showParameter(&parameter);
        action("curve")->setChecked(true);
    });
    auto* line = new QFrame;
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Plain);
    line->setForegroundRole(QPalette::Mid);
    auto* right = new QWidget;
    right->setMinimumWidth(300);
    auto* layout = new QVBoxLayout(right);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(head);
    layout->addWidget(m_stack);
    layout->addSpacing(kStep);
    layout->addWidget(line);
    layout->addWidget(m_panel, 1);
    return right;
}

QAction* MainWindow::action(const QString& name) const {
    return findChild<QAction*>(name);
}

void MainWindow::refreshTitle() {
    const QString clip = m_studio.clip().section('/', -1);
    setWindowModified(m_studio.document.isModified());
    setWindowTitle(m_studio.document.title() + "[*]" + (clip.isEmpty() ? QString() : " – " + clip) +
                   " – Lumiset Studio");
}

void MainWindow::closeEvent(QCloseEvent* event) {
    const bool unsaved = m_studio.document.isModified() && !m_studio.document.look().effects.empty();
    if (m_closing || !(unsaved || m_studio.exports.isBusy())) {
        QSettings settings;
        if (!isFullScreen()) {
            settings.setValue("window/geometry", saveGeometry());
        }
        settings.setValue("window/across", m_across->saveState());
        settings.setValue("window/down", m_down->saveState());
        settings.setValue("window/curve", !m_curve->isHidden());
        event->accept();
        return;
    }
    event->ignore();  // and close when everything has been answered
    const auto reallyClose = [this] {
        m_closing = true;
        close();
    };
    if (m_studio.exports.isBusy()) {
        m_messages->tell(MessageBar::Kind::kWarning, tr("Clips are still being exported."),
                         {{tr("Cancel Exports and Close"),
                           [this, reallyClose] {
                               whenSaved([this, reallyClose] {
                                   m_studio.exports.cancelAll();
                                   reallyClose();
                               });
                           }},
                          {tr("Show Queue"), [this] { showQueue(); }}});
        return;
    }
    whenSaved(reallyClose);
}

// Keys that count while they are held, which actions cannot do.
void MainWindow::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Backslash) {
        m_studio.preview.setSourceHeld(true);
    } else if (event->key() == Qt::Key_M && event->modifiers() == Qt::NoModifier) {
        m_studio.preview.setMaskHeld(true);
    } else {
        QMainWindow::keyPressEvent(event);
    }
}

void MainWindow::keyReleaseEvent(QKeyEvent* event) {
    if (!event->isAutoRepeat()) {
        if (event->key() == Qt::Key_Backslash) {
            m_studio.preview.setSourceHeld(false);
        } else if (event->key() == Qt::Key_M) {
            m_studio.preview.setMaskHeld(false);
        }
    }
    QMainWindow::keyReleaseEvent(event);
}

// A key that is let go in another window is never heard of here.
void MainWindow::changeEvent(QEvent* event) {
    if (event->type() == QEvent::ActivationChange && !isActiveWindow()) {
        m_studio.preview.setSourceHeld(false);
        m_studio.preview.setMaskHeld(false);
    }
    QMainWindow::changeEvent(event);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls()) {
        event->acceptProposedAction();
    }
}

void MainWindow::dropEvent(QDropEvent* event) {
    QStringList files;
    for (const QUrl& url : event->mimeData()->urls()) {
        if (url.isLocalFile()) {
            files << url.toLocalFile();
        }
    }
    if (!files.isEmpty()) {
        event->acceptProposedAction();
        drop(files);
    }
}

}  // namespace lumiset::studio
