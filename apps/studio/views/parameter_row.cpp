#include "apps/studio/views/parameter_row.h"

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QToolButton>
#include <QWheelEvent>
#include <algorithm>

#include "apps/studio/model/studio.h"
#include "apps/studio/views/number_field.h"
#include "apps/studio/views/theme.h"
#include "apps/studio/views/value_slider.h"
#include "hostkit/parameter_text.h"

namespace lumiset::studio {
namespace {

constexpr int kLabelWidth = 92;

/// Lists change by a click, never because the wheel came past.
class CalmComboBox : public QComboBox {
public:
    using QComboBox::QComboBox;

protected:
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
};

QColor colorOf(std::uint32_t packed) {
    return {static_cast<int>(packed & 0xFFU), static_cast<int>(packed >> 8U & 0xFFU),
            static_cast<int>(packed >> 16U & 0xFFU)};
}

QIcon swatch(const QColor& color) {
    QPixmap pixmap(72, 32);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors().line, 1));
    painter.setBrush(color);
    painter.drawRoundedRect(QRectF(0.5, 0.5, 35, 15), 3, 3);
    return pixmap;
}

/// Hollow: no keys; half: keys elsewhere; full: one here.
QIcon diamond(KeyState state, const QColor& ink) {
    QPixmap pixmap(32, 32);
    pixmap.setDevicePixelRatio(2.0);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(ink, 1.3));
    const QPolygonF shape{{8, 3}, {13, 8}, {8, 13}, {3, 8}};
    if (state == KeyState::kHere) {
        painter.setBrush(ink);
    }
    painter.drawPolygon(shape);
    if (state == KeyState::kElsewhere) {
        painter.setBrush(ink);
        painter.drawPolygon(QPolygonF{{8, 3}, {8, 13}, {3, 8}});
    }
    return pixmap;
}

}  // namespace

ParameterRow::ParameterRow(Studio& studio, const ParameterDescription& parameter, QWidget* parent)
    : QWidget(parent), m_studio(studio), m_parameter(parameter) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(kGap, 0, kStep, 0);
    layout->setSpacing(kStep);
    setFixedHeight(kRowHeight);
    m_label = new QLabel(toQt(parameter.label));
    m_label->setFixedWidth(kLabelWidth);
    layout->addWidget(m_label);
    setToolTip(toQt(parameter.tip));
    switch (parameter.type) {
        case kParamSlider:
            addSlider();
            break;
        case kParamPoint:
            addPoint();
            break;
        case kParamColor:
            addColor();
            break;
        case kParamChoice:
            addChoice();
            break;
        default:
            addSwitch();
            break;
    }
    m_key = smallButton({}, tr("Key"));
    connect(m_key, &QToolButton::clicked, this, [this] {
        m_studio.document.toggleKey(m_parameter);
        emit curveWanted(m_parameter);
    });
    m_reset = smallButton("reset", tr("Reset"));
    m_reset->setToolTip(tr("Back to the preset"));
    connect(m_reset, &QToolButton::clicked, this, [this] { m_studio.document.resetValue(m_parameter); });
    layout->addWidget(m_key);
    layout->addWidget(m_reset);
    refresh();
}

QToolButton* ParameterRow::smallButton(const QString& icon, const QString& name) {
    auto* button = new QToolButton;
    button->setAutoRaise(true);
    button->setFixedSize(22, 22);
    button->setIcon(icon.isEmpty() ? QIcon() : themeIcon(icon));
    button->setAccessibleName(name + ' ' + toQt(m_parameter.label));
    button->setToolTip(name);
    return button;
}

void ParameterRow::set(const ParamValue& value, quint64 gesture) {
    m_studio.document.setValue(m_parameter, value, gesture);
}

void ParameterRow::setText(const QString& text) {
    try {
        set(hostkit::parseValue(m_parameter, text.toStdString()));
    } catch (const hostkit::ParameterError& error) {
        emit m_studio.failed(toQt(error.what()));
        refresh();
    }
}

