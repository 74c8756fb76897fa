#include "apps/studio/views/timeline.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

constexpr double kMargin = 10.0;
constexpr int kRefreshMs = 250;

}  // namespace

QString timeCode(qint64 frame, double framesPerSecond) {
    const auto whole = std::max<qint64>(1, std::llround(framesPerSecond));
    const qint64 seconds = frame / whole;
    const auto two = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    return two(seconds / 3600) + ':' + two(seconds / 60 % 60) + ':' + two(seconds % 60) + ':' + two(frame % whole);
}

Timeline::Timeline(Studio& studio, QWidget* parent) : QWidget(parent), m_studio(studio) {
    setFixedHeight(30);
    setAccessibleName(tr("Position in the clip"));
    m_refresh.setSingleShot(true);
    m_refresh.setInterval(kRefreshMs);
    connect(&m_refresh, &QTimer::timeout, this, [this] {
        auto cached = m_studio.preview.cachedFrames();
        if (cached != m_cached) {
            m_cached = std::move(cached);
            update();
            m_refresh.start();  // more is under way
        }
    });
    const auto later = [this] {
        if (!m_refresh.isActive()) {
            m_refresh.start();
        }
    };
    connect(&studio.preview, &Preview::shotChanged, this, later);
    connect(&studio.preview, &Preview::modeChanged, this, later);
    connect(&studio.document, &Document::lookChanged, this, [this, later] {
        update();
        later();
    });
    connect(&studio.document, &Document::selectionChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.preview, &Preview::frameChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.preview, &Preview::rangeChanged, this, qOverload<>(&QWidget::update));
}

double Timeline::xOf(double frame) const {
    const ClipInfo* clip = m_studio.preview.clip();
    const double last = clip != nullptr ? static_cast<double>(std::max<std::int64_t>(1, clip->frameCount - 1)) : 1.0;
    return kMargin + frame / last * (width() - 2 * kMargin);
}

qint64 Timeline::frameAt(double x) const {
    const ClipInfo* clip = m_studio.preview.clip();
    const auto last = static_cast<double>(clip != nullptr ? clip->frameCount - 1 : 0);
    return std::llround(std::clamp((x - kMargin) / (width() - 2 * kMargin), 0.0, 1.0) * last);
}

std::vector<double> Timeline::keys() const {
    const Document& document = m_studio.document;
    return document.selectedEffect() != nullptr
               ? keyTimes(*document.selectedEffect(), std::nullopt, document.clipSeconds())
               : std::vector<double>();
}

void Timeline::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Preview& preview = m_studio.preview;
    const double middle = 13.0;
    const QRectF bar(kMargin, middle - 3, width() - 2 * kMargin, 6);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors().track);
    painter.drawRoundedRect(bar, 3, 3);
    if (preview.clip() == nullptr) {
        return;
    }
    const auto last = static_cast<double>(preview.clip()->frameCount - 1);
    const QColor accent = palette().color(QPalette::Highlight);
    const FrameRange range = preview.range();
    const bool marked = range.first > 0 || static_cast<double>(range.last) < last;
    QColor inside = accent;
    inside.setAlphaF(marked ? 0.55F : 0.25F);
    const double left = xOf(static_cast<double>(range.first));
    const double right = xOf(static_cast<double>(range.last));
    painter.setBrush(inside);
    painter.drawRoundedRect(QRectF(left, bar.top(), right - left, bar.height()), 3, 3);
    if (marked) {
        painter.setPen(QPen(accent, 2));
        for (const auto& [x, side] : {std::pair(left, 1.0), std::pair(right, -1.0)}) {
            painter.drawPolyline(
                QPolygonF{{x + 4 * side, middle - 8}, {x, middle - 8}, {x, middle + 8}, {x + 4 * side, middle + 8}});
        }
        painter.setPen(Qt::NoPen);
    }
    // What is ready, in runs.
    painter.setBrush(colors().cached);
    for (std::size_t i = 0; i < m_cached.size();) {
        std::size_t end = i + 1;
        while (end < m_cached.size() && m_cached[end] == m_cached[end - 1] + 1) {
            ++end;
        }
        const double from = xOf(static_cast<double>(m_cached[i]) - 0.5);
        const double to = xOf(static_cast<double>(m_cached[end - 1]) + 0.5);
        painter.drawRect(QRectF(from, bar.bottom() + 4, std::max(1.5, to - from), 2.5));
        i = end;
    }
    const double rate = preview.framesPerSecond();
    painter.setBrush(palette().color(QPalette::WindowText));
    for (const double seconds : keys()) {
        const double x = xOf(std::min(last, seconds * rate));
        painter.drawPolygon(QPolygonF{{x, middle - 4.5}, {x + 4.5, middle}, {x, middle + 4.5}, {x - 4.5, middle}});
    }
    const double x = xOf(static_cast<double>(preview.frame()));
    painter.setPen(QPen(palette().color(QPalette::Window), 1));
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(x - 4, middle - 10, 8, 20), 3, 3);
}

void Timeline::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        m_studio.player.stop();
        m_scrubbing = true;
        mouseMoveEvent(event);
    }
}

void Timeline::mouseMoveEvent(QMouseEvent* event) {
    if (m_scrubbing) {
        m_studio.preview.setFrame(frameAt(event->position().x()));
    }
}

void Timeline::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_scrubbing = false;
}

void Timeline::wheelEvent(QWheelEvent* event) {
    m_studio.player.step(event->angleDelta().y() > 0 ? -1 : 1);
    event->accept();
}

}  // namespace lumiset::studio
