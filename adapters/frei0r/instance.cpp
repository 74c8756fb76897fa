#include "adapters/frei0r/instance.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <exception>
#include <stdexcept>

#include "hostkit/report.h"

namespace lumiset::frei0r {
namespace {

constexpr std::uint32_t kBytesPerPixel = 4;

Value readValue(const Parameter& parameter, const void* from) {
    Value value;
    switch (parameter.type) {
        case kFrei0rColor:
            value.color = *static_cast<const Frei0rColor*>(from);
            break;
        case kFrei0rString:
            if (const char* text = *static_cast<const char* const*>(from)) {
                value.text = text;
            }
            break;
        default:
            value.number = *static_cast<const double*>(from);
            break;
    }
    return madeSafe(parameter, std::move(value));
}

}  // namespace

Instance::Instance(const Effect& effect, std::uint32_t width, std::uint32_t height)
    : m_effect(effect),
      m_width(width),
      m_height(height),
      m_preset(effect.description()),
      m_scratch(scratchFor(width, height)),
      m_threads(sharedThreads()),
      m_chain{{effect.object(), hostkit::ParameterStore(effect.description())}},
      m_renderer(m_chain, kFormatBgra8, m_scratch.get(), m_threads.get()) {
    constexpr std::uint32_t kLongest = INT32_MAX / kBytesPerPixel;
    if (width < 1 || height < 1 || width > kLongest || height > kLongest) {
        throw std::length_error("A picture of this size cannot be rendered.");
    }
    for (const Parameter& parameter : effect.parameters()) {
        m_values.push_back(parameter.defaultValue);
    }
    m_context.durationSeconds = 1.0 / kUsualFrameRate;
    m_context.pixelAspect = 1.0;
}

const Parameter* Instance::parameterAt(int index) const {
    const std::vector<Parameter>& parameters = m_effect.parameters();
    return index >= 0 && static_cast<std::size_t>(index) < parameters.size()
               ? &parameters[static_cast<std::size_t>(index)]
               : nullptr;
}

void Instance::set(int index, const void* value) {
    const Parameter* parameter = parameterAt(index);
    if (parameter == nullptr || value == nullptr) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    Value& own = m_values[static_cast<std::size_t>(index)];
    Value given = readValue(*parameter, value);
    // Files are read when their name changes, not whenever a host repeats it.
    if (parameter->role == Role::kPreset && given.text != own.text) {
        m_preset = m_effect.presetValues(given.text);
    }
    own = std::move(given);
    m_changed = true;
}

void Instance::get(int index, void* value) const {
    const Parameter* parameter = parameterAt(index);
    if (parameter == nullptr || value == nullptr) {
        return;
    }
    const std::lock_guard lock(m_mutex);
    const Value& own = m_values[static_cast<std::size_t>(index)];
    switch (parameter->type) {
        case kFrei0rColor:
            *static_cast<Frei0rColor*>(value) = own.color;
            break;
        case kFrei0rString:
            *static_cast<const char**>(value) = own.text.c_str();
            break;
        default:
            *static_cast<double*>(value) = own.number;
            break;
    }
}

void Instance::settle() {
    hostkit::ParameterStore& store = m_chain.front().parameters;
    store = m_preset;
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const Parameter& parameter = m_effect.parameters()[i];
        if (parameter.role == Role::kPixelAspect) {
            m_context.pixelAspect = pixelAspectOf(m_values[i].number);
        } else if (parameter.role == Role::kFields) {
            m_context.fields = fieldOrderOf(m_values[i].number);
        } else if (parameter.role == Role::kPadding) {
            m_padding = std::min(paddingOf(m_values[i].number), m_width - 1);
        } else if (parameter.belongsToEffect() && !isDefault(parameter, m_values[i])) {
            const hostkit::ParameterDescription& source = m_effect.description().parameters[parameter.source];
            // Read first: of a point the other half stays.
            ParamValue value = store.valueAt(source, 0.0);
            toModule(parameter, source, m_values[i], value);
            store.set(source, value);
        }
    }
    m_changed = false;
}

VideoFrameDesc Instance::frameAt(std::uint32_t* pixels) const {
    VideoFrameDesc frame{};
    frame.data = pixels;
    frame.width = static_cast<std::int32_t>(m_width - m_padding);
    frame.height = static_cast<std::int32_t>(m_height);
    frame.stride = static_cast<std::int32_t>(m_width * kBytesPerPixel);
    frame.bytesPerPixel = kBytesPerPixel;
    frame.format = kFormatBgra8;
    return frame;
}

void Instance::render(double seconds, const std::uint32_t* source, std::uint32_t* destination) {
    if (m_changed) {
        settle();
    }
    m_context.timeSeconds = seconds;
    // The module reads a source only.
    const VideoFrameDesc from = frameAt(const_cast<std::uint32_t*>(source));
    if (source != destination) {
        for (std::uint32_t y = 0; m_padding > 0 && y < m_height; ++y) {
            const std::size_t at = std::size_t{y} * m_width + m_width - m_padding;
            std::copy_n(source + at, m_padding, destination + at);
        }
        m_renderer.render(from, frameAt(destination), m_context);
        return;
    }
    const hostkit::FrameBuffer copy(from.width, from.height, kFormatBgra8);
    hostkit::convertFrame(from, copy.desc());
    m_renderer.render(copy.desc(), from, m_context);
}

void Instance::update(double hostTime, const void* caller, const std::uint32_t* source,
                      std::uint32_t* destination) noexcept {
    try {
        const std::lock_guard lock(m_mutex);
        render(m_clock.seconds(hostTime, caller), source, destination);
    } catch (const std::exception& error) {
        hostkit::report(error.what());
        std::memmove(destination, source, std::size_t{m_width} * m_height * kBytesPerPixel);
    }
}

}  // namespace lumiset::frei0r
