#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "host/host_interfaces.h"
#include "host/reference_count.h"
#include "hostkit/effect_catalogue.h"

namespace lumiset::hostkit {

/// The values of one effect's parameters over time. Filled before a render; during it any number of threads
/// may read it.
class ParameterStore {
public:
    /// All parameters at their defaults, which hold at all times. `effect` must outlive the store.
    explicit ParameterStore(const EffectDescription& effect);

    /// Takes over a preset's values; parameters with keyframes become constant.
    void apply(const PresetDescription& preset);
    /// Sets the parameter called `name` from text as `parseValue` reads it. Throws `ParameterError`.
    void set(std::string_view name, std::string_view value);
    /// `parameter` is one of the effect's own, as everywhere in this class.
    void set(const ParameterDescription& parameter, const ParamValue& value);
    /// Adds a keyframe, or replaces the one at the same time. Sliders, points and colours run in straight
    /// lines from key to key; switches and lists keep a key's value until the next. Before the first and
    /// after the last key their values hold. Throws `ParameterError` for a time that is negative or not
    /// finite too.
    void addKey(std::string_view name, double timeSeconds, std::string_view value);
    void addKey(const ParameterDescription& parameter, double timeSeconds, const ParamValue& value);

    [[nodiscard]] const EffectDescription& effect() const { return *m_effect; }
    [[nodiscard]] ParamValue valueAt(const ParameterDescription& parameter, double timeSeconds) const;
    [[nodiscard]] bool hasKeys(const ParameterDescription& parameter) const;

private:
    struct Key {
        double timeSeconds;
        ParamValue value;
    };
    struct Track {
        ParamValue constant;
        std::vector<Key> keys;  // by time; none: constant
    };
    [[nodiscard]] std::size_t trackIndex(const ParameterDescription& parameter) const;

    const EffectDescription* m_effect;
    std::vector<Track> m_tracks;  // one for each of the effect's parameters
};

/// The host object of one render call: the store's values at one moment. Lives on the caller's stack, longer
/// than the call; its reference count frees nothing.
class RenderHost final : public Counted<IEffectHost> {
public:
    /// Without `allocator` the module takes its scratch memory from its own heap, without `threads` it renders on the
    /// calling thread.
    RenderHost(const ParameterStore& parameters, double timeSeconds, IHostAllocator* allocator = nullptr,
               IHostParallel* threads = nullptr)
        : m_parameters(parameters), m_timeSeconds(timeSeconds), m_allocator(allocator), m_threads(threads) {}

    Result LUMISET_CALL QueryInterface(const Guid& iid, void** out) noexcept override;
    void LUMISET_CALL GetParamValue(std::uint32_t index, ParamValue* out, std::uint32_t type) noexcept override;
    void LUMISET_CALL Reserved4() noexcept override {}
    void LUMISET_CALL Reserved5() noexcept override {}
    void LUMISET_CALL Reserved6() noexcept override {}
    void LUMISET_CALL Reserved7() noexcept override {}
    void LUMISET_CALL GetHostName(const char** out) noexcept override;

private:
    const ParameterStore& m_parameters;
    double m_timeSeconds;
    IHostAllocator* m_allocator;
    IHostParallel* m_threads;
};

}  // namespace lumiset::hostkit
