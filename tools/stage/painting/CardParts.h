#pragma once

#include "tools/stage/painting/Curve.h"

#include <QColor>
#include <QPainter>
#include <QPainterPath>
#include <QPointF>
#include <QRectF>
#include <QString>

// The small things that cards and boards are put together from. Lengths are in the painter's own units.
namespace pelloran::stage {

// A ribbon of stiff cloth around the line that letters stand on, its ends folded back.
void drawRibbon(QPainter& painter, const Curve& curve, double halfWidth, const QColor& colour, const QColor& edge);

// A flat plate of stone with a bevelled edge.
void drawPlate(QPainter& painter, const QRectF& box, const QColor& colour);

// A plate that ends in two points, with a rim of `edge`.
void drawPointedPlate(QPainter& painter, const QRectF& box, const QColor& colour, const QColor& edge);

// A round jewel in a metal setting.
void drawJewel(QPainter& painter, QPointF centre, double radius, const QColor& colour);

// A cut crystal with six sides.
void drawCrystal(QPainter& painter, QPointF centre, double radius, const QColor& colour);

// A drop of glass in a metal setting, its tip upward.
void drawDrop(QPainter& painter, QPointF centre, double radius, const QColor& colour);

// The small stone under a name that tells the rarity; nothing for cards that have none.
void drawRarityGem(QPainter& painter, QPointF centre, const QString& rarity);

// A window with a pointed top, as the portraits of heroes have it; `box` holds it all.
QPainterPath archway(const QRectF& box);

} // namespace pelloran::stage
