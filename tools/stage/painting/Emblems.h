#pragma once

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QString>

namespace pelloran::stage {

// The sign of a class within the square from (-1, -1) to (1, 1).
QPainterPath emblem(const QString& classKey);

// The colour that stands for a class, or for neutral cards.
QColor classColour(const QString& classKey);

// Paints the sign as a piece of golden relief.
void drawEmblem(QPainter& painter, const QString& classKey, QPointF centre, double radius);

// A star with `points` points within a circle of radius 1.
QPainterPath star(int points, double innerRadius);

// A sword, its point at (0, -1) and its pommel at (0, 1).
QPainterPath sword(double bladeWidth);

} // namespace pelloran::stage
