#pragma once

// Internal to the Widgets component: never installed.

#include <QtWidgets/QProxyStyle>

namespace Zelvane {

// Draws an item view's check boxes as radio buttons: the Core plugins are one choice, and
// the model keeps it so (ticking one clears the others, a ticked one cannot be cleared).
class RadioCheckStyle : public QProxyStyle
{
    Q_OBJECT

public:
    using QProxyStyle::QProxyStyle;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override
    {
        if (element == PE_IndicatorItemViewItemCheck)
            element = PE_IndicatorRadioButton;
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
};

} // namespace Zelvane
