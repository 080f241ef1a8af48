#pragma once

#include "tools/stage/Look.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScreenPlan.h"

#include <QImage>
#include <QPainter>

namespace pelloran::stage {

// What lies under everything else: the table, the frame, the ground that offers lie on, the column of the deck.
class BoardPainter {
public:
    BoardPainter(const Lettering& boardLettering, const ScreenPlan& screenPlan, quint32 artSeed)
        : lettering(boardLettering)
        , plan(screenPlan)
        , seed(artSeed) {}

    // The table alone.
    QImage table() const;

    // The whole board, empty. Without a deck its ground is as wide as heroes on the new screen need it.
    QImage board(bool withDeck) const;

    // The heading over the offers.
    void paintHeading(QPainter& painter, const QString& heading, double x) const;

    // The plate at the upper edge, centred at `x`.
    void paintTitle(QPainter& painter, const QString& title, double x, double halfWidth, bool dim) const;

    // The pillar-box strip along the lower edge: who is online, the time, the purse.
    void paintFooter(QPainter& painter, Language language) const;

    void paintButton(QPainter& painter, const QString& text, QPointF centre, QSizeF size, bool lit) const;

    // Where the rows of the deck go.
    QRectF deckColumn() const;

private:
    QRectF ground(bool withDeck) const;
    void paintFrame(QPainter& painter, bool withDeck) const;
    void paintParchment(QPainter& painter, const QRectF& box) const;
    void paintFelt(QPainter& painter, const QRectF& box) const;
    void paintLowerHalf(QPainter& painter, const QRectF& box) const;
    void paintDeckColumn(QPainter& painter) const;

    const Lettering& lettering;
    const ScreenPlan& plan;
    quint32 seed;
};

} // namespace pelloran::stage
