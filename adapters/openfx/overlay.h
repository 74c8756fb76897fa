#pragma once

#include "adapters/openfx/instance.h"

namespace lumiset::openfx {

/// True for effects with points of the picture to take hold of.
[[nodiscard]] bool hasHandles(const Effect& effect);

/// One overlay: the handles of an instance's points in the host's viewer. Dragged with the pen; the one that was
/// touched last moves by a pixel of the screen with the arrow keys. Used on the host's main thread.
class Overlay {
public:
    explicit Overlay(const Instance& instance);

    /// The common arguments are in `inArgs` of each. Answers the action's status.
    [[nodiscard]] Status draw(const Properties& inArgs) const;
    [[nodiscard]] Status penDown(const Properties& inArgs);
    [[nodiscard]] Status penMotion(const Properties& inArgs);
    [[nodiscard]] Status penUp();
    [[nodiscard]] Status keyDown(const Properties& inArgs);

    /// Names of the parameters that the handles show.
    [[nodiscard]] std::vector<std::string> parameterNames() const;

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    [[nodiscard]] PointD positionOf(std::size_t handle, double time) const;
    void moveTo(std::size_t handle, double time, const PointD& position) const;

    const Instance& m_instance;
    std::vector<std::size_t> m_places;  // of the points in the effect's parameters
    std::size_t m_held = kNone;         // while the pen is down
    std::size_t m_touched = kNone;
};

}  // namespace lumiset::openfx
