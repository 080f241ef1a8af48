#pragma once

#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/ScreenPlan.h"
#include "tools/stage/Scenario.h"

#include <QHash>
#include <QImage>
#include <QPainter>

namespace pelloran::stage {

// What has been picked so far: the rows at the right and the columns of costs.
class DeckPainter {
public:
    DeckPainter(const Lettering& deckLettering, Language deckLanguage, const ScreenPlan& screenPlan, quint32 artSeed)
        : lettering(deckLettering)
        , language(deckLanguage)
        , plan(screenPlan)
        , seed(artSeed) {}

    void paintRows(QPainter& painter, const std::vector<Card>& deck, const QRectF& column);
    void paintCosts(QPainter& painter, const std::vector<Card>& deck) const;

private:
    void paintRow(QPainter& painter, const Card& card, int copies, const QRectF& row);

    const Lettering& lettering;
    Language language;
    const ScreenPlan& plan;
    quint32 seed;
    QHash<QString, QImage> strips; // pictures for the rows, by card
};

} // namespace pelloran::stage
