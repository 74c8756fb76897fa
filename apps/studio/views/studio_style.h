#pragma once

#include <QProxyStyle>

namespace lumiset::studio {

/// Fusion with boxes that are seen on dark ground, and without the desktop's icons on buttons of dialogs.
class StudioStyle : public QProxyStyle {
    Q_OBJECT

public:
    StudioStyle();
    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override;
};

}  // namespace lumiset::studio
