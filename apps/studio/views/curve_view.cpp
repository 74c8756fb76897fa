#include "apps/studio/views/curve_view.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/timeline.h"

namespace lumiset::studio {
namespace {

constexpr double kReach = 9.0;
constexpr double kEdge = 12.0;

}  // namespace

CurveView::CurveView(Studio& studio, const Timeline& timeline, QWidget* parent)
    : QWidget(parent), m_studio(studio), m_timeline(timeline) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Values over time"));
    connect(&studio.document, &Document::lookChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.document, &Document::selectionChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.preview, &Preview::frameChanged, this, qOverload<>(&QWidget::update));
}

void CurveView::showParameter(const ParameterDescription* parameter) {
    m_parameter = parameter;
    m_effect = m_studio.document.selectedEffect() != nullptr ? m_studio.document.selectedEffect()->effect : "";
    m_chosen.reset();
    update();
}

const LookEffect* CurveView::effect() const {
    const LookEffect* chosen = m_studio.document.selectedEffect();
    return chosen != nullptr && m_parameter != nullptr && chosen->effect == m_effect ? chosen : nullptr;
}

double CurveView::yOf(const ParamValue& value) const {
    double part = 0.5;
    if (m_parameter->type == kParamSlider) {
        part = static_cast<double>(value.slider);
    } else if (m_parameter->type == kParamBoolean) {
        part = value.boolean != 0 ? 1.0 : 0.0;
    } else if (m_parameter->type == kParamChoice) {
        part = static_cast<double>(value.choice) /
               std::max<double>(1.0, static_cast<double>(m_parameter->items.size()) - 1.0);
    } else if (m_parameter->type == kParamPoint) {
        part = 1.0 - static_cast<double>(value.point.y);
    }
    return height() - kEdge - part * (height() - 2.0 * kEdge);
}

double CurveView::secondsAt(double x) const {
    const double rate = m_studio.preview.framesPerSecond();
    const double perFrame = std::max(1e-9, m_timeline.xOf(1.0) - m_timeline.xOf(0.0));
    const double last =
        m_studio.preview.clip() != nullptr ? static_cast<double>(m_studio.preview.clip()->frameCount - 1) : 0.0;
    return std::clamp(std::round((x - m_timeline.xOf(0.0)) / perFrame), 0.0, last) / rate;
}

QPointF CurveView::placeOf(double seconds) const {
    const Document& document = m_studio.document;
    const ParamValue value = valueAt(*document.selectedDescription(), *document.selectedEffect(), *m_parameter,
                                     {seconds, document.clipSeconds()});
    return {m_timeline.xOf(seconds * m_studio.preview.framesPerSecond()), yOf(value)};
}

std::optional<double> CurveView::keyAt(QPointF position) const {
    std::optional<double> nearest;
    double best = kReach;
    for (const double seconds : keyTimes(*effect(), m_parameter->index, m_studio.document.clipSeconds())) {
        const QPointF away = placeOf(seconds) - position;
        if (const double distance = std::hypot(away.x(), away.y()); distance < best) {
            best = distance;
            nearest = seconds;
        }
    }
    return nearest;
}

void CurveView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setPen(QPen(colors().line, 1));
    for (const double part : {0.0, 0.5, 1.0}) {
        const double y = height() - kEdge - part * (height() - 2.0 * kEdge);
        painter.drawLine(QPointF(0, y), QPointF(width(), y));
    }
    painter.setPen(colors().secondText);
    if (effect() == nullptr || m_studio.preview.clip() == nullptr) {
        painter.drawText(rect(), Qt::AlignCenter, tr("Click a diamond in the panel to set a key"));
        return;
    }
    const Document& document = m_studio.document;
    const std::vector<double> keys = keyTimes(*effect(), m_parameter->index, document.clipSeconds());
    painter.drawText(rect().adjusted(kGap, kStep, -kGap, 0), Qt::AlignTop | Qt::AlignLeft,
                     toQt(m_parameter->path()) + (keys.empty() ? tr(": no keys") : QString()));
    // Its values at every other pixel, with the keys themselves so that corners are sharp.
    const hostkit::ParameterStore values =
        hostkit::valuesOf(*document.selectedDescription(), *effect(), document.clipSeconds());
    const double rate = m_studio.preview.framesPerSecond();
    const double end = static_cast<double>(m_studio.preview.clip()->frameCount - 1) / rate;
    std::vector<double> times = keys;
    const double start = m_timeline.xOf(0.0);
    const double perSecond = std::max(1e-9, (m_timeline.xOf(1.0) - start) * rate);
    for (int x = 0; start + x <= width(); x += 2) {
        times.push_back(std::min(end, x / perSecond));
    }
    std::sort(times.begin(), times.end());
    const bool holds = m_parameter->type == kParamBoolean || m_parameter->type == kParamChoice;
    QPolygonF curve;
    for (const double seconds : times) {
        const QPointF place(m_timeline.xOf(seconds * rate), yOf(values.valueAt(*m_parameter, seconds)));
        if (holds && !curve.isEmpty()) {
            curve << QPointF(place.x(), curve.back().y());
        }
        curve << place;
    }
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.drawPolyline(curve);
    for (const double seconds : keys) {
        const QPointF place = placeOf(seconds);
        const bool chosen = m_chosen && std::abs(*m_chosen - seconds) < kSameMoment;
        painter.setPen(QPen(palette().color(QPalette::WindowText), 1.5));
        painter.setBrush(chosen ? palette().color(QPalette::WindowText) : palette().color(QPalette::Base));
        painter.drawPolygon(
            QPolygonF{place + QPointF(0, -6), place + QPointF(6, 0), place + QPointF(0, 6), place + QPointF(-6, 0)});
    }
    const double now = m_timeline.xOf(static_cast<double>(m_studio.preview.frame()));
    painter.setPen(QPen(palette().color(QPalette::Highlight), 1, Qt::DotLine));
    painter.drawLine(QPointF(now, 0), QPointF(now, height()));
}

void CurveView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || effect() == nullptr) {
        return;
    }
    m_chosen = keyAt(event->position());
    m_dragging = m_chosen.has_value();
    m_copies = event->modifiers().testFlag(Qt::AltModifier);
    m_gesture = Document::newGesture();
    if (m_chosen) {
        m_studio.player.stop();
    }
    update();
}

void CurveView::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging || effect() == nullptr) {
        return;
    }
    Document& document = m_studio.document;
    const double seconds = secondsAt(event->position().x());
    if (std::abs(seconds - *m_chosen) >= kSameMoment) {
        document.moveKey(*m_parameter, *m_chosen, seconds, std::exchange(m_copies, false), m_gesture);
        m_chosen = seconds;
    }
    if (m_parameter->type == kParamSlider) {
        ParamValue value{};
        value.slider = static_cast<float>(
            std::clamp((height() - kEdge - event->position().y()) / (height() - 2.0 * kEdge), 0.0, 1.0));
        document.setKeyValue(*m_parameter, *m_chosen, value, m_gesture);
    }
}

void CurveView::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_dragging = false;
}

bool CurveView::event(QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Delete &&
        m_chosen) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

void CurveView::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Delete && m_chosen && effect() != nullptr) {
        m_studio.document.removeKey(*m_parameter, *m_chosen);
        m_chosen.reset();
    } else {
        QWidget::keyPressEvent(event);
    }
}

}  // namespace lumiset::studio
