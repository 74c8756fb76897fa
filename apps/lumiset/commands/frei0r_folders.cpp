#include "apps/lumiset/commands/doctor.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "adapters/frei0r/frei0r_abi.h"
#include "adapters/frei0r/parameter_list.h"
#include "hostkit/dynamic_library.h"
#include "platform/environment.h"
#include "platform/plugin_folders.h"

namespace lumiset::app {
namespace {

namespace fs = std::filesystem;

/// Where hosts look, in this order.
std::vector<fs::path> searchedFolders() {
    std::vector<fs::path> folders = platform::foldersIn("FREI0R_PATH");
    const std::vector<fs::path> usual = platform::frei0rFolders();
    folders.insert(folders.end(), usual.begin(), usual.end());
    return folders;
}

/// The folder that was built or installed together with this program, or an empty path.
fs::path ownPluginFolder() {
    std::error_code error;
    for (const char* folder : {"frei0r-1", "../lib/frei0r-1"}) {
        fs::path path = (hostkit::codeDirectory() / folder).lexically_normal();
        if (fs::is_directory(path, error)) {
            return path;
        }
    }
    return {};
}

enum class PluginState { kMissing, kUsable, kOther, kBroken };

PluginState stateOf(const fs::path& file) {
    std::error_code error;
    if (!fs::exists(file, error)) {
        return PluginState::kMissing;
    }
    try {
        const hostkit::DynamicLibrary plugin(file);
        const auto getInfo = reinterpret_cast<decltype(&f0r_get_plugin_info)>(plugin.symbol("f0r_get_plugin_info"));
        if (getInfo == nullptr) {
            return PluginState::kBroken;
        }
        Frei0rPluginInfo info{};
        getInfo(&info);
        const std::string version = fmt::format("{}.{}.", info.majorVersion, info.minorVersion);
        // A plug-in that does not find its module has no parameters.
        return info.parameterCount == 0                                                 ? PluginState::kBroken
               : std::string_view(LUMISET_VERSION).substr(0, version.size()) == version ? PluginState::kUsable
                                                                                        : PluginState::kOther;
    } catch (const std::runtime_error&) {
        return PluginState::kBroken;
    }
}

/// What of ours lies in a folder.
struct Content {
    std::size_t all = 0;
    std::vector<std::string> usable;
    std::vector<std::string> missing;
    std::vector<std::string> other;
    std::vector<std::string> broken;

    [[nodiscard]] bool complete() const { return usable.size() == all; }
    [[nodiscard]] bool none() const { return missing.size() == all; }
};

Content contentOf(const fs::path& folder, const hostkit::EffectCatalogue& catalogue) {
    Content content;
    for (const hostkit::EffectDescription& effect : catalogue.effects()) {
        const std::string name = frei0r::pluginName(effect.name);
        const PluginState state = stateOf(folder / (name + platform::kFrei0rExtension));
        (state == PluginState::kMissing  ? content.missing
         : state == PluginState::kUsable ? content.usable
         : state == PluginState::kOther  ? content.other
                                         : content.broken)
            .push_back(name);
        ++content.all;
    }
    return content;
}

Finding findingOf(const fs::path& folder, const Content& content) {
    std::string found = folder.string();
    if (content.none()) {
        return {"frei0r", found + ": none of the plug-ins"};
    }
    found += fmt::format(": {} of {} plug-ins", content.usable.size(), content.all);
    const auto add = [&found](const char* what, const std::vector<std::string>& names) {
        if (!names.empty()) {
            found += fmt::format("; {}: {}", what, fmt::join(names, ", "));
        }
    };
    add("missing", content.missing);
    add("of another version", content.other);
    add("not usable", content.broken);
    return {"frei0r", found, content.complete() ? "" : "Install Lumiset again there, or remove its plug-ins."};
}

}  // namespace

void addFrei0rFolders(std::vector<Finding>& findings, const hostkit::EffectCatalogue& catalogue) {
    std::vector<fs::path> folders = searchedFolders();
    const fs::path own = ownPluginFolder();
    std::error_code error;
    const bool ownIsSearched = std::any_of(folders.begin(), folders.end(),
                                           [&](const fs::path& each) { return fs::equivalent(each, own, error); });
    if (!own.empty() && !ownIsSearched) {
        folders.push_back(own);
    }
    bool reachable = false;
    std::vector<fs::path> seen;
    for (const fs::path& folder : folders) {
        if (!fs::is_directory(folder, error) || std::any_of(seen.begin(), seen.end(), [&](const auto& each) {
                return fs::equivalent(each, folder, error);
            })) {
            continue;
        }
        seen.push_back(folder);
        const Content content = contentOf(folder, catalogue);
        Finding finding = findingOf(folder, content);
        reachable = reachable || (!content.none() && (folder != own || ownIsSearched));
        if (folder == own && !ownIsSearched && content.complete() && !reachable) {
            finding.remedy = "Hosts do not look there: set FREI0R_PATH to this folder.";
        }
        findings.push_back(std::move(finding));
    }
    if (seen.empty()) {
        findings.push_back({"frei0r", "no folder", "Install Lumiset to have its effects in frei0r hosts."});
    }
}

}  // namespace lumiset::app
