#include "gpu/gl_guard.h"

#include "gpu/gl_core.h"

namespace lumiset {
namespace {

// Names of the blend state in glGet.
constexpr std::uint32_t kBlendColor = 0x8005;
constexpr std::uint32_t kBlendEquationColor = 0x8009;
constexpr std::uint32_t kBlendEquationAlpha = 0x883D;
constexpr std::uint32_t kBlendDestinationColor = 0x80C8;
constexpr std::uint32_t kBlendSourceColor = 0x80C9;
constexpr std::uint32_t kBlendDestinationAlpha = 0x80CA;
constexpr std::uint32_t kBlendSourceAlpha = 0x80CB;

std::uint32_t code(std::int32_t value) {
    return static_cast<std::uint32_t>(value);
}

}  // namespace

void GLGuard::Capture(IHostGL* gl) noexcept {
    m_gl = gl;
    gl->GetFloatv(kBlendColor, m_color, 4);
    gl->GetIntegerv(kBlendEquationColor, &m_equationColor, 1);
    gl->GetIntegerv(kBlendEquationAlpha, &m_equationAlpha, 1);
    gl->GetIntegerv(kBlendSourceColor, &m_sourceColor, 1);
    gl->GetIntegerv(kBlendSourceAlpha, &m_sourceAlpha, 1);
    gl->GetIntegerv(kBlendDestinationColor, &m_destinationColor, 1);
    gl->GetIntegerv(kBlendDestinationAlpha, &m_destinationAlpha, 1);
}

void GLGuard::Restore() noexcept {
    if (m_gl == nullptr) {
        return;
    }
    m_gl->BlendColor(m_color[0], m_color[1], m_color[2], m_color[3]);
    m_gl->BlendEquationSeparate(code(m_equationColor), code(m_equationAlpha));
    m_gl->BlendFuncSeparate(code(m_sourceColor), code(m_destinationColor), code(m_sourceAlpha),
                            code(m_destinationAlpha));
    // Whatever it was before: hosts count on blending being off behind an effect.
    m_gl->Disable(GLCore::kBlend);
    m_gl = nullptr;
}

void GLGuard::DisableBlend() noexcept {
    if (m_gl != nullptr) {
        m_gl->Disable(GLCore::kBlend);
    }
}

}  // namespace lumiset
