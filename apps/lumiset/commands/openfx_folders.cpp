#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "adapters/openfx/abi/suites.h"
#include "apps/lumiset/commands/doctor.h"
#include "hostkit/dynamic_library.h"
#include "platform/environment.h"
#include "platform/plugin_folders.h"

namespace lumiset::app {
namespace {

namespace fs = std::filesystem;

constexpr const char* kBundle = "Lumiset.ofx.bundle";
constexpr const char* kReinstallBundle = "Install Lumiset again there, or remove its bundle.";

/// The folder that holds the bundle which was built or installed together with this program, or an empty path.
fs::path ownBundleFolder() {
    std::error_code error;
    for (const char* folder : {".", "../OFX/Plugins"}) {
        fs::path path = (hostkit::codeDirectory() / folder).lexically_normal();
        if (fs::is_directory(path / kBundle, error)) {
            return path;
        }
    }
    return {};
}

/// Plug-ins that do not find their module are none.
Finding findingOf(const fs::path& folder, std::size_t effects) {
    const fs::path bundle = folder / kBundle;
    try {
        const hostkit::DynamicLibrary file(bundle / "Contents" / platform::kOpenFxArchitecture / "Lumiset.ofx");
        const auto count = reinterpret_cast<decltype(&OfxGetNumberOfPlugins)>(file.symbol("OfxGetNumberOfPlugins"));
        const auto get = reinterpret_cast<decltype(&OfxGetPlugin)>(file.symbol("OfxGetPlugin"));
        if (count == nullptr || get == nullptr) {
            return {"OpenFX", bundle.string() + ": not a plug-in file", kReinstallBundle};
        }
        const int plugins = count();
        const std::string found = fmt::format("{}: {} of {} plug-ins", bundle.string(), plugins, effects);
        if (plugins < static_cast<int>(effects)) {
            return {"OpenFX", found, kReinstallBundle};
        }
        const std::string version = fmt::format("{}.{}.", get(0)->versionMajor, get(0)->versionMinor);
        const bool same = std::string_view(LUMISET_VERSION).substr(0, version.size()) == version;
        return {"OpenFX", same ? found : found + " of another version", same ? "" : kReinstallBundle};
    } catch (const std::runtime_error& error) {
        return {"OpenFX", bundle.string() + ": " + error.what(), kReinstallBundle};
    }
}

}  // namespace

void addOpenFxFolders(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue) {
    std::vector<fs::path> folders = platform::foldersIn("OFX_PLUGIN_PATH");
    folders.push_back(platform::openFxFolder());
    const fs::path own = ownBundleFolder();
    std::error_code error;
    const auto isOwn = [&](const fs::path& each) { return fs::equivalent(each, own, error); };
    const bool ownIsSearched = std::any_of(folders.begin(), folders.end(), isOwn);
    if (!own.empty() && !ownIsSearched) {
        folders.push_back(own);
    }
    bool reachable = false;
    for (auto folder = folders.begin(); folder != folders.end(); ++folder) {
        const bool isRepeated = std::any_of(
            folders.begin(), folder, [&](const fs::path& before) { return fs::equivalent(before, *folder, error); });
        if (isRepeated || !fs::is_directory(*folder / kBundle, error)) {
            continue;
        }
        Finding finding = findingOf(*folder, catalogue.effects().size());
        if (*folder == own && !ownIsSearched && finding.remedy.empty() && !reachable) {
            finding.remedy = "Hosts do not look there: set OFX_PLUGIN_PATH to its folder.";
        }
        reachable = true;
        findings.push_back(std::move(finding));
    }
    if (!reachable) {
        findings.push_back({"OpenFX", "no bundle", "Install Lumiset to have its effects in OpenFX hosts."});
    }
}

}  // namespace lumiset::app
