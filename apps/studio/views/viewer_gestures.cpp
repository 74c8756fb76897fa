// What hands do in the viewer: zooming, panning, the wipe, handles of points, and picking a colour.

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <algorithm>
#include <cmath>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/viewer.h"

namespace lumiset::studio {
namespace {

constexpr double kHandleReach = 12.0;  // of the pointer, in pixels
constexpr double kSnapReach = 8.0;
constexpr double kWipeReach = 6.0;

}  // namespace

std::vector<Viewer::Handle> Viewer::handles() const {
    std::vector<Handle> found;
    const Document& document = m_studio.document;
    if (document.selectedEffect() == nullptr || m_studio.preview.isSourceHeld() || m_studio.preview.candidate()) {
        return found;
    }
    for (const ParameterDescription& parameter : document.selectedDescription()->parameters) {
        if (parameter.type == kParamPoint) {
            const ParamValue value = document.value(parameter);
            QString label;
            for (const QString& word : toQt(parameter.label).split(' ')) {
                label += word.at(0).toUpper();
            }
            found.push_back(
                {&parameter, label, {static_cast<double>(value.point.x), static_cast<double>(value.point.y)}});
        }
    }
    return found;
}

int Viewer::handleAt(QPointF position) const {
    const std::vector<Handle> all = handles();
    int nearest = -1;
    double best = kHandleReach;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const QPointF away = toScreen(all[i].place) - position;
        if (const double distance = std::hypot(away.x(), away.y()); distance < best) {
            best = distance;
            nearest = static_cast<int>(i);
        }
    }
    return nearest;
}

void Viewer::moveHandle(QPointF position, bool snaps) {
    const std::vector<Handle> all = handles();
    if (m_handle < 0 || m_handle >= static_cast<int>(all.size())) {
        return;
    }
    const QRectF rect = pictureRect();
    const auto fraction = [&](double place, double begin, double length) {
        double part = std::clamp((place - begin) / length, 0.0, 1.0);
        if (snaps) {
            for (const double line : {0.0, 1.0 / 3.0, 0.5, 2.0 / 3.0, 1.0}) {
                if (std::abs(part - line) * length < kSnapReach) {
                    part = line;
                }
            }
        }
        return static_cast<float>(part);
    };
    ParamValue value{};
    value.point.x = fraction(position.x(), rect.x(), rect.width());
    value.point.y = fraction(position.y(), rect.y(), rect.height());
    m_studio.document.setValue(*all[static_cast<std::size_t>(m_handle)].parameter, value, m_gesture);
}

void Viewer::startPicking(std::function<void(std::uint32_t)> take) {
    const Document& document = m_studio.document;
    m_take = std::move(take);
    m_studio.player.stop();
    m_studio.preview.setCandidate(std::make_shared<const Look>(
        inputOf(document.look(), static_cast<std::size_t>(std::max(0, document.selected())))));
    setCursor(Qt::CrossCursor);
    setFocus();
    update();
}

void Viewer::endPicking() {
    if (m_take != nullptr) {
        m_take = nullptr;
        m_studio.preview.setCandidate(nullptr);
        unsetCursor();
        update();
    }
}

void Viewer::mousePressEvent(QMouseEvent* event) {
    const QPointF position = event->position();
    m_last = position;
    if (event->button() == Qt::MiddleButton) {
        m_drag = Drag::kPan;
        return;
    }
    if (event->button() != Qt::LeftButton) {
        return;
    }
    if (m_take != nullptr) {
        const QRectF rect = pictureRect();
        if (rect.contains(position)) {
            const FrameWish wish = m_studio.preview.wish();
            QPointer<Viewer> self(this);
            m_studio.preview.engine().pick(wish, (position.x() - rect.x()) / rect.width(),
                                           (position.y() - rect.y()) / rect.height(),
                                           [self, take = m_take](std::optional<std::uint32_t> color) {
                                               QMetaObject::invokeMethod(
                                                   qApp,
                                                   [self, take, color] {
                                                       if (self != nullptr && color) {
                                                           take(*color);
                                                       }
                                                   },
                                                   Qt::QueuedConnection);
                                           });
        }
        endPicking();
        return;
    }
    if (const int handle = handleAt(position); handle >= 0) {
        m_drag = Drag::kHandle;
        m_handle = handle;
        m_handleStart = handles()[static_cast<std::size_t>(handle)].place;
        m_grip = toScreen(m_handleStart) - position;
        m_gesture = Document::newGesture();
    } else if (m_studio.preview.compare() == Preview::Compare::kWipe && pictureRect().contains(position)) {
        m_drag = Drag::kWipe;
        mouseMoveEvent(event);
    } else if (m_zoom > 0.0) {
        m_drag = Drag::kPan;
    }
}