void ParameterRow::addSlider() {
    m_slider = new ValueSlider;
    m_slider->setAccessibleName(toQt(m_parameter.label));
    const double width = static_cast<double>(m_parameter.maximum) - static_cast<double>(m_parameter.minimum);
    m_slider->setStep(1.0 / std::max(10.0, std::min(width, 100.0)));
    connect(m_slider, &ValueSlider::edited, this, [this](double value, quint64 gesture) {
        ParamValue wanted{};
        wanted.slider = static_cast<float>(value);
        set(wanted, gesture);
    });
    connect(m_slider, &ValueSlider::resetWanted, this, [this] { m_studio.document.resetValue(m_parameter); });
    m_numbers[0] = new NumberField(toQt(unitOf(m_parameter)));
    m_numbers[0]->setAccessibleName(toQt(m_parameter.label));
    connect(m_slider, &ValueSlider::digitTyped, m_numbers[0], &NumberField::begin);
    connect(m_numbers[0], &NumberField::entered, this, &ParameterRow::setText);
    layout()->addWidget(m_slider);
    layout()->addWidget(m_numbers[0]);
}

void ParameterRow::addPoint() {
    auto* box = static_cast<QHBoxLayout*>(layout());
    box->addStretch(1);
    for (int axis = 0; axis < 2; ++axis) {
        auto* letter = new QLabel(axis == 0 ? "X" : "Y");
        letter->setForegroundRole(QPalette::PlaceholderText);
        box->addWidget(letter);
        m_numbers[axis] = new NumberField("%");
        m_numbers[axis]->setAccessibleName(toQt(m_parameter.label) + (axis == 0 ? " X" : " Y"));
        box->addWidget(m_numbers[axis]);
        connect(m_numbers[axis], &NumberField::entered, this, [this, axis](const QString& number) {
            const ParamValue now = m_studio.document.value(m_parameter);
            const float other = 100.0F * (axis == 0 ? now.point.y : now.point.x);
            const QString text = QString::number(static_cast<double>(other), 'g', 9);
            setText(axis == 0 ? number + ',' + text : text + ',' + number);
        });
    }
}

