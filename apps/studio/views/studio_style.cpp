#include "apps/studio/views/studio_style.h"

#include <QPainter>
#include <QStyleOption>

#include "apps/studio/views/theme.h"

namespace lumiset::studio {

StudioStyle::StudioStyle() : QProxyStyle("fusion") {}

void StudioStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                const QWidget* widget) const {
    if (element != PE_IndicatorCheckBox) {
        QProxyStyle::drawPrimitive(element, option, painter, widget);
        return;
    }
    const bool focused = option->state.testFlag(State_HasFocus);
    const auto group = option->state.testFlag(State_Enabled) ? QPalette::Active : QPalette::Disabled;
    const QRectF box = QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(focused ? option->palette.color(QPalette::Highlight) : colors().secondText, focused ? 2 : 1));
    painter->setBrush(option->palette.color(group, QPalette::Base));
    painter->drawRoundedRect(box, 3, 3);
    if (option->state.testFlag(State_On)) {
        const double unit = box.width() / 13.0;
        painter->setPen(QPen(option->palette.color(group, QPalette::Text), 2));
        painter->drawPolyline(QPolygonF{box.topLeft() + QPointF(3, 6.8) * unit,
                                        box.topLeft() + QPointF(5.5, 9.3) * unit,
                                        box.topLeft() + QPointF(10, 3.8) * unit});
    }
    painter->restore();
}

int StudioStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                           QStyleHintReturn* returned) const {
    return hint == SH_DialogButtonBox_ButtonsHaveIcons ? 0 : QProxyStyle::styleHint(hint, option, widget, returned);
}

}  // namespace lumiset::studio
