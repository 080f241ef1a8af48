#pragma once

#include "platform/SystemSettings.h"

#include <QColor>
#include <QPalette>

namespace pelloran {

// What the colours of a palette amount to.
Appearance appearanceOf(const QPalette& palette);

// The panel's colours by their meaning. The panel is a dark sheet on every desktop, so its texts are light; over a
// light desktop the sheet is denser, for what shines through is brighter.
struct PanelColors {
    QColor material;       // the sheet, where what lies behind shows through
    QColor opaqueMaterial; // the sheet, where nothing does
    QColor border;
    QColor title; // gold
    QColor label;
    QColor secondaryLabel;
    QColor tertiaryLabel;
    QColor systemGreen;
    QColor systemRed;
    QColor systemOrange;
    QColor tile; // a light wash over the sheet

    static PanelColors of(Appearance appearance);

    bool operator==(const PanelColors&) const = default;
};

} // namespace pelloran
