// What the viewer paints: nothing over the picture but the wipe, handles and small badges.

#include <QApplication>
#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <cmath>

#include "apps/studio/model/picture_image.h"
#include "apps/studio/model/studio.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/viewer.h"

namespace lumiset::studio {
namespace {

/// Squares of two greys, as they stand behind transparent parts.
const QBrush& checkerboard() {
    static const QBrush brush = [] {
        QPixmap squares(16, 16);
        squares.fill(QColor(150, 150, 150));
        QPainter painter(&squares);
        painter.fillRect(0, 0, 8, 8, QColor(110, 110, 110));
        painter.fillRect(8, 8, 8, 8, QColor(110, 110, 110));
        return QBrush(squares);
    }();
    return brush;
}

/// A word on a dark plate, its corner at `at`; to the left of it with `leftwards`.
void paintPlate(QPainter& painter, QPointF at, const QString& text, bool leftwards = false,
                const QColor& ink = Qt::white) {
    const QFontMetricsF metrics(painter.font());
    const QSizeF size(metrics.horizontalAdvance(text) + 2 * kGap, metrics.height() + kStep);
    const QRectF plate(leftwards ? at.x() - size.width() : at.x(), at.y(), size.width(), size.height());
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0, 0, 0, 170));
    painter.drawRoundedRect(plate, 4, 4);
    painter.setPen(ink);
    painter.drawText(plate, Qt::AlignCenter, text);
}

}  // namespace

void Viewer::paintPicture(QPainter& painter, const QRectF& rect, const QImage& image) const {
    if (image.hasAlphaChannel()) {
        painter.setBrushOrigin(rect.topLeft());
        painter.fillRect(rect, checkerboard());
    }
    const QSizeF device = rect.size() * devicePixelRatioF();
    if (image.width() == std::lround(device.width()) && image.height() == std::lround(device.height())) {
        QImage exact = image;
        exact.setDevicePixelRatio(devicePixelRatioF());
        painter.drawImage(rect.topLeft(), exact);
    } else {
        // Larger than it is: pixels with edges, unless it just fills the window. Smaller: until the next one arrives.
        painter.setRenderHint(QPainter::SmoothPixmapTransform, m_zoom == 0.0);
        painter.drawImage(rect, image);
    }
}

void Viewer::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.fillRect(rect(), colors().surround);
    const FrameShot& shot = m_studio.preview.shot();
    if (shot.picture == nullptr) {
        painter.setPen(colors().secondText);
        painter.drawText(rect(), Qt::AlignCenter,
                         m_studio.preview.clip() == nullptr ? tr("Opening…") : tr("Rendering…"));
        return;
    }
    const QRectF place = pictureRect();
    const Preview::Compare compare = m_studio.preview.compare();
    const bool compares = compare != Preview::Compare::kOff && shot.before != nullptr;
    const QImage after = imageOf(shot.picture);
    if (!compares) {
        paintPicture(painter, place, after);
    } else if (compare == Preview::Compare::kWipe) {
        const double line = wipeX();
        painter.save();
        painter.setClipRect(QRectF(0, 0, line, height()));
        paintPicture(painter, place, imageOf(shot.before));
        painter.setClipRect(QRectF(line, 0, width() - line, height()));
        paintPicture(painter, place, after);
        painter.restore();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(QColor(0, 0, 0, 120), 3));
        painter.drawLine(QPointF(line, place.top()), QPointF(line, place.bottom()));
        painter.setPen(QPen(Qt::white, 1));
        painter.drawLine(QPointF(line, place.top()), QPointF(line, place.bottom()));
        painter.setBrush(Qt::white);
        painter.setPen(QPen(QColor(0, 0, 0, 120), 1));
        const QPointF grip(line, place.center().y());
        painter.drawEllipse(grip, 11, 11);
        painter.setPen(QPen(QColor(40, 40, 40), 1.6));
        for (const double side : {-1.0, 1.0}) {
            painter.drawPolyline(
                QPolygonF{grip + QPointF(side * 3, -4), grip + QPointF(side * 7, 0), grip + QPointF(side * 3, 4)});
        }
        painter.setBrush(Qt::NoBrush);
    } else {
        const QRectF other = place.translated(-width() / 2.0 - 2.0, 0.0);
        painter.save();
        painter.setClipRect(QRectF(0, 0, width() / 2.0 - 1.0, height()));
        paintPicture(painter, other, imageOf(shot.before));
        painter.setClipRect(room());
        paintPicture(painter, place, after);
        painter.restore();
    }
    painter.setRenderHint(QPainter::Antialiasing);
    paintHandles(painter);
    paintBadges(painter);
    if (m_take != nullptr) {
        paintLoupe(painter);
    }
    if (hasFocus()) {
        painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
        painter.setBrush(Qt::NoBrush);
        painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
    }
}

