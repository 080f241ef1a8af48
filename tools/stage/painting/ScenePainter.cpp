#include "tools/stage/painting/ScenePainter.h"

#include "tools/stage/painting/Art.h"
#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/CollectionPainter.h"
#include "tools/stage/painting/Materials.h"
#include "tools/stage/painting/Overlays.h"
#include "tools/stage/painting/Words.h"

#include <algorithm>
#include <utility>

namespace pelloran::stage {

namespace {

constexpr double offersMiddle = -0.16;
constexpr double wideMiddle = -0.01;

QColor colourOf(Glow glow) {
    switch (glow) {
    case Glow::white:
        return {255, 255, 250};
    case Glow::yellow:
        return {255, 214, 70};
    case Glow::green:
        return {120, 255, 60};
    }
    return {};
}

void prepare(QPainter& painter) {
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
}

} // namespace

ScenePainter::ScenePainter(QSize size, const Production& newProduction, Lettering newLettering)
    : production(newProduction)
    , plan(size, production.look)
    , lettering(std::move(newLettering))
    , cards(lettering, production.language, plan.unit(), production.seed)
    , heroes(lettering, production.language, plan, production.seed,
             production.heroesByName && production.look == Look::felt)
    , boardPainter(lettering, plan, production.seed)
    , deckPainter(lettering, production.language, plan, production.seed)
    , light(size, plan.unit(), production.seed) {}

void ScenePainter::show(const Screen& screen) {
    const StepKind kind = screen.situation.step.kind;
    const Words& words = Words::in(production.language);
    printed.clear();
    light.setGlow({}, -1, {});
    const bool heroesOffered =
        kind == StepKind::heroPick || kind == StepKind::lookAtHero || kind == StepKind::chooseHero;
    const bool elsewhere =
        kind == StepKind::idle || screen.moment == Moment::collection || screen.moment == Moment::decks;
    if (elsewhere) {
        scene = boardPainter.table();
    } else {
        startFrom(!heroesOffered || production.look == Look::parchment);
    }
    QPainter painter(&scene);
    prepare(painter);
    if (screen.moment == Moment::collection) {
        paintCollection(painter, plan, lettering, boardPainter, screen.situation.deck, production.language,
                        production.seed);
    } else if (screen.moment == Moment::decks) {
        paintDecks(painter, plan, lettering, boardPainter, production.language, production.seed);
    } else if (kind == StepKind::idle) {
        paintMenu(painter);
    } else if (heroesOffered) {
        paintHeroScreen(painter, screen);
    } else {
        paintDraft(painter, screen);
    }
    boardPainter.paintFooter(painter, production.language);
    painter.end();
    if (screen.moment == Moment::menu) {
        paintMenuOver(scene, lettering, plan, boardPainter, words);
        light.setGlow({}, -1, {});
        printed.clear();
    }
}

void ScenePainter::paint(QPainter& painter, double seconds) const {
    painter.drawImage(0, 0, scene);
    light.paint(painter, seconds);
}

void ScenePainter::startFrom(bool withDeck) {
    QImage& board = boards[withDeck];
    if (board.isNull()) {
        board = boardPainter.board(withDeck);
    }
    scene = board;
}

QImage ScenePainter::layer() const {
    QImage image(plan.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

void ScenePainter::paintMenu(QPainter& painter) const {
    const Words& words = Words::in(production.language);
    const double unit = plan.unit();
    const QPointF centre = plan.at(0, 0.5);
    const double radius = 390 * unit;
    QPainterPath round;
    round.addEllipse(centre, radius, radius);
    castShadow(painter, round, 60 * unit, 0.9);
    painter.save();
    painter.setClipPath(round);
    const int pixels = static_cast<int>(2 * radius);
    painter.drawImage(centre - QPointF(radius, radius), paintValley({pixels, pixels}, production.seed));
    painter.restore();
    castShadow(painter, round, 30 * unit, 0.6);
    drawRim(painter, round, 44 * unit, bronze);
    QPainterPath inner;
    inner.addEllipse(centre, radius - 24 * unit, radius - 24 * unit);
    drawRim(painter, inner, 9 * unit, gold);
    for (int i = 0; i < 8; ++i) {
        const QPointF place = centre + QTransform().rotate(45.0 * i).map(QPointF(0, -radius));
        drawJewel(painter, place, (i % 2 == 0 ? 24 : 15) * unit,
                  i % 2 == 0 ? QColor(0x2a, 0x6a, 0xd8) : QColor(0xb8, 0x30, 0x22));
    }
    boardPainter.paintTitle(painter, words.mainMenu, 0, 0.19, false);
    const QSizeF button(330 * unit, 84 * unit);
    boardPainter.paintButton(painter, words.play, centre + QPointF(0, -110) * unit, button, false);
    boardPainter.paintButton(painter, words.arena, centre, button, true);
    boardPainter.paintButton(painter, words.collection, centre + QPointF(0, 110) * unit, button, false);
}

void ScenePainter::paintHeroScreen(QPainter& painter, const Screen& screen) {
    const Words& words = Words::in(production.language);
    const Step& step = screen.situation.step;
    const bool wide = production.look == Look::felt;
    const double middle = wide ? wideMiddle : offersMiddle;
    boardPainter.paintTitle(painter, words.theArena, middle, 0.19, false);
    if (!wide) {
        boardPainter.paintTitle(painter, words.deck, 0.486, 0.117, true);
    }
    boardPainter.paintHeading(painter, words.chooseHero, middle);
    deckPainter.paintCosts(painter, {});
    std::vector<QPainterPath> offers;
    for (std::size_t i = 0; i < step.heroes.size(); ++i) {
        const QPainterPath letters = heroes.paint(painter, step.heroes[i], i);
        printed.push_back({heroes.printedName(step.heroes[i]), letters.boundingRect()});
        offers.push_back(heroes.outline(i));
    }
    boardPainter.paintButton(painter, words.back, plan.at(0.588, 0.926), {140 * plan.unit(), 52 * plan.unit()}, false);
    const int chosen = step.chosen.value_or(-1);
    if (step.kind == StepKind::chooseHero) {
        for (std::size_t i = 0; i < offers.size(); ++i) {
            if (static_cast<int>(i) != chosen) {
                painter.fillPath(offers[i], QColor(12, 8, 6, 150));
            }
        }
        light.setGlow(offers, chosen, colourOf(Glow::yellow));
    } else if (step.kind == StepKind::lookAtHero) {
        paintZoomedHero(painter, lettering, plan, heroes, boardPainter, step.heroes[static_cast<std::size_t>(chosen)],
                        production.language);
        printed.clear();
    } else if (screen.hovered) {
        const QPainterPath& hovered = offers[static_cast<std::size_t>(*screen.hovered)];
        paintGlove(painter, hovered.boundingRect().center(), plan.unit());
    }
}

// Everything with a deck at its right.
void ScenePainter::paintDraft(QPainter& painter, const Screen& screen) {
    const Words& words = Words::in(production.language);
    const StepKind kind = screen.situation.step.kind;
    boardPainter.paintTitle(painter, words.theArena, offersMiddle, 0.19, false);
    boardPainter.paintTitle(painter, words.deck, 0.486, 0.117, true);
    paintProgress(painter, screen.situation);
    if (kind == StepKind::end) {
        boardPainter.paintHeading(painter, words.deckComplete, offersMiddle);
        paintComplete(painter, screen.situation);
        return;
    }
    boardPainter.paintHeading(painter, kind == StepKind::redraft ? words.redraft : words.chooseCard, offersMiddle);
    if (kind == StepKind::skipAhead || kind == StepKind::redraft) {
        paintFaceDown(painter);
    } else if (screen.moment == Moment::burning) {
        paintLeaving(painter, screen);
    } else if (screen.moment == Moment::arriving) {
        paintComing(painter, screen);
    } else {
        paintCards(painter, screen);
    }
}

void ScenePainter::paintCards(QPainter& painter, const Screen& screen) {
    const Step& step = screen.situation.step;
    std::vector<QPainterPath> offers;
    for (std::size_t i = 0; i < step.cards.size(); ++i) {
        const Card& card = step.cards[i];
        const QPointF base = plan.cardBase(i, card.type);
        const QPainterPath letters = cards.paintFace(painter, card, base);
        printed.push_back({card.name.in(production.language), letters.boundingRect()});
        offers.push_back(cards.outline(card, base));
    }
    const int chosen = step.chosen.value_or(-1);
    for (std::size_t i = 0; chosen >= 0 && i < offers.size(); ++i) {
        if (static_cast<int>(i) != chosen) {
            painter.fillPath(offers[i], QColor(12, 8, 6, 130));
        }
    }
    if (!screen.hovered) {
        return;
    }
    const auto hovered = static_cast<std::size_t>(*screen.hovered);
    light.setGlow(offers, *screen.hovered, colourOf(screen.glow));
    if (screen.tooltip) {
        paintTooltip(painter, lettering, plan, Words::in(production.language), screen.situation.deck.size(),
                     offers[hovered].boundingRect());
    }
    paintGlove(painter, plan.cardBase(hovered, step.cards[hovered].type) + QPointF(44, 40) * plan.unit(), plan.unit());
}

// The cards burn and leave their marks on the ground; the one that was taken is gone a little earlier.
void ScenePainter::paintLeaving(QPainter& painter, const Screen& screen) const {
    const Step& step = screen.situation.step;
    for (std::size_t i = 0; i < step.cards.size(); ++i) {
        const QPointF base = plan.cardBase(i, step.cards[i].type);
        castShadow(painter, cards.backOutline(base), 22 * plan.unit(), 0.5 * screen.progress);
        painter.fillPath(cards.backOutline(base), withAlpha(QColor(0x2c, 0x20, 0x14), 0.8 * screen.progress));
        QImage offer = layer();
        QPainter onLayer(&offer);
        prepare(onLayer);
        cards.paintFace(onLayer, step.cards[i], base);
        onLayer.end();
        const double ahead = static_cast<int>(i) == step.chosen.value_or(-1) ? 0.2 : 0;
        const double reach = 60 * plan.unit();
        const QRectF box = cards.outline(step.cards[i], base).boundingRect().adjusted(-reach, -reach, reach, reach);
        burn(offer, box.toAlignedRect(), std::min(1.0, screen.progress + ahead), plan.unit(),
             production.seed + static_cast<quint32>(i));
        painter.setOpacity(1 - 0.5 * screen.progress);
        painter.drawImage(0, 0, offer);
        painter.setOpacity(1);
    }
}

// They come from the left and from above, turned and too small, and not yet solid.
void ScenePainter::paintComing(QPainter& painter, const Screen& screen) const {
    const Step& step = screen.situation.step;
    for (std::size_t i = 0; i < step.cards.size(); ++i) {
        const double arrived = std::clamp(screen.progress * 1.2 - 0.12 * static_cast<double>(i), 0.0, 1.0);
        QImage offer = layer();
        QPainter onLayer(&offer);
        prepare(onLayer);
        const QPointF base = plan.cardBase(i, step.cards[i].type);
        const double away = 1 - arrived;
        onLayer.translate(base + QPointF(-0.13, -0.1) * away * plan.height());
        onLayer.rotate(-26 * away);
        onLayer.scale(1 - 0.45 * away, 1 - 0.45 * away);
        onLayer.translate(-base);
        cards.paintFace(onLayer, step.cards[i], base);
        onLayer.end();
        painter.setOpacity(0.25 + 0.5 * arrived);
        painter.drawImage(0, 0, offer);
    }
    painter.setOpacity(1);
}

void ScenePainter::paintFaceDown(QPainter& painter) const {
    for (std::size_t column = 0; column < 3; ++column) {
        cards.paintBack(painter, plan.cardBack(column));
    }
}

void ScenePainter::paintComplete(QPainter& painter, const Situation& situation) const {
    const double unit = plan.unit();
    if (situation.hero) {
        const QPointF centre = plan.at(offersMiddle, 0.35);
        heroes.paintPortrait(painter, *situation.hero,
                             {centre.x() - 130 * unit, centre.y() - 148 * unit, 260 * unit, 296 * unit}, 1);
    }
    boardPainter.paintButton(painter, Words::in(production.language).play, plan.at(offersMiddle, 0.555),
                             {270 * unit, 82 * unit}, true);
}

// Who is playing, and what the deck is made of so far.
void ScenePainter::paintProgress(QPainter& painter, const Situation& situation) {
    const Words& words = Words::in(production.language);
    const double unit = plan.unit();
    if (situation.hero) {
        const QPointF centre = plan.at(-0.456, 0.768);
        heroes.paintPortrait(painter, *situation.hero,
                             {centre.x() - 104 * unit, centre.y() - 122 * unit, 208 * unit, 238 * unit}, 1);
    }
    deckPainter.paintCosts(painter, situation.deck);
    deckPainter.paintRows(painter, situation.deck, boardPainter.deckColumn());
    const QPointF count = plan.at(0.435, 0.926);
    drawPlate(painter, QRectF(count - QPointF(66, 24) * unit, QSizeF(132, 48) * unit), QColor(0x30, 0x26, 0x34));
    lettering.draw(painter, QStringLiteral("%1/%2").arg(situation.deck.size()).arg(deckSize),
                   count - QPointF(0, 7) * unit, 110 * unit, {.caps = 16 * unit});
    lettering.draw(painter, words.cards, count + QPointF(0, 14) * unit, 110 * unit, {.caps = 9 * unit});
    boardPainter.paintButton(painter, words.back, plan.at(0.588, 0.926), {140 * unit, 52 * unit}, false);
    if (situation.redrafting) {
        lettering.draw(painter, QStringLiteral("3 ") + words.wins, plan.at(0.152, 0.87), 150 * unit,
                       {.caps = 13 * unit});
    }
}

} // namespace pelloran::stage
