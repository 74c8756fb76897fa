#include "apps/studio/views/viewer.h"

#include <algorithm>
#include <cmath>

#include "apps/studio/model/studio.h"

namespace lumiset::studio {
namespace {

constexpr double kLeastZoom = 0.05;
constexpr double kLargestZoom = 16.0;

}  // namespace

Viewer::Viewer(Studio& studio, QWidget* parent) : QWidget(parent), m_studio(studio) {
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAccessibleName(tr("Picture"));
    connect(&studio.preview, &Preview::shotChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.preview, &Preview::modeChanged, this, [this] {
        askForSize();
        update();
    });
    connect(&studio.preview, &Preview::clipOpened, this, [this] {
        m_pan = {};
        askForSize();
    });
    connect(&studio.document, &Document::selectionChanged, this, [this] {
        m_handle = -1;
        endPicking();
        update();
    });
    connect(&studio.document, &Document::lookChanged, this, qOverload<>(&QWidget::update));
    connect(&studio.preview, &Preview::frameChanged, this, qOverload<>(&QWidget::update));
}

QRectF Viewer::room() const {
    QRectF all = rect();
    if (m_studio.preview.compare() == Preview::Compare::kSideBySide) {
        all.setLeft(all.width() / 2.0 + 2.0);
    }
    return all;
}

double Viewer::scale() const {
    const ClipInfo* clip = m_studio.preview.clip();
    if (m_zoom > 0.0 || clip == nullptr) {
        return m_zoom > 0.0 ? m_zoom : 1.0;
    }
    const Size whole = shownSize(clip->format);
    const double ratio = devicePixelRatioF();
    return std::min(room().width() * ratio / whole.width, room().height() * ratio / whole.height);
}

QRectF Viewer::pictureRect() const {
    const ClipInfo* clip = m_studio.preview.clip();
    const Size whole = clip != nullptr ? shownSize(clip->format) : Size{16, 9};
    const double ratio = devicePixelRatioF();
    const double width = std::round(whole.width * scale());
    const double height = std::round(whole.height * scale());
    const QPointF centre = room().center() * ratio + (m_zoom > 0.0 ? m_pan * ratio : QPointF());
    // On whole pixels of the screen, so that pictures are painted as they are.
    return {std::round(centre.x() - width / 2.0) / ratio, std::round(centre.y() - height / 2.0) / ratio, width / ratio,
            height / ratio};
}

QPointF Viewer::toScreen(QPointF point) const {
    const QRectF rect = pictureRect();
    return {rect.x() + point.x() * rect.width(), rect.y() + point.y() * rect.height()};
}

double Viewer::wipeX() const {
    const QRectF rect = pictureRect();
    return rect.x() + m_wipe * rect.width();
}

// What is shown smaller is scaled where it is rendered; what is shown larger, when it is painted.
void Viewer::askForSize() {
    if (const ClipInfo* clip = m_studio.preview.clip()) {
        const Size whole = shownSize(clip->format);
        const double part = std::min(1.0, scale());
        m_studio.preview.setTarget({std::max(1, static_cast<int>(std::lround(whole.width * part))),
                                    std::max(1, static_cast<int>(std::lround(whole.height * part)))});
    }
}

void Viewer::setZoom(double zoom) {
    m_zoom = zoom > 0.0 ? std::clamp(zoom, kLeastZoom, kLargestZoom) : 0.0;
    if (m_zoom == 0.0) {
        m_pan = {};
    }
    askForSize();
    update();
    emit zoomChanged();
}

void Viewer::resizeEvent(QResizeEvent* /*event*/) {
    askForSize();
}

}  // namespace lumiset::studio
