#include "adapters/openfx/bundle.h"

#include <exception>

#include "hostkit/dynamic_library.h"
#include "hostkit/host_allocator.h"
#include "hostkit/names.h"
#include "hostkit/report.h"
#include "hostkit/thread_pool.h"

namespace lumiset::openfx {

Bundle::Bundle() {
    const hostkit::EffectCatalogue catalogue(effectLibrary());
    for (const hostkit::EffectDescription& description : catalogue.effects()) {
        auto effect = std::make_unique<Effect>();
        effect->object = hostkit::ComPtr<IVideoGPUEffect>::adopt(effectLibrary().CreateEffect(description.index));
        if (!effect->object) {
            throw hostkit::ModuleError("There is no memory for the effect \"" + description.name + "\".");
        }
        effect->parameters = parameterList(description);
        effect->identifier = "org.lumiset." + hostkit::identifierOf(description.name);
        effect->description = description;
        m_effects.push_back(std::move(effect));
    }
}

const Bundle* Bundle::get() noexcept {
    static const Bundle* const loaded = []() noexcept -> const Bundle* {
        try {
            const auto* const bundle = new Bundle;
            hostkit::keepThisCodeLoaded();
            return bundle;
        } catch (const std::exception& error) {
            hostkit::report(error.what());
            return nullptr;
        }
    }();
    return loaded;
}

hostkit::ComPtr<IHostAllocator> Bundle::scratch() const {
    const std::lock_guard lock(m_mutex);
    if (!m_scratch) {
        m_scratch = hostkit::PoolAllocator::create();
    }
    return m_scratch;
}

hostkit::ComPtr<IHostParallel> Bundle::threads() const {
    const std::lock_guard lock(m_mutex);
    if (!m_threads) {
        m_threads = hostkit::ThreadPool::create(hostkit::wantedThreads()).query<IHostParallel>();
    }
    return m_threads;
}

void Bundle::removeInstance(bool keepScratch) const {
    if (--m_instances == 0 && !keepScratch) {
        freeScratch();
    }
}

void Bundle::freeScratch() const {
    hostkit::ComPtr<IHostAllocator> memory;
    hostkit::ComPtr<IHostParallel> threads;
    const std::lock_guard lock(m_mutex);
    std::swap(memory, m_scratch);
    std::swap(threads, m_threads);
}

}  // namespace lumiset::openfx
