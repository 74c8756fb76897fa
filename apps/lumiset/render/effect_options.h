#pragma once

#include <CLI/App.hpp>
#include <optional>
#include <string>
#include <vector>

#include "hostkit/effect_catalogue.h"
#include "hostkit/look.h"

namespace lumiset::app {

/// One `--effect` or `--look` with the options behind it.
struct EffectRequest {
    struct Setting {
        std::string label;
        std::string value;
    };
    struct Key {
        std::string label;
        hostkit::LookTime time;
        std::string value;
    };
    std::string name;          ///< of the effect
    std::string look{};        ///< or the look, a file or a name
    std::string preset{};      ///< empty: none
    std::string presetFile{};  ///< empty: none
    std::vector<Setting> settings{};
    std::vector<Key> keys{};
    std::optional<double> strength{};  ///< in percent
    std::string mask{};                ///< a picture's file; empty: none
};

/// The options that choose effects and their values. What belongs to which effect is told by the order in which they
/// came.
class EffectOptions {
public:
    enum Kind {
        kAnimatedChain,  ///< any number of `--effect` and `--look`, keys too
        kMaskedChain,    ///< the same, with masks
        kOneEffect,      ///< one `--effect`
        kNamedEffect,    ///< one effect that a positional argument names, or a `--look`
        kAlternatives,   ///< any number of both, each for a picture of its own; none is possible too
    };
    EffectOptions(CLI::App& command, Kind kind);

    /// The effects, once the arguments have been read; none only as an alternative. Throws `UsageError`.
    [[nodiscard]] std::vector<EffectRequest> requests() const;
    /// The only one. Throws `UsageError`.
    [[nodiscard]] EffectRequest request() const;

private:
    struct Repeated;
    void add(Repeated& repeated, const char* names, const char* form, const std::string& tip);
    void addTo(EffectRequest& request, const Repeated& repeated, const std::string& value) const;

    /// An option that may stand there any number of times.
    struct Repeated {
        CLI::Option* option = nullptr;
        std::vector<std::string> values{};
    };

    CLI::App& m_command;
    Kind m_kind;
    std::string m_name;
    Repeated m_effect;
    Repeated m_look;
    Repeated m_preset;
    Repeated m_presetFile;
    Repeated m_set;
    Repeated m_key;
    Repeated m_strength;
    Repeated m_mask;
};

/// What a request asks for; a look that is asked for has the settings behind it in it. Throws
/// `hostkit::ParameterError`, `hostkit::PresetFileError`, `hostkit::LookError` and `UsageError`.
[[nodiscard]] hostkit::Look lookOf(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                   const EffectRequest& request);

/// The files that requests read: preset files, looks that are files, masks. Throws `hostkit::LookError`.
[[nodiscard]] std::vector<std::string> filesRead(const hostkit::EffectCatalogue& catalogue,
                                                 const std::vector<EffectRequest>& requests);

/// The values that a request gives its one effect. Throws as `lookOf`.
[[nodiscard]] hostkit::ParameterStore readParameters(IEffectLibrary& library, const hostkit::EffectCatalogue& catalogue,
                                                     const EffectRequest& request);

/// The effects of a command line with their values, ready to render `input`, whose length is only asked for where keys
/// stand in parts of it. `catalogue` must outlive them. Throws as `lookOf`, and media::MediaError.
[[nodiscard]] std::vector<hostkit::EffectStage> buildChain(IEffectLibrary& library,
                                                           const hostkit::EffectCatalogue& catalogue,
                                                           const std::vector<EffectRequest>& requests,
                                                           const std::string& input);

}  // namespace lumiset::app
