#include "stage/painting/ScenePainter.h"

#include "stage/painting/Art.h"
#include "stage/painting/Emblems.h"
#include "stage/painting/Materials.h"

#include <QRadialGradient>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace pelloran::stage {

// What the game says outside of cards.
struct ScenePainter::Words {
    QString mainMenu;
    QString chooseHero;
    QString chooseCard;
    QString redraft;
    QString deckComplete;
    QString play;
    QString arena;
    QString collection;
    QString wins;
    QString back;
};

namespace {

constexpr std::array<double, 3> cardColumns{0.233, 0.402, 0.571};
constexpr double cardNameHeight = 0.415;
constexpr std::array<double, 3> heroColumns{0.27, 0.488, 0.71};
constexpr double heroNameHeight = 0.535;
constexpr double cardBoardRight = 0.725; // leaves room for the deck
constexpr double heroBoardRight = 0.87;

const QColor leather(0x5a, 0x40, 0x2a);
const QColor pale(0xf2, 0xe8, 0xd2);

struct DeckRow {
    const Card* card;
    int copies;
};

std::vector<DeckRow> deckRows(const std::vector<Card>& deck) {
    std::map<std::pair<int, QString>, DeckRow> rows;
    for (const Card& card : deck) {
        ++rows.try_emplace({card.cost, card.id}, DeckRow{&card, 0}).first->second.copies;
    }
    std::vector<DeckRow> sorted;
    for (const auto& [key, row] : rows) {
        sorted.push_back(row);
    }
    return sorted;
}

} // namespace

ScenePainter::ScenePainter(QSize size, Language stageLanguage, quint32 stageSeed, Lettering stageLettering)
    : windowSize(size)
    , language(stageLanguage)
    , seed(stageSeed)
    , unit(std::min(size.width() / 1920.0, size.height() / 1080.0))
    , lettering(std::move(stageLettering))
    , cards(lettering, language, unit, seed)
    , heroes(lettering, language, unit, seed)
    , light(size, unit, seed)
    , table(woodenTable(size, unit, seed + 1)) {}

const ScenePainter::Words& ScenePainter::words() const {
    static const Words english{
        .mainMenu = QStringLiteral("Main Menu"),
        .chooseHero = QStringLiteral("Choose your Hero"),
        .chooseCard = QStringLiteral("Choose a Card"),
        .redraft = QStringLiteral("Change your Deck"),
        .deckComplete = QStringLiteral("Deck Complete"),
        .play = QStringLiteral("Play"),
        .arena = QStringLiteral("Arena"),
        .collection = QStringLiteral("Collection"),
        .wins = QStringLiteral("Wins"),
        .back = QStringLiteral("Back"),
    };
    static const Words chinese{
        .mainMenu = QStringLiteral("主菜单"),
        .chooseHero = QStringLiteral("选择你的英雄"),
        .chooseCard = QStringLiteral("选择一张卡牌"),
        .redraft = QStringLiteral("重选卡牌"),
        .deckComplete = QStringLiteral("套牌完成"),
        .play = QStringLiteral("开始"),
        .arena = QStringLiteral("竞技场"),
        .collection = QStringLiteral("我的收藏"),
        .wins = QStringLiteral("胜利"),
        .back = QStringLiteral("返回"),
    };
    return language == Language::english ? english : chinese;
}

QPointF ScenePainter::at(double x, double y) const {
    return {x * windowSize.width(), y * windowSize.height()};
}

QRectF ScenePainter::area(double left, double top, double right, double bottom) const {
    return {at(left, top), at(right, bottom)};
}

void ScenePainter::show(const Situation& situation) {
    const StepKind kind = situation.step.kind;
    const bool heroesOffered =
        kind == StepKind::heroPick || kind == StepKind::lookAtHero || kind == StepKind::chooseHero;
    if (kind == StepKind::idle) {
        scene = table;
    } else {
        startFrom(heroesOffered ? heroBoardRight : cardBoardRight);
    }
    QPainter painter(&scene);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
    light.setGlows({}, -1);
    switch (kind) {
    case StepKind::idle:
        paintMenu(painter);
        return;
    case StepKind::heroPick:
    case StepKind::lookAtHero:
    case StepKind::chooseHero:
        paintTitle(painter, words().chooseHero, heroColumns[1]);
        paintHeroes(painter, situation);
        return;
    case StepKind::cardPick:
    case StepKind::choose:
        paintTitle(painter, words().chooseCard, cardColumns[1]);
        paintCards(painter, situation);
        break;
    case StepKind::skipAhead:
        paintTitle(painter, words().chooseCard, cardColumns[1]);
        paintFaceDown(painter);
        break;
    case StepKind::redraft:
        paintTitle(painter, words().redraft, cardColumns[1]);
        paintFaceDown(painter);
        break;
    case StepKind::end:
        paintTitle(painter, words().deckComplete, cardColumns[1]);
        paintComplete(painter, situation);
        break;
    }
    paintProgress(painter, situation);
    paintDeck(painter, situation);
}

