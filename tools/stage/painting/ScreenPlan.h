#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/Look.h"
#include "tools/stage/painting/Curve.h"

#include <QPointF>
#include <QRectF>
#include <QSize>

namespace pelloran::stage {

// Where things are on the screen, as measured on the game. Everything is a multiple of one length, the window's height
// (three quarters of its width where the window is narrower than 4:3), counted from the middle of the upper edge.
class ScreenPlan {
public:
    ScreenPlan(QSize window, Look look);

    QSize size() const { return window; }

    Look look() const { return screenLook; }

    // The length of which everything is a multiple, in pixels.
    double height() const { return length; }

    // A 1080th of it: what the painters measure details in.
    double unit() const { return length / 1080; }

    QPointF at(double x, double y) const;
    QRectF area(double left, double top, double right, double bottom) const;

    // Where the line that a card's name stands on crosses the middle of the card; columns count from 0, left to right.
    QPointF cardBase(std::size_t column, const QString& cardType) const;

    // The middle of a card of no type: one that lies face down.
    QPointF cardBack(std::size_t column) const;

    // The middle of the line that a hero's name, or that of the class below it, stands on.
    QPointF heroNameBase(std::size_t column) const;
    QPointF classNameBase(std::size_t column) const;

    // The line under a name, in units.
    static Curve nameCurve(const QString& cardType);

private:
    QSize window;
    Look screenLook;
    double length;
};

// Heights of capital letters, in units.
constexpr double cardNameCaps = 13;
constexpr double heroNameCaps = 0.015 * 1080;
constexpr double classNameCaps = 0.010 * 1080;

} // namespace pelloran::stage
