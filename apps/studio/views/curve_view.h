#pragma once

#include <QWidget>
#include <optional>

#include "apps/studio/core/look_edits.h"

namespace lumiset::studio {

class Studio;
class Timeline;

/// A parameter over the clip's time, with its keys to be dragged: along time, and sliders up and down as well. Alt
/// drags a copy, Del removes the chosen key.
class CurveView : public QWidget {
    Q_OBJECT

public:
    /// Its times stand where the timeline has them.
    CurveView(Studio& studio, const Timeline& timeline, QWidget* parent = nullptr);
    void showParameter(const ParameterDescription* parameter);
    [[nodiscard]] QSize sizeHint() const override { return {400, 110}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {100, 70}; }
    /// Where a key is in this widget; for tests.
    [[nodiscard]] QPointF placeOf(double seconds) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] const LookEffect* effect() const;  ///< that has the parameter, while it is chosen
    [[nodiscard]] double yOf(const ParamValue& value) const;
    [[nodiscard]] double secondsAt(double x) const;
    [[nodiscard]] std::optional<double> keyAt(QPointF position) const;

    Studio& m_studio;
    const Timeline& m_timeline;
    const ParameterDescription* m_parameter = nullptr;
    std::string m_effect;
    std::optional<double> m_chosen;  ///< key, in seconds
    bool m_dragging = false;
    bool m_copies = false;
    quint64 m_gesture = 0;
};

}  // namespace lumiset::studio
