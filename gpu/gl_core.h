#pragma once

#include <cstdint>

#include "host/platform_call.h"

namespace lumiset {

/// The functions of OpenGL 1.1 that drawing needs, and their constants.
///
/// They are resolved at run time instead of linked: the module then loads on a machine without OpenGL, and it
/// always calls the very library in which the host made its context.
struct GLCore {
    static constexpr std::uint32_t kTriangleStrip = 0x0005;
    static constexpr std::uint32_t kGreater = 0x0204;
    static constexpr std::uint32_t kLighting = 0x0B50;
    static constexpr std::uint32_t kDepthTest = 0x0B71;
    static constexpr std::uint32_t kAlphaTest = 0x0BC0;
    static constexpr std::uint32_t kBlend = 0x0BE2;
    static constexpr std::uint32_t kTexture2D = 0x0DE1;
    static constexpr std::uint32_t kModelview = 0x1700;
    static constexpr std::uint32_t kProjection = 0x1701;
    static constexpr std::uint32_t kColorBufferBit = 0x4000;
    static constexpr std::uint32_t kTexture0 = 0x84C0;
    static constexpr std::uint32_t kMaxSamples = 0x8D57;

    template <class... Args>
    using Function = void(LUMISET_CALL*)(Args...);

    Function<double> ClearDepth = nullptr;
    Function<std::uint32_t> DepthFunc = nullptr;
    Function<float, float, float> Color3f = nullptr;
    Function<std::uint32_t> MatrixMode = nullptr;
    Function<> LoadIdentity = nullptr;
    Function<double, double, double, double, double, double> Ortho = nullptr;
    Function<double, double, double> Translated = nullptr;
    Function<std::uint32_t> Begin = nullptr;
    Function<> End = nullptr;
    Function<float, float> TexCoord2f = nullptr;
    Function<float, float, float> Vertex3f = nullptr;
    Function<float, float, float, float> ClearColor = nullptr;
    Function<std::uint32_t> Clear = nullptr;

    /// Resolves all of them; false when one is missing. Quick once it has succeeded.
    [[nodiscard]] bool load() noexcept;
};

}  // namespace lumiset
