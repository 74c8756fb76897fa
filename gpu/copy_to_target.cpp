// The last pass of every frame. Its two texts are older than the module's other shaders and hosts may know
// them, so they stay as they are.

#include "gpu/gpu_helper.h"

namespace lumiset {
namespace {

constexpr char kVertexText[] =
    "varying vec2 texCoord;uniform vec2 texCoordScale0;uniform vec2 texCoordShift0;void main() "
    "{\tgl_Position = gl_ModelViewProjectionMatrix * gl_Vertex;\ttexCoord\t= texCoordShift0 + "
    "gl_MultiTexCoord0.xy * texCoordScale0;}";
constexpr char kFragmentText[] =
    "#define SWAP_CHANNELS_WTO(swapFlag, src, dst) if (swapFlag==1) dst = src.grab; else dst = src \n"
    "uniform sampler2D Tex;varying vec2 texCoord;uniform int SwapChannelsDst;void main() "
    "{\tSWAP_CHANNELS_WTO(SwapChannelsDst, texture2D(Tex, texCoord.xy), gl_FragColor);}";

template <std::size_t Size>
constexpr ProgramText plainText(const char (&text)[Size]) {
    return {text, static_cast<std::uint32_t>(Size - 1), 0, 0, 0, 0};
}
constexpr ProgramText kVertex = plainText(kVertexText);
constexpr ProgramText kFragment = plainText(kFragmentText);

float share(std::int32_t part, std::int32_t whole) {
    return static_cast<float>(part) / static_cast<float>(whole);
}

}  // namespace

bool GPUHelper::PrepareCopy() noexcept {
    return m_copyProgram.IsValid() || (CreateProgram(kVertex, kFragment, m_copyProgram) && m_copyProgram.IsValid());
}

bool GPUHelper::FinishFrame(const GPUTexture& source, const GPUTexture& destination) noexcept {
    return CopyToTarget(source, destination);
}

bool GPUHelper::CopyToTarget(const GPUTexture& source, const GPUTexture& destination) noexcept {
    if (!PrepareCopy()) {
        return false;
    }
    const bool drawn = SetRenderTarget(&destination, false, 0, 0) && UseProgram(m_copyProgram);
    if (drawn) {
        m_copyProgram.SetInt("SwapChannelsDst", NeedsChannelSwap(destination) ? 1 : 0);
        m_copyProgram.SetTexture("Tex", source);
        m_copyProgram.SetFloat2("texCoordScale0", share(source.width, source.textureWidth),
                                share(source.height, source.textureHeight));
        m_copyProgram.SetFloat2("texCoordShift0", share(source.xOffset, source.textureWidth),
                                share(source.yOffset, source.textureHeight));
        DrawQuad(source, (destination.flipped != 0) != (source.flipped != 0), nullptr);
    }
    using UseProgramObject = void(LUMISET_CALL*)(std::uint32_t);
    if (const GLProc use = entries[arbEntry("glUseProgramObjectARB")]; use != nullptr) {
        reinterpret_cast<UseProgramObject>(use)(0);
    }
    SetRenderTarget(nullptr, false, 0, 0);
    ReleaseProgram(m_copyProgram);
    return drawn;
}

}  // namespace lumiset
