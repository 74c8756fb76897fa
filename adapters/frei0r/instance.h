#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "adapters/frei0r/effect.h"
#include "adapters/frei0r/host_clock.h"
#include "hostkit/renderer.h"

namespace lumiset::frei0r {

/// One use of an effect in a host. Any thread may work with it; they wait for each other, since there are hosts that
/// cut one instance's pictures into strips for several threads. Different instances share nothing that a thread would
/// wait for but the bookkeeping of scratch memory.
class Instance {
public:
    /// Throws std::length_error for a size that no frame can have, std::bad_alloc.
    Instance(const Effect& effect, std::uint32_t width, std::uint32_t height);

    /// `value` is what the parameter's type says. An index that is none changes nothing.
    void set(int index, const void* value);
    /// Tells the value as it was made safe.
    void get(int index, void* value) const;

    /// Renders a frame; one that cannot be rendered is copied, with a report. `source` may be `destination`. `caller`
    /// is the address that the host's call returns to.
    void update(double hostTime, const void* caller, const std::uint32_t* source, std::uint32_t* destination) noexcept;

private:
    [[nodiscard]] const Parameter* parameterAt(int index) const;
    [[nodiscard]] VideoFrameDesc frameAt(std::uint32_t* pixels) const;
    void render(double seconds, const std::uint32_t* source, std::uint32_t* destination);
    void settle();

    mutable std::mutex m_mutex;
    const Effect& m_effect;
    std::uint32_t m_width;
    std::uint32_t m_padding = 0;  ///< columns at the right that are no part of the picture
    std::uint32_t m_height;
    std::vector<Value> m_values;  // one for each of the plug-in's parameters
    hostkit::ParameterStore m_preset;
    bool m_changed = false;  // values that have not arrived in the chain
    std::shared_ptr<IHostAllocator> m_scratch;
    std::shared_ptr<IHostParallel> m_threads;
    std::vector<hostkit::EffectStage> m_chain;
    hostkit::Renderer m_renderer;
    hostkit::FrameContext m_context;
    HostClock m_clock;
};

}  // namespace lumiset::frei0r
