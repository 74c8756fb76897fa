// What the window asks and tells. Nothing here waits in a loop of its own: every question goes on by itself when it is
// answered, and the window lives meanwhile.

#include <QAbstractButton>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QMimeData>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QTimer>
#include <algorithm>
#include <cmath>
#include <exception>

#include "apps/studio/core/command_text.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/export_dialog.h"
#include "apps/studio/views/main_window.h"
#include "apps/studio/views/message_bar.h"
#include "apps/studio/views/queue_window.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/viewer.h"
#include "hostkit/look_files.h"
#include "hostkit/look_json.h"
#include "hostkit/preset_file.h"
#include "media/scene_source.h"

namespace lumiset::studio {
namespace {

/// An effect on the clipboard is a look of that effect alone.
constexpr const char* kLookType = "application/x-lumilook+json";

/// A dialog that is gone when it is closed, and remembers its folder.
QFileDialog* fileDialog(QWidget* parent, const QString& title, const QString& folderKey, const QString& filter) {
    const QString folder =
        QSettings().value(folderKey, QStandardPaths::writableLocation(QStandardPaths::HomeLocation)).toString();
    auto* dialog = new QFileDialog(parent, title, folder, filter);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QFileDialog::fileSelected, dialog, [folderKey](const QString& file) {
        QSettings().setValue(folderKey, QFileInfo(file).absolutePath());
    });
    return dialog;
}

}  // namespace

void MainWindow::openDialog() {
    QFileDialog* dialog = fileDialog(this, tr("Open"), "folders/open",
                                     tr("Clips, pictures, looks and presets (*.*)") + ";;" + tr("Looks (*.lumilook)") +
                                         ";;" + tr("Preset files (*.lumv*)"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    connect(dialog, &QFileDialog::filesSelected, this, &MainWindow::open);
    dialog->open();
}

void MainWindow::open(const QStringList& files) {
    if (std::any_of(files.begin(), files.end(), Studio::isLook)) {
        whenSaved([this, files] { m_studio.openFiles(files); });
    } else {
        m_studio.openFiles(files);
    }
}

void MainWindow::drop(const QStringList& files) {
    QStringList others;
    for (const QString& file : files) {
        if (const QFileInfo info(file); info.isDir()) {
            for (const QFileInfo& each : QDir(file).entryInfoList(QDir::Files, QDir::Name)) {
                others << each.filePath();
            }
        } else if (Studio::isLook(file) && !m_studio.document.look().effects.empty()) {
            m_studio.applyLookFile(file);
        } else {
            others << file;
        }
    }
    if (!others.isEmpty()) {
        m_studio.openFiles(others);
    }
}

void MainWindow::save(const std::function<void()>& then) {
    if (m_studio.document.file().isEmpty()) {
        saveAs(then);
    } else if (m_studio.save(m_studio.document.file()) && then) {
        then();
    }
}

void MainWindow::saveAs(const std::function<void()>& then) {
    QFileDialog* dialog = fileDialog(this, tr("Save Look"), "folders/looks", tr("Looks (*.lumilook)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("lumilook");
    if (!QSettings().contains("folders/looks")) {
        const QString own = QString::fromStdString(hostkit::ownLooksFolder().string());
        QDir().mkpath(own);
        dialog->setDirectory(own);
    }
    dialog->selectFile(m_studio.document.title() + ".lumilook");
    connect(dialog, &QFileDialog::fileSelected, this, [this, then](const QString& file) {
        if (m_studio.save(file) && then) {
            then();
        }
    });
    dialog->open();
}

void MainWindow::savePreset() {
    const EffectDescription* effect = m_studio.document.selectedDescription();
    if (effect == nullptr) {
        return;
    }
    const QString extension = toQt(hostkit::presetExtension(*effect));
    QFileDialog* dialog = fileDialog(this, tr("Save Preset File"), "folders/presets",
                                     tr("Presets of %1 (*%2)").arg(toQt(effect->name), extension));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(extension.mid(1));
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        if (m_studio.savePreset(file)) {
            m_messages->tell(MessageBar::Kind::kNote, tr("Saved %1").arg(file));
        }
    });
    dialog->open();
}

void MainWindow::saveFrame() {
    QFileDialog* dialog =
        fileDialog(this, tr("Save This Frame"), "folders/frames", tr("Pictures (*.png *.jpg *.tif *.webp)"));
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix("png");
    dialog->selectFile(QFileInfo(m_studio.proposedOutput("png")).fileName());
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& file) {
        render::FileJob job = m_studio.jobFor(file);
        const ClipInfo& clip = *m_studio.preview.clip();
        job.startSeconds = secondsOf(m_studio.preview.frame(), clip.format);
        job.durationSeconds = 0.5 / m_studio.preview.framesPerSecond();
        if (clip.frameCount == 1) {
            job.startSeconds = 0.0;
        }
        job.alpha = clip.format.color.hasAlpha();
        m_studio.exports.add(job, m_studio.document.snapshot(), m_studio.document.title());
    });
    dialog->open();
}

