#pragma once

#include "platform/TextReader.h"

#include <QImage>
#include <QRect>
#include <QSize>

#include <vector>

// Which parts of the game's picture a recording keeps.
namespace pelloran::recording {

struct Kept {
    std::vector<QRect> bands; // within the picture, none touching another
    bool isAll = false;       // that was read: reading the bands alone gives the same
};

// The lines of names at their places; more of what is around them where names were read there. Where something was read
// elsewhere, the usual bands without `isAll`.
Kept partsToKeep(const QSize& window, ReadingHints::Offers offers, const ReadText& text);

// One below the other, at the left. `pieces` are of the widths and heights of bands.
QImage stacked(const std::vector<QImage>& pieces);

// The window with the bands at their places, and nothing else in it. `picture` is as stacked() makes it.
QImage unstacked(const QImage& picture, const std::vector<QRect>& bands, const QSize& window);

} // namespace pelloran::recording
