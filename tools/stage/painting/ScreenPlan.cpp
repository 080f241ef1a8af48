#include "tools/stage/painting/ScreenPlan.h"

#include <algorithm>
#include <array>

namespace pelloran::stage {

namespace {

constexpr std::array<double, 3> cardColumns{-0.419, -0.1605, 0.0975};
constexpr std::array<double, 3> oldHeroColumns{-0.42, -0.16, 0.098};
constexpr std::array<double, 3> newHeroColumns{-0.37, -0.02, 0.34};

// What differs between the types of cards; the line is y / H = linear u + square u^2 + cube u^3, u = x / 0.1 H.
struct NamePlace {
    QStringView type;
    double oldBase;
    double newBase;
    double linear;
    double square;
    double cube;
};

constexpr std::array<NamePlace, 4> namePlaces{{
    {u"MINION", 0.3913, 0.3783, -0.01557, 0.01034, 0.01416},
    {u"SPELL", 0.3855, 0.3728, -0.00107, 0.01463, 0},
    {u"WEAPON", 0.3862, 0.3735, 0, 0, 0},
    {u"HERO", 0.3905, 0.3775, 0, 0.02885, 0},
}};

// What is none of them (locations) is painted as a minion is.
const NamePlace& placeOf(const QString& type) {
    const auto* found = std::ranges::find(namePlaces, QStringView(type), &NamePlace::type);
    return found == namePlaces.end() ? namePlaces.front() : *found;
}

} // namespace

ScreenPlan::ScreenPlan(QSize windowSize, Look windowLook)
    : window(windowSize)
    , screenLook(windowLook)
    , length(std::min<double>(windowSize.height(), 0.75 * windowSize.width())) {}

QPointF ScreenPlan::at(double x, double y) const {
    return {window.width() / 2.0 + x * length, y * length};
}

QRectF ScreenPlan::area(double left, double top, double right, double bottom) const {
    return {at(left, top), at(right, bottom)};
}

QPointF ScreenPlan::cardBase(std::size_t column, const QString& cardType) const {
    const NamePlace& place = placeOf(cardType);
    return at(cardColumns[column], screenLook == Look::parchment ? place.oldBase : place.newBase);
}

QPointF ScreenPlan::cardBack(std::size_t column) const {
    return cardBase(column, QStringLiteral("MINION"));
}

QPointF ScreenPlan::heroNameBase(std::size_t column) const {
    // The height was measured at the middle of the letters.
    const double base = 0.509 + heroNameCaps / 2 / 1080;
    return at(screenLook == Look::parchment ? oldHeroColumns[column] : newHeroColumns[column], base);
}

QPointF ScreenPlan::classNameBase(std::size_t column) const {
    const double base = 0.530 + classNameCaps / 2 / 1080;
    return at(screenLook == Look::parchment ? oldHeroColumns[column] : newHeroColumns[column], base);
}

Curve ScreenPlan::nameCurve(const QString& cardType) {
    const NamePlace& place = placeOf(cardType);
    return {1080, place.linear, place.square, place.cube};
}

} // namespace pelloran::stage
