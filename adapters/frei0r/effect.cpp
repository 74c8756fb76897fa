#include "adapters/frei0r/effect.h"

#include <filesystem>
#include <map>
#include <mutex>
#include <system_error>
#include <utility>

#include "hostkit/dynamic_library.h"
#include "hostkit/host_allocator.h"
#include "hostkit/names.h"
#include "hostkit/preset_file.h"
#include "hostkit/report.h"
#include "hostkit/thread_pool.h"

namespace lumiset::frei0r {
namespace {

hostkit::ComPtr<IVideoGPUEffect> createEffect(const hostkit::Module& module, std::uint32_t index) {
    auto effect = hostkit::ComPtr<IVideoGPUEffect>::adopt(module.effectLibrary().CreateEffect(index));
    if (!effect) {
        throw hostkit::ModuleError("The effects module " + module.path().string() + " does not have this effect.");
    }
    return effect;
}

}  // namespace

Effect::Effect(std::uint32_t index)
    : m_object(createEffect(m_module, index)),
      m_description(hostkit::describeEffect(*m_object.get(), index)),
      m_parameters(parameterList(m_description)),
      m_explanation(m_description.name + ", a video effect of Lumiset") {}

const Effect* Effect::load(std::uint32_t index) noexcept {
    try {
        const auto* const effect = new Effect(index);
        hostkit::keepThisCodeLoaded();
        return effect;
    } catch (const std::exception& error) {
        hostkit::report(error.what());
        return nullptr;
    }
}

hostkit::ParameterStore Effect::presetValues(const std::string& preset) const {
    hostkit::ParameterStore values(m_description);
    if (hostkit::trimmed(preset).empty()) {
        return values;
    }
    try {
        values.apply(m_description.preset(preset));
    } catch (const hostkit::ParameterError& unknown) {
        std::error_code error;
        if (!std::filesystem::exists(preset, error)) {
            hostkit::report(std::string(unknown.what()) + " Nor is it a preset file.");
            return values;
        }
        try {
            hostkit::loadPresetFile(m_module.effectLibrary(), preset, values);
        } catch (const hostkit::PresetFileError& reason) {
            hostkit::report(reason.what());
        }
    }
    return values;
}

std::shared_ptr<IHostAllocator> scratchFor(std::uint32_t width, std::uint32_t height) {
    static std::mutex& mutex = *new std::mutex;
    static auto& pools = *new std::map<std::pair<std::uint32_t, std::uint32_t>, std::weak_ptr<IHostAllocator>>;
    const std::lock_guard lock(mutex);
    std::erase_if(pools, [](const auto& pool) { return pool.second.expired(); });
    std::weak_ptr<IHostAllocator>& known = pools[{width, height}];
    std::shared_ptr<IHostAllocator> pool = known.lock();
    if (pool == nullptr) {
        const hostkit::ComPtr<IHostAllocator> made = hostkit::PoolAllocator::create();
        made->AddRef();
        pool = {made.get(), [](IHostAllocator* allocator) { allocator->Release(); }};
        known = pool;
    }
    return pool;
}

std::shared_ptr<IHostParallel> sharedThreads() {
    static std::mutex& mutex = *new std::mutex;
    static auto& known = *new std::weak_ptr<IHostParallel>;
    const std::lock_guard lock(mutex);
    std::shared_ptr<IHostParallel> pool = known.lock();
    if (pool == nullptr) {
        const auto made = hostkit::ThreadPool::create(hostkit::wantedThreads());
        made->AddRef();
        pool = {made.get(), [](IHostParallel* threads) { threads->Release(); }};
        known = pool;
    }
    return pool;
}

}  // namespace lumiset::frei0r
