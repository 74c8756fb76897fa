#pragma once

#include <QAbstractSlider>

namespace lumiset::studio {

/// A slider for numbers from 0 to 1 that is dragged from wherever it is taken: finely with Shift, a step by arrows.
/// A double click resets, Esc gives back the value that was there before, digits go to the number beside it, and the
/// wheel scrolls what the slider stands on.
class ValueSlider : public QAbstractSlider {
    Q_OBJECT

public:
    explicit ValueSlider(QWidget* parent = nullptr);

    [[nodiscard]] double exactValue() const { return m_value; }
    /// From outside: nothing is told of it.
    void setExactValue(double value);
    /// Where the preset has it, for a mark; below 0 for none. `centre` is where the bar grows from.
    void setMarks(double preset, double centre);
    /// Of an arrow key, 0..1.
    void setStep(double step) { m_step = step; }
    [[nodiscard]] QSize sizeHint() const override { return {96, 22}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {48, 22}; }

signals:
    /// Of a drag or a key; all of one drag share a gesture.
    void edited(double value, quint64 gesture);
    void resetWanted();
    void digitTyped(const QString& text);

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void sliderChange(SliderChange change) override;
    bool event(QEvent* event) override;

private:
    void edit(double value, quint64 gesture);
    [[nodiscard]] QRectF track() const;

    double m_value = 0.0;
    double m_preset = -1.0;
    double m_centre = 0.0;
    double m_step = 0.01;
    bool m_dragging = false;
    bool m_settling = false;
    double m_start = 0.0;
    double m_unclamped = 0.0;
    double m_lastX = 0.0;
    quint64 m_gesture = 0;
};

}  // namespace lumiset::studio
