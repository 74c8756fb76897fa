#pragma once

#include "hostkit/effect_catalogue.h"
#include "hostkit/json_text.h"

namespace lumiset::hostkit {

/// A parameter's value as people read and edit it in JSON: as the effect's panel shows it, numbers as the shortest
/// that read back to the same bits. Some values no panel shows: a colour with something in its fourth byte, a number
/// too near to 0 for the range. These are {"stored": what a preset file holds}. Throws `ParameterError` for a value
/// beyond the parameter's range, and one that is not a number.
[[nodiscard]] Json valueToJson(const ParameterDescription& parameter, const ParamValue& value);

/// Throws `ParameterError` for another type, and for a value beyond the parameter's range.
[[nodiscard]] ParamValue valueFromJson(const ParameterDescription& parameter, const Json& json);

}  // namespace lumiset::hostkit
