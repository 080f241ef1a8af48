#pragma once

#include "stage/Catalogue.h"
#include "stage/painting/Lettering.h"

#include <QPainter>
#include <QPainterPath>
#include <QPointF>

namespace pelloran::stage {

// Paints the classes on offer. All lengths are in `unit`s; places are given as the middle of the class's name.
class HeroPainter {
public:
    HeroPainter(const Lettering& heroLettering, Language heroLanguage, double heroUnit, quint32 artSeed)
        : lettering(heroLettering)
        , language(heroLanguage)
        , unit(heroUnit)
        , seed(artSeed) {}

    // What a portrait and its name cover.
    QPainterPath outline(QPointF nameCentre) const;

    void paint(QPainter& painter, const HeroClass& hero, QPointF nameCentre) const;

    // A round portrait without a name.
    void paintMedallion(QPainter& painter, const HeroClass& hero, QPointF centre, double radius) const;

private:
    const Lettering& lettering;
    Language language;
    double unit;
    quint32 seed;
};

} // namespace pelloran::stage
