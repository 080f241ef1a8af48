#pragma once

#include "overlay/OverlayPanel/layout/PanelGeometry.h"

#include <QRect>
#include <QSizeF>
#include <QString>

#include <optional>
#include <vector>

// Where the user put the panel, for each arrangement of screens, from run to run.
namespace pelloran {

// As Qt tells of it, in its pixels.
struct ScreenInUse {
    QString name;
    QRect geometry;
};

// Names one arrangement of screens, in whatever order they are given.
QString arrangementOf(const std::vector<ScreenInUse>& screens);

// How a run left the panel.
struct PanelPlace {
    QString screens; // arrangementOf()
    UpwardRect frame{};
    std::optional<QSizeF> userSize; // see PanelState::userResizedFrame
    bool isShown = true;

    bool operator==(const PanelPlace&) const = default;
};

// The latest first.
using PanelPlaces = std::vector<PanelPlace>;

// As they are stored, and back. A text that is none of ours has no places; what no panel can have is left out.
QString textOf(const PanelPlaces& places);
PanelPlaces placesFrom(const QString& text);

// With `place` as the latest and the only one of its arrangement. Those of the oldest arrangements go.
PanelPlaces withPlace(PanelPlaces places, const PanelPlace& place);

// How to open it on these screens: as the last run on them left it, else as the last run left it, else as a first run
// does. On the screen that has the most of it (`visible` are those parts of the screens), else on the nearest one; what
// would not be seen there is moved, and what is larger than the screen becomes smaller, the user's size too.
PanelPlace placeToOpen(const PanelPlaces& places, const QString& screens, const std::vector<UpwardRect>& visible);

} // namespace pelloran
