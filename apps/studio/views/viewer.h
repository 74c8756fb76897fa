#pragma once

#include <QWidget>
#include <functional>
#include <optional>
#include <vector>

#include "apps/studio/core/look_edits.h"

class QImage;
class QPainter;

namespace lumiset::studio {

class Studio;

/// The picture, with what lies over it: the wipe, handles for the chosen effect's points, badges.
class Viewer : public QWidget {
    Q_OBJECT

public:
    explicit Viewer(Studio& studio, QWidget* parent = nullptr);

    /// 0: as large as there is room for; 1: a pixel of the picture on a pixel of the screen.
    [[nodiscard]] double zoom() const { return m_zoom; }
    void setZoom(double zoom);
    /// The next click chooses a colour, of what the chosen effect gets to see; Esc ends it.
    void startPicking(std::function<void(std::uint32_t color)> take);
    [[nodiscard]] bool isPicking() const { return m_take != nullptr; }

    /// Where the picture is, in this widget.
    [[nodiscard]] QRectF pictureRect() const;
    /// Where a point of the picture is, 0..1, in this widget.
    [[nodiscard]] QPointF toScreen(QPointF point) const;
    [[nodiscard]] QSize sizeHint() const override { return {920, 520}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {160, 90}; }

signals:
    void zoomChanged();

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool event(QEvent* event) override;

private:
    struct Handle {
        const ParameterDescription* parameter;
        QString label;
        QPointF place;  ///< 0..1 of the picture
    };
    enum class Drag { kNone, kPan, kWipe, kHandle };

    [[nodiscard]] std::vector<Handle> handles() const;
    [[nodiscard]] int handleAt(QPointF position) const;
    /// Where pictures may lie: all of it, or the right half.
    [[nodiscard]] QRectF room() const;
    [[nodiscard]] double scale() const;  ///< pixels of the screen for one of the picture
    [[nodiscard]] double wipeX() const;
    void askForSize();
    void endPicking();
    void moveHandle(QPointF position, bool snaps);
    void paintPicture(QPainter& painter, const QRectF& rect, const QImage& image) const;
    void paintHandles(QPainter& painter) const;
    void paintBadges(QPainter& painter) const;
    void paintLoupe(QPainter& painter) const;

    Studio& m_studio;
    double m_zoom = 0.0;
    QPointF m_pan;  ///< of the picture's centre from the room's
    double m_wipe = 0.5;
    Drag m_drag = Drag::kNone;
    QPointF m_last;
    int m_handle = -1;      ///< being dragged, or last used
    QPointF m_handleStart;  ///< where it was
    QPointF m_grip;         ///< from the pointer to the handle
    quint64 m_gesture = 0;
    std::function<void(std::uint32_t)> m_take;
    std::optional<QPointF> m_pointer;
};

}  // namespace lumiset::studio
