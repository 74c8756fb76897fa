#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "hostkit/renderer.h"

namespace lumiset::hostkit {

/// A look cannot be read, used or written; the text is one or more whole sentences.
class LookError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// When a key of a look stands.
struct LookTime {
    double at = 0.0;      ///< in seconds from the clip's start, or in percent of the clip
    bool isPart = false;  ///< the latter

    [[nodiscard]] double seconds(double clipSeconds) const { return isPart ? at / 100.0 * clipSeconds : at; }
};

/// What a look sets of one parameter.
struct LookParameter {
    struct Key {
        LookTime time;
        ParamValue value{};
    };
    std::uint32_t index = 0;  ///< as in `ParameterDescription`
    ParamValue value{};       ///< where there are no keys
    std::vector<Key> keys{};
};

/// One effect of a look.
struct LookEffect {
    std::string effect;                       ///< name in the catalogue
    std::string preset{};                     ///< unique name of the one that it starts from; empty: the defaults
    std::vector<LookParameter> parameters{};  ///< on top of that, each index once
    double strength = 100.0;                  ///< in percent, 0 to 100
    bool off = false;                         ///< kept, but not rendered

    /// What it sets of a parameter, added where there is nothing yet. The reference holds until the next call.
    LookParameter& of(const ParameterDescription& parameter);
    /// Sets the parameter called `name` of `description`, which is this effect's, from text as `parseValue` reads it,
    /// in place of what was set of it. Throws `ParameterError`.
    void set(const EffectDescription& description, std::string_view name, std::string_view value);
    /// Adds a key in the same way, in place of one at the same time.
    void addKey(const EffectDescription& description, std::string_view name, const LookTime& time,
                std::string_view value);
};

/// What to do with a clip: effects in turn, with everything that they are set to. This is the only description of it;
/// every program of ours makes one. Plain data: used by one thread at a time while it is changed.
struct Look {
    std::string name{};       ///< one line
    std::string about{};      ///< a sentence
    std::string author{};     ///< one line
    double strength = 100.0;  ///< of all of it, in percent, 0 to 100
    std::vector<LookEffect> effects{};
    std::string clip{};  ///< the file that it was made on, for programs that show both; empty: none
};

/// A look on a clip, shown only where a mask wants it.
struct MaskedLook {
    Look look;
    std::shared_ptr<const Mask> mask{};  ///< null: everywhere
};

/// True where a look cannot be rendered without the clip's length.
[[nodiscard]] bool hasKeysInParts(const Look& look);

/// The values of one effect of a look in a clip of that length, which only counts where keys stand in parts of it.
/// `effect` must outlive them. Throws `ParameterError`.
[[nodiscard]] ParameterStore valuesOf(const EffectDescription& effect, const LookEffect& wanted, double clipSeconds);

/// Looks in turn, ready to render: for any number of `Renderer`s, on any threads. `catalogue` and the module must
/// outlive the chain, the looks need not. Throws `ParameterError` for what the effects do not have, for strengths
/// beyond 0 to 100 and for masks without pixels; std::bad_alloc.
[[nodiscard]] std::vector<EffectStage> buildChain(IEffectLibrary& library, const EffectCatalogue& catalogue,
                                                  const std::vector<MaskedLook>& looks, double clipSeconds);

}  // namespace lumiset::hostkit
