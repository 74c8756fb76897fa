#include "apps/studio/views/transport.h"

#include <QAction>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <cmath>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/timeline.h"
#include "hostkit/parameter_text.h"

namespace lumiset::studio {

Transport::Transport(Studio& studio, const QList<QAction*>& left, const QList<QAction*>& right, QWidget* parent)
    : QWidget(parent), m_studio(studio) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kGap, kStep, kGap, 0);
    layout->setSpacing(2);
    addButtons(left);
    layout->addSpacing(kGap);
    m_time = new QLabel;
    QFont fixed = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    fixed.setPointSizeF(font().pointSizeF() * 1.1);
    m_time->setFont(fixed);
    m_time->setAccessibleName(tr("Time code"));
    m_time->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(m_time);
    layout->addStretch(1);
    m_rate = new QLabel;
    m_rate->setForegroundRole(QPalette::PlaceholderText);
    m_rate->setAccessibleName(tr("What the viewer reaches"));
    layout->addWidget(m_rate);
    layout->addSpacing(kGap);
    addButtons(right);
    connect(&studio.preview, &Preview::frameChanged, this, &Transport::refresh);
    connect(&studio.preview, &Preview::shotChanged, this, &Transport::refresh);
    connect(&studio.preview, &Preview::clipOpened, this, &Transport::refresh);
    connect(&studio.player, &Player::changed, this, &Transport::refresh);
    refresh();
}

void Transport::addButtons(const QList<QAction*>& actions) {
    for (QAction* action : actions) {
        if (action == nullptr) {
            static_cast<QHBoxLayout*>(layout())->addSpacing(kGap);
            continue;
        }
        auto* button = new QToolButton;
        button->setDefaultAction(action);
        button->setAutoRaise(true);
        button->setIconSize({18, 18});
        button->setFixedSize(28, 28);
        button->setAccessibleName(action->text().remove('&'));
        layout()->addWidget(button);
    }
}

void Transport::refresh() {
    const Preview& preview = m_studio.preview;
    const double rate = preview.framesPerSecond();
    const ClipInfo* clip = preview.clip();
    const qint64 last = clip != nullptr ? clip->frameCount - 1 : 0;
    const QString total = timeCode(last, rate);
    m_time->setText(timeCode(preview.frame(), rate) + " / " + total);
    const QString renderer = preview.usesGpu() ? tr(", OpenGL") : QString();
    const auto number = [](double value) { return toQt(hostkit::formatNumber(value, 2)); };
    if (m_studio.player.isPlaying()) {
        const double wanted = rate * std::abs(m_studio.player.speed());
        m_rate->setText(tr("%1 of %2 fps").arg(number(std::round(preview.shownRate()))).arg(number(wanted)) + renderer);
    } else if (clip != nullptr) {
        const double milliseconds = preview.shot().effectSeconds * 1000.0;
        const QString size = tr("%1 × %2, %3 fps").arg(clip->format.width).arg(clip->format.height).arg(number(rate));
        m_rate->setText((milliseconds > 0.0 ? size + tr(", %1 ms").arg(std::lround(milliseconds)) : size) + renderer);
    }
}

}  // namespace lumiset::studio
