#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/frei0r/parameter_list.h"
#include "hostkit/com_ptr.h"
#include "hostkit/module.h"
#include "hostkit/parameter_store.h"

namespace lumiset::frei0r {

/// What the instances of a plug-in share. Any number of threads may use it.
class Effect {
public:
    /// The effect of that index in the module, loaded for good: hosts load and unload plug-ins at will, and may have
    /// threads in them when the program ends. Null, with a report, when it cannot be had.
    [[nodiscard]] static const Effect* load(std::uint32_t index) noexcept;

    [[nodiscard]] const std::string& explanation() const { return m_explanation; }
    [[nodiscard]] const std::vector<Parameter>& parameters() const { return m_parameters; }
    [[nodiscard]] const hostkit::EffectDescription& description() const { return m_description; }
    [[nodiscard]] const hostkit::ComPtr<IVideoGPUEffect>& object() const { return m_object; }

    /// The values of a preset, by its name or from its file; the defaults for an empty text and, with a report, for
    /// one that is neither.
    [[nodiscard]] hostkit::ParameterStore presetValues(const std::string& preset) const;

private:
    explicit Effect(std::uint32_t index);

    hostkit::Module m_module;
    hostkit::ComPtr<IVideoGPUEffect> m_object;
    hostkit::EffectDescription m_description;
    std::vector<Parameter> m_parameters;
    std::string m_explanation;
};

/// Scratch memory for the instances of one picture size, which goes with the last of them.
[[nodiscard]] std::shared_ptr<IHostAllocator> scratchFor(std::uint32_t width, std::uint32_t height);

/// The threads that all instances render on, as many as `hostkit::wantedThreads` says. They end with the last instance:
/// a host may unload the plug-in then.
[[nodiscard]] std::shared_ptr<IHostParallel> sharedThreads();

}  // namespace lumiset::frei0r
