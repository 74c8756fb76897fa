#pragma once

#include <memory>
#include <string>
#include <vector>

#include "frame/frame.h"
#include "hostkit/module.h"
#include "hostkit/parameter_store.h"

namespace lumiset::bench {

/// What the effects need as long as they are measured.
struct Stage {
    hostkit::Module module;
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    hostkit::ComPtr<IHostAllocator> allocator;
};

/// One effect with the values of a preset.
struct Subject {
    std::string name;  ///< effect and preset
    std::shared_ptr<Stage> stage;
    hostkit::ComPtr<IVideoGPUEffect> effect;
    hostkit::ParameterStore parameters;

    /// On the threads of `threads`, or on one.
    bool render(const VideoFrameDesc& source, const VideoFrameDesc& destination,
                IHostParallel* threads = nullptr) const;
    bool render(const Frame& from, const Frame& to, IHostParallel* threads = nullptr) const;
};

/// Every effect at its defaults and with every preset that does something.
std::vector<std::shared_ptr<const Subject>> effectSubjects();

}  // namespace lumiset::bench
