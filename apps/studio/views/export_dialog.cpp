#include "apps/studio/views/export_dialog.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <algorithm>
#include <array>
#include <limits>

#include "apps/studio/core/command_text.h"
#include "apps/studio/core/export_sizes.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/timeline.h"

namespace lumiset::studio {
namespace {

/// What people export to, the usual first.
struct Kind {
    const char* name;
    const char* extension;
    const char* codec;  ///< empty: the extension's usual one
    bool alpha;         ///< can hold transparency
    int bits;           ///< most that it holds
    bool quality;       ///< has a choice of it
    bool pictures;      ///< numbered files
};
constexpr auto kKinds = std::to_array<Kind>({
    {QT_TRANSLATE_NOOP("Export", "MP4, H.264"), "mp4", "", false, 10, true, false},
    {QT_TRANSLATE_NOOP("Export", "QuickTime, ProRes"), "mov", "prores", true, 10, false, false},
    {QT_TRANSLATE_NOOP("Export", "Matroska, FFV1 (lossless)"), "mkv", "ffv1", true, 16, false, false},
    {QT_TRANSLATE_NOOP("Export", "Matroska, H.264"), "mkv", "h264", false, 10, true, false},
    {QT_TRANSLATE_NOOP("Export", "WebM, VP9"), "webm", "", true, 10, true, false},
    {QT_TRANSLATE_NOOP("Export", "PNG"), "png", "", true, 16, false, true},
    {QT_TRANSLATE_NOOP("Export", "JPEG"), "jpg", "", false, 8, false, true},
    {QT_TRANSLATE_NOOP("Export", "TIFF"), "tif", "", true, 16, false, true},
});

struct Quality {
    const char* name;
    int factor;
};
constexpr auto kQualities = std::to_array<Quality>({
    {QT_TRANSLATE_NOOP("Export", "High"), -1},
    {QT_TRANSLATE_NOOP("Export", "Nearly lossless"), 10},
    {QT_TRANSLATE_NOOP("Export", "Small file"), 28},
});

}  // namespace

ExportDialog::ExportDialog(Studio& studio, QWidget* parent) : QDialog(parent), m_studio(studio) {
    setWindowTitle(tr("Export"));
    setMinimumWidth(520);
    const ClipInfo& clip = *studio.preview.clip();
    m_kind = new QComboBox;
    for (const Kind& kind : kKinds) {
        const QString name = QCoreApplication::translate("Export", kind.name);
        m_kind->addItem(kind.pictures && clip.frameCount > 1 ? tr("%1 pictures").arg(name) : name);
    }
    m_file = new QLineEdit;
    auto* browseButton = new QPushButton(tr("Choose…"));
    browseButton->setAutoDefault(false);
    connect(browseButton, &QPushButton::clicked, this, &ExportDialog::browse);
    auto* fileRow = new QHBoxLayout;
    fileRow->addWidget(m_file, 1);
    fileRow->addWidget(browseButton);
    m_range = new QComboBox;
    const double rate = studio.preview.framesPerSecond();
    const FrameRange range = studio.preview.range();
    m_range->addItem(tr("The whole clip, %1").arg(timeCode(clip.frameCount, rate)));
    if (range.first > 0 || range.last < clip.frameCount - 1) {
        m_range->addItem(tr("From In to Out, %1 to %2").arg(timeCode(range.first, rate), timeCode(range.last, rate)));
        m_range->setCurrentIndex(1);
    }
    m_size = new QComboBox;
    for (const Size& size : exportSizes(clip.format)) {
        const QString text = tr("%1 × %2").arg(size.width).arg(size.height);
        m_size->addItem(m_size->count() == 0 ? tr("%1, as the clip").arg(text) : text, QSize(size.width, size.height));
    }
    m_size->setToolTip(tr("Effects work at the clip's size; what they make is scaled."));
    m_depth = new QComboBox;
    m_quality = new QComboBox;
    for (const Quality& quality : kQualities) {
        m_quality->addItem(QCoreApplication::translate("Export", quality.name));
    }
    m_alpha = new QCheckBox(tr("Keep transparency"));
    m_renderer = new QComboBox;
    m_renderer->addItems({tr("Processor"), tr("OpenGL")});
    m_renderer->setCurrentIndex(studio.preview.usesGpu() ? 1 : 0);
    m_renderer->setToolTip(tr("The two draw other noise; choose the one that you looked at."));
    m_note = new QLabel;
    m_note->setWordWrap(true);
    m_note->setMinimumHeight(2 * fontMetrics().height());
    m_note->setForegroundRole(QPalette::PlaceholderText);

    auto* form = new QFormLayout(this);
    form->setContentsMargins(16, 16, 16, 16);
    form->setVerticalSpacing(kGap + kStep);
    form->setLabelAlignment(Qt::AlignRight);
    form->addRow(tr("&Format:"), m_kind);
    auto* to = new QLabel(tr("&To:"));
    to->setBuddy(m_file);  // a row of a layout finds none by itself
    form->addRow(to, fileRow);
    form->addRow(tr("&Range:"), m_range);
    form->addRow(tr("&Size:"), m_size);
    form->addRow(tr("&Bits a sample:"), m_depth);
    form->addRow(tr("&Quality:"), m_quality);
    form->addRow(QString(), m_alpha);
    form->addRow(tr("R&enderer:"), m_renderer);
    form->addRow(m_note);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel);
    QPushButton* copy = buttons->addButton(tr("Copy as Command Line"), QDialogButtonBox::ActionRole);
    copy->setAutoDefault(false);
    connect(copy, &QPushButton::clicked, this, &ExportDialog::copyCommand);
    m_add = buttons->addButton(tr("Add to Queue"), QDialogButtonBox::AcceptRole);
    form->addRow(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &ExportDialog::add);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_kind, &QComboBox::currentIndexChanged, this, &ExportDialog::chooseKind);
    connect(m_file, &QLineEdit::textChanged, this, &ExportDialog::check);
    if (clip.format.still || clip.frameCount == 1) {
        m_kind->setCurrentIndex(5);
    } else if (clip.format.color.hasAlpha()) {
        m_kind->setCurrentIndex(1);
    }
    chooseKind();
}

