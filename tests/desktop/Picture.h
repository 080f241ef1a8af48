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

// The lines of text of a menu, from the top; separators and the frame are left out. Up to `innerGap` empty rows of
// pixels are within a line, as between the strokes of a letter.
std::vector<QRect> textLines(const QImage& menu, int innerGap = 3);

// The frames of an alert's buttons, from the left; they are the lowest things in it.
std::vector<QRect> alertButtons(const QImage& alert);

// The lines of text of an alert, from the top, without its symbol and its buttons.
std::vector<QRect> alertLines(const QImage& alert);

// Of the opaque panel's background.
QRgb sheetColor();

// How many tiles of the opaque panel stand one below the other, and how many side by side.
int tilesDown(const QImage& panel);
int tilesAcross(const QImage& panel);

} // namespace pelloran::testing
