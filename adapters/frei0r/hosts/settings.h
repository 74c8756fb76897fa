#pragma once

#include <string>
#include <vector>

#include "adapters/frei0r/parameter_list.h"
#include "hostkit/parameter_store.h"

namespace lumiset::frei0r {

/// A plug-in with a value for each of its parameters, as a host would keep it.
struct Settings {
    const hostkit::EffectDescription* effect = nullptr;
    std::vector<Parameter> parameters;
    std::vector<Value> values;  ///< one for each of `parameters`

    /// The parameter's value as hosts write it: a number, 0 or 1, #RRGGBB, or the text itself.
    [[nodiscard]] std::string text(std::size_t parameter) const;
    /// False where a host may leave the parameter alone.
    [[nodiscard]] bool differs(std::size_t parameter) const;
};

/// What `store` holds at the start of time. The store's effect must outlive it.
[[nodiscard]] Settings settingsOf(const hostkit::ParameterStore& store);

/// A value as hosts write it. Numbers have as many digits as it takes to be the effect's value again.
[[nodiscard]] std::string valueText(const Parameter& parameter, const Value& value);

/// The name under which hosts show the effect: "Old TV" is "Lumiset Old TV".
[[nodiscard]] std::string shownName(const hostkit::EffectDescription& effect);
/// A sentence about it.
[[nodiscard]] std::string shownDescription(const hostkit::EffectDescription& effect);

}  // namespace lumiset::frei0r
