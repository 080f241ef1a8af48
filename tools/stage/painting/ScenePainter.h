#pragma once

#include "stage/painting/CardPainter.h"
#include "stage/painting/HeroPainter.h"
#include "stage/painting/Lettering.h"
#include "stage/painting/Light.h"
#include "stage/Scenario.h"

#include <QHash>
#include <QImage>
#include <QPainter>

#include <map>

namespace pelloran::stage {

// Paints the whole window. The scene of a step is painted once, by show(); every frame adds only the light.
class ScenePainter {
public:
    ScenePainter(QSize size, Language language, quint32 seed, Lettering lettering);

    ScenePainter(const ScenePainter&) = delete;
    ScenePainter& operator=(const ScenePainter&) = delete;

    // Takes up to some tenths of a second.
    void show(const Situation& situation);

    // The scene shown last, with the light as it is `seconds` after the start. `painter` paints on the whole window.
    void paint(QPainter& painter, double seconds) const;

    QSize size() const { return windowSize; }

private:
    struct Words;

    QPointF at(double x, double y) const;
    QRectF area(double left, double top, double right, double bottom) const;
    const Words& words() const;

    void startFrom(double boardRight);
    void paintBoard(QPainter& painter, double right) const;
    void paintTitle(QPainter& painter, const QString& title, double x) const;
    void paintMenu(QPainter& painter) const;
    void paintHeroes(QPainter& painter, const Situation& situation);
    void paintCards(QPainter& painter, const Situation& situation);
    void paintFaceDown(QPainter& painter);
    void paintComplete(QPainter& painter, const Situation& situation) const;
    void paintProgress(QPainter& painter, const Situation& situation) const;
    void paintManaCurve(QPainter& painter, const Situation& situation) const;
    QRectF deckPanel() const;
    void paintDeckPanel(QPainter& painter) const;
    void paintDeck(QPainter& painter, const Situation& situation);
    void paintDeckRow(QPainter& painter, const Card& card, int copies, const QRectF& row);
    void paintButton(QPainter& painter, const QString& text, QPointF centre, QSizeF size, bool lit) const;
    static void paintVeil(QPainter& painter, const std::vector<QPainterPath>& offers, int chosen);

    QSize windowSize;
    Language language;
    quint32 seed;
    double unit;
    Lettering lettering;
    CardPainter cards;
    HeroPainter heroes;
    Light light;
    QImage table;
    std::map<double, QImage> boards; // table and board, by the board's right edge: they cost more than all else
    QHash<QString, QImage> strips;   // pictures for the rows of the deck, by card
    QImage scene;
};

} // namespace pelloran::stage