void MainWindow::exportClip() {
    if (m_studio.preview.clip() != nullptr) {
        auto* dialog = new ExportDialog(m_studio, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        connect(dialog, &QDialog::accepted, this, &MainWindow::showQueue);
        dialog->open();
    }
}

void MainWindow::showQueue() {
    if (m_queue == nullptr) {
        m_queue = new QueueWindow(m_studio.exports, this);
    }
    m_queue->show();
    m_queue->raise();
}

void MainWindow::copyCommand() {
    try {
        const QString line = toQt(lumisetCommand(m_studio.catalogue(), m_studio.document.look(),
                                                 m_studio.jobFor(m_studio.proposedOutput("mp4"))));
        QApplication::clipboard()->setText(line);
        m_messages->tell(MessageBar::Kind::kNote, tr("The line is on the clipboard: %1").arg(line));
    } catch (const std::exception& error) {
        m_messages->tell(MessageBar::Kind::kError, toQt(error.what()));
    }
}

// Looking at the clip takes longer than a click may.
void MainWindow::copyPluginsCommand(PluginHost host) {
    const auto finished = [self = QPointer<MainWindow>(this)](const QString& line, const QString& error) {
        QMetaObject::invokeMethod(
            qApp,
            [self, line, error] {
                if (self == nullptr) {
                    return;
                }
                if (!error.isEmpty()) {
                    self->m_messages->tell(MessageBar::Kind::kError, error);
                    return;
                }
                QApplication::clipboard()->setText(line);
                self->m_messages->tell(MessageBar::Kind::kNote,
                                       tr("The line is on the clipboard. It renders the whole clip: %1").arg(line));
            },
            Qt::QueuedConnection);
    };
    m_studio.preview.engine().run([&library = m_studio.effectLibrary(), &catalogue = m_studio.catalogue(),
                                   look = m_studio.document.snapshot(),
                                   job = m_studio.jobFor(m_studio.proposedOutput("mp4")), host, finished] {
        try {
            finished(toQt(pluginsCommand(library, catalogue, *look, job, host)), {});
        } catch (const std::exception& error) {
            finished({}, toQt(error.what()));
        }
    });
}

void MainWindow::copyEffect() {
    if (const LookEffect* effect = m_studio.document.selectedEffect()) {
        Look look{effect->effect};
        look.effects.push_back(*effect);
        const QByteArray text = QByteArray::fromStdString(hostkit::lookToJson(m_studio.catalogue(), look));
        auto* clip = new QMimeData;
        clip->setData(kLookType, text);
        clip->setText(QString::fromUtf8(text));
        QApplication::clipboard()->setMimeData(clip);
    }
}

// Also of text, so that effects can be sent in a message.
void MainWindow::pasteEffect() {
    const QMimeData* clip = QApplication::clipboard()->mimeData();
    const QByteArray text = clip->hasFormat(kLookType) ? clip->data(kLookType) : clip->text().toUtf8();
    try {
        const Look look = hostkit::lookFromJson(m_studio.catalogue(), text.toStdString(), "pasted");
        for (const LookEffect& effect : look.effects) {
            m_studio.document.insertEffect(effect, tr("Paste %1").arg(toQt(effect.effect)));
        }
    } catch (const hostkit::LookError&) {
        m_messages->tell(MessageBar::Kind::kNote, tr("There is no effect on the clipboard."));
    }
}

void MainWindow::offerClips(const QStringList& clips) {
    m_messages->tell(MessageBar::Kind::kNote,
                     tr("These are %1 clips. The first one is open; the look can go on all of them.").arg(clips.size()),
                     {{tr("Export All with This Look"), [this, clips] {
                           for (const QString& clip : clips) {
                               render::FileJob job;
                               job.input = clip.toStdString();
                               job.output = m_studio.outputFor(clip, "mp4").toStdString();
                               job.gpu = m_studio.preview.usesGpu();
                               m_studio.exports.add(job, m_studio.document.snapshot(), m_studio.document.title());
                           }
                           showQueue();
                       }}});
}

void MainWindow::tellMissing(const QString& clip) {
    m_messages->tell(MessageBar::Kind::kWarning, tr("The clip of this look is not there any more: %1").arg(clip),
                     {{tr("Find…"),
                       [this, clip] {
                           QFileDialog* dialog = fileDialog(this, tr("Find %1").arg(QFileInfo(clip).fileName()),
                                                            "folders/open", tr("All files (*)"));
                           connect(dialog, &QFileDialog::fileSelected, &m_studio, &Studio::openFile);
                           connect(dialog, &QFileDialog::rejected, this, [this, clip] { tellMissing(clip); });
                           dialog->open();
                       }}},
                     MessageBar::Topic::kClip);
}

void MainWindow::offerSequence(const QString& name) {
    m_messages->tell(MessageBar::Kind::kNote, tr("This picture is one of a numbered series."),
                     {{tr("Open All as a Clip"), [this, name] { m_studio.openFile(name); }}}, MessageBar::Topic::kClip);
}

void MainWindow::offerLeftover() {
    const auto found = m_studio.recovery.findLeftover();
    if (!found) {
        return;
    }
    m_messages->tell(MessageBar::Kind::kWarning,
                     tr("The program ended before \"%1\" was saved.").arg(toQt(found->look.name)),
                     {{tr("Restore"), [this, kept = *found] { m_studio.restoreLeftover(kept); }},
                      {tr("Discard"), [this, kept = *found] { m_studio.recovery.discard(kept); }}});
}

void MainWindow::pick(const ParameterDescription& parameter) {
    m_viewer->startPicking([this, &parameter](std::uint32_t color) {
        ParamValue value{};
        value.color = color;
        m_studio.document.setValue(parameter, value);
    });
}

void MainWindow::goToKey(int direction) {
    const LookEffect* effect = m_studio.document.selectedEffect();
    if (effect == nullptr) {
        return;
    }
    const double rate = m_studio.preview.framesPerSecond();
    std::optional<qint64> next;
    for (const double seconds : keyTimes(*effect, std::nullopt, m_studio.document.clipSeconds())) {
        const qint64 frame = std::llround(seconds * rate);
        if (direction < 0 ? frame < m_studio.preview.frame() : frame > m_studio.preview.frame()) {
            if (direction < 0 || !next) {
                next = frame;
            }
        }
    }
    if (next) {
        m_studio.player.step(*next - m_studio.preview.frame());
    }
}

void MainWindow::whenSaved(const std::function<void()>& goOn) {
    if (!m_studio.document.isModified() || m_studio.document.look().effects.empty()) {
        goOn();
        return;
    }
    auto* question = new QMessageBox(QMessageBox::Question, "Lumiset Studio",
                                     tr("Save the changes of \"%1\"?").arg(m_studio.document.title()),
                                     QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setObjectName("saveQuestion");
    connect(question, &QMessageBox::buttonClicked, this, [this, question, goOn](QAbstractButton* button) {
        switch (question->standardButton(button)) {
            case QMessageBox::Discard:
                goOn();
                break;
            case QMessageBox::Save:
                save(goOn);
                break;
            default:
                break;
        }
    });
    question->open();
}

void MainWindow::about() {
    auto* box = new QMessageBox(
        QMessageBox::NoIcon, tr("About Lumiset Studio"),
        tr("<b>Lumiset Studio %1</b><br>Video effects to see, drag and keep.").arg(QApplication::applicationVersion()),
        QMessageBox::Ok, this);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setInformativeText(
        tr("Pictures are shown in their own coded values; what you see at full size is what is exported, byte for "
           "byte. Noise differs between the processor and OpenGL, so export with the one that you looked at."));
    box->setIconPixmap(QIcon(":/icons/lumiset-studio.svg").pixmap(64, 64));
    box->open();
}

}  // namespace lumiset::studio
