#pragma once

#include <span>

#include "adapters/openfx/host.h"

namespace lumiset::openfx {

/// Draws in a host's viewer, within one draw action, in canonical coordinates: with the host's own drawing where it
/// hands that out, else in the OpenGL context that is current.
class OverlayDrawing {
public:
    OverlayDrawing(const HostInfo& host, const Properties& inArgs);

    [[nodiscard]] bool isPossible() const { return m_context != nullptr || m_hasGl; }
    /// A closed line, with a dark rim so that it shows on any picture.
    void loop(std::span<const PointD> points, bool selected) const;

private:
    void drawLoop(std::span<const PointD> points, const ColourF& colour, float width) const;

    const DrawSuite* m_suite;
    DrawHandle m_context = nullptr;
    bool m_hasGl = false;
};

}  // namespace lumiset::openfx
