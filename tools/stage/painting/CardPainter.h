#pragma once

#include "stage/Catalogue.h"
#include "stage/painting/Lettering.h"

#include <QPainter>
#include <QPainterPath>
#include <QPointF>

namespace pelloran::stage {

// Paints the cards on offer. All lengths are in `unit`s; places are given as the middle of the name.
class CardPainter {
public:
    CardPainter(const Lettering& cardLettering, Language cardLanguage, double cardUnit, quint32 artSeed)
        : lettering(cardLettering)
        , language(cardLanguage)
        , unit(cardUnit)
        , seed(artSeed) {}

    // What a card covers, the jewels at its corners included.
    QPainterPath outline(const Card& card, QPointF nameCentre) const;
    QPainterPath backOutline(QPointF nameCentre) const;

    void paintFace(QPainter& painter, const Card& card, QPointF nameCentre) const;

    void paintBack(QPainter& painter, QPointF nameCentre) const;

private:
    void paintBody(QPainter& painter, const Card& card) const;
    void paintArt(QPainter& painter, const Card& card) const;
    void paintRules(QPainter& painter, const Card& card) const;
    void paintName(QPainter& painter, const Card& card) const;
    void paintRarity(QPainter& painter, const Card& card) const;
    void paintNumbers(QPainter& painter, const Card& card) const;

    const Lettering& lettering;
    Language language;
    double unit;
    quint32 seed;
};

// A ribbon of cloth along `curve`, with a thread of gold at both edges.
void drawRibbon(QPainter& painter, const Curve& curve, QPointF centre, double height, const QColor& colour,
                double unit);

// A round jewel in a metal setting with a number on it.
void drawJewel(QPainter& painter, QPointF centre, double radius, const QColor& colour);

} // namespace pelloran::stage
