#pragma once

#include "tools/stage/Catalogue.h"
#include "tools/stage/painting/Lettering.h"

#include <QPainter>
#include <QPainterPath>
#include <QPointF>

namespace pelloran::stage {

// Paints the cards on offer. All lengths are in `unit`s; places are given as the point where the line that the name
// stands on crosses the middle of the card.
class CardPainter {
public:
    CardPainter(const Lettering& cardLettering, Language cardLanguage, double cardUnit, quint32 artSeed)
        : lettering(cardLettering)
        , language(cardLanguage)
        , unit(cardUnit)
        , seed(artSeed) {}

    // What a card covers, the jewels at its corners included.
    QPainterPath outline(const Card& card, QPointF base) const;
    QPainterPath backOutline(QPointF base) const;

    // Answers the letters of the name as they stand in the window.
    QPainterPath paintFace(QPainter& painter, const Card& card, QPointF base) const;

    void paintBack(QPainter& painter, QPointF base) const;

private:
    void paintBody(QPainter& painter, const Card& card) const;
    void paintArt(QPainter& painter, const Card& card) const;
    void paintRules(QPainter& painter, const Card& card) const;
    QPainterPath paintName(QPainter& painter, const Card& card) const;
    void paintTribe(QPainter& painter, const Card& card) const;
    void paintNumbers(QPainter& painter, const Card& card) const;

    const Lettering& lettering;
    Language language;
    double unit;
    quint32 seed;
};

} // namespace pelloran::stage
