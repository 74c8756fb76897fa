#pragma once

#include <string>
#include <string_view>

#include "hostkit/parameter_description.h"

namespace lumiset::hostkit {

/// Reads a value as the effect's panel shows it:
/// a slider's number in the shown range, with or without a percent sign;
/// a colour as #RRGGBB;
/// a point as `x,y` in percent of the picture from its top left corner;
/// a switch as on or off (true, false, yes, no, 1, 0);
/// a list item by its label or its number from 0.
/// Throws `ParameterError` with a sentence that says what is possible.
[[nodiscard]] ParamValue parseValue(const ParameterDescription& parameter, std::string_view text);

/// The value as `parseValue` reads it, rounded to what a panel shows.
[[nodiscard]] std::string formatValue(const ParameterDescription& parameter, const ParamValue& value);

/// What `parseValue` takes, in a few words: "0 to 100", "on or off", "#RRGGBB".
[[nodiscard]] std::string describeRange(const ParameterDescription& parameter);
/// "slider", "color", "point", "choice", "boolean" or "group".
[[nodiscard]] const char* typeName(ParamType type);

/// A number with at most `decimals` decimals and without trailing zeros, whatever the locale.
[[nodiscard]] std::string formatNumber(double number, int decimals);

/// The whole text as a finite number with a decimal point, whatever the locale; false when it is not one.
[[nodiscard]] bool parseNumber(std::string_view text, double& number);

/// A time from 0 on, in seconds, "90", "1.5s", or with minutes and hours before them, "1:30", "0:01:30.5". False when
/// it is none; what lies beyond the end of everything becomes 1e9.
[[nodiscard]] bool parseTime(std::string_view text, double& seconds);

}  // namespace lumiset::hostkit
