#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "adapters/openfx/bundle.h"
#include "adapters/openfx/host.h"
#include "hostkit/parameter_store.h"

namespace lumiset::openfx {

/// One use of an effect in a host. After its creation it does not change, so any thread may ask it.
class Instance {
public:
    /// Throws `HostError`.
    Instance(std::shared_ptr<const HostInfo> host, const Bundle& bundle, const Effect& effect, EffectHandle handle);

    [[nodiscard]] const HostInfo& host() const { return *m_host; }
    [[nodiscard]] const Bundle& bundle() const { return m_bundle; }
    [[nodiscard]] const Effect& effect() const { return m_effect; }
    [[nodiscard]] EffectHandle handle() const { return m_handle; }
    [[nodiscard]] ClipHandle source() const { return m_source; }
    [[nodiscard]] ClipHandle output() const { return m_output; }
    [[nodiscard]] Properties properties() const { return m_properties; }
    [[nodiscard]] Properties sourceProperties() const { return m_sourceProperties; }

    /// Frames a second; where the output does not tell, the source's, else the project's, else 25.
    [[nodiscard]] double frameRate() const;
    /// Where the picture lies in canonical coordinates: the source's region, where that is not told the project's.
    [[nodiscard]] RectD pictureRegion(double time) const;

    /// The effect's values at that time. In a host that tells of no changes, on top of the chosen preset or file.
    [[nodiscard]] hostkit::ParameterStore valuesAt(double time) const;
    [[nodiscard]] FieldSetting fieldSetting(double time) const;
    /// A choice's item; the first for what is none.
    [[nodiscard]] int choiceAt(Role role, double time) const;
    [[nodiscard]] std::string textAt(Role role, double time) const;

    /// Sets every parameter of the effect to the values in one step to undo; keys go.
    void setValues(const hostkit::ParameterStore& values, double time, const std::string& undoLabel) const;
    void setChoice(Role role, int item) const;

    /// A point in shares of the picture from its top left corner. `place` is one in the effect's `parameters`.
    [[nodiscard]] ParamValue::Point pointAt(std::size_t place, double time) const;
    void setPoint(std::size_t place, double time, ParamValue::Point point) const;
    void beginEdit(const std::string& undoLabel) const;
    void endEdit() const;

private:
    [[nodiscard]] std::optional<ParamValue> effectValueAt(std::size_t place, double time, const RectD& region) const;
    void setEffectValue(std::size_t place, const ParamValue& value, const RectD& region) const;
    [[nodiscard]] ParamHandle paramOf(Role role) const { return m_params[placeOf(m_effect.parameters, role)]; }
    [[nodiscard]] hostkit::ParameterStore valuesUnder(double time) const;
    [[nodiscard]] bool hasPreset(double time) const;

    std::shared_ptr<const HostInfo> m_host;
    const Bundle& m_bundle;
    const Effect& m_effect;
    EffectHandle m_handle;
    Properties m_properties;
    ClipHandle m_source = nullptr;
    ClipHandle m_output = nullptr;
    Properties m_sourceProperties;
    Properties m_outputProperties;
    ParamSetHandle m_set = nullptr;
    std::vector<ParamHandle> m_params;  // one for each of the effect's parameters; null where the host has none
    std::vector<bool> m_isPosition;     // by place: a point of the picture, not two numbers
};

}  // namespace lumiset::openfx