void Viewer::mouseMoveEvent(QMouseEvent* event) {
    const QPointF position = event->position();
    m_pointer = position;
    switch (m_drag) {
        case Drag::kPan:
            if (m_zoom == 0.0) {
                m_zoom = scale();
                emit zoomChanged();
            }
            m_pan += position - m_last;
            update();
            break;
        case Drag::kWipe: {
            const QRectF rect = pictureRect();
            m_wipe = std::clamp((position.x() - rect.x()) / rect.width(), 0.0, 1.0);
            update();
            break;
        }
        case Drag::kHandle:
            moveHandle(position + m_grip, !event->modifiers().testFlag(Qt::ControlModifier));
            break;
        case Drag::kNone:
            if (m_take != nullptr) {
                update();
            } else if (handleAt(position) >= 0) {
                setCursor(Qt::SizeAllCursor);
            } else if (m_studio.preview.compare() == Preview::Compare::kWipe &&
                       std::abs(position.x() - wipeX()) < kWipeReach) {
                setCursor(Qt::SplitHCursor);
            } else {
                unsetCursor();
            }
            break;
    }
    m_last = position;
}

void Viewer::mouseReleaseEvent(QMouseEvent* /*event*/) {
    m_drag = Drag::kNone;
    m_gesture = 0;
}

void Viewer::mouseDoubleClickEvent(QMouseEvent* event) {
    if (handleAt(event->position()) >= 0) {
        m_studio.document.resetValue(*handles()[static_cast<std::size_t>(handleAt(event->position()))].parameter);
    } else if (m_studio.preview.compare() == Preview::Compare::kWipe) {
        m_wipe = 0.5;
        update();
    } else {
        setZoom(m_zoom > 0.0 ? 0.0 : 1.0);
    }
}

void Viewer::leaveEvent(QEvent* /*event*/) {
    m_pointer.reset();
    update();
}

void Viewer::wheelEvent(QWheelEvent* event) {
    const double steps = event->angleDelta().y() / 120.0;
    const QRectF before = pictureRect();
    const QPointF place = event->position();
    const QPointF part((place.x() - before.x()) / before.width(), (place.y() - before.y()) / before.height());
    setZoom(scale() * std::pow(1.25, steps));
    m_pan += place - toScreen(part);  // what was under the pointer stays there
    update();
    event->accept();
}

void Viewer::keyPressEvent(QKeyEvent* event) {
    const bool isArrow = event->key() == Qt::Key_Left || event->key() == Qt::Key_Right || event->key() == Qt::Key_Up ||
                         event->key() == Qt::Key_Down;
    if (event->key() == Qt::Key_Escape && m_take != nullptr) {
        endPicking();
    } else if (event->key() == Qt::Key_Escape && m_drag == Drag::kHandle) {
        m_grip = {};
        moveHandle(toScreen(m_handleStart), false);
        m_drag = Drag::kNone;
    } else if (isArrow && m_handle >= 0 && event->modifiers().testFlag(Qt::AltModifier)) {
        const double x = event->key() == Qt::Key_Left ? -0.001 : event->key() == Qt::Key_Right ? 0.001 : 0.0;
        const double y = event->key() == Qt::Key_Up ? -0.001 : event->key() == Qt::Key_Down ? 0.001 : 0.0;
        m_gesture = 0;
        moveHandle(toScreen(handles()[static_cast<std::size_t>(m_handle)].place + QPointF(x, y)), false);
    } else {
        QWidget::keyPressEvent(event);
    }
}

bool Viewer::event(QEvent* event) {
    // Arrows belong to the handle that was used last only together with Alt; alone they step through frames.
    if (event->type() == QEvent::ShortcutOverride && m_take != nullptr &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        event->accept();
        return true;
    }
    return QWidget::event(event);
}

}  // namespace lumiset::studio