void ExportDialog::chooseKind() {
    const Kind& kind = kKinds[static_cast<std::size_t>(m_kind->currentIndex())];
    const ClipInfo& clip = *m_studio.preview.clip();
    QString file = m_studio.proposedOutput(kind.extension);
    if (kind.pictures && clip.frameCount > 1) {
        file.insert(file.lastIndexOf('.'), "_%04d");
    }
    m_file->setText(file);
    m_depth->clear();
    m_depth->addItem(tr("As the clip, %1").arg(std::min(clip.format.bitDepth, kind.bits)), 0);
    for (const int bits : {8, 10, 16}) {
        if (bits <= kind.bits) {
            m_depth->addItem(QString::number(bits), bits);
        }
    }
    m_quality->setEnabled(kind.quality);
    m_alpha->setEnabled(kind.alpha);
    m_alpha->setChecked(kind.alpha && clip.format.color.hasAlpha());
    check();
}

void ExportDialog::browse() {
    auto* dialog = new QFileDialog(this, tr("Export to"), m_file->text());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setOption(QFileDialog::DontConfirmOverwrite);  // the note below tells of it
    dialog->selectFile(m_file->text());
    connect(dialog, &QFileDialog::fileSelected, m_file, &QLineEdit::setText);
    dialog->open();
}

void ExportDialog::check() {
    const QFileInfo file(m_file->text());
    QString note;
    bool possible = !m_file->text().isEmpty();
    if (file.absoluteFilePath() == QFileInfo(m_studio.clip()).absoluteFilePath()) {
        note = tr("That is the clip itself.");
        possible = false;
    } else if (!file.absoluteDir().exists()) {
        note = tr("There is no folder \"%1\".").arg(file.absolutePath());
        possible = false;
    } else if (file.exists()) {
        note = tr("\"%1\" is there already and will be replaced.").arg(file.fileName());
    } else if (showsMask(m_studio.catalogue(), m_studio.document.look())) {
        note = tr("An effect is set to show its mask, and the mask is what will be exported.");
    }
    m_note->setText(note);
    m_add->setEnabled(possible);
}

render::FileJob ExportDialog::job() const {
    const Kind& kind = kKinds[static_cast<std::size_t>(m_kind->currentIndex())];
    render::FileJob job = m_studio.jobFor(m_file->text());
    if (m_range->currentIndex() == 0) {
        job.startSeconds = 0.0;
        job.durationSeconds = std::numeric_limits<double>::infinity();
    }
    if (m_size->currentIndex() > 0) {
        job.width = m_size->currentData().toSize().width();
        job.height = m_size->currentData().toSize().height();
    }
    job.codec = kind.codec;
    job.bits = m_depth->currentData().toInt();
    job.quality = kind.quality ? kQualities[static_cast<std::size_t>(m_quality->currentIndex())].factor : -1;
    job.alpha = m_alpha->isChecked() && kind.alpha;
    job.gpu = m_renderer->currentIndex() == 1;
    return job;
}

void ExportDialog::copyCommand() {
    try {
        QApplication::clipboard()->setText(toQt(lumisetCommand(m_studio.catalogue(), m_studio.document.look(), job())));
        m_note->setText(tr("The line is on the clipboard."));
    } catch (const hostkit::LookError& error) {
        m_note->setText(toQt(error.what()));
    }
}

void ExportDialog::add() {
    QSettings().setValue("folders/export", QFileInfo(m_file->text()).absolutePath());
    const FrameRange range = m_studio.preview.range();
    const ClipInfo& clip = *m_studio.preview.clip();
    const bool whole = m_range->currentIndex() == 0;
    const QSize size = m_size->currentData().toSize();
    m_studio.exports.add(job(), m_studio.document.snapshot(), m_studio.document.title(),
                         {whole ? clip.frameCount : range.last - range.first + 1, {size.width(), size.height()}});
    accept();
}

}  // namespace lumiset::studio
