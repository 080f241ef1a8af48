#include "stage/painting/HeroPainter.h"

#include "stage/painting/Art.h"
#include "stage/painting/CardPainter.h"
#include "stage/painting/Emblems.h"
#include "stage/painting/Materials.h"

namespace pelloran::stage {

namespace {

// A window with a round top.
QPainterPath archway(double halfWidth, double top, double bottom) {
    QPainterPath path;
    path.moveTo(-halfWidth, bottom);
    path.lineTo(-halfWidth, top + halfWidth);
    path.arcTo(QRectF(-halfWidth, top, 2 * halfWidth, 2 * halfWidth), 180, -180);
    path.lineTo(halfWidth, bottom);
    path.closeSubpath();
    return path;
}

} // namespace

QPainterPath HeroPainter::outline(QPointF nameCentre) const {
    QPainterPath plaque;
    plaque.addRect(QRectF(-112, -40, 224, 68));
    const QTransform placed = QTransform::fromTranslate(nameCentre.x(), nameCentre.y()).scale(unit, unit);
    return placed.map(archway(172, -410, -38).united(plaque));
}

void HeroPainter::paint(QPainter& painter, const HeroClass& hero, QPointF nameCentre) const {
    painter.save();
    painter.translate(nameCentre);
    painter.scale(unit, unit);

    const QPainterPath frame = archway(172, -410, -38);
    const QPainterPath window = archway(144, -382, -60);
    castShadow(painter, frame, 24, 0.85);
    painter.save();
    painter.setClipPath(frame);
    painter.drawImage(QRectF(-172, -410, 344, 372), mottled({344, 372}, QColor(0x6e, 0x58, 0x38), 0.8, 1, seed + 29));
    painter.setClipPath(window, Qt::IntersectClip);
    const QSize pixels = (QSizeF(288, 322) * unit).toSize().expandedTo({16, 16});
    painter.drawImage(QRectF(-144, -382, 288, 322), paintClassArt(hero.key, pixels, seed));
    painter.restore();
    castShadow(painter, window, 14, 0.6);
    drawRim(painter, frame, 9, mix(gold, bronze, 0.4));
    drawRim(painter, window, 8, gold);
    drawEmblem(painter, hero.key, {0, -236}, 92);
    drawJewel(painter, {0, -404}, 17, classColour(hero.key));

    const Curve arch(Curve::arch, 340, 6);
    drawRibbon(painter, arch, {0, -78}, 44, QColor(0x46, 0x34, 0x26), 1);
    lettering.drawAlong(painter, hero.heroName.in(language), {0, -78}, 300, arch, {.pixelSize = 25});

    QPainterPath plaque;
    plaque.addRoundedRect(QRectF(-112, -27, 224, 54), 10, 10);
    castShadow(painter, plaque, 9, 0.7);
    painter.fillPath(plaque, QColor(0x1c, 0x14, 0x10));
    painter.strokePath(plaque, QPen(metal(plaque.boundingRect(), bronze), 3));
    lettering.draw(painter, hero.name.in(language), {0, 0}, 205,
                   {.pixelSize = language == Language::english ? 38.0 : 39.0, .fill = QColor(0xfb, 0xee, 0xc6)});
    painter.restore();
}

void HeroPainter::paintMedallion(QPainter& painter, const HeroClass& hero, QPointF centre, double radius) const {
    QPainterPath round;
    round.addEllipse(centre, radius, radius);
    castShadow(painter, round, radius * 0.2, 0.85);
    painter.save();
    painter.setClipPath(round);
    const int pixels = static_cast<int>(2 * radius) + 1;
    painter.drawImage(centre - QPointF(radius, radius), paintClassArt(hero.key, {pixels, pixels}, seed));
    painter.restore();
    drawRim(painter, round, radius * 0.1, gold);
    drawEmblem(painter, hero.key, centre, radius * 0.55);
}

} // namespace pelloran::stage
