#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "adapters/openfx/parameter_list.h"
#include "hostkit/com_ptr.h"
#include "hostkit/module.h"

namespace lumiset::openfx {

/// What the instances of one plug-in share. Any number of threads may use it.
struct Effect {
    hostkit::EffectDescription description;
    hostkit::ComPtr<IVideoGPUEffect> object;
    std::vector<Parameter> parameters;
    std::string identifier;  ///< the plug-in's, for good
};

/// The effects of the module that lies in the bundle.
class Bundle {
public:
    /// Loaded at the first call, for good: hosts load and unload plug-ins for every frame, from several threads, and
    /// may have threads in them when the program ends. Null, with a report, when the module cannot be had.
    [[nodiscard]] static const Bundle* get() noexcept;

    [[nodiscard]] const std::vector<std::unique_ptr<const Effect>>& effects() const { return m_effects; }
    [[nodiscard]] IEffectLibrary& effectLibrary() const { return m_module.effectLibrary(); }

    /// Scratch memory that frames leave to those after them.
    [[nodiscard]] hostkit::ComPtr<IHostAllocator> scratch() const;
    /// Threads of our own, for hosts that offer none.
    [[nodiscard]] hostkit::ComPtr<IHostParallel> threads() const;
    /// Gives both back to the system; renders that are under way keep theirs until they end.
    void freeScratch() const;

    /// Instances there are. With the last of them go memory and threads, unless `keepScratch`.
    void addInstance() const { ++m_instances; }
    void removeInstance(bool keepScratch) const;

private:
    Bundle();

    hostkit::Module m_module;
    std::vector<std::unique_ptr<const Effect>> m_effects;
    mutable std::atomic<int> m_instances{0};
    mutable std::mutex m_mutex;
    mutable hostkit::ComPtr<IHostAllocator> m_scratch;
    mutable hostkit::ComPtr<IHostParallel> m_threads;
};

}  // namespace lumiset::openfx
