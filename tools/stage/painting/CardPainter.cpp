#include "stage/painting/CardPainter.h"

#include "stage/painting/Art.h"
#include "stage/painting/Emblems.h"
#include "stage/painting/Materials.h"

#include <QHash>
#include <QRadialGradient>

#include <vector>

namespace pelloran::stage {

namespace {

const QColor manaBlue(0x1f, 0x62, 0xd6);
const QColor attackGold(0xd8, 0x9c, 0x1c);
const QColor healthRed(0xb8, 0x1c, 0x20);
const QColor shieldGrey(0x70, 0x78, 0x84);
const QColor parchment(0xd8, 0xc0, 0x94);

QColor rarityColour(const QString& rarity) {
    static const QHash<QString, QColor> all{
        {QStringLiteral("COMMON"), QColor(0xc8, 0xcc, 0xd2)},
        {QStringLiteral("RARE"), QColor(0x2c, 0x7c, 0xe8)},
        {QStringLiteral("EPIC"), QColor(0xa0, 0x3c, 0xd8)},
        {QStringLiteral("LEGENDARY"), QColor(0xf4, 0x92, 0x18)},
    };
    return all.value(rarity, QColor());
}

// Places on a card, from the middle of its name.
const QRectF body(-148, -226, 296, 438);
constexpr QPointF manaPlace(-120, -196);
constexpr QPointF attackPlace(-122, 182);
constexpr QPointF healthPlace(122, 182);
constexpr double jewelRadius = 36;

bool hasStrength(const Card& card) {
    return card.type == u"MINION" || card.type == u"WEAPON";
}

QPainterPath rounded(const QRectF& box, double radius) {
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    return path;
}

// The window through which the picture is seen.
QPainterPath artWindow(const Card& card) {
    QPainterPath path;
    if (card.type == u"SPELL") {
        path.moveTo(-106, 4);
        path.lineTo(-106, -176);
        path.quadTo(-100, -196, -78, -198);
        path.quadTo(0, -212, 78, -198);
        path.quadTo(100, -196, 106, -176);
        path.lineTo(106, 4);
        path.closeSubpath();
    } else if (card.type == u"WEAPON") {
        path.addEllipse(QPointF(0, -102), 102, 102);
    } else {
        path.addEllipse(QPointF(0, -102), 96, 112);
    }
    return path;
}

} // namespace

void drawRibbon(QPainter& painter, const Curve& curve, QPointF centre, double height, const QColor& colour,
                double unit) {
    const QPainterPath band = curve.band(centre, height);
    castShadow(painter, band, 7 * unit, 0.8);
    painter.strokePath(band, QPen(QColor(0x14, 0x0a, 0x06), 4 * unit, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    const QRectF box = band.boundingRect();
    QLinearGradient cloth(box.topLeft(), box.bottomLeft());
    cloth.setColorAt(0, shade(colour, 1.25));
    cloth.setColorAt(0.45, colour);
    cloth.setColorAt(1, shade(colour, 0.6));
    painter.fillPath(band, cloth);
    QLinearGradient folds(box.topLeft(), box.topRight());
    for (int i = 0; i <= 8; ++i) {
        folds.setColorAt(i / 8.0, i % 2 == 0 ? QColor(0, 0, 0, 90) : QColor(255, 255, 255, 8));
    }
    painter.fillPath(band, folds);
    const QColor thread(0xb4, 0x86, 0x38);
    for (const double side : {-1.0, 1.0}) {
        const QPainterPath edge = curve.band(centre + QPointF(0, side * (height / 2 - 4.5 * unit)), 1.6 * unit);
        painter.fillPath(edge, withAlpha(thread, 0.85));
    }
}

void drawJewel(QPainter& painter, QPointF centre, double radius, const QColor& colour) {
    QPainterPath round;
    round.addEllipse(centre, radius, radius);
    castShadow(painter, round, radius * 0.25, 0.8);
    QRadialGradient depth(centre - QPointF(radius * 0.25, radius * 0.35), radius * 1.45);
    depth.setColorAt(0, shade(colour, 1.45));
    depth.setColorAt(0.45, colour);
    depth.setColorAt(1, shade(colour, 0.28));
    painter.fillPath(round, depth);
    QPainterPath shine;
    shine.addEllipse(centre - QPointF(0, radius * 0.5), radius * 0.62, radius * 0.3);
    painter.fillPath(shine, QColor(255, 255, 255, 46));
    drawRim(painter, round, radius * 0.13, gold);
}

QPainterPath CardPainter::outline(const Card& card, QPointF nameCentre) const {
    QPainterPath shape = rounded(body, 24);
    std::vector<QPointF> jewels{manaPlace};
    if (hasStrength(card)) {
        jewels.insert(jewels.end(), {attackPlace, healthPlace});
    }
    for (const QPointF& jewel : jewels) {
        QPainterPath round;
        round.addEllipse(jewel, jewelRadius + 3, jewelRadius + 3);
        shape = shape.united(round);
    }
    return QTransform::fromTranslate(nameCentre.x(), nameCentre.y()).scale(unit, unit).map(shape);
}

QPainterPath CardPainter::backOutline(QPointF nameCentre) const {
    return QTransform::fromTranslate(nameCentre.x(), nameCentre.y()).scale(unit, unit).map(rounded(body, 24));
}

void CardPainter::paintFace(QPainter& painter, const Card& card, QPointF nameCentre) const {
    painter.save();
    painter.translate(nameCentre);
    painter.scale(unit, unit);
    paintBody(painter, card);
    paintArt(painter, card);
    paintRules(painter, card);
    paintName(painter, card);
    paintRarity(painter, card);
    paintNumbers(painter, card);
    painter.restore();
}

void CardPainter::paintBack(QPainter& painter, QPointF nameCentre) const {
    painter.save();
    painter.translate(nameCentre);
    painter.scale(unit, unit);
    const QPainterPath shape = rounded(body, 24);
    castShadow(painter, shape, 20, 0.8);
    painter.save();
    painter.setClipPath(shape);
    painter.drawImage(body, mottled(body.size().toSize(), QColor(0x26, 0x36, 0x6a), 1.0, 1, seed));
    painter.restore();
    drawRim(painter, rounded({-140, -218, 280, 422}, 18), 9, gold);
    drawRim(painter, rounded({-112, -190, 224, 366}, 100), 5, bronze);
    QTransform placed = QTransform::fromTranslate(0, -7).scale(84, 84);
    for (const double turn : {0.0, 22.5}) {
        const QPainterPath sign = placed.map(QTransform().rotate(turn).map(star(8, 0.5)));
        painter.fillPath(sign, metal(sign.boundingRect(), turn == 0 ? bronze : gold));
        painter.strokePath(sign, QPen(QColor(0x1a, 0x10, 0x08), 2));
        placed.scale(0.72, 0.72);
    }
    drawJewel(painter, {0, -7}, 24, manaBlue);
    painter.restore();
}

void CardPainter::paintBody(QPainter& painter, const Card& card) const {
    const QPainterPath shape = rounded(body, 24);
    castShadow(painter, shape, 22, 0.85);
    painter.save();
    painter.setClipPath(shape);
    const QColor colour = classColour(card.cardClass);
    painter.drawImage(body, mottled(body.size().toSize(), shade(colour, 0.95), 0.85, 1, seed + 3));
    QLinearGradient light(0, body.top(), 0, body.bottom());
    light.setColorAt(0, QColor(255, 255, 255, 70));
    light.setColorAt(0.35, QColor(255, 255, 255, 0));
    light.setColorAt(1, QColor(0, 0, 0, 150));
    painter.fillRect(body, light);
    painter.restore();
    // A frame of dark metal with a bright inner edge.
    drawRim(painter, rounded(body.adjusted(5, 5, -5, -5), 20), 10, mix(steel, colour, 0.55));
    painter.strokePath(rounded(body.adjusted(13, 13, -13, -13), 14), QPen(QColor(0, 0, 0, 150), 3));
    painter.strokePath(rounded(body.adjusted(15, 15, -15, -15), 13), QPen(withAlpha(shade(colour, 1.8), 0.5), 1.4));
    if (card.rarity == u"LEGENDARY") {
        drawRim(painter, rounded(body.adjusted(5, 5, -5, -5), 20), 6, gold);
        for (const double side : {-1.0, 1.0}) {
            QPainterPath horn;
            horn.moveTo(side * 40, -222);
            horn.cubicTo(side * 90, -262, side * 132, -244, side * 152, -206);
            horn.cubicTo(side * 128, -226, side * 96, -226, side * 40, -212);
            painter.fillPath(horn, metal(horn.boundingRect(), gold));
            painter.strokePath(horn, QPen(QColor(0x2a, 0x18, 0x06), 2.4));
        }
    }
}

void CardPainter::paintArt(QPainter& painter, const Card& card) const {
    const QPainterPath window = artWindow(card);
    const QRectF box = window.boundingRect();
    const double finest = unit > 0 ? unit : 1;
    const QSize pixels = (box.size() * finest).toSize().expandedTo({16, 16});
    painter.save();
    painter.setClipPath(window);
    painter.drawImage(box, paintCardArt(card, pixels, seed));
    painter.restore();
    castShadow(painter, window, 9, 0.5);
    drawRim(painter, window, 9,
            card.type == u"SPELL"    ? mix(bronze, steel, 0.4)
            : card.type == u"WEAPON" ? steel
                                     : gold);
}

void CardPainter::paintRules(QPainter& painter, const Card& card) const {
    const QRectF box(-114, 36, 228, 142);
    const bool dark = card.type == u"WEAPON";
    const QPainterPath sheet = rounded(box, 8);
    painter.save();
    painter.setClipPath(sheet);
    painter.drawImage(box,
                      mottled(box.size().toSize(), dark ? QColor(0x38, 0x36, 0x3a) : parchment, 0.32, 1, seed + 17));
    painter.restore();
    painter.strokePath(sheet, QPen(QColor(0x22, 0x14, 0x08), 5));
    painter.strokePath(sheet, QPen(withAlpha(gold, 0.65), 1.6));
    const double lowest = card.type == u"SPELL" ? 14 : 30; // room for the jewels at the lower corners
    lettering.drawParagraph(painter, rulesText(card, language), box.adjusted(12, 18, -12, -lowest),
                            language == Language::english ? 23 : 22,
                            dark ? QColor(0xe8, 0xe0, 0xd0) : QColor(0x2c, 0x1c, 0x0c));
}

void CardPainter::paintName(QPainter& painter, const Card& card) const {
    const bool spell = card.type == u"SPELL";
    const Curve curve(spell                    ? Curve::arch
                      : card.type == u"WEAPON" ? Curve::straight
                                               : Curve::wave,
                      300, spell ? 13 : 9);
    const QColor cloth = card.type == u"WEAPON" ? QColor(0x38, 0x32, 0x30)
                         : spell                ? QColor(0x5c, 0x34, 0x26)
                                                : QColor(0x54, 0x3a, 0x24);
    const QPointF centre(0, spell ? -5 : 0);
    drawRibbon(painter, curve, centre, 50, cloth, 1);
    lettering.drawAlong(painter, card.name.in(language), centre, 252, curve,
                        {.pixelSize = language == Language::english ? 34.0 : 36.0});
}

void CardPainter::paintRarity(QPainter& painter, const Card& card) const {
    const QColor colour = rarityColour(card.rarity);
    if (!colour.isValid()) {
        return;
    }
    QPainterPath gem;
    gem.moveTo(0, 28);
    gem.lineTo(14, 40);
    gem.lineTo(0, 54);
    gem.lineTo(-14, 40);
    gem.closeSubpath();
    drawRim(painter, gem, 6, gold);
    painter.fillPath(gem, metal(gem.boundingRect(), colour));
}

void CardPainter::paintNumbers(QPainter& painter, const Card& card) const {
    const auto number = [&](QPointF centre, const QColor& colour, int value) {
        drawJewel(painter, centre, jewelRadius, colour);
        lettering.draw(painter, QString::number(value), centre, 60, {.pixelSize = 50, .outlineWidth = 0.09});
    };
    number(manaPlace, manaBlue, card.cost);
    if (hasStrength(card)) {
        number(attackPlace, attackGold, card.attack);
        number(healthPlace, card.type == u"WEAPON" ? shieldGrey : healthRed, card.health);
    }
}

} // namespace pelloran::stage
