#include "effects/effect.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "frame/operations/flip.h"
#include "host/frame_record.h"

namespace lumiset {
namespace {

bool isRenderable(const VideoFrameDesc* frame) {
    return isSound(frame) && isHostFormat(frame->format);
}

FrameFacts frameFacts(const FrameRenderInfo* info, std::int32_t width, std::int32_t height) {
    const double time = info != nullptr && std::isfinite(info->timeSeconds) ? std::max(info->timeSeconds, 0.0) : 0.0;
    return {info, time, fieldMode(info), isField(info), width, height};
}

void copyText(char* out, std::size_t size, const char* text) {
    std::strncpy(out, text, size - 1);  // the record is zeroed, so the text ends
}

}  // namespace

Result Effect::QueryInterface(const Guid& iid, void** out) noexcept {
    if (out == nullptr) {
        return kResultNoInterface;
    }
    if (iid == IUnknown::kId || iid == IVideoEffect::kId || iid == IVideoGPUEffect::kId) {
        *out = static_cast<IVideoGPUEffect*>(this);
    } else if (iid == IParamToolTip::kId) {
        *out = static_cast<IParamToolTip*>(this);
    } else {
        *out = nullptr;
        return kResultNoInterface;
    }
    AddRef();
    return kResultOk;
}

const char* Effect::GetEffectName() noexcept {
    return m_info.name;
}

std::uint32_t Effect::GetEffectFlags() noexcept {
    return m_info.flags;
}

bool Effect::GetParamInfo(std::uint32_t index, ParamInfo* out) noexcept {
    if (out == nullptr || index >= m_info.params.size()) {
        return false;
    }
    const ParamRow& row = m_info.params[index];
    std::memset(out, 0, sizeof *out);
    out->type = row.type;
    copyText(out->label, sizeof out->label, row.label);
    out->panelRect = row.panelRect;
    out->visible = 1;
    switch (row.type) {
        case kParamSlider:
            out->minimum = row.minimum;
            out->slider = {row.maximum, row.showDecimals ? 1U : 0U};
            break;
        case kParamChoice:
            out->itemCount = static_cast<std::uint32_t>(row.items.size());
            for (std::size_t i = 0; i < row.items.size(); ++i) {
                copyText(out->items[i], sizeof out->items[i], row.items[i]);
            }
            break;
        case kParamGroup:
            out->groupEnd = row.closesGroup ? 1 : 0;
            return true;
        default:
            break;
    }
    out->defaultValue = row.defaultValue;
    return true;
}

const char* Effect::GetPresetName(std::uint32_t preset) noexcept {
    return preset < m_info.presets.names.size() ? m_info.presets.names[preset] : nullptr;
}

bool Effect::GetPresetValue(std::uint32_t preset, std::uint32_t slot, ParamValue* out) noexcept {
    if (out == nullptr || preset >= m_info.presets.names.size() || slot >= m_info.presets.slots) {
        return false;
    }
    *out = m_info.presets.values[preset * m_info.presets.slots + slot];
    return true;
}

const char* Effect::GetParamToolTip(std::uint32_t index) noexcept {
    return index < m_info.params.size() ? m_info.params[index].toolTip : nullptr;
}

bool Effect::ProcessFrame(IEffectHost* host, const VideoFrameDesc* source, void* /*unused*/,
                          const VideoFrameDesc* destination, const FrameRenderInfo* info) noexcept {
    if (!isRenderable(source) || !isRenderable(destination) || source->format != destination->format) {
        return false;
    }
    MemoryAllocator allocator(host);
    const ParamReader params(m_info, host);
    Frame wholeSource;
    Frame wholeDestination;
    if (!wholeSource.WrapDesc(source) || !wholeDestination.WrapDesc(destination)) {
        return false;
    }
    const std::int32_t width = std::min(source->width, destination->width);
    const std::int32_t height = std::min(source->height, destination->height);
    Frame from;
    Frame to;
    from.WrapSubRect(wholeSource, 0, 0, width, height, wholeSource.Flipped());
    to.WrapSubRect(wholeDestination, 0, 0, width, height, wholeDestination.Flipped());

    from.UseResources(&allocator);
    to.UseResources(&allocator);

    const RenderContext context{frameFacts(info, width, height), allocator};
    return renderInRowOrder(params, context, from, to);
}

bool Effect::renderInRowOrder(const ParamReader& params, const RenderContext& context, const Frame& source,
                              Frame& destination) noexcept {
    Frame turned;
    const bool turnSource = m_info.needsTopDown && source.Flipped();
    if (turnSource && (!turned.Allocate(context.width, context.height, source.BytesPerPixel(), &context.allocator,
                                        source.Format(), false) ||
                       !FrameFlipVerticalCopy(source, turned))) {
        return false;
    }
    const Frame& upright = turnSource ? turned : source;
    return Render(params, context, upright, destination) &&
           (upright.Flipped() == destination.Flipped() || FrameFlipVertical(destination));
}

bool Effect::LoadGPUPrograms(IEffectHost* host, GPUProgramSet* status, std::uint32_t /*reserved*/) noexcept {
    IHostGL* gl = queryGL(host);
    if (gl == nullptr) {
        return false;
    }
    // Only the main program is tried; the others meet the compiler when a frame needs them.
    const GPUProgramSource* main = m_info.mainProgram;
    const ProgramText* const vertexTexts[] = {main != nullptr ? &main->vertex : nullptr, nullptr};
    const ProgramText* const fragmentTexts[] = {main != nullptr ? &main->fragment : nullptr, nullptr};
    GPUProgramSet result{};
    LoadPrograms(result, gl, vertexTexts, fragmentTexts);
    gl->Release();
    if (main == nullptr) {
        result.compiled = 0;
    }
    if (status != nullptr) {
        *status = result;
    }
    return result.compiled != 0;
}

bool Effect::RenderFrameGPU(IEffectHost* host, const GPUFrameDesc* source, void* /*extra*/, GPUFrameDesc* destination,
                            const FrameRenderInfo* info) noexcept {
    if (source == nullptr || source->handle == nullptr || destination == nullptr || destination->handle == nullptr) {
        return false;
    }
    const ParamReader params(m_info, host);
    GPUFrame frame(*this, *source, *destination, m_info.needsTopDown);
    return frame.ok() && RenderGPU(params, frameFacts(info, frame.width(), frame.height()), frame);
}

}  // namespace lumiset
