#include "apps/studio/views/timeline.h"

#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <utility>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

constexpr double kMargin = 10.0;
constexpr double kKeyY = 27.0;
constexpr double kKeyReach = 6.0;
constexpr int kRefreshMs = 250;

}  // namespace

QString timeCode(qint64 frame, double framesPerSecond) {
    const auto whole = std::max<qint64>(1, std::llround(framesPerSecond));
    const qint64 seconds = frame / whole;
    const auto two = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    return two(seconds / 3600) + ':' + two(seconds / 60 % 60) + ':' + two(seconds % 60) + ':' + two(frame % whole);
}

Timeline::Timeline(Studio& studio, QWidget* parent) : QWidget(parent), m_studio(studio) {
    setFixedHeight(34);
    setMouseTracking(true);
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
    painter.setBrush(palette().color(QPalette::WindowText));
    for (const double seconds : keys()) {
        const QPointF key = placeOfKey(seconds);
        painter.drawPolygon(
            QPolygonF{key + QPointF(0, -4.5), key + QPointF(4.5, 0), key + QPointF(0, 4.5), key + QPointF(-4.5, 0)});
    }
    const double x = xOf(static_cast<double>(preview.frame()));
    painter.setPen(QPen(palette().color(QPalette::Window), 1));
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(x - 4, middle - 10, 8, 20), 3, 3);
}

QPointF Timeline::placeOfKey(double seconds) const {
    const ClipInfo* clip = m_studio.preview.clip();
    const auto last = static_cast<double>(clip != nullptr ? clip->frameCount - 1 : 0);
    return {xOf(std::min(last, seconds * m_studio.preview.framesPerSecond())), kKeyY};
}

std::optional<double> Timeline::keyAt(QPointF place) const {
    for (const double seconds : keys()) {
        const QPointF away = placeOfKey(seconds) - place;
        if (std::max(std::abs(away.x()), std::abs(away.y())) <= kKeyReach) {
            return seconds;
        }
    }
    return std::nullopt;
}

void Timeline::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    m_studio.player.stop();
    m_key = keyAt(event->position());
    m_copies = event->modifiers().testFlag(Qt::AltModifier);
    m_gesture = Document::newGesture();
    m_scrubbing = true;
    if (m_key) {
        m_studio.preview.setFrame(std::llround(*m_key * m_studio.preview.framesPerSecond()));
    } else {
        mouseMoveEvent(event);
    }
}

void Timeline::mouseMoveEvent(QMouseEvent* event) {
    if (!m_scrubbing) {
        setCursor(keyAt(event->position()) ? Qt::SizeHorCursor : Qt::ArrowCursor);
        return;
    }
    const qint64 frame = frameAt(event->position().x());
    if (m_key) {
        const double seconds = static_cast<double>(frame) / m_studio.preview.framesPerSecond();
        if (std::abs(seconds - *m_key) >= kSameMoment) {
            m_studio.document.moveKeys(*m_key, seconds, std::exchange(m_copies, false), m_gesture);
            m_key = seconds;
        }
    }
    m_studio.preview.setFrame(frame);
}

void Timeline::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_scrubbing = false;
    m_key.reset();
}

void Timeline::wheelEvent(QWheelEvent* event) {
    m_studio.player.step(event->angleDelta().y() > 0 ? -1 : 1);
    event->accept();
}

}  // namespace lumiset::studio
