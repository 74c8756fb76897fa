#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/records.h"

namespace lumiset::hostkit {

/// A name or value that an effect does not have; the text is whole sentences for the person who wrote it.
class ParameterError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// One control of an effect, as its panel shows it.
struct ParameterDescription {
    std::uint32_t index = 0;
    ParamType type = kParamSlider;  ///< never `kParamGroup`
    std::string label;
    std::string group;  ///< label of the group box around it, outer boxes first and parted by slashes; or empty
    std::string tip;
    float minimum = 0.0F;  ///< sliders: the range that the panel shows for 0..1
    float maximum = 0.0F;
    bool wholeNumbers = false;       ///< sliders: the panel shows no decimals
    std::vector<std::string> items;  ///< choices
    ParamValue defaultValue{};
    PanelRect panelRect{};

    /// `Group/Label`, or the label alone outside every group.
    [[nodiscard]] std::string path() const { return group.empty() ? label : group + '/' + label; }
};

}  // namespace lumiset::hostkit
