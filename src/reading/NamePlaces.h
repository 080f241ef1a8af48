#pragma once

#include "names/Lexicon.h"

#include <QRectF>
#include <QSize>

#include <array>

// Where this game's screens have names, as measured on real ones (1024x768 to 2560x1440). Lengths are in heights of the
// game's picture: everything scales with it, whatever the proportions of the window.
namespace pelloran {

// The game's picture within a plane of pixels.
struct GameFrame {
    double height = 1;  // of the picture, in pixels
    double centreX = 0; // of the picture, in pixels from the plane's left edge
    double top = 0;     // pixels from the plane's top edge

    double pixelX(double x) const { return centreX + x * height; }

    double pixelY(double y) const { return top + y * height; }

    // The same picture seen from a plane that begins at `origin` of this one and has `scale` of its pixels.
    GameFrame seenFrom(QPointF origin, double scale) const {
        return {height * scale, (centreX - origin.x()) * scale, (top - origin.y()) * scale};
    }
};

// The picture of a window without borders: as tall as the window, unless that is narrower than 4:3.
GameFrame frameOf(const QSize& window);

// The way of a name's baseline over its ribbon: below the baseline at the middle of the card by a cubic of u, the
// distance from that middle in tenths of the height. One for each kind of card.
struct NameCurve {
    NameKinds kinds; // of the cards with such ribbons
    double slope;
    double bend;
    double wave;
    std::array<double, 2> bases; // of the baseline at the card's middle, from the top: screen of 2025, screen before it
    double likelihood;           // 1, or less for a kind that is rarely offered

    static double u(double x) { return x / 0.1; }

    double at(double x) const { return u(x) * (slope + u(x) * (bend + u(x) * wave)); }

    // Tangent.
    double slopeAt(double x) const { return (slope + u(x) * (2 * bend + u(x) * 3 * wave)) / 0.1; }
};

inline constexpr std::array nameCurves{
    NameCurve{NameKind::minion, -0.01557, 0.01034, 0.01416, {0.3783, 0.3913}, 1},
    NameCurve{NameKind::spell | NameKind::location, -0.00107, 0.01463, 0, {0.3728, 0.3855}, 1},
    NameCurve{NameKind::weapon | NameKind::location, 0, 0, 0, {0.3735, 0.3862}, 1},
    NameCurve{NameKind::hero | NameKind::location, 0, 0.02885, 0, {0.3775, 0.3905}, 0.8},
};

// Middles of the three cards, from the middle of the picture.
inline constexpr std::array<double, 3> cardCentres{-0.419, -0.1605, 0.0975};
inline constexpr double cardSpacing = 0.2585;

// Middles of the three heroes.
inline constexpr std::array<std::array<double, 3>, 2> heroCentres{
    {{-0.42, -0.16, 0.098}, {-0.37, -0.02, 0.34}}}; // screen before 2025, screen of 2025

} // namespace pelloran