void Viewer::paintHandles(QPainter& painter) const {
    const std::vector<Handle> all = handles();
    const QColor accent = palette().color(QPalette::Highlight);
    // Four corners are a shape: top left, top right, bottom left, bottom right.
    if (all.size() == 4) {
        const QPolygonF shape{toScreen(all[0].place), toScreen(all[1].place), toScreen(all[3].place),
                              toScreen(all[2].place), toScreen(all[0].place)};
        painter.setPen(QPen(QColor(0, 0, 0, 140), 3));
        painter.drawPolyline(shape);
        painter.setPen(QPen(accent, 1.4, Qt::DashLine));
        painter.drawPolyline(shape);
    }
    QFont small = font();
    small.setBold(true);
    small.setPointSizeF(small.pointSizeF() * 0.85);
    painter.setFont(small);
    for (std::size_t i = 0; i < all.size(); ++i) {
        const QPointF place = toScreen(all[i].place);
        const bool used = static_cast<int>(i) == m_handle;
        painter.setPen(QPen(QColor(0, 0, 0, 180), 3.5));
        painter.setBrush(used ? accent : QColor(255, 255, 255, 60));
        painter.drawEllipse(place, 7, 7);
        painter.setPen(QPen(used ? QColor(Qt::white) : accent, 2));
        painter.drawEllipse(place, 7, 7);
        const bool nearRight = place.x() > width() - 40;
        paintPlate(painter, place + QPointF(nearRight ? -11 : 11, place.y() > height() - 30 ? -22 : 6), all[i].label,
                   nearRight);
    }
    painter.setFont(font());
}

void Viewer::paintBadges(QPainter& painter) const {
    const Preview& preview = m_studio.preview;
    const FrameShot& shot = preview.shot();
    const QRectF seen = pictureRect().intersected(QRectF(rect()));
    if (preview.isSourceHeld()) {
        paintPlate(painter, seen.topLeft() + QPointF(kGap, kGap), tr("Source"));
    } else if (preview.compare() != Preview::Compare::kOff && shot.before != nullptr) {
        const QString names[] = {tr("Source"), tr("Snapshot"), tr("Without this effect")};
        const bool wipes = preview.compare() == Preview::Compare::kWipe;
        const QRectF other = wipes ? seen : seen.translated(-width() / 2.0 - 2.0, 0.0);
        if (!wipes || wipeX() - seen.left() > 90) {
            paintPlate(painter, other.topLeft() + QPointF(kGap, kGap), names[static_cast<int>(preview.before())]);
        }
        if (!wipes || seen.right() - wipeX() > 90) {
            paintPlate(painter, seen.topRight() + QPointF(-kGap, kGap), tr("Look"), true);
        }
    }
    if (shot.wish.divisor > 1 && shot.picture != nullptr) {
        paintPlate(painter, seen.bottomRight() + QPointF(-kGap, -kGap - painter.fontMetrics().height() - kStep),
                   shot.wish.divisor == 2 ? tr("½ size") : tr("¼ size"), true, colors().warning.lighter(110));
    }
}

void Viewer::paintLoupe(QPainter& painter) const {
    if (!m_pointer || m_studio.preview.shot().picture == nullptr) {
        paintPlate(painter, QPointF(kGap, kGap), tr("Click a colour in the picture; Esc ends"));
        return;
    }
    constexpr int kAcross = 11;
    constexpr double kSide = 110.0;
    const DisplayPicture& picture = *m_studio.preview.shot().picture;
    const QRectF place = pictureRect();
    const int x = static_cast<int>((m_pointer->x() - place.x()) / place.width() * picture.size.width);
    const int y = static_cast<int>((m_pointer->y() - place.y()) / place.height() * picture.size.height);
    QPointF corner = *m_pointer + QPointF(18, 18);
    if (corner.x() + kSide > width()) {
        corner.rx() -= kSide + 36;
    }
    if (corner.y() + kSide > height()) {
        corner.ry() -= kSide + 36;
    }
    const QRectF glass(corner, QSizeF(kSide, kSide));
    painter.save();
    QPainterPath round;
    round.addEllipse(glass);
    painter.setClipPath(round);
    painter.fillRect(glass, colors().surround);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    constexpr int kReach = kAcross / 2;
    painter.drawImage(glass, imageOf(m_studio.preview.shot().picture),
                      QRectF(x - kReach, y - kReach, kAcross, kAcross));
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(0, 0, 0, 160), 4));
    painter.drawEllipse(glass);
    painter.setPen(QPen(Qt::white, 2));
    painter.drawEllipse(glass);
    painter.setPen(QPen(Qt::white, 1));
    const double pixel = kSide / kAcross;
    painter.drawRect(QRectF(glass.center() - QPointF(2.5 * pixel, 2.5 * pixel), QSizeF(5 * pixel, 5 * pixel)));
}

}  // namespace lumiset::studio
