#pragma once

#include "tools/stage/painting/BoardPainter.h"
#include "tools/stage/painting/CardPainter.h"
#include "tools/stage/painting/DeckPainter.h"
#include "tools/stage/painting/HeroPainter.h"
#include "tools/stage/painting/Lettering.h"
#include "tools/stage/painting/Light.h"
#include "tools/stage/painting/Screen.h"
#include "tools/stage/painting/ScreenPlan.h"

#include <QImage>
#include <QPainter>

#include <map>
#include <vector>

namespace pelloran::stage {

// What the painter needs to know besides the screens it is to paint.
struct Production {
    Language language = Language::english;
    Look look = Look::felt;
    quint32 seed = 1;
    bool heroesByName = false; // on the new screen, without the line of the class
};

// A name as it stands on the screen.
struct PrintedName {
    QString text;
    QRectF box; // of its letters, without their outlines
};

// Paints the whole window. The scene is painted once, by show(); every frame adds only the light.
class ScenePainter {
public:
    ScenePainter(QSize size, const Production& production, Lettering lettering);

    ScenePainter(const ScenePainter&) = delete;
    ScenePainter& operator=(const ScenePainter&) = delete;

    // Takes up to some tenths of a second.
    void show(const Screen& screen);

    // The scene shown last, with the light as it is `seconds` after the start. `painter` paints on the whole window.
    void paint(QPainter& painter, double seconds) const;

    // The names of what is on offer on the scene shown last, left to right; empty when nothing is.
    const std::vector<PrintedName>& names() const { return printed; }

    QSize size() const { return plan.size(); }

private:
    void startFrom(bool withDeck);
    void paintMenu(QPainter& painter) const;
    void paintHeroScreen(QPainter& painter, const Screen& screen);
    void paintDraft(QPainter& painter, const Screen& screen);
    void paintCards(QPainter& painter, const Screen& screen);
    void paintLeaving(QPainter& painter, const Screen& screen) const;
    void paintComing(QPainter& painter, const Screen& screen) const;
    void paintFaceDown(QPainter& painter) const;
    void paintComplete(QPainter& painter, const Situation& situation) const;
    void paintProgress(QPainter& painter, const Situation& situation);
    QImage layer() const;

    Production production;
    ScreenPlan plan;
    Lettering lettering;
    CardPainter cards;
    HeroPainter heroes;
    BoardPainter boardPainter;
    DeckPainter deckPainter;
    Light light;
    std::map<bool, QImage> boards; // by whether they have room for a deck: they cost more than all else
    std::vector<PrintedName> printed;
    QImage scene;
};

} // namespace pelloran::stage
