#include "apps/studio/views/queue_window.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>
#include <set>

#include "apps/studio/model/document.h"
#include "apps/studio/model/export_queue.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

QString duration(double seconds) {
    const auto whole = static_cast<qint64>(std::ceil(seconds));
    return whole < 60 ? QueueWindow::tr("%1 s").arg(whole)
                      : QueueWindow::tr("%1:%2 min").arg(whole / 60).arg(whole % 60, 2, 10, QLatin1Char('0'));
}

}  // namespace

QueueWindow::QueueWindow(ExportQueue& queue, QWidget* parent) : QDialog(parent), m_queue(queue) {
    setWindowTitle(tr("Export Queue"));
    auto* body = new QWidget;
    m_list = new QVBoxLayout(body);
    m_list->setContentsMargins(0, 0, 0, 0);
    m_list->setSpacing(kStep);
    m_list->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidget(body);
    m_total = new QLabel;
    m_total->setForegroundRole(QPalette::PlaceholderText);
    m_pause = new QPushButton;
    connect(m_pause, &QPushButton::clicked, this, [this] { m_queue.setPaused(!m_queue.isPaused()); });
    m_clear = new QPushButton(tr("Remove Finished"));
    for (QPushButton* button : {m_pause, m_clear}) {
        button->setAutoDefault(false);  // Enter is nobody's here
    }
    connect(m_clear, &QPushButton::clicked, this, [this] { m_queue.removeFinished(); });
    auto* foot = new QHBoxLayout;
    foot->addWidget(m_total, 1);
    foot->addWidget(m_clear);
    foot->addWidget(m_pause);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->addWidget(scroll, 1);
    layout->addLayout(foot);
    connect(&queue, &ExportQueue::changed, this, &QueueWindow::refresh);
    refresh();
}

QueueWindow::Row QueueWindow::makeRow(quint64 number, const QString& title, const QString& under) {
    Row row{};
    auto* frame = new QFrame;
    frame->setAutoFillBackground(true);
    frame->setBackgroundRole(QPalette::AlternateBase);
    auto* name = new QLabel(title);
    QFont bold = font();
    bold.setBold(true);
    name->setFont(bold);
    auto* details = new QLabel(under);
    details->setForegroundRole(QPalette::PlaceholderText);
    row.state = new QLabel;
    row.state->setWordWrap(true);
    row.bar = new QProgressBar;
    row.bar->setTextVisible(false);
    row.bar->setFixedHeight(6);
    row.bar->setAccessibleName(title);
    row.button = new QPushButton;
    connect(row.button, &QPushButton::clicked, this, [this, number] {
        for (const ExportQueue::Item& item : m_queue.items()) {
            if (item.number == number && item.state == ExportQueue::State::kDone) {
                QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(toQt(item.job.output)).absolutePath()));
                return;
            }
        }
        m_queue.cancel(number);
    });
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(name);
    texts->addWidget(details);
    texts->addWidget(row.bar);
    texts->addWidget(row.state);
    auto* layout = new QHBoxLayout(frame);
    layout->setContentsMargins(12, kGap, 12, kGap);
    layout->addLayout(texts, 1);
    layout->addWidget(row.button);
    row.widget = frame;
    m_list->insertWidget(m_list->count() - 1, frame);
    return row;
}

void QueueWindow::refresh() {
    std::set<quint64> there;
    for (const ExportQueue::Item& item : m_queue.items()) {
        there.insert(item.number);
        if (!m_rows.contains(item.number)) {
            const QString codec = item.job.codec.empty() ? QFileInfo(toQt(item.job.output)).suffix().toUpper()
                                                         : toQt(item.job.codec).toUpper();
            m_rows[item.number] =
                makeRow(item.number, QFileInfo(toQt(item.job.output)).fileName(),
                        tr("%1, %2, %3").arg(item.lookName, codec, item.job.gpu ? tr("OpenGL") : tr("processor")) +
                            (item.size.width > 0 ? tr(", %1 × %2").arg(item.size.width).arg(item.size.height) : ""));
        }
        const Row& row = m_rows[item.number];
        const bool open = item.isOpen();
        row.bar->setVisible(open);
        row.bar->setRange(0, item.state == ExportQueue::State::kRunning ? static_cast<int>(item.expected) : 1);
        row.bar->setValue(static_cast<int>(item.frames));
        row.button->setText(open ? tr("Cancel") : tr("Show Folder"));
        row.button->setVisible(open || item.state == ExportQueue::State::kDone);
        QString state;
        switch (item.state) {
            case ExportQueue::State::kWaiting:
                state = tr("Waiting");
                break;
            case ExportQueue::State::kRunning: {
                const auto left = item.secondsLeft();
                state = tr("%1 of %2 frames").arg(item.frames).arg(item.expected);
                state += left ? tr(", %1 left").arg(duration(*left)) : QString();
                break;
            }
            case ExportQueue::State::kDone:
                state = tr("Done. ") + item.notes.join(' ');
                break;
            case ExportQueue::State::kFailed:
                state = tr("Failed: %1").arg(item.error);
                break;
            case ExportQueue::State::kCancelled:
                state = tr("Cancelled; nothing was written");
                break;
        }
        row.state->setText(state.trimmed());
    }
    for (auto row = m_rows.begin(); row != m_rows.end();) {
        if (!there.contains(row->first)) {
            row->second.widget->deleteLater();
            row = m_rows.erase(row);
        } else {
            ++row;
        }
    }
    const auto left = m_queue.secondsLeft();
    m_total->setText(
        !m_queue.isBusy()    ? tr("Nothing is waiting")
        : m_queue.isPaused() ? tr("Paused")
        : left ? (m_queue.hasUnknown() ? tr("More than %1 left in all") : tr("%1 left in all")).arg(duration(*left))
               : tr("Exporting…"));
    m_pause->setText(m_queue.isPaused() ? tr("Resume") : tr("Pause"));
    m_clear->setEnabled(std::any_of(m_queue.items().begin(), m_queue.items().end(),
                                    [](const ExportQueue::Item& each) { return !each.isOpen(); }));
    m_pause->setEnabled(m_queue.isBusy() || m_queue.isPaused());
}

}  // namespace lumiset::studio
