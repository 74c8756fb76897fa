#pragma once

#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "bindings/c/lumiset.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/host_allocator.h"
#include "hostkit/look.h"
#include "hostkit/module.h"
#include "hostkit/picture.h"
#include "hostkit/thread_pool.h"

// What stands behind the handles of lumiset.h.

namespace lumiset::bindings {

/// The loaded effects with what is told of them. Never changes once it is made.
struct Library {
    explicit Library(const std::filesystem::path& path);

    hostkit::Module module;
    std::string path = module.path().string();
    hostkit::EffectCatalogue catalogue{module.effectLibrary()};
    hostkit::ComPtr<IHostAllocator> allocator = hostkit::PoolAllocator::create();
    hostkit::ComPtr<hostkit::ThreadPool> threads = hostkit::ThreadPool::create(hostkit::wantedThreads());
    std::vector<std::string> looks;  ///< their names

    /// Texts of each parameter that no table holds.
    struct ParameterTexts {
        std::string name;
        std::string defaultValue;
        std::string range;
    };
    std::vector<std::vector<ParameterTexts>> texts;  ///< by effect and parameter
};

using SharedLibrary = std::shared_ptr<const Library>;

}  // namespace lumiset::bindings

struct lumiset_library {
    lumiset::bindings::SharedLibrary shared;
};

struct lumiset_look {
    lumiset::bindings::SharedLibrary shared;
    lumiset::hostkit::MaskedLook masked;
    std::string text{};
};

struct lumiset_renderer {
    lumiset::bindings::SharedLibrary shared;
    std::vector<lumiset::hostkit::EffectStage> chain;
    lumiset::hostkit::PictureRenderer renderer{chain, shared->allocator.get(), shared->threads.get()};
};
