#include "hostkit/renderer.h"

#include <string>

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {

void Renderer::processFrame(const EffectStage& stage, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                            const FrameRenderInfo& info) const {
    RenderHost host(stage.parameters, info.timeSeconds, m_allocator);
    if (m_firstChoice && m_firstChoice(*stage.effect.get(), host, source, destination, info)) {
        return;
    }
    if (!stage.effect->ProcessFrame(&host, &source, nullptr, &destination, &info)) {
        throw RenderError("The effect \"" + stage.parameters.effect().name + "\" could not render the frame at " +
                          formatNumber(info.timeSeconds, 3) + " seconds.");
    }
}

const VideoFrameDesc& Renderer::scratch(int which, const VideoFrameDesc& like) {
    FrameBuffer& buffer = m_scratch[which];
    if (!buffer.fits(like.width, like.height, m_format)) {
        buffer = FrameBuffer();  // Frees the old one before the new one is taken.
        buffer = FrameBuffer(like.width, like.height, m_format);
    }
    return buffer.desc();
}

void Renderer::renderStage(const EffectStage& stage, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                           const FrameContext& context) const {
    FrameRenderInfo info{};
    info.timeSeconds = context.timeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    info.pixelAspect = 1.0;
    if (context.pixelAspect > 0.0) {
        info.flags |= FrameRenderInfo::kHasPixelAspect;
        info.pixelAspect = context.pixelAspect;
    }
    if (context.fields == FieldOrder::kProgressive) {
        processFrame(stage, source, destination, info);
        return;
    }
    info.flags |= FrameRenderInfo::kHasField;
    if (context.fields == FieldOrder::kTopFieldAlone || context.fields == FieldOrder::kBottomFieldAlone) {
        info.field = context.fields == FieldOrder::kBottomFieldAlone ? 1 : 0;
        processFrame(stage, source, destination, info);
        return;
    }
    for (const bool bottom : {false, true}) {
        const VideoFrameDesc sourceField = fieldOf(source, bottom);
        const VideoFrameDesc destinationField = fieldOf(destination, bottom);
        if (sourceField.height == 0) {
            continue;
        }
        const bool second = bottom == (context.fields == FieldOrder::kTopFirst);
        info.field = bottom ? 1 : 0;
        info.timeSeconds = context.timeSeconds + (second ? context.durationSeconds / 2.0 : 0.0);
        processFrame(stage, sourceField, destinationField, info);
    }
}

void Renderer::render(const VideoFrameDesc& source, const VideoFrameDesc& destination, const FrameContext& context) {
    const auto format = static_cast<std::uint32_t>(m_format);
    if (m_chain.empty()) {
        convertFrame(source, destination);
        return;
    }
    VideoFrameDesc input = source;
    int next = 0;
    if (source.format != format) {
        const VideoFrameDesc& converted = scratch(next, source);
        convertFrame(source, converted);
        input = converted;
        next = 1 - next;
    }
    for (const EffectStage& stage : m_chain) {
        const bool last = &stage == &m_chain.back();
        const VideoFrameDesc& output = last && destination.format == format ? destination : scratch(next, source);
        renderStage(stage, input, output, context);
        input = output;
        next = 1 - next;
    }
    if (destination.format != format) {
        convertFrame(input, destination);
    }
}

}  // namespace lumiset::hostkit
