#pragma once

#include <QScrollArea>
#include <string>
#include <vector>

namespace lumiset {
namespace hostkit {
struct ParameterDescription;
}
namespace studio {

class NumberField;
class ParameterRow;
class Studio;
class ValueSlider;

/// The controls of the chosen effect, in the groups of its table.
class Panel : public QScrollArea {
    Q_OBJECT

public:
    explicit Panel(Studio& studio, QWidget* parent = nullptr);

signals:
    void pickWanted(const hostkit::ParameterDescription& parameter);
    void curveWanted(const hostkit::ParameterDescription& parameter);

private:
    void rebuild();
    void refresh();
    void addStrength(QWidget* body);
    void addGroup(QWidget* body, const QString& path, const std::vector<ParameterRow*>& rows);

    Studio& m_studio;
    std::string m_effect;  ///< whose controls these are
    std::vector<ParameterRow*> m_rows;
    ValueSlider* m_strength = nullptr;
    NumberField* m_strengthNumber = nullptr;
};

}  // namespace studio
}  // namespace lumiset
