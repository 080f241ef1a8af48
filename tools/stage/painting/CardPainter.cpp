#include "tools/stage/painting/CardPainter.h"

#include "tools/stage/painting/Art.h"
#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"
#include "tools/stage/painting/ScreenPlan.h"

#include <QRadialGradient>

#include <vector>

namespace pelloran::stage {

namespace {

const QColor manaBlue(0x1f, 0x5c, 0xc8);
const QColor attackGold(0xd8, 0x9c, 0x1c);
const QColor healthRed(0xb8, 0x1c, 0x20);
const QColor shieldGrey(0x70, 0x78, 0x84);
const QColor goldenDark(62, 52, 40);
const QColor cream(0xff, 0xf6, 0xe4);

// Places on a card, from the point that the name is placed by.
const QRectF body(-114, -172, 228, 330);
constexpr QPointF manaPlace(-98, -158);
constexpr QPointF attackPlace(-96, 136);
constexpr QPointF healthPlace(96, 136);
constexpr double jewelRadius = 28;
constexpr double nameWidth = 200;
constexpr double arcNameWidth = 176; // on the steep ribbon of hero cards

bool hasStrength(const Card& card) {
    return card.type == u"MINION" || card.type == u"WEAPON";
}

QPainterPath rounded(const QRectF& box, double radius) {
    QPainterPath path;
    path.addRoundedRect(box, radius, radius);
    return path;
}

// The window through which the picture is seen. Its foot is behind the ribbon.
QPainterPath artWindow(const Card& card) {
    QPainterPath path;
    if (card.type == u"SPELL") {
        path.moveTo(-90, 4);
        path.lineTo(-90, -134);
        path.quadTo(0, -166, 90, -134);
        path.lineTo(90, 4);
        path.closeSubpath();
    } else if (card.type == u"WEAPON") {
        path.addEllipse(QPointF(0, -86), 84, 84);
    } else if (card.type == u"HERO") {
        path = archway({-82, -196, 164, 206});
    } else {
        path.addEllipse(QPointF(0, -94), 76, 100);
    }
    return path;
}

quint32 checksum(const QString& text) {
    quint32 sum = 0;
    for (const QChar c : text) {
        sum = sum * 31 + c.unicode();
    }
    return sum;
}

// About half of the minions belong to a tribe. Which one does not matter to anybody here.
QString tribeOf(const Card& card, Language language) {
    static const std::vector<Name> tribes{
        {QStringLiteral("Beast"), QStringLiteral("野兽")},  {QStringLiteral("Dragon"), QStringLiteral("龙")},
        {QStringLiteral("Demon"), QStringLiteral("恶魔")},  {QStringLiteral("Elemental"), QStringLiteral("元素")},
        {QStringLiteral("Murloc"), QStringLiteral("鱼人")}, {QStringLiteral("Mech"), QStringLiteral("机械")},
        {QStringLiteral("Undead"), QStringLiteral("亡灵")}, {QStringLiteral("Pirate"), QStringLiteral("海盗")},
        {QStringLiteral("Totem"), QStringLiteral("图腾")},
    };
    const std::size_t pick = checksum(card.id) % (2 * tribes.size());
    return card.type == u"MINION" && pick < tribes.size() ? tribes[pick].in(language) : QString();
}

// The game cuts all clerical names alike, but it was measured on a few of them only: a reader is tried on the whole
// range that it may be. Strokes were measured on larger cards, as shares of a character's height.
Lettering::Hand handFor(const Card& card, quint32 seed) {
    Random random(seed * 31 + checksum(card.id));
    Lettering::Hand hand;
    const int lighter = static_cast<int>(between(random, 0, 16));
    hand.grey = QColor(200 + lighter, 195 + lighter, 190 + lighter);
    hand.height = between(random, 0.0135, 0.0145) * 1080 / cardNameCaps;
    hand.pitch = between(random, 1.2, 1.5);
    hand.stroke = between(random, 1.2, 1.7) / cardNameCaps;
    return hand;
}

} // namespace

QPainterPath CardPainter::outline(const Card& card, QPointF base) const {
    QPainterPath shape = rounded(body, 16).united(artWindow(card));
    std::vector<QPointF> jewels{manaPlace};
    if (hasStrength(card)) {
        jewels.insert(jewels.end(), {attackPlace, healthPlace});
    }
    for (const QPointF& jewel : jewels) {
        QPainterPath round;
        round.addEllipse(jewel, jewelRadius + 3, jewelRadius + 3);
        shape = shape.united(round);
    }
    return QTransform::fromTranslate(base.x(), base.y()).scale(unit, unit).map(shape);
}

QPainterPath CardPainter::backOutline(QPointF base) const {
    return QTransform::fromTranslate(base.x(), base.y()).scale(unit, unit).map(rounded(body, 16));
}

QPainterPath CardPainter::paintFace(QPainter& painter, const Card& card, QPointF base) const {
    painter.save();
    painter.translate(base);
    painter.scale(unit, unit);
    paintBody(painter, card);
    paintArt(painter, card);
    paintRules(painter, card);
    const QPainterPath letters = paintName(painter, card);
    drawRarityGem(painter, {0, card.type == u"SPELL" ? 30.0 : 26.0}, card.rarity);
    paintTribe(painter, card);
    paintNumbers(painter, card);
    const QTransform toWindow = QTransform::fromTranslate(base.x(), base.y()).scale(unit, unit);
    painter.restore();
    return toWindow.map(letters);
}

void CardPainter::paintBack(QPainter& painter, QPointF base) const {
    painter.save();
    painter.translate(base);
    painter.scale(unit, unit);
    const QPainterPath shape = rounded(body, 16);
    castShadow(painter, shape, 16, 0.8);
    painter.save();
    painter.setClipPath(shape);
    painter.drawImage(body, mottled((body.size() * unit).toSize(), QColor(0x26, 0x36, 0x6a), 1.0, unit, seed));
    painter.restore();
    drawRim(painter, rounded(body.adjusted(5, 5, -5, -5), 13), 7, gold);
    drawRim(painter, rounded(body.adjusted(26, 26, -26, -26), 80), 4, bronze);
    QTransform placed = QTransform::fromTranslate(0, -7).scale(64, 64);
    for (const double turn : {0.0, 22.5}) {
        const QPainterPath sign = placed.map(QTransform().rotate(turn).map(star(8, 0.5)));
        painter.fillPath(sign, metal(sign.boundingRect(), turn == 0 ? bronze : gold));
        painter.strokePath(sign, QPen(QColor(0x1a, 0x10, 0x08), 2));
        placed.scale(0.72, 0.72);
    }
    drawJewel(painter, {0, -7}, 18, manaBlue);
    painter.restore();
}

void CardPainter::paintBody(QPainter& painter, const Card& card) const {
    const QPainterPath shape = rounded(body, 16);
    castShadow(painter, shape, 14, 0.8);
    painter.save();
    painter.setClipPath(shape);
    const QColor own = card.cardClass == u"NEUTRAL" ? QColor(0x78, 0x70, 0x66) : classColour(card.cardClass);
    const QColor colour = card.golden ? QColor(0xc8, 0x98, 0x38) : card.type == u"WEAPON" ? shade(own, 0.6) : own;
    const QSize pixels = (body.size() * unit).toSize().expandedTo({16, 16});
    painter.drawImage(body, mottled(pixels, shade(colour, 0.95), 0.85, unit * 0.8, seed + 3));
    QLinearGradient light(0, body.top(), 0, body.bottom());
    light.setColorAt(0, QColor(255, 255, 255, 60));
    light.setColorAt(0.35, QColor(255, 255, 255, 0));
    light.setColorAt(1, QColor(0, 0, 0, 140));
    painter.fillRect(body, light);
    painter.restore();
    const QColor rim = card.golden ? gold : mix(steel, colour, 0.55);
    drawRim(painter, rounded(body.adjusted(4, 4, -4, -4), 13), 7.5, rim);
    painter.strokePath(rounded(body.adjusted(10, 10, -10, -10), 9), QPen(QColor(0, 0, 0, 150), 2.4));
    painter.strokePath(rounded(body.adjusted(12, 12, -12, -12), 8), QPen(withAlpha(shade(colour, 1.8), 0.5), 1.1));
    // Rivets where the frame is held together.
    for (const double side : {-1.0, 1.0}) {
        for (const double y : {-34.0, 44.0, 92.0}) {
            QPainterPath rivet;
            rivet.addEllipse(QPointF(side * 104, y), 3.4, 3.4);
            painter.fillPath(rivet, metal(rivet.boundingRect(), shade(rim, 1.2)));
            painter.strokePath(rivet, QPen(QColor(0, 0, 0, 150), 1));
        }
    }
    if (card.rarity == u"LEGENDARY") {
        for (const double side : {-1.0, 1.0}) {
            QPainterPath horn;
            horn.moveTo(side * 34, -192);
            horn.cubicTo(side * 74, -214, side * 104, -200, side * 120, -164);
            horn.cubicTo(side * 102, -182, side * 76, -184, side * 34, -182);
            painter.fillPath(horn, metal(horn.boundingRect(), gold));
            painter.strokePath(horn, QPen(QColor(0x2a, 0x18, 0x06), 2));
        }
    }
}

void CardPainter::paintArt(QPainter& painter, const Card& card) const {
    const QPainterPath window = artWindow(card);
    const QRectF box = window.boundingRect();
    const QSize pixels = (box.size() * unit).toSize().expandedTo({16, 16});
    painter.save();
    painter.setClipPath(window);
    painter.drawImage(box, paintCardArt(card, pixels, seed));
    painter.restore();
    castShadow(painter, window, 7, 0.5);
    const QColor rim = card.golden              ? gold
                       : card.type == u"SPELL"  ? mix(bronze, steel, 0.4)
                       : card.type == u"WEAPON" ? steel
                                                : mix(steel, bronze, 0.35);
    drawRim(painter, window, 7, rim);
}

void CardPainter::paintRules(QPainter& painter, const Card& card) const {
    const QRectF box(-90, 34, 180, 106);
    const bool dark = card.type == u"WEAPON" || card.golden;
    const QPainterPath sheet = rounded(box, 7);
    painter.save();
    painter.setClipPath(sheet);
    painter.drawImage(box, mottled((box.size() * unit).toSize().expandedTo({16, 16}),
                                   dark ? QColor(0x38, 0x34, 0x30) : QColor(0xae, 0x9f, 0x88), 0.28, unit, seed + 17));
    painter.restore();
    painter.strokePath(sheet, QPen(QColor(0x22, 0x18, 0x10), 4));
    painter.strokePath(sheet, QPen(withAlpha(card.golden ? gold : QColor(0xd0, 0xc4, 0xac), 0.7), 1.3));
    const double lowest = tribeOf(card, language).isEmpty() ? 8 : 20; // room for the plate at the foot
    lettering.drawParagraph(painter, rulesText(card, language), box.adjusted(10, 12, -10, -lowest), 18,
                            dark ? QColor(0xf2, 0xea, 0xdc) : QColor(0x2a, 0x1c, 0x10));
}

QPainterPath CardPainter::paintName(QPainter& painter, const Card& card) const {
    const Curve curve = ScreenPlan::nameCurve(card.type);
    if (card.type == u"WEAPON") {
        drawPlate(painter, {-102, -22, 204, 31}, card.golden ? goldenDark : QColor(95, 95, 97));
    } else {
        const QColor cloth = card.golden             ? goldenDark
                             : card.type == u"SPELL" ? QColor(155, 130, 85)
                                                     : QColor(155, 133, 105);
        drawRibbon(painter, curve, 110, cloth, card.golden ? QColor(0xb8, 0x8a, 0x34) : QColor(0x3c, 0x2c, 0x1c));
    }
    return lettering.drawAlong(
        painter, card.name.in(language), {0, 0}, card.type == u"HERO" ? arcNameWidth : nameWidth, curve,
        {.caps = cardNameCaps, .fill = card.golden ? cream : QColor(0xfc, 0xfa, 0xf7), .hand = handFor(card, seed)});
}

void CardPainter::paintTribe(QPainter& painter, const Card& card) const {
    const QString tribe = tribeOf(card, language);
    if (tribe.isEmpty()) {
        return;
    }
    drawPointedPlate(painter, {-48, 128, 96, 22}, card.golden ? goldenDark : QColor(0xb0, 0x92, 0x60), bronze);
    lettering.draw(painter, tribe, {0, 139}, 84, {.caps = 10});
}

void CardPainter::paintNumbers(QPainter& painter, const Card& card) const {
    const auto number = [&](QPointF centre, int value) {
        lettering.draw(painter, QString::number(value), centre, 50, {.caps = 29, .outlineWidth = 0.1});
    };
    drawCrystal(painter, manaPlace, jewelRadius + 3, manaBlue);
    number(manaPlace, card.cost);
    if (hasStrength(card)) {
        drawJewel(painter, attackPlace, jewelRadius - 2, attackGold);
        number(attackPlace, card.attack);
        if (card.type == u"WEAPON") {
            drawJewel(painter, healthPlace, jewelRadius - 2, shieldGrey);
        } else {
            drawDrop(painter, healthPlace, jewelRadius - 2, healthRed);
        }
        number(healthPlace, card.health);
    }
}

} // namespace pelloran::stage
