#pragma once

#include "host/gpu_host.h"

namespace lumiset {

/// Remembers the host's blend state and puts it back.
class GLGuard {
public:
    /// Reads the blend colour, equations and factors.
    void Capture(IHostGL* gl) noexcept;
    /// Writes them back, leaves blending off and forgets the host. Does nothing without a capture.
    void Restore() noexcept;
    void DisableBlend() noexcept;

private:
    IHostGL* m_gl = nullptr;
    float m_color[4] = {};
    std::int32_t m_equationColor = 0;
    std::int32_t m_equationAlpha = 0;
    std::int32_t m_sourceColor = 0;
    std::int32_t m_sourceAlpha = 0;
    std::int32_t m_destinationColor = 0;
    std::int32_t m_destinationAlpha = 0;
};

}  // namespace lumiset
