#include "hostkit/renderer.h"

#include <algorithm>
#include <limits>
#include <string>

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

constexpr std::size_t kFree = std::numeric_limits<std::size_t>::max();

}  // namespace

void Renderer::processFrame(const EffectStage& stage, const VideoFrameDesc& source, const VideoFrameDesc& destination,
                            const FrameRenderInfo& info) const {
    RenderHost host(stage.parameters, info.timeSeconds, m_allocator, m_threads);
    if (m_firstChoice && m_firstChoice(*stage.effect.get(), host, source, destination, info)) {
        return;
    }
    if (!stage.effect->ProcessFrame(&host, &source, nullptr, &destination, &info)) {
        throw RenderError("The effect \"" + stage.parameters.effect().name + "\" could not render the frame at " +
                          formatNumber(info.timeSeconds, 3) + " seconds.");
    }
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

std::size_t Renderer::takeScratch(const VideoFrameDesc& like) {
    std::size_t which = 0;
    while (which < m_scratch.size() && m_freeAfter[which] != kFree) {
        ++which;
    }
    if (which == m_scratch.size()) {
        m_scratch.emplace_back();
        m_freeAfter.push_back(kFree);
    }
    FrameBuffer& buffer = m_scratch[which];
    if (!buffer.fits(like.width, like.height, m_format)) {
        buffer = FrameBuffer();  // Frees the old one before the new one is taken.
        buffer = FrameBuffer(like.width, like.height, m_format);
    }
    return which;
}

// Frames stay in one format and row order between the effects. A frame is kept until the last stage that reads it has
// run: the next one, or one that mixes its result with it.
void Renderer::render(const VideoFrameDesc& source, const VideoFrameDesc& destination, const FrameContext& context) {
    const auto format = static_cast<std::uint32_t>(m_format);
    if (m_chain.empty()) {
        convertFrame(source, destination);
        return;
    }
    std::fill(m_freeAfter.begin(), m_freeAfter.end(), kFree);
    std::vector<VideoFrameDesc> inputs(m_chain.size() + 1, source);
    if (source.format != format) {
        const std::size_t converted = takeScratch(source);
        m_freeAfter[converted] = lastReader(0);
        inputs[0] = m_scratch[converted].desc();
        convertFrame(source, inputs[0]);
    }
    for (std::size_t i = 0; i < m_chain.size(); ++i) {
        const EffectStage& stage = m_chain[i];
        if (i + 1 == m_chain.size() && destination.format == format) {
            inputs[i + 1] = destination;
        } else {
            const std::size_t output = takeScratch(source);
            m_freeAfter[output] = lastReader(i + 1);
            inputs[i + 1] = m_scratch[output].desc();
        }
        renderStage(stage, inputs[i], inputs[i + 1], context);
        for (const EffectStage::GroupMix& each : stage.mixes) {
            mixFrames(inputs[i + 1 - each.stages], inputs[i + 1], each.mix);
        }
        std::replace(m_freeAfter.begin(), m_freeAfter.end(), i, kFree);
    }
    if (destination.format != format) {
        convertFrame(inputs.back(), destination);
    }
}

std::size_t Renderer::lastReader(std::size_t stage) const {
    std::size_t last = stage;
    for (std::size_t i = stage; i < m_chain.size(); ++i) {
        for (const EffectStage::GroupMix& each : m_chain[i].mixes) {
            last = i + 1 == stage + each.stages ? i : last;
        }
    }
    return last;
}

}  // namespace lumiset::hostkit
