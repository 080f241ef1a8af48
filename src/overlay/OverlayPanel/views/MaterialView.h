#pragma once

#include "overlay/OverlayPanel/views/PanelColors.h"

#include <QWidget>

namespace pelloran {

// The panel's sheet: dark, with rounded corners and a fine edge.
class MaterialView final : public QWidget {
public:
    MaterialView(QWidget* parent, const PanelColors& colors);

    void setColors(const PanelColors& colors);
    void setCornerRadius(double radius);

    double cornerRadius() const { return radius; }

    // Whether what lies behind the panel shows through.
    void setTranslucent(bool translucent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    PanelColors colors;
    double radius = 12;
    bool translucent = true;
};

} // namespace pelloran
