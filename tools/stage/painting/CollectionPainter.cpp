#include "tools/stage/painting/CollectionPainter.h"

#include "tools/stage/painting/Art.h"
#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"

namespace pelloran::stage {

namespace {

void paintPage(QPainter& painter, const ScreenPlan& plan, const QRectF& box, quint32 seed) {
    const double unit = plan.unit();
    QPainterPath page;
    page.addRoundedRect(box, 12 * unit, 12 * unit);
    castShadow(painter, page, 36 * unit, 0.9);
    painter.save();
    painter.setClipPath(page);
    painter.drawImage(box, mottled(box.size().toSize(), QColor(0xc2, 0xa8, 0x80), 0.22, unit, seed + 61));
    for (int ring = 6; ring > 0; --ring) {
        painter.strokePath(page, QPen(QColor(70, 40, 12, 30), ring * 12 * unit));
    }
    painter.restore();
    drawRim(painter, page, 13 * unit, bronze);
}

} // namespace

void paintCollection(QPainter& painter, const ScreenPlan& plan, const Lettering& lettering, const BoardPainter& board,
                     const std::vector<Card>& cards, Language language, quint32 seed) {
    const double unit = plan.unit();
    const Words& words = Words::in(language);
    paintPage(painter, plan, plan.area(-0.63, 0.075, 0.35, 0.92), seed);
    const double small = 0.86 * unit;
    const CardPainter painterOfCards(lettering, language, small, seed);
    for (std::size_t i = 0; i < cards.size() && i < 8; ++i) {
        const double x = -0.5 + 0.24 * static_cast<double>(i % 4);
        const double y = i < 4 ? 0.312 : 0.675;
        painterOfCards.paintFace(painter, cards[i], plan.at(x, y));
    }
    const QRectF column = plan.area(0.39, 0.1, 0.62, 0.86);
    QPainterPath frame;
    frame.addRoundedRect(column, 8 * unit, 8 * unit);
    painter.drawImage(column, mottled(column.size().toSize(), QColor(0x38, 0x2c, 0x24), 0.5, unit, seed + 63));
    drawRim(painter, frame, 8 * unit, bronze);
    for (int i = 0; i < 7; ++i) {
        const QRectF row(column.left() + 14 * unit, column.top() + (20 + 74.0 * i) * unit, column.width() - 28 * unit,
                         62 * unit);
        drawPlate(painter, row, classColour(Catalogue::sample().heroClasses()[static_cast<std::size_t>(i)].key));
        lettering.draw(painter, Catalogue::sample().heroClasses()[static_cast<std::size_t>(i)].name.in(language),
                       row.center(), row.width() * 0.8, {.caps = 15 * unit});
    }
    board.paintTitle(painter, words.collection, -0.14, 0.2, false);
    drawPlate(painter, QRectF(plan.at(-0.14, 0.942) - QPointF(150, 17) * unit, QSizeF(300, 34) * unit),
              QColor(0x3a, 0x34, 0x30));
    lettering.draw(painter, words.search, plan.at(-0.14, 0.942), 240 * unit, {.caps = 12 * unit});
    board.paintButton(painter, words.back, plan.at(0.56, 0.922), {140 * unit, 52 * unit}, false);
}

void paintDecks(QPainter& painter, const ScreenPlan& plan, const Lettering& lettering, const BoardPainter& board,
                Language language, quint32 seed) {
    const double unit = plan.unit();
    const Words& words = Words::in(language);
    paintPage(painter, plan, plan.area(-0.63, 0.075, 0.33, 0.92), seed);
    const auto& classes = Catalogue::sample().heroClasses();
    for (std::size_t i = 0; i < 9; ++i) {
        const HeroClass& hero = classes[(i + seed) % classes.size()];
        const auto column = static_cast<double>(i % 3);
        const std::size_t row = i / 3;
        const QPointF centre = plan.at(-0.46 + 0.31 * column, 0.22 + 0.25 * static_cast<double>(row));
        const QRectF box(centre - QPointF(128, 92) * unit, QSizeF(256, 184) * unit);
        QPainterPath shape;
        shape.addRoundedRect(box, 14 * unit, 14 * unit);
        castShadow(painter, shape, 12 * unit, 0.8);
        painter.save();
        painter.setClipPath(shape);
        painter.drawImage(box, paintClassArt(hero.key, box.size().toSize(), seed));
        painter.restore();
        drawEmblem(painter, hero.key, centre - QPointF(0, 20) * unit, 56 * unit);
        drawRim(painter, shape, 9 * unit, gold);
        lettering.draw(painter, hero.name.in(language), centre + QPointF(0, 66) * unit, 220 * unit,
                       {.caps = 16 * unit});
    }
    QPainterPath medal;
    medal.addEllipse(plan.at(0.5, 0.4), 120 * unit, 120 * unit);
    castShadow(painter, medal, 24 * unit, 0.8);
    painter.fillPath(medal, metal(medal.boundingRect(), bronze));
    drawRim(painter, medal, 14 * unit, gold);
    drawEmblem(painter, classes[seed % classes.size()].key, plan.at(0.5, 0.4), 84 * unit);
    board.paintTitle(painter, words.play, -0.15, 0.18, false);
    board.paintButton(painter, words.play, plan.at(0.5, 0.66), {260 * unit, 96 * unit}, true);
    board.paintButton(painter, words.back, plan.at(0.56, 0.922), {140 * unit, 52 * unit}, false);
}

} // namespace pelloran::stage
