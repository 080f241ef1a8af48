#include "tools/stage/painting/HeroPainter.h"

#include "tools/stage/painting/Art.h"
#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"

namespace pelloran::stage {

namespace {

const QColor inkBrown(45, 30, 10);
const QColor salmon(248, 132, 110);

// Of a portrait, from the middle of the line that the hero's name stands on; in units.
const QRectF portrait(-115, -298, 230, 264);

} // namespace

QString HeroPainter::printedName(const HeroClass& hero) const {
    return byName ? hero.heroName.in(language) : hero.name.in(language).toUpper();
}

QPainterPath HeroPainter::outline(std::size_t column) const {
    const QPointF base = plan.heroNameBase(column);
    return QTransform::fromTranslate(base.x(), base.y()).scale(plan.unit(), plan.unit()).map(archway(portrait));
}

QPainterPath HeroPainter::paint(QPainter& painter, const HeroClass& hero, std::size_t column) const {
    const double unit = plan.unit();
    painter.save();
    painter.translate(plan.heroNameBase(column));
    painter.scale(unit, unit);
    paintPortrait(painter, hero, portrait, unit);
    painter.restore();

    // Plain letters without an outline, unlike everything else on the screen. The game's new screen was seen without
    // the line of the class; unless that is wished for it stands here all the same, because without it only who knows
    // the heroes can tell the class.
    const QColor ink = plan.look() == Look::parchment ? inkBrown : salmon;
    const QPainterPath name =
        lettering.drawAlong(painter, hero.heroName.in(language), plan.heroNameBase(column), 240 * unit, Curve(),
                            {.caps = heroNameCaps * unit, .fill = ink, .outlineWidth = 0});
    return byName ? name
                  : lettering.drawAlong(painter, printedName(hero), plan.classNameBase(column), 220 * unit, Curve(),
                                        {.caps = classNameCaps * unit, .fill = ink, .outlineWidth = 0});
}

void HeroPainter::paintPortrait(QPainter& painter, const HeroClass& hero, const QRectF& box, double pixels) const {
    const double scale = box.width() / portrait.width();
    const QPainterPath frame = archway(box);
    const double border = 20 * scale;
    const QRectF inside = box.adjusted(border, border * 1.35, -border, -border);
    const QPainterPath window = archway(inside);
    castShadow(painter, frame, 18 * scale, 0.75);
    painter.save();
    painter.setClipPath(frame);
    const auto inPixels = [&](const QSizeF& size) { return (size * pixels).toSize().expandedTo({16, 16}); };
    painter.drawImage(box, mottled(inPixels(box.size()), QColor(0x3c, 0x36, 0x34), 0.6, pixels * scale, seed + 29));
    painter.setClipPath(window, Qt::IntersectClip);
    painter.drawImage(inside, paintClassArt(hero.key, inPixels(inside.size()), seed));
    painter.restore();
    castShadow(painter, window, 8 * scale, 0.6);
    drawRim(painter, frame, 9 * scale, mix(gold, bronze, 0.3));
    drawRim(painter, window, 4.5 * scale, mix(gold, steel, 0.5));
    drawEmblem(painter, hero.key, inside.center() + QPointF(0, 8 * scale), 66 * scale);
    drawJewel(painter, {box.center().x(), box.top() + 8 * scale}, 11 * scale, classColour(hero.key));
}

} // namespace pelloran::stage
