#pragma once

#include <optional>
#include <string>
#include <vector>

#include "hostkit/effect_catalogue.h"
#include "hostkit/look.h"

namespace lumiset::studio {

using hostkit::EffectDescription;
using hostkit::Look;
using hostkit::LookEffect;
using hostkit::LookParameter;
using hostkit::ParameterDescription;

/// Times nearer to each other than this are one moment.
inline constexpr double kSameMoment = 1e-4;

/// A moment of a clip of a length, both in seconds.
struct Moment {
    double seconds = 0.0;
    double clipSeconds = 0.0;
};

/// What an effect of a look sets of a parameter, or null where it leaves it to its preset.
[[nodiscard]] const LookParameter* settingOf(const LookEffect& effect, std::uint32_t parameter);
[[nodiscard]] ParamValue valueAt(const EffectDescription& description, const LookEffect& effect,
                                 const ParameterDescription& parameter, const Moment& moment);
/// What it is with nothing set on top of the preset.
[[nodiscard]] ParamValue presetValueOf(const EffectDescription& description, const LookEffect& effect,
                                       const ParameterDescription& parameter);
[[nodiscard]] bool sameValue(const ParameterDescription& parameter, const ParamValue& a, const ParamValue& b);

/// Sets the value for the whole clip, or where the parameter has keys the key of this moment. A value that is the
/// preset's leaves nothing behind.
void setValue(const EffectDescription& description, LookEffect& effect, const ParameterDescription& parameter,
              const ParamValue& value, const Moment& moment);
/// Back to the preset's value, without keys.
void resetValue(LookEffect& effect, std::uint32_t parameter);

enum class KeyState {
    kNone,       ///< one value for the whole clip
    kElsewhere,  ///< keys at other moments
    kHere,
};
[[nodiscard]] KeyState keyStateAt(const LookEffect& effect, std::uint32_t parameter, const Moment& moment);
/// The moments of a parameter's keys, in seconds and in order; of all parameters without one.
[[nodiscard]] std::vector<double> keyTimes(const LookEffect& effect, std::optional<std::uint32_t> parameter,
                                           double clipSeconds);
/// A key with the value of this moment, or none where one was. The last one's value stays for the whole clip.
void toggleKey(const EffectDescription& description, LookEffect& effect, const ParameterDescription& parameter,
               const Moment& moment);
/// Moves the key at one moment to another, in place of one that is there; or puts a copy there. Without a key
/// nothing happens.
void moveKey(LookEffect& effect, std::uint32_t parameter, const Moment& from, double toSeconds, bool copies);
/// The same with another value.
void setKeyValue(LookEffect& effect, std::uint32_t parameter, const Moment& at, const ParamValue& value);

/// "%" or "°" or nothing.
[[nodiscard]] std::string unitOf(const ParameterDescription& parameter);
/// "40 %", as people are told of it.
[[nodiscard]] std::string valueText(const ParameterDescription& parameter, const ParamValue& value);

/// A switch that shows a mask in place of the result, which nobody wants to export; null where there is none.
[[nodiscard]] const ParameterDescription* maskViewOf(const EffectDescription& description);
/// Whether one of the look's effects is set to show its mask.
[[nodiscard]] bool showsMask(const hostkit::EffectCatalogue& catalogue, const Look& look);

/// The look without what stands behind an effect and without the effect itself: what this one gets to see.
[[nodiscard]] Look inputOf(const Look& look, std::size_t effect);
/// The look without one effect.
[[nodiscard]] Look without(const Look& look, std::size_t effect);

}  // namespace lumiset::studio
