#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScreenPlan.h"

#include <QPainter>
#include <QPainterPath>
#include <QPointF>

namespace pelloran::stage {

// Paints the classes on offer.
class HeroPainter {
public:
    HeroPainter(const Lettering& heroLettering, Language heroLanguage, const ScreenPlan& screenPlan, quint32 artSeed,
                bool withoutClasses)
        : lettering(heroLettering)
        , language(heroLanguage)
        , plan(screenPlan)
        , seed(artSeed)
        , byName(withoutClasses) {}

    // What a portrait covers, without its names.
    QPainterPath outline(std::size_t column) const;

    // A portrait with the hero's name and the class below it. Answers the letters of the line that tells the class, as
    // they stand in the window.
    QPainterPath paint(QPainter& painter, const HeroClass& hero, std::size_t column) const;

    // What that line says: the class, or the hero where heroes have no more than their names.
    QString printedName(const HeroClass& hero) const;

    // A portrait without names that fills `box`, in the painter's own lengths; `pixels` are those of one of them.
    void paintPortrait(QPainter& painter, const HeroClass& hero, const QRectF& box, double pixels) const;

private:
    const Lettering& lettering;
    Language language;
    const ScreenPlan& plan;
    quint32 seed;
    bool byName;
};

} // namespace pelloran::stage
