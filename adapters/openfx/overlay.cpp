#include "adapters/openfx/overlay.h"

#include <array>
#include <cmath>

#include "adapters/openfx/abi/names.h"
#include "adapters/openfx/overlay_drawing.h"

namespace lumiset::openfx {
namespace {

constexpr double kHandlePixels = 5.0;  ///< from a handle's middle to its edge, on the screen
constexpr double kReachPixels = 10.0;  ///< as far away the pen takes hold of it

/// The numbers that X11 gives to the arrow keys, which OpenFX uses everywhere, and where they go.
struct Arrow {
    int key;
    double x;
    double y;
};
constexpr auto kArrows = std::to_array<Arrow>({{0xFF51, -1, 0}, {0xFF52, 0, 1}, {0xFF53, 1, 0}, {0xFF54, 0, -1}});

std::vector<std::size_t> pointsOf(const Effect& effect) {
    std::vector<std::size_t> places;
    for (std::size_t i = 0; i < effect.parameters.size(); ++i) {
        const Parameter& parameter = effect.parameters[i];
        if (parameter.role == Role::kEffect && effect.description.parameters[parameter.source].type == kParamPoint) {
            places.push_back(i);
        }
    }
    return places;
}

PointD pixelScaleOf(const Properties& inArgs) {
    const PointD scale = inArgs.getPointD(prop::kPixelScale).value_or(PointD{1.0, 1.0});
    return {scale.x > 0.0 ? scale.x : 1.0, scale.y > 0.0 ? scale.y : 1.0};
}

}  // namespace

bool hasHandles(const Effect& effect) {
    return !pointsOf(effect).empty();
}

Overlay::Overlay(const Instance& instance) : m_instance(instance), m_places(pointsOf(instance.effect())) {}

PointD Overlay::positionOf(std::size_t handle, double time) const {
    const ParamValue::Point point = m_instance.pointAt(m_places[handle], time);
    const RectD region = m_instance.pictureRegion(time);
    return {region.x1 + static_cast<double>(point.x) * (region.x2 - region.x1),
            region.y2 - static_cast<double>(point.y) * (region.y2 - region.y1)};
}

void Overlay::moveTo(std::size_t handle, double time, const PointD& position) const {
    const RectD region = m_instance.pictureRegion(time);
    m_instance.setPoint(m_places[handle], time,
                        {static_cast<float>((position.x - region.x1) / (region.x2 - region.x1)),
                         static_cast<float>((region.y2 - position.y) / (region.y2 - region.y1))});
}

// Four points are the corners of an area, listed from the left to the right and from the top to the bottom.
Status Overlay::draw(const Properties& inArgs) const {
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    const PointD scale = pixelScaleOf(inArgs);
    OverlayDrawing drawing(m_instance.host(), inArgs);
    if (!drawing.isPossible()) {
        return kReplyDefault;
    }
    if (m_places.size() == 4) {
        const std::array<PointD, 4> corners{positionOf(0, time), positionOf(1, time), positionOf(3, time),
                                            positionOf(2, time)};
        drawing.loop(corners, false);
    }
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const PointD at = positionOf(i, time);
        const double x = kHandlePixels * scale.x;
        const double y = kHandlePixels * scale.y;
        const std::array<PointD, 4> square{
            PointD{at.x - x, at.y - y}, {at.x + x, at.y - y}, {at.x + x, at.y + y}, {at.x - x, at.y + y}};
        drawing.loop(square, i == m_touched);
    }
    return kOk;
}

Status Overlay::penDown(const Properties& inArgs) {
    const std::optional<PointD> pen = inArgs.getPointD(prop::kPenPosition);
    if (!pen) {
        return kReplyDefault;
    }
    const double time = inArgs.getDouble(prop::kTime, 0.0);
    const PointD scale = pixelScaleOf(inArgs);
    double nearest = kReachPixels;
    m_held = kNone;
    for (std::size_t i = 0; i < m_places.size(); ++i) {
        const PointD at = positionOf(i, time);
        const double distance = std::hypot((at.x - pen->x) / scale.x, (at.y - pen->y) / scale.y);
        if (distance < nearest) {
            nearest = distance;
            m_held = i;
        }
    }
    if (m_held == kNone) {
        return kReplyDefault;
    }
    m_touched = m_held;
    m_instance.beginEdit("Move " + m_instance.effect().parameters[m_places[m_held]].label);
    return kOk;
}

Status Overlay::penMotion(const Properties& inArgs) {
    const std::optional<PointD> pen = inArgs.getPointD(prop::kPenPosition);
    if (m_held == kNone || !pen) {
        return kReplyDefault;
    }
    moveTo(m_held, inArgs.getDouble(prop::kTime, 0.0), *pen);
    return kOk;
}

Status Overlay::penUp() {
    if (m_held == kNone) {
        return kReplyDefault;
    }
    m_held = kNone;
    m_instance.endEdit();
    return kOk;
}

Status Overlay::keyDown(const Properties& inArgs) {
    const int key = inArgs.getInt(prop::kKeySym, 0);
    for (const Arrow& arrow : kArrows) {
        if (arrow.key == key && m_touched != kNone) {
            const double time = inArgs.getDouble(prop::kTime, 0.0);
            const PointD scale = pixelScaleOf(inArgs);
            const PointD at = positionOf(m_touched, time);
            moveTo(m_touched, time, {at.x + arrow.x * scale.x, at.y + arrow.y * scale.y});
            return kOk;
        }
    }
    return kReplyDefault;
}

std::vector<std::string> Overlay::parameterNames() const {
    std::vector<std::string> names;
    for (const std::size_t place : m_places) {
        names.push_back(m_instance.effect().parameters[place].name);
    }
    return names;
}

}  // namespace lumiset::openfx
