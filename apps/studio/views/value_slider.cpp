#include "apps/studio/views/value_slider.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>

#include "apps/studio/model/document.h"
#include "apps/studio/views/theme.h"

namespace lumiset::studio {
namespace {

constexpr int kSteps = 10000;  // for those who read the screen aloud
constexpr double kFine = 0.1;
constexpr double kKnob = 6.0;

}  // namespace

ValueSlider::ValueSlider(QWidget* parent) : QAbstractSlider(parent) {
    setOrientation(Qt::Horizontal);
    setRange(0, kSteps);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ValueSlider::setExactValue(double value) {
    m_value = value;
    m_settling = true;
    setValue(static_cast<int>(std::lround(value * kSteps)));
    m_settling = false;
    update();
}

void ValueSlider::setMarks(double preset, double centre) {
    m_preset = preset;
    m_centre = centre;
    update();
}

void ValueSlider::edit(double value, quint64 gesture) {
    setExactValue(std::clamp(value, 0.0, 1.0));
    emit edited(m_value, gesture);
}

// A screen reader's way to change it.
void ValueSlider::sliderChange(SliderChange change) {
    QAbstractSlider::sliderChange(change);
    if (change == SliderValueChange && !m_settling) {
        m_value = static_cast<double>(value()) / kSteps;
        emit edited(m_value, 0);
        update();
    }
}

QRectF ValueSlider::track() const {
    return {kKnob, height() / 2.0 - 2.0, width() - 2.0 * kKnob, 4.0};
}

void ValueSlider::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bar = track();
    const QColor accent = palette().color(isEnabled() ? QPalette::Highlight : QPalette::Mid);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors().track);
    painter.drawRoundedRect(bar, 2, 2);
    const auto at = [&bar](double value) { return bar.left() + value * bar.width(); };
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(QPointF(std::min(at(m_centre), at(m_value)), bar.top()),
                                   QPointF(std::max(at(m_centre), at(m_value)), bar.bottom())),
                            2, 2);
    if (m_preset >= 0.0) {
        painter.setBrush(colors().secondText);
        painter.drawRect(QRectF(at(m_preset) - 1.0, bar.top() - 4.0, 2.0, 3.0));
    }
    const QPointF knob(at(m_value), bar.center().y());
    painter.setBrush(m_dragging ? accent : palette().color(QPalette::WindowText));
    painter.drawEllipse(knob, kKnob - 0.5, kKnob - 0.5);
    if (hasFocus()) {
        painter.setPen(QPen(accent, 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawEllipse(knob, kKnob + 1.5, kKnob + 1.5);
    }
}

void ValueSlider::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_dragging = true;
    m_start = m_unclamped = m_value;
    m_lastX = event->position().x();
    m_gesture = Document::newGesture();
    update();
}

void ValueSlider::mouseMoveEvent(QMouseEvent* event) {
    if (!m_dragging) {
        return;
    }
    const double moved = (event->position().x() - m_lastX) / std::max(1.0, track().width());
    m_lastX = event->position().x();
    m_unclamped += moved * (event->modifiers().testFlag(Qt::ShiftModifier) ? kFine : 1.0);
    if (const double value = std::clamp(m_unclamped, 0.0, 1.0); value != m_value) {
        edit(value, m_gesture);
    }
}

void ValueSlider::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_dragging = false;
    update();
}

void ValueSlider::mouseDoubleClickEvent(QMouseEvent* /*event*/) {
    emit resetWanted();
}

bool ValueSlider::event(QEvent* event) {
    // What belongs to a slider while it has the keyboard; everything else stays the window's.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool arrow = key->key() == Qt::Key_Left || key->key() == Qt::Key_Right;
        const bool digit = key->text().size() == 1 && (key->text()[0].isDigit() || key->text()[0] == '-');
        if (arrow || digit || (key->key() == Qt::Key_Escape && m_dragging)) {
            event->accept();
            return true;
        }
    }
    return QAbstractSlider::event(event);
}

void ValueSlider::keyPressEvent(QKeyEvent* event) {
    const double step = m_step * (event->modifiers().testFlag(Qt::ShiftModifier) ? kFine : 1.0);
    if (event->key() == Qt::Key_Left || event->key() == Qt::Key_Right) {
        edit(m_value + (event->key() == Qt::Key_Left ? -step : step), 0);
    } else if (event->key() == Qt::Key_Escape && m_dragging) {
        m_dragging = false;
        edit(m_start, m_gesture);
    } else if (event->text().size() == 1 && (event->text()[0].isDigit() || event->text()[0] == '-')) {
        emit digitTyped(event->text());
    } else {
        event->ignore();
    }
}

void ValueSlider::wheelEvent(QWheelEvent* event) {
    event->ignore();
}

}  // namespace lumiset::studio
