// The entry points of the plug-in file.

#include <algorithm>
#include <array>
#include <utility>
#include <vector>

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

/// One for each effect of the module; none without the module.
std::vector<Plugin> makePlugins() {
    static constexpr auto kEntries = entries(std::make_index_sequence<kMostPlugins>());
    std::vector<Plugin> plugins;
    const Bundle* bundle = Bundle::get();
    for (std::size_t i = 0; bundle != nullptr && i < std::min(bundle->effects().size(), kMostPlugins); ++i) {
        plugins.push_back({kImageEffectApi, kImageEffectApiVersion, bundle->effects()[i]->identifier.c_str(),
                           LUMISET_VERSION_MAJOR, LUMISET_VERSION_MINOR, kEntries[i].setHost, kEntries[i].main});
    }
    return plugins;
}

/// Hosts keep the addresses.
std::vector<Plugin>& plugins() noexcept {
    static auto& made = *new std::vector<Plugin>(makePlugins());
    return made;
}

}  // namespace
}  // namespace lumiset::openfx

lumiset::openfx::Status OfxSetHost(const lumiset::openfx::Host* host) {
    return host != nullptr && host->fetchSuite != nullptr ? lumiset::openfx::kOk : lumiset::openfx::kFailed;
}

int OfxGetNumberOfPlugins() {
    return static_cast<int>(lumiset::openfx::plugins().size());
}

lumiset::openfx::Plugin* OfxGetPlugin(int nth) {
    std::vector<lumiset::openfx::Plugin>& plugins = lumiset::openfx::plugins();
    return nth >= 0 && static_cast<std::size_t>(nth) < plugins.size() ? &plugins[static_cast<std::size_t>(nth)]
                                                                      : nullptr;
}