void ScenePainter::paint(QPainter& painter, double seconds) const {
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.setCompositionMode(QPainter::CompositionMode_Source);
    painter.drawImage(0, 0, scene);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    light.paint(painter, seconds);
}

void ScenePainter::startFrom(double boardRight) {
    QImage& board = boards[boardRight];
    if (board.isNull()) {
        board = table;
        QPainter painter(&board);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
        paintBoard(painter, boardRight);
        if (boardRight == cardBoardRight) {
            paintDeckPanel(painter);
        }
    }
    scene = board;
}

void ScenePainter::paintBoard(QPainter& painter, double right) const {
    const QRectF box = area(0.085, 0.09, right, 0.83);
    QPainterPath frame;
    frame.addRoundedRect(box, 10 * unit, 10 * unit);
    castShadow(painter, frame, 40 * unit, 0.9);
    painter.drawImage(box, mottled(box.size().toSize(), leather, 0.75, unit, seed + 2));
    QRadialGradient dim(box.center(), box.width() * 0.62);
    dim.setColorAt(0.3, QColor(255, 214, 150, 26));
    dim.setColorAt(0.7, QColor(20, 8, 0, 40));
    dim.setColorAt(1, QColor(10, 4, 0, 170));
    painter.fillRect(box, dim);
    drawRim(painter, frame, 15 * unit, shade(gold, 0.82));
    QPainterPath inner;
    inner.addRoundedRect(box.adjusted(16 * unit, 16 * unit, -16 * unit, -16 * unit), 6 * unit, 6 * unit);
    painter.strokePath(inner, QPen(QColor(0, 0, 0, 120), 4 * unit));
    painter.strokePath(inner, QPen(withAlpha(bronze, 0.7), 1.6 * unit));
    for (const QPointF& corner : {box.topLeft(), box.topRight(), box.bottomLeft(), box.bottomRight()}) {
        QTransform placed = QTransform::fromTranslate(corner.x(), corner.y()).scale(34 * unit, 34 * unit);
        const QPainterPath mount = placed.map(star(4, 0.62));
        castShadow(painter, mount, 8 * unit, 0.7);
        painter.fillPath(mount, metal(mount.boundingRect(), gold));
        painter.strokePath(mount, QPen(QColor(0x24, 0x14, 0x06), 2 * unit));
        drawJewel(painter, corner, 13 * unit, QColor(0x2a, 0x6a, 0xd8));
    }
}

void ScenePainter::paintTitle(QPainter& painter, const QString& title, double x) const {
    const QPointF centre = at(x, 0.083);
    const Curve arch(Curve::arch, 600 * unit, 16 * unit);
    for (const double side : {-1.0, 1.0}) { // the ends, folded back
        QPolygonF tail;
        tail << centre + QPointF(side * 250, 4) * unit << centre + QPointF(side * 372, 18) * unit
             << centre + QPointF(side * 338, 50) * unit << centre + QPointF(side * 372, 84) * unit
             << centre + QPointF(side * 250, 70) * unit;
        QPainterPath path;
        path.addPolygon(tail);
        path.closeSubpath();
        castShadow(painter, path, 10 * unit, 0.7);
        painter.fillPath(path, metal(path.boundingRect(), QColor(0x3a, 0x18, 0x18)));
        painter.strokePath(path, QPen(QColor(0x14, 0x08, 0x06), 3 * unit));
    }
    drawRibbon(painter, arch, centre, 82 * unit, QColor(0x6e, 0x22, 0x24), unit);
    lettering.drawAlong(painter, title, centre, 480 * unit, arch, {.pixelSize = 46 * unit});
}

void ScenePainter::paintMenu(QPainter& painter) const {
    const QPointF centre = at(0.5, 0.52);
    const double radius = 390 * unit;
    QPainterPath round;
    round.addEllipse(centre, radius, radius);
    castShadow(painter, round, 60 * unit, 0.9);
    painter.save();
    painter.setClipPath(round);
    const int pixels = static_cast<int>(2 * radius);
    painter.drawImage(centre - QPointF(radius, radius), paintValley({pixels, pixels}, seed));
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
    paintTitle(painter, words().mainMenu, 0.5);
    const QSizeF button(330 * unit, 84 * unit);
    paintButton(painter, words().play, centre + QPointF(0, -110) * unit, button, false);
    paintButton(painter, words().arena, centre, button, true);
    paintButton(painter, words().collection, centre + QPointF(0, 110) * unit, button, false);
}

