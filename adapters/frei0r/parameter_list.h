#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "adapters/frei0r/frei0r_abi.h"
#include "hostkit/effect_catalogue.h"
#include "hostkit/renderer.h"

namespace lumiset::frei0r {

/// A value as a frei0r host hands it over. The parameter's type tells which member counts.
struct Value {
    double number = 0.0;  ///< switches and numbers
    Frei0rColor color{};
    std::string text;
};

/// What a frei0r parameter stands for.
enum class Role {
    kWhole,        ///< a parameter of the effect
    kPointX,       ///< the horizontal part of a point of the effect
    kPointY,       ///< its vertical part
    kPixelAspect,  ///< width of a pixel by its height, which hosts do not tell
    kFields,       ///< the order of fields, which they do not tell either
    kPadding,      ///< columns at the right edge that are no part of the picture
    kPreset,       ///< name or file of a preset
};

/// One parameter of a plug-in.
struct Parameter {
    std::string name;  ///< no two of a plug-in are equal, also after hosts have reduced them to letters and digits
    Frei0rParamType type = kFrei0rDouble;  ///< never `kFrei0rPosition`: there are hosts that never set one
    std::string explanation;
    Role role = Role::kWhole;
    /// Place in `EffectDescription::parameters`; says nothing for the roles behind `kPointY`.
    std::size_t source = 0;
    std::vector<std::string> items;  ///< choices: item i of n is the number i / (n - 1)
    Value defaultValue;

    [[nodiscard]] bool belongsToEffect() const { return role <= Role::kPointY; }
};

/// Name of an effect's plug-in, and of its file before the `.so`: "Old TV" is `lumiset_old_tv`.
[[nodiscard]] std::string pluginName(std::string_view effectName);

/// A plug-in's parameters in their order, which is for good: first the text "Preset", which may so be given alone where
/// values go by position; then the effect's own by its table, a point as two numbers; last "Pixel Aspect", "Fields" and
/// "Padding".
[[nodiscard]] std::vector<Parameter> parameterList(const hostkit::EffectDescription& effect);

/// The value made safe: numbers are limited to 0..1, and what is not a number is the default.
[[nodiscard]] Value madeSafe(const Parameter& parameter, Value value);

/// True where no panel shows a difference to the default: numbers within half a hundredth of a per cent, colours of
/// the same 8 bits, the same item, the same side of a switch.
[[nodiscard]] bool isDefault(const Parameter& parameter, const Value& value);

/// The colour in 8 bits a channel, packed as 0x00BBGGRR.
[[nodiscard]] std::uint32_t colorWord(const Frei0rColor& color);

/// The frei0r value for the effect's value. `parameter` belongs to the effect.
[[nodiscard]] Value fromModule(const Parameter& parameter, const hostkit::ParameterDescription& source,
                               const ParamValue& value);

/// Writes the effect's value, of a point only the parameter's own half. `value` is safe.
void toModule(const Parameter& parameter, const hostkit::ParameterDescription& source, const Value& value,
              ParamValue& out);

/// Item that a choice's number stands for: the nearest.
[[nodiscard]] std::size_t itemAt(double number, std::size_t itemCount);
/// The number that stands for an item.
[[nodiscard]] double numberOfItem(std::size_t item, std::size_t itemCount);

/// What the numbers of "Pixel Aspect" and "Fields" say.
[[nodiscard]] double pixelAspectOf(double number);
[[nodiscard]] hostkit::FieldOrder fieldOrderOf(double number);
/// The numbers that say so; of an aspect that the list does not have, the one for the nearest.
[[nodiscard]] double numberOfPixelAspect(double aspect);
[[nodiscard]] double numberOfFieldOrder(hostkit::FieldOrder order);

/// Columns that the number of "Padding" stands for, 0 to 15, and the number for them.
[[nodiscard]] std::uint32_t paddingOf(double number);
[[nodiscard]] double numberOfPadding(std::uint32_t columns);

}  // namespace lumiset::frei0r
