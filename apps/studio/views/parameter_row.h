#pragma once

#include <QWidget>
#include <functional>

#include "apps/studio/core/look_edits.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QToolButton;

namespace lumiset::studio {

class NumberField;
class Studio;
class ValueSlider;

/// One parameter of the chosen effect: its name, what changes it, its key and its way back.
class ParameterRow : public QWidget {
    Q_OBJECT

public:
    ParameterRow(Studio& studio, const ParameterDescription& parameter, QWidget* parent);

    [[nodiscard]] const ParameterDescription& parameter() const { return m_parameter; }
    /// Shows what the document has now.
    void refresh();

signals:
    void pickWanted(const ParameterDescription& parameter);
    void curveWanted(const ParameterDescription& parameter);

protected:
    void contextMenuEvent(QContextMenuEvent* event) override;

private:
    void addSlider();
    void addPoint();
    void addColor();
    void addChoice();
    void addSwitch();
    void set(const ParamValue& value, quint64 gesture = 0);
    void setText(const QString& text);
    [[nodiscard]] QToolButton* smallButton(const QString& icon, const QString& name);

    Studio& m_studio;
    const ParameterDescription& m_parameter;
    QLabel* m_label = nullptr;
    ValueSlider* m_slider = nullptr;
    NumberField* m_numbers[2] = {};  ///< of a slider the first, of a point both
    QToolButton* m_color = nullptr;
    QComboBox* m_choice = nullptr;
    QCheckBox* m_switch = nullptr;
    QToolButton* m_key = nullptr;
    QToolButton* m_reset = nullptr;
};

}  // namespace lumiset::studio
