#include "hostkit/renderer.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <string>
#include <utility>

#include "hostkit/parameter_text.h"

namespace lumiset::hostkit {
namespace {

constexpr std::size_t kFree = std::numeric_limits<std::size_t>::max();

}  // namespace

std::vector<Renderer::Part> Renderer::partsOf(const VideoFrameDesc& source, const VideoFrameDesc& destination,
                                              const FrameContext& context) {
    FrameRenderInfo info{};
    info.timeSeconds = context.timeSeconds;
    info.field = FrameRenderInfo::kWholeFrame;
    info.pixelAspect = 1.0;
    if (context.pixelAspect > 0.0) {
        info.flags |= FrameRenderInfo::kHasPixelAspect;
        info.pixelAspect = context.pixelAspect;
    }
    if (context.fields == FieldOrder::kProgressive) {
        return {{source, destination, info}};
    }
    info.flags |= FrameRenderInfo::kHasField;
    if (context.fields == FieldOrder::kTopFieldAlone || context.fields == FieldOrder::kBottomFieldAlone) {
        info.field = context.fields == FieldOrder::kBottomFieldAlone ? 1 : 0;
        return {{source, destination, info}};
    }
    std::vector<Part> parts;
    for (const bool bottom : {false, true}) {
        const VideoFrameDesc field = fieldOf(source, bottom);
        if (field.height > 0) {
            const bool second = bottom == (context.fields == FieldOrder::kTopFirst);
            info.field = bottom ? 1 : 0;
            info.timeSeconds = context.timeSeconds + (second ? context.durationSeconds / 2.0 : 0.0);
            parts.push_back({field, fieldOf(destination, bottom), info});
        }
    }
    return parts;
}

void Renderer::process(const EffectStage& stage, const Part& part) const {
    RenderHost host(stage.parameters, part.info.timeSeconds, m_allocator, m_threads);
    if (!stage.effect->ProcessFrame(&host, &part.source, nullptr, &part.destination, &part.info)) {
        throw RenderError("The effect \"" + stage.parameters.effect().name + "\" could not render the frame at " +
                          formatNumber(part.info.timeSeconds, 3) + " seconds.");
    }
}

// Both fields of a frame have to get equally far: where the second one does not, the first is rendered once more.
std::size_t Renderer::chooseFirst(std::size_t first, std::size_t count, const std::vector<Part>& parts) const {
    for (std::size_t i = 0; count > 0 && i < parts.size();) {
        const Part& part = parts[i];
        std::deque<RenderHost> hosts;
        std::vector<EffectCall> calls;
        for (std::size_t k = first; k < first + count; ++k) {
            hosts.emplace_back(m_chain[k].parameters, part.info.timeSeconds, m_allocator, m_threads);
            calls.push_back({*m_chain[k].effect.get(), hosts.back()});
        }
        const std::size_t done = m_firstChoice(calls, part.source, part.destination, part.info);
        i = done < count && i > 0 ? 0 : i + 1;
        count = done;
    }
    return count;
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
    // The frame behind so many stages.
    const auto placeFor = [&](std::size_t stages) {
        if (stages == m_chain.size() && destination.format == format) {
            return destination;
        }
        const std::size_t output = takeScratch(source);
        m_freeAfter[output] = lastReader(stages);
        return m_scratch[output].desc();
    };
    for (std::size_t i = 0; i < m_chain.size();) {
        const std::size_t run = m_firstChoice ? runLength(i) : 1;
        VideoFrameDesc output = placeFor(i + run);
        std::size_t done = m_firstChoice ? chooseFirst(i, run, partsOf(inputs[i], output, context)) : 0;
        const std::size_t end = i + std::max(done, std::size_t{1});
        if (end < i + run) {
            // The run's last frame is not to be read by one of its own stages.
            const VideoFrameDesc unfinished = std::exchange(output, placeFor(end));
            if (done > 0) {
                convertFrame(unfinished, output);
            }
        }
        if (done == 0) {
            for (const Part& part : partsOf(inputs[i], output, context)) {
                process(m_chain[i], part);
            }
        }
        inputs[end] = output;
        for (const EffectStage::GroupMix& each : m_chain[end - 1].mixes) {
            mixFrames(inputs[end - each.stages], output, each.mix);
        }
        std::replace_if(
            m_freeAfter.begin(), m_freeAfter.end(), [end](std::size_t last) { return last < end; }, kFree);
        i = end;
    }
    if (destination.format != format) {
        convertFrame(inputs.back(), destination);
    }
}

std::size_t Renderer::lastMix(std::size_t stage) const {
    std::size_t last = kFree;
    for (std::size_t i = stage; i < m_chain.size(); ++i) {
        for (const EffectStage::GroupMix& each : m_chain[i].mixes) {
            last = i + 1 == stage + each.stages ? i : last;
        }
    }
    return last;
}

std::size_t Renderer::lastReader(std::size_t stage) const {
    const std::size_t last = lastMix(stage);
    return last != kFree ? last : stage;
}

std::size_t Renderer::runLength(std::size_t stage) const {
    std::size_t end = stage + 1;
    while (end < m_chain.size() && m_chain[end - 1].mixes.empty() && lastMix(end) == kFree) {
        ++end;
    }
    return end - stage;
}

}  // namespace lumiset::hostkit
