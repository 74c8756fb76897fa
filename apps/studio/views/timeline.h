#pragma once

#include <QPointF>
#include <QTimer>
#include <QWidget>
#include <optional>
#include <vector>

namespace lumiset::studio {

class Studio;

/// The clip from its first frame to its last: where it is, what is marked, where the chosen effect has keys, and which
/// frames are ready. A drag moves the position; one that begins at a key moves the key, or with Alt a copy of it.
class Timeline : public QWidget {
    Q_OBJECT

public:
    explicit Timeline(Studio& studio, QWidget* parent = nullptr);
    [[nodiscard]] QSize sizeHint() const override { return {400, 34}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {80, 34}; }
    [[nodiscard]] double xOf(double frame) const;
    /// Where a key is in this widget.
    [[nodiscard]] QPointF placeOfKey(double seconds) const;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] qint64 frameAt(double x) const;
    [[nodiscard]] std::vector<double> keys() const;
    [[nodiscard]] std::optional<double> keyAt(QPointF place) const;

    Studio& m_studio;
    QTimer m_refresh;
    std::vector<std::int64_t> m_cached;
    bool m_scrubbing = false;
    std::optional<double> m_key;  ///< being dragged, in seconds
    bool m_copies = false;
    quint64 m_gesture = 0;
};

/// "00:00:12:07", hours to frames, for a rate.
[[nodiscard]] QString timeCode(qint64 frame, double framesPerSecond);

}  // namespace lumiset::studio