void ScenePainter::paintHeroes(QPainter& painter, const Situation& situation) {
    std::vector<QPainterPath> offers;
    for (std::size_t i = 0; i < situation.step.heroes.size(); ++i) {
        const QPointF place = at(heroColumns[i], heroNameHeight);
        heroes.paint(painter, situation.step.heroes[i], place);
        offers.push_back(heroes.outline(place));
    }
    const int chosen = situation.step.chosen.value_or(-1);
    if (situation.step.kind == StepKind::chooseHero) {
        paintVeil(painter, offers, chosen);
    } else if (situation.step.kind == StepKind::lookAtHero) {
        paintButton(painter, words().play, at(heroColumns[1], 0.72), {260 * unit, 76 * unit}, true);
    }
    light.setGlows(std::move(offers), chosen);
    paintButton(painter, words().back, at(0.925, 0.93), {150 * unit, 56 * unit}, false);
}

void ScenePainter::paintCards(QPainter& painter, const Situation& situation) {
    std::vector<QPainterPath> offers;
    for (std::size_t i = 0; i < situation.step.cards.size(); ++i) {
        const QPointF place = at(cardColumns[i], cardNameHeight);
        cards.paintFace(painter, situation.step.cards[i], place);
        offers.push_back(cards.outline(situation.step.cards[i], place));
    }
    const int chosen = situation.step.chosen.value_or(-1);
    paintVeil(painter, offers, chosen);
    light.setGlows(std::move(offers), chosen);
}

void ScenePainter::paintFaceDown(QPainter& painter) {
    std::vector<QPainterPath> backs;
    for (const double column : cardColumns) {
        const QPointF place = at(column, cardNameHeight);
        cards.paintBack(painter, place);
        backs.push_back(cards.backOutline(place));
    }
    light.setGlows(std::move(backs), -1);
}

// Darkens the offers that were not taken.
void ScenePainter::paintVeil(QPainter& painter, const std::vector<QPainterPath>& offers, int chosen) {
    for (std::size_t i = 0; chosen >= 0 && i < offers.size(); ++i) {
        if (static_cast<int>(i) != chosen) {
            painter.fillPath(offers[i], QColor(12, 8, 6, 130));
        }
    }
}

void ScenePainter::paintComplete(QPainter& painter, const Situation& situation) const {
    if (situation.hero) {
        heroes.paintMedallion(painter, *situation.hero, at(0.402, 0.37), 190 * unit);
    }
    paintButton(painter, words().play, at(0.402, 0.61), {300 * unit, 88 * unit}, true);
}

// Along the lower edge of the board: who is playing, and what the deck is made of so far.
void ScenePainter::paintProgress(QPainter& painter, const Situation& situation) const {
    if (situation.hero && situation.step.kind != StepKind::end) {
        heroes.paintMedallion(painter, *situation.hero, at(0.165, 0.727), 74 * unit);
    }
    paintManaCurve(painter, situation);
    drawJewel(painter, at(0.165, 0.905), 34 * unit, QColor(0x7a, 0x54, 0x20));
    lettering.draw(painter, QString::number(situation.redrafting ? 3 : 0), at(0.165, 0.905), 60 * unit,
                   {.pixelSize = 40 * unit});
    lettering.drawFrom(painter, words().wins, at(0.19, 0.905), 200 * unit, {.pixelSize = 30 * unit, .fill = pale});
    paintButton(painter, words().back, at(0.925, 0.955), {150 * unit, 56 * unit}, false);
}

void ScenePainter::paintManaCurve(QPainter& painter, const Situation& situation) const {
    std::array<int, 8> byCost{};
    for (const Card& card : situation.deck) {
        ++byCost[static_cast<std::size_t>(std::clamp(card.cost, 0, 7))];
    }
    const double tallest = std::max(6, *std::ranges::max_element(byCost));
    for (std::size_t cost = 0; cost < byCost.size(); ++cost) {
        const QPointF foot = at(0.27 + 0.0445 * static_cast<double>(cost), 0.775);
        const QRectF slot(foot.x() - 24 * unit, foot.y() - 118 * unit, 48 * unit, 110 * unit);
        painter.fillRect(slot, QColor(0, 0, 0, 90));
        const double height = slot.height() * byCost[cost] / tallest;
        const QRectF bar(slot.left(), slot.bottom() - height, slot.width(), height);
        QLinearGradient blue(bar.topLeft(), bar.topRight());
        blue.setColorAt(0, QColor(0x1c, 0x4a, 0xa4));
        blue.setColorAt(0.4, QColor(0x3e, 0x86, 0xe0));
        blue.setColorAt(1, QColor(0x12, 0x2c, 0x6c));
        painter.fillRect(bar, blue);
        QPainterPath edge;
        edge.addRect(slot);
        painter.strokePath(edge, QPen(withAlpha(bronze, 0.8), 2 * unit));
        drawJewel(painter, foot + QPointF(0, 6) * unit, 19 * unit, QColor(0x1f, 0x62, 0xd6));
        lettering.draw(painter, cost == 7 ? QStringLiteral("7+") : QString::number(cost), foot + QPointF(0, 6) * unit,
                       34 * unit, {.pixelSize = 24 * unit});
    }
}

