#include "gpu/gpu_helper.h"

#include <utility>

#include "host/pixel_format.h"

namespace lumiset {
namespace {

constexpr std::int32_t kFormatWide = 8;         // a third depth that some hosts use for textures
constexpr std::int32_t kFormatWideSwapped = 9;  // and its other channel order

}  // namespace

bool NeedsChannelSwap(const GPUTexture& texture) noexcept {
    return texture.format != PlainFormat(texture.format);
}

std::int32_t PlainFormat(std::int32_t format) noexcept {
    switch (format) {
        case kFormatArgb8:
            return kFormatBgra8;
        case kFormatArgbFloat:
            return kFormatBgraFloat;
        case kFormatWideSwapped:
            return kFormatWide;
        default:
            return format;
    }
}

void GPUHelper::Bind(GPUResources* resources, IHostGL* gl) noexcept {
    if (gl == nullptr && m_copyProgram.IsValid()) {
        ReleaseProgram(m_copyProgram);
    }
    m_resources = resources;
    m_gl = gl;
    m_currentProgram = nullptr;
    if (gl == nullptr) {
        Restore();
        return;
    }
    if (const ARBTable* table = gl->GetARBTable(); table != nullptr) {
        static_cast<ARBTable&>(*this) = *table;
    }
    Capture(gl);
    m_liveTextures = 0;
    m_livePrograms = 0;
    m_projectionSet = false;
}

void GPUHelper::ResetRenderState() noexcept {
    m_core.ClearDepth(0.0);
    m_core.DepthFunc(GLCore::kGreater);
    EnableCap(GLCore::kDepthTest);
    DisableCap(GLCore::kAlphaTest);
    DisableBlend();
    DisableCap(GLCore::kLighting);
    DisableCap(GLCore::kTexture2D);
    m_core.Color3f(1.0F, 1.0F, 1.0F);
}

void GPUHelper::SetViewProjection(double width, double height) noexcept {
    m_halfWidth = width * 0.5;
    m_halfHeight = height * 0.5;
    m_drawDepth = 0.0;
    m_core.MatrixMode(GLCore::kProjection);
    m_core.LoadIdentity();
    m_core.Ortho(-m_halfWidth, m_halfWidth, -m_halfHeight, m_halfHeight, 2.0, 12.0);
    m_core.MatrixMode(GLCore::kModelview);
    m_core.LoadIdentity();
    // An eye at (0, 0, 5) that looks at the origin with y up: its axes are the world's, so only the distance stays.
    m_core.Translated(0.0, 0.0, -5.0);
    m_projectionSet = true;
}

void GPUHelper::BeginRender(double width, double height) noexcept {
    ResetRenderState();
    SetViewProjection(width, height);
}

bool GPUHelper::SetRenderTarget(const GPUTexture* texture, bool multisample, std::uint32_t a,
                                std::uint32_t b) noexcept {
    m_multisampleTarget = texture != nullptr && multisample;
    bool done = false;
    if (!multisample) {
        done = m_resources->SetRenderTarget(m_gl, texture, 0, a, b);
    } else {
        // Hosts refuse a number of samples for a while, so the last one is tried again; but not for ever.
        constexpr int kAttempts = 1000;
        std::int32_t samples = 0;
        m_gl->GetIntegerv(GLCore::kMaxSamples, &samples, 1);
        for (int attempt = 0; attempt < kAttempts && !done; ++attempt) {
            while (samples >= 8) {
                samples /= 2;
            }
            done = m_resources->SetRenderTarget(m_gl, texture, static_cast<std::uint32_t>(samples), a, b);
            if (samples <= 0) {
                break;
            }
        }
    }
    if (done) {
        m_targetWidth = texture != nullptr ? texture->width : 0;
        m_targetHeight = texture != nullptr ? texture->height : 0;
    }
    return done;
}

bool GPUHelper::UseProgram(ShaderProgram& program) noexcept {
    m_currentProgram = &program;
    return program.Begin(m_targetWidth, m_targetHeight);
}

void GPUHelper::Clear(float r, float g, float b, float a) noexcept {
    m_core.ClearColor(r, g, b, a);
    m_core.Clear(GLCore::kColorBufferBit);
}

QuadRect GPUHelper::MapRect(bool flipY, const QuadRect* rect) const noexcept {
    QuadRect world = rect != nullptr ? *rect : QuadRect{};
    world.left = 2.0 * world.left * m_halfWidth - m_halfWidth;
    world.right = 2.0 * world.right * m_halfWidth - m_halfWidth;
    world.top = 2.0 * world.top * m_halfHeight - m_halfHeight;
    world.bottom = 2.0 * world.bottom * m_halfHeight - m_halfHeight;
    if (flipY) {
        std::swap(world.top, world.bottom);
    }
    return world;
}

void GPUHelper::ApplyStages(const GPUTexture* texture0, const GPUTexture* texture1,
                            const GPUTexture* texture2) noexcept {
    if (m_currentProgram == nullptr || !m_currentProgram->IsRegular()) {
        return;
    }
    bool first = false;
    bool second = false;
    bool third = false;
    m_currentProgram->GetVerification(first, second, third);
    if (!third) {
        return;
    }
    std::uint32_t stage = 0;
    for (const GPUTexture* texture : {texture0, texture1, texture2}) {
        if (texture != nullptr) {
            m_currentProgram->SetTextureStage(stage, *texture, 0.0F, 0.0F, 1.0F, 1.0F);
        }
        ++stage;
    }
    m_currentProgram->SetVerification(first, second, third);
}

template <class TexCoord>
bool GPUHelper::drawStrip(bool flipY, const QuadRect* rect, TexCoord&& texCoord) noexcept {
    const QuadRect world = MapRect(flipY, rect);
    const float left = static_cast<float>(world.left);
    const float top = static_cast<float>(world.top);
    const float right = static_cast<float>(world.right);
    const float bottom = static_cast<float>(world.bottom);
    const float depth = static_cast<float>(m_drawDepth) - 0.00001F;
    m_core.Begin(GLCore::kTriangleStrip);
    texCoord(0.0F, 0.0F);
    m_core.Vertex3f(left, top, depth);
    texCoord(0.0F, 1.0F);
    m_core.Vertex3f(left, bottom, depth);
    texCoord(1.0F, 0.0F);
    m_core.Vertex3f(right, top, depth);
    texCoord(1.0F, 1.0F);
    m_core.Vertex3f(right, bottom, depth);
    m_core.End();
    return true;
}

bool GPUHelper::DrawQuad(const GPUTexture& texture, bool flipY, const QuadRect* rect) noexcept {
    ApplyStages(&texture, nullptr, nullptr);
    return drawStrip(flipY, rect, m_core.TexCoord2f);
}

bool GPUHelper::DrawQuad2(const GPUTexture& texture0, const GPUTexture& texture1, bool flipY,
                          const QuadRect* rect) noexcept {
    using MultiTexCoord2f = void(LUMISET_CALL*)(std::uint32_t, float, float);
    const auto multiTexCoord = reinterpret_cast<MultiTexCoord2f>(entries[arbEntry("glMultiTexCoord2fARB")]);
    ApplyStages(&texture0, &texture1, nullptr);
    if (multiTexCoord == nullptr) {
        return drawStrip(flipY, rect, m_core.TexCoord2f);  // which are the first unit's
    }
    return drawStrip(flipY, rect, [&](float s, float t) { multiTexCoord(GLCore::kTexture0, s, t); });
}

bool GPUHelper::SeparableBlur(std::int32_t sizeA, std::int32_t sizeB, const GPUTexture& source,
                              const GPUTexture& temporary, const GPUTexture& destination, ShaderProgram& programA,
                              ShaderProgram& programB) noexcept {
    const auto pass = [&](const GPUTexture& from, const GPUTexture& to, ShaderProgram& program, std::int32_t size) {
        if (!SetRenderTarget(&to, false, 0, 0) || !UseProgram(program)) {
            return false;
        }
        program.SetInt("blurSize", size / 2);
        program.SetInt("isOdd", size % 2);
        return DrawQuad(from, false, nullptr);
    };
    return pass(source, temporary, programB, sizeB) && pass(temporary, destination, programA, sizeA);
}

bool GPUHelper::CreateTexture(GPUTexture& texture, std::int32_t width, std::int32_t height, std::int32_t format,
                              std::uint32_t a, std::uint32_t b) noexcept {
    const bool created =
        m_resources != nullptr && m_resources->CreateTexture(m_gl, &texture, 0, width, height, format, a, b, 0);
    m_liveTextures += created ? 1 : 0;
    return created;
}

void GPUHelper::ReleaseTexture(GPUTexture& texture) noexcept {
    if (texture.handle != nullptr && texture.handle->IsValid()) {
        --m_liveTextures;
    }
    if (m_resources != nullptr) {
        m_resources->ReleaseTexture(&texture);
    }
}

bool GPUHelper::CreateProgram(const ProgramText& vertexText, const ProgramText& fragmentText,
                              ShaderProgram& program) noexcept {
    if (m_resources == nullptr) {
        return false;
    }
    IHostProgram* made = nullptr;
    const bool created =
        m_resources->CreateProgram(m_gl, &made, vertexText.text, fragmentText.text, nullptr, vertexText.storedSize,
                                   fragmentText.storedSize, 0, vertexText.plainSize, fragmentText.plainSize, 0,
                                   vertexText.key, vertexText.kind, fragmentText.key, fragmentText.kind, 0, 0);
    program.Attach(m_resources, made);
    m_livePrograms += created ? 1 : 0;
    return created;
}

void GPUHelper::ReleaseProgram(ShaderProgram& program) noexcept {
    if (program.IsValid()) {
        --m_livePrograms;
    }
    if (m_currentProgram == &program) {
        m_currentProgram = nullptr;
    }
    program.Detach();
}

bool GPUHelper::CheckPrograms(IHostGL* gl, const ProgramText* const* vertexTexts,
                              const ProgramText* const* fragmentTexts) noexcept {
    if (gl == nullptr || !Load(0)) {
        return false;
    }
    bool ok = true;
    for (; ok && *vertexTexts != nullptr && *fragmentTexts != nullptr; ++vertexTexts, ++fragmentTexts) {
        ShaderProgram program;
        ok = CreateProgram(**vertexTexts, **fragmentTexts, program);
        ReleaseProgram(program);
    }
    return ok;
}

void GPUHelper::LoadPrograms(GPUProgramSet& result, IHostGL* gl, const ProgramText* const* vertexTexts,
                             const ProgramText* const* fragmentTexts) noexcept {
    result = {0, CheckPrograms(gl, vertexTexts, fragmentTexts) ? 1U : 0U, 1};
}

void GPUHelper::NotifyTarget(std::uint32_t /*value*/) noexcept {
    m_gl->SetTargetState(0);
}

}  // namespace lumiset
