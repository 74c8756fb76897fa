// The entry points of the plug-in file.

#include <algorithm>
#include <array>
#include <utility>

#include "adapters/openfx/abi/suites.h"
#include "adapters/openfx/actions.h"
#include "hostkit/report.h"

namespace lumiset::openfx {
namespace {

template <std::size_t kPlugin>
Status overlayEntry(const char* action, const void* handle, Props inArgs, Props /*outArgs*/) {
    return actOnOverlay(kPlugin, action, handle, inArgs);
}

template <std::size_t kPlugin>
Status mainEntry(const char* action, const void* handle, Props inArgs, Props outArgs) {
    return actOnEffect(kPlugin, &overlayEntry<kPlugin>, action, handle, inArgs, outArgs);
}

template <std::size_t kPlugin>
void setHost(Host* host) {
    slotOf(kPlugin).set(host);
}

struct Entry {
    void (*setHost)(Host*);
    MainEntry* main;
};

template <std::size_t... kPlugins>
constexpr std::array<Entry, sizeof...(kPlugins)> entries(std::index_sequence<kPlugins...> /*all*/) {
    return {Entry{&setHost<kPlugins>, &mainEntry<kPlugins>}...};
}

/// One for each effect of the module; none without the module. Nothing here can fail for want of memory.
class PluginList {
public:
    PluginList() noexcept {
        static constexpr auto kEntries = entries(std::make_index_sequence<kMostPlugins>());
        const Bundle* bundle = Bundle::get();
        m_count = bundle != nullptr ? std::min(bundle->effects().size(), kMostPlugins) : 0;
        for (std::size_t i = 0; i < m_count; ++i) {
            m_plugins[i] = {kImageEffectApi,       kImageEffectApiVersion, bundle->effects()[i]->identifier.c_str(),
                            LUMISET_VERSION_MAJOR, LUMISET_VERSION_MINOR,  kEntries[i].setHost,
                            kEntries[i].main};
        }
    }

    [[nodiscard]] std::size_t count() const { return m_count; }
    [[nodiscard]] Plugin* at(std::size_t index) { return index < m_count ? &m_plugins[index] : nullptr; }

private:
    std::array<Plugin, kMostPlugins> m_plugins{};
    std::size_t m_count = 0;
};

/// Hosts keep the addresses.
PluginList& plugins() noexcept {
    static PluginList made;
    return made;
}

}  // namespace
}  // namespace lumiset::openfx

lumiset::openfx::Status OfxSetHost(const lumiset::openfx::Host* host) {
    return host != nullptr && host->fetchSuite != nullptr ? lumiset::openfx::kOk : lumiset::openfx::kFailed;
}

int OfxGetNumberOfPlugins() {
    return static_cast<int>(lumiset::openfx::plugins().count());
}

lumiset::openfx::Plugin* OfxGetPlugin(int nth) {
    return nth >= 0 ? lumiset::openfx::plugins().at(static_cast<std::size_t>(nth)) : nullptr;
}
