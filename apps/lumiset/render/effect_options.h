#pragma once

#include <CLI/App.hpp>
#include <string>
#include <vector>

#include "hostkit/effect_catalogue.h"
#include "hostkit/renderer.h"

namespace lumiset::app {

/// One `--effect` with the options behind it.
struct EffectRequest {
    struct Setting {
        std::string label;
        std::string value;
    };
    struct Key {
        std::string label;
        double timeSeconds;
        std::string value;
    };
    std::string name;
    std::string preset;      ///< empty: none
    std::string presetFile;  ///< empty: none
    std::vector<Setting> settings;
    std::vector<Key> keys;
};

/// The options that choose effects and their values. What belongs to which effect is told by the order in which they
/// came.
class EffectOptions {
public:
    enum Kind {
        kAnimatedChain,  ///< any number of `--effect`, keys too
        kOneEffect,      ///< one `--effect`
        kNamedEffect,    ///< one effect that a positional argument names
        kAlternatives,   ///< any number of `--effect`, each for a picture of its own; none is possible too
    };
    EffectOptions(CLI::App& command, Kind kind);

    /// The effects, once the arguments have been read; none only as an alternative. Throws `UsageError`.
    [[nodiscard]] std::vector<EffectRequest> requests() const;
    /// The only one. Throws `UsageError`.
    [[nodiscard]] EffectRequest request() const;

private:
    CLI::Option* addRepeated(const char* names, std::vector<std::string>& values, const char* form,
                             const std::string& tip);
    void addTo(EffectRequest& effect, const CLI::Option* option, std::size_t i) const;

    CLI::App& m_command;
    Kind m_kind;
    std::string m_name;
    CLI::Option* m_effect = nullptr;
    CLI::Option* m_preset = nullptr;
    CLI::Option* m_presetFile = nullptr;
    CLI::Option* m_set = nullptr;
    CLI::Option* m_key = nullptr;
    std::vector<std::string> m_effects;
    std::vector<std::string> m_presets;
    std::vector<std::string> m_presetFiles;
    std::vector<std::string> m_sets;
    std::vector<std::string> m_keys;
};

/// The values that a request gives an effect. Throws as `buildChain`.
[[nodiscard]] hostkit::ParameterStore readParameters(IEffectLibrary& library, const hostkit::EffectDescription& effect,
                                                     const EffectRequest& request);

/// The effects of a command line with their values, ready to render. `catalogue` must outlive them. Throws
/// `hostkit::ParameterError`, `hostkit::PresetFileError` and `UsageError`.
[[nodiscard]] std::vector<hostkit::EffectStage> buildChain(IEffectLibrary& library,
                                                           const hostkit::EffectCatalogue& catalogue,
                                                           const std::vector<EffectRequest>& requests);

}  // namespace lumiset::app
