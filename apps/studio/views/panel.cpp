#include "apps/studio/views/panel.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/number_field.h"
#include "apps/studio/views/parameter_row.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/value_slider.h"
#include "hostkit/parameter_text.h"

namespace lumiset::studio {

Panel::Panel(Studio& studio, QWidget* parent) : QScrollArea(parent), m_studio(studio) {
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(tr("Settings of the effect"));
    connect(&studio.document, &Document::selectionChanged, this, &Panel::rebuild);
    connect(&studio.document, &Document::lookChanged, this, &Panel::refresh);
    connect(&studio.preview, &Preview::frameChanged, this, &Panel::refresh);
    rebuild();
}

// Building controls takes longer than filling them, so they stay while an effect of the same name is chosen.
void Panel::rebuild() {
    const EffectDescription* description = m_studio.document.selectedDescription();
    const std::string name = description != nullptr ? description->name : std::string();
    if (name == m_effect && widget() != nullptr) {
        refresh();
        return;
    }
    m_effect = name;
    m_rows.clear();
    m_strength = nullptr;
    auto* body = new QWidget;
    auto* layout = new QVBoxLayout(body);
    layout->setContentsMargins(0, kStep, 0, kGap);
    layout->setSpacing(0);
    if (description == nullptr) {
        auto* hint = new QLabel(tr("Add an effect with the plus above,\nor choose a look below."));
        hint->setAlignment(Qt::AlignCenter);
        hint->setForegroundRole(QPalette::PlaceholderText);
        hint->setContentsMargins(kGap, 4 * kGap, kGap, 0);
        layout->addWidget(hint);
    } else {
        for (std::size_t i = 0; i < description->parameters.size();) {
            const std::string& group = description->parameters[i].group;
            std::vector<ParameterRow*> rows;
            for (; i < description->parameters.size() && description->parameters[i].group == group; ++i) {
                auto* row = new ParameterRow(m_studio, description->parameters[i], body);
                connect(row, &ParameterRow::pickWanted, this, &Panel::pickWanted);
                connect(row, &ParameterRow::curveWanted, this, &Panel::curveWanted);
                rows.push_back(row);
                m_rows.push_back(row);
            }
            addGroup(body, toQt(group), rows);
        }
        addStrength(body);
    }
    layout->addStretch(1);
    setWidget(body);
    refresh();
}

void Panel::addGroup(QWidget* body, const QString& path, const std::vector<ParameterRow*>& rows) {
    auto* layout = static_cast<QVBoxLayout*>(body->layout());
    if (!path.isEmpty()) {
        auto* header = new QToolButton;
        header->setText(path);
        header->setAccessibleName(tr("Group %1").arg(path));
        header->setCheckable(true);
        header->setChecked(true);
        header->setAutoRaise(true);
        header->setArrowType(Qt::DownArrow);
        header->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        header->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        header->setFixedHeight(kRowHeight);
        QFont bold = header->font();
        bold.setBold(true);
        header->setFont(bold);
        connect(header, &QToolButton::toggled, this, [header, rows](bool open) {
            header->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
            for (ParameterRow* row : rows) {
                row->setVisible(open);
            }
        });
        layout->addSpacing(kStep);
        layout->addWidget(header);
    }
    for (ParameterRow* row : rows) {
        layout->addWidget(row);
    }
}

void Panel::addStrength(QWidget* body) {
    auto* row = new QWidget;
    row->setFixedHeight(kRowHeight + kGap);
    row->setToolTip(tr("How much of this effect shows over its source"));
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(kGap, kGap, kStep, 0);
    layout->setSpacing(kStep);
    auto* label = new QLabel(tr("Strength"));
    label->setFixedWidth(92);
    m_strength = new ValueSlider;
    m_strength->setAccessibleName(tr("Strength"));
    m_strength->setMarks(1.0, 0.0);
    m_strengthNumber = new NumberField("%");
    m_strengthNumber->setAccessibleName(tr("Strength"));
    connect(m_strength, &ValueSlider::edited, this,
            [this](double value, quint64 gesture) { m_studio.document.setStrength(100.0 * value, gesture); });
    connect(m_strength, &ValueSlider::resetWanted, this, [this] { m_studio.document.setStrength(100.0); });
    connect(m_strength, &ValueSlider::digitTyped, m_strengthNumber, &NumberField::begin);
    connect(m_strengthNumber, &NumberField::entered, this, [this](const QString& number) {
        bool isNumber = false;
        const double percent = number.toDouble(&isNumber);
        if (isNumber) {
            m_studio.document.setStrength(std::clamp(percent, 0.0, 100.0));
        }
        refresh();
    });
    layout->addWidget(label);
    layout->addWidget(m_strength);
    layout->addWidget(m_strengthNumber);
    layout->addSpacing(44 + 2 * kStep);
    static_cast<QVBoxLayout*>(body->layout())->addWidget(row);
}

void Panel::refresh() {
    const LookEffect* effect = m_studio.document.selectedEffect();
    if (effect == nullptr || effect->effect != m_effect) {
        return;  // it is about to be rebuilt
    }
    for (ParameterRow* row : m_rows) {
        row->refresh();
    }
    m_strength->setExactValue(effect->strength / 100.0);
    m_strengthNumber->showNumber(toQt(hostkit::formatNumber(effect->strength, 2)));
}

}  // namespace lumiset::studio
