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
    bool isMain = false; // frames are reckoned from it
};

// Names one arrangement of screens, in whatever order they are given. The main one is told only where it is not the one
// at the origin, as it mostly is.
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

// What docks and menu bars leave of the screens.
struct VisibleScreens {
    std::vector<UpwardRect> all;
    UpwardRect main;
    UpwardRect own; // the panel's
};

// Where it goes when something about the screens has changed while it runs. `now` is how it stands and the arrangement
// that it stands so for; `screens` is today's. In another arrangement that has a place of its own it opens there. Where
// it cannot be reached it opens too, or is brought back where there are no places. Else it stays, no larger than its
// screen.
PanelPlace placeAfterChange(const PanelPlaces& places, const PanelPlace& now, const QString& screens,
                            const VisibleScreens& visible);

} // namespace pelloran
