#pragma once

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QRect>

#include <vector>

// What a screenshot shows, told from its pixels alone.
namespace pelloran::testing {

// A pixel of nearly that colour is somewhere in the picture.
bool shows(const QImage& picture, const QColor& color);

// The picture's most common colour.
QRgb backgroundOf(const QImage& picture);

// Encloses what differs from the background; null when nothing does.
QRect inkOf(const QImage& picture, QRgb background);

// The lines of text of a menu, from the top; separators and the frame are left out.
std::vector<QRect> textLines(const QImage& menu);

// Of the opaque panel's background.
QRgb sheetColor();

// How many tiles of the opaque panel stand one below the other, and how many side by side.
int tilesDown(const QImage& panel);
int tilesAcross(const QImage& panel);

} // namespace pelloran::testing
