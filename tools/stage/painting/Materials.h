#pragma once

#include <QBrush>
#include <QColor>
#include <QImage>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRectF>

#include <random>

// What things on the stage are made of: wood, cloth, parchment, metal. All deterministic for a seed.
namespace pelloran::stage {

// Smooth noise from 0 to 1; neighbouring whole numbers are one feature apart.
double noise(double x, double y, quint32 seed);

// The sum of `octaves` layers of noise, each twice as fine and half as strong; 0 to 1.
double cloudNoise(double x, double y, int octaves, quint32 seed);

// Lighter (above 1) or darker (below 1), opaque.
QColor shade(const QColor& colour, double factor);
QColor mix(const QColor& a, const QColor& b, double share);
QColor withAlpha(QColor colour, double alpha);

// A table of long dark planks with a lamp above it. `unit` is the length that things are measured in (a 1080th of the
// window's height).
QImage woodenTable(QSize size, double unit, quint32 seed);

// A sheet of mottled colour, such as leather or paper.
QImage mottled(QSize size, const QColor& colour, double contrast, double unit, quint32 seed);

// Brushed metal across `box`, from light at the upper left to dark at the lower right.
QBrush metal(const QRectF& box, const QColor& colour);

const QColor gold(0xd9, 0xa9, 0x4e);
const QColor bronze(0x9c, 0x6b, 0x3a);
const QColor steel(0x9a, 0xa3, 0xad);

// Darkens the surroundings of a shape, which is itself not painted.
void castShadow(QPainter& painter, const QPainterPath& shape, double reach, double strength);

// Paints `shape` as a raised rim of metal along its outline.
void drawRim(QPainter& painter, const QPainterPath& shape, double width, const QColor& colour);

using Random = std::mt19937;

// From `low` to `high`. The standard distributions may differ from one library to the next; this does not.
double between(Random& random, double low, double high);

} // namespace pelloran::stage