QRectF ScenePainter::deckPanel() const {
    return area(0.75, 0.065, 0.978, 0.885);
}

void ScenePainter::paintDeckPanel(QPainter& painter) const {
    const QRectF panel = deckPanel();
    QPainterPath frame;
    frame.addRoundedRect(panel, 12 * unit, 12 * unit);
    castShadow(painter, frame, 30 * unit, 0.85);
    painter.drawImage(panel, mottled(panel.size().toSize(), QColor(0x3c, 0x2c, 0x1e), 0.7, unit, seed + 8));
    drawRim(painter, frame, 10 * unit, bronze);
}

void ScenePainter::paintDeck(QPainter& painter, const Situation& situation) {
    const QRectF inside = deckPanel().adjusted(20 * unit, 26 * unit, -20 * unit, -24 * unit);
    const std::vector<DeckRow> rows = deckRows(situation.deck);
    const double pitch =
        std::min(40 * unit, inside.height() / static_cast<double>(std::max<std::size_t>(rows.size(), 1)));
    double top = inside.top();
    for (const DeckRow& row : rows) {
        paintDeckRow(painter, *row.card, row.copies, {inside.left(), top, inside.width(), pitch - 3 * unit});
        top += pitch;
    }
    lettering.draw(painter, QStringLiteral("%1 / %2").arg(situation.deck.size()).arg(deckSize), at(0.835, 0.93),
                   200 * unit, {.pixelSize = 32 * unit, .fill = pale});
}

void ScenePainter::paintDeckRow(QPainter& painter, const Card& card, int copies, const QRectF& row) {
    const QColor dark(0x1a, 0x16, 0x16);
    painter.fillRect(row, dark);
    const QRectF art(row.right() - 190 * unit, row.top(), 160 * unit, row.height());
    const QRectF whole(art.left(), art.center().y() - 45 * unit, art.width(), 90 * unit);
    QImage& strip = strips[card.id];
    if (strip.isNull()) {
        strip = paintCardArt(card, whole.size().toSize().expandedTo({8, 8}), seed);
    }
    painter.setClipRect(art);
    painter.drawImage(whole, strip);
    painter.setClipping(false);
    QLinearGradient fade(art.topLeft(), art.topRight());
    fade.setColorAt(0, dark);
    fade.setColorAt(0.8, withAlpha(dark, 0.12));
    painter.fillRect(art.adjusted(-1, 0, 0, 0), fade);

    const double middle = row.center().y();
    const double letters = std::min(23 * unit, row.height() * 0.72);
    painter.fillRect(QRectF(row.topLeft(), QSizeF(34 * unit, row.height())), metal(row, QColor(0x1f, 0x52, 0xb4)));
    lettering.draw(painter, QString::number(card.cost), {row.left() + 17 * unit, middle}, 30 * unit,
                   {.pixelSize = letters * 1.1});
    lettering.drawFrom(painter, card.name.in(language), {row.left() + 44 * unit, middle}, 270 * unit,
                       {.pixelSize = letters, .fill = pale});
    if (copies > 1) {
        lettering.draw(painter, QString::number(copies), {row.right() - 15 * unit, middle}, 30 * unit,
                       {.pixelSize = letters * 1.1, .fill = QColor(0xff, 0xd2, 0x4a)});
    }
    QPainterPath edge;
    edge.addRect(row);
    painter.strokePath(edge, QPen(withAlpha(bronze, 0.55), 1.5 * unit));
}

void ScenePainter::paintButton(QPainter& painter, const QString& text, QPointF centre, QSizeF size, bool lit) const {
    const QRectF box(centre - QPointF(size.width(), size.height()) / 2, size);
    QPainterPath shape;
    shape.addRoundedRect(box, size.height() * 0.22, size.height() * 0.22);
    castShadow(painter, shape, 16 * unit, 0.8);
    const QColor colour = lit ? QColor(0x9a, 0x5c, 0x1c) : QColor(0x4a, 0x30, 0x20);
    QLinearGradient face(box.topLeft(), box.bottomLeft());
    face.setColorAt(0, shade(colour, 1.4));
    face.setColorAt(0.5, colour);
    face.setColorAt(1, shade(colour, 0.5));
    painter.fillPath(shape, face);
    drawRim(painter, shape, size.height() * 0.07, lit ? gold : bronze);
    lettering.draw(painter, text, centre, size.width() * 0.85, {.pixelSize = size.height() * 0.46, .fill = pale});
}

} // namespace pelloran::stage
