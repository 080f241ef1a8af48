#pragma once

#include "tools/stage/Catalogue.h"

#include <QImage>
#include <QSize>

namespace pelloran::stage {

// A picture for a card, different for every card and the same for every run with the same seed: a figure against the
// light for minions, a burst of power for spells, a blade for weapons.
QImage paintCardArt(const Card& card, QSize size, quint32 seed);

// The country behind the sign of a class.
QImage paintClassArt(const QString& classKey, QSize size, quint32 seed);

// The picture for the main menu: a valley at dusk.
QImage paintValley(QSize size, quint32 seed);

} // namespace pelloran::stage