void ParameterRow::addColor() {
    m_color = new QToolButton;
    m_color->setIconSize({36, 16});
    m_color->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_color->setFixedHeight(24);
    m_color->setAccessibleName(toQt(m_parameter.label));
    connect(m_color, &QToolButton::clicked, this, [this] {
        // Not modal inside a click: the dialog tells when it is done, and shows its colours meanwhile.
        auto* dialog = new QColorDialog(colorOf(m_studio.document.value(m_parameter).color), this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        dialog->setOption(QColorDialog::DontUseNativeDialog);
        dialog->setWindowTitle(toQt(m_parameter.label));
        const quint64 gesture = Document::newGesture();
        const ParamValue before = m_studio.document.value(m_parameter);
        connect(dialog, &QColorDialog::currentColorChanged, this, [this, gesture](const QColor& color) {
            ParamValue wanted{};
            wanted.color = static_cast<std::uint32_t>(color.red()) | static_cast<std::uint32_t>(color.green()) << 8U |
                           static_cast<std::uint32_t>(color.blue()) << 16U;
            set(wanted, gesture);
        });
        connect(dialog, &QColorDialog::rejected, this, [this, gesture, before] { set(before, gesture); });
        dialog->open();
    });
    auto* pick = smallButton("pick", tr("Pick from the picture:"));
    pick->setToolTip(tr("Pick from the picture"));
    connect(pick, &QToolButton::clicked, this, [this] { emit pickWanted(m_parameter); });
    layout()->addWidget(m_color);
    layout()->addWidget(pick);
    static_cast<QHBoxLayout*>(layout())->addStretch(1);
}

void ParameterRow::addChoice() {
    m_choice = new CalmComboBox;
    m_choice->setFocusPolicy(Qt::StrongFocus);
    m_choice->setAccessibleName(toQt(m_parameter.label));
    for (const std::string& item : m_parameter.items) {
        m_choice->addItem(toQt(item));
    }
    connect(m_choice, &QComboBox::activated, this, [this](int item) {
        ParamValue wanted{};
        wanted.choice = static_cast<std::uint32_t>(item);
        set(wanted);
    });
    static_cast<QHBoxLayout*>(layout())->addWidget(m_choice, 1);
}

void ParameterRow::addSwitch() {
    m_switch = new QCheckBox;
    m_switch->setAccessibleName(toQt(m_parameter.label));
    connect(m_switch, &QCheckBox::clicked, this, [this](bool on) {
        ParamValue wanted{};
        wanted.boolean = on ? 1 : 0;
        set(wanted);
    });
    layout()->addWidget(m_switch);
    static_cast<QHBoxLayout*>(layout())->addStretch(1);
}

void ParameterRow::refresh() {
    const Document& document = m_studio.document;
    const LookEffect& effect = *document.selectedEffect();
    const EffectDescription& description = *document.selectedDescription();
    const ParamValue value = document.value(m_parameter);
    const ParamValue preset = presetValueOf(description, effect, m_parameter);
    const bool differs = settingOf(effect, m_parameter.index) != nullptr;
    m_label->setText(differs ? "• " + toQt(m_parameter.label) : toQt(m_parameter.label));
    m_reset->setVisible(true);
    m_reset->setEnabled(differs);
    if (m_slider != nullptr) {
        const double low = static_cast<double>(m_parameter.minimum);
        const double high = static_cast<double>(m_parameter.maximum);
        m_slider->setExactValue(static_cast<double>(value.slider));
        m_slider->setMarks(static_cast<double>(preset.slider), low < 0.0 && high > 0.0 ? -low / (high - low) : 0.0);
        m_slider->setAccessibleDescription(toQt(valueText(m_parameter, value)));
        m_numbers[0]->showNumber(toQt(hostkit::formatValue(m_parameter, value)));
    } else if (m_parameter.type == kParamPoint) {
        m_numbers[0]->showNumber(toQt(hostkit::formatNumber(100.0 * static_cast<double>(value.point.x), 2)));
        m_numbers[1]->showNumber(toQt(hostkit::formatNumber(100.0 * static_cast<double>(value.point.y), 2)));
    } else if (m_color != nullptr) {
        m_color->setIcon(swatch(colorOf(value.color)));
        m_color->setText(toQt(hostkit::formatValue(m_parameter, value)));
    } else if (m_choice != nullptr) {
        m_choice->setCurrentIndex(static_cast<int>(value.choice));
    } else if (m_switch != nullptr) {
        m_switch->setChecked(value.boolean != 0);
    }
    const KeyState state = keyStateAt(effect, m_parameter.index, document.moment());
    m_key->setIcon(
        diamond(state, state == KeyState::kNone ? colors().secondText : palette().color(QPalette::Highlight)));
    m_key->setToolTip(state == KeyState::kHere ? tr("Remove the key of this moment") : tr("Add a key at this moment"));
}

void ParameterRow::contextMenuEvent(QContextMenuEvent* event) {
    auto* menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->addAction(tr("Reset %1").arg(toQt(m_parameter.label)), this,
                    [this] { m_studio.document.resetValue(m_parameter); });
    menu->addAction(tr("Reset All Values"), this, [this] { m_studio.document.resetAll(); });
    menu->addSeparator();
    menu->addAction(m_key->toolTip(), this, [this] { m_studio.document.toggleKey(m_parameter); });
    menu->addAction(tr("Show Curve"), this, [this] { emit curveWanted(m_parameter); });
    menu->popup(event->globalPos());
}

}  // namespace lumiset::studio
