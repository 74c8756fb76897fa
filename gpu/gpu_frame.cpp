#include "gpu/gpu_frame.h"

#include <algorithm>

namespace lumiset {

GPUFrame::GPUFrame(GPUHelper& gpu, const GPUTexture& source, GPUTexture& destination, bool topDown) noexcept
    : m_gpu(gpu),
      m_source(source),
      m_destination(destination),
      m_given(destination),
      m_turnSource(topDown && source.flipped != 0),
      m_resultFlipped(!topDown && source.flipped != 0) {
    m_source.width = std::min(source.width, destination.width);
    m_source.height = std::min(source.height, destination.height);
    m_destination.width = m_source.width;
    m_destination.height = m_source.height;
    m_ok = m_source.width > 0 && m_source.height > 0;
}

GPUFrame::~GPUFrame() {
    if (m_begun && !m_ok) {
        m_gpu.SetRenderTarget(nullptr, false, 0, 0);
    }
    for (std::size_t i = 0; i < m_temporaryCount; ++i) {
        m_gpu.ReleaseTexture(m_temporaries[i]);
    }
    for (std::size_t i = 0; i < m_programCount; ++i) {
        m_gpu.ReleaseProgram(m_programs[i]);
    }
    m_destination.width = m_given.width;
    m_destination.height = m_given.height;
}

bool GPUFrame::create(std::size_t temporaries, std::span<const GPUProgramSource> programs, std::int32_t temporaryWidth,
                      std::int32_t temporaryHeight) noexcept {
    m_ok = m_ok && temporaries <= kMaxTemporaries && programs.size() <= kMaxPrograms;
    const std::int32_t format = PlainFormat(m_source.format);
    while (m_ok && m_temporaryCount < temporaries) {
        GPUTexture& texture = m_temporaries[m_temporaryCount];
        m_ok = m_gpu.CreateTexture(texture, temporaryWidth, temporaryHeight, format, 0, 0);
        m_temporaryCount += m_ok ? 1 : 0;
        m_ok = m_ok && texture.handle != nullptr;
    }
    while (m_ok && m_programCount < programs.size()) {
        const GPUProgramSource& source = programs[m_programCount];
        ShaderProgram& program = m_programs[m_programCount];
        m_ok = m_gpu.CreateProgram(source.vertex, source.fragment, program);
        m_programCount += m_ok ? 1 : 0;
        m_ok = m_ok && program.IsReady();
    }
    m_ok = m_ok && m_gpu.PrepareCopy();
    if (m_ok) {
        m_gpu.BeginRender(10.0, 10.0);
        m_begun = true;
    }
    return m_ok;
}

ShaderProgram* GPUFrame::begin(std::size_t program, const PassInputs& from, const GPUTexture& to) noexcept {
    ShaderProgram& shader = m_programs[program];
    m_ok = m_ok && m_gpu.SetRenderTarget(&to, false, 0, 0) && m_gpu.UseProgram(shader);
    if (!m_ok) {
        return nullptr;
    }
    constexpr struct {
        const char* name;
        std::size_t stage;
    } kOrders[] = {{"SwapChannels", 0},
                   {"SwapChannelsSrc", 0},
                   {"SwapChannelsSrc0", 0},
                   {"SwapChannelsSrc1", 1},
                   {"SwapChannelsSrc2", 2}};
    for (const auto& [name, stage] : kOrders) {
        if (const GPUTexture* texture = from[stage]) {
            shader.SetInt(name, NeedsChannelSwap(*texture) ? 1 : 0);
        }
    }
    // A quad takes two textures along with it.
    for (std::uint32_t stage = 2; stage < PassInputs::kMost; ++stage) {
        if (const GPUTexture* texture = from[stage]) {
            shader.SetTextureStage(stage, *texture, 0.0F, 0.0F, 1.0F, 1.0F);
        }
    }
    return &shader;
}

void GPUFrame::draw(const PassInputs& from, const QuadRect* rect) noexcept {
    const GPUTexture& first = from.first();
    const bool turned = m_turnSource && &first == &m_source;
    const GPUTexture* second = from[1];
    m_ok = m_ok &&
           (second != nullptr ? m_gpu.DrawQuad2(first, *second, turned, rect) : m_gpu.DrawQuad(first, turned, rect));
}

void GPUFrame::drawRects(const GPUTexture& from, const GPUTexture& to, std::span<const PixelRect> rects) noexcept {
    for (const PixelRect& rect : rects) {
        const QuadRect part{static_cast<double>(rect.left) / to.width, static_cast<double>(rect.top) / to.height,
                            static_cast<double>(rect.right) / to.width, static_cast<double>(rect.bottom) / to.height};
        draw(from, &part);
    }
}

bool GPUFrame::blur(std::size_t vertical, std::size_t horizontal, std::int32_t columns, std::int32_t rows,
                    const GPUTexture& from, const GPUTexture& between, const GPUTexture& to) noexcept {
    m_ok = m_ok && m_gpu.SeparableBlur(columns, rows, from, between, to, m_programs[horizontal], m_programs[vertical]);
    return m_ok;
}

bool GPUFrame::finish(GPUTexture& result) noexcept {
    if (m_ok) {
        result.flipped = m_resultFlipped ? 1 : 0;
        m_gpu.NotifyTarget(m_destination.flipped);
        m_ok = m_gpu.SetRenderTarget(nullptr, false, 0, 0) && m_gpu.FinishFrame(result, m_destination);
    }
    return m_ok;
}

}  // namespace lumiset
