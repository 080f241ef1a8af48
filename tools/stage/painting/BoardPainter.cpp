#include "tools/stage/painting/BoardPainter.h"

#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"

#include <QLinearGradient>
#include <QRadialGradient>

#include <algorithm>
#include <cmath>

namespace pelloran::stage {

namespace {

const QColor parchment(200, 175, 135);
const QColor felt(60, 5, 3);
const QColor oak(0x6a, 0x48, 0x2c);
const QColor stone(0x6c, 0x66, 0x5e);
const QColor slate(0x46, 0x3c, 0x46);
const QColor pale(0xf2, 0xe8, 0xd2);

// In heights of the window: see ScreenPlan.
constexpr double boxLeft = -0.664;
constexpr double boxRight = 0.664;
constexpr double boxBottom = 0.955;
constexpr double groundLeft = -0.598;
constexpr double groundTop = 0.07;
constexpr double groundFoot = 0.624;
constexpr double groundRight = 0.288;
constexpr double wideGroundRight = 0.598;
constexpr double lowerFoot = 0.905;

QPainterPath rectangle(const QRectF& box) {
    QPainterPath path;
    path.addRect(box);
    return path;
}

// A box with its corners cut off.
QPainterPath chamfered(const QRectF& box, double cut) {
    QPolygonF outline;
    outline << box.topLeft() + QPointF(cut, 0) << box.topRight() - QPointF(cut, 0) << box.topRight() + QPointF(0, cut)
            << box.bottomRight() - QPointF(0, cut * 0.4) << box.bottomRight() - QPointF(cut * 0.4, 0)
            << box.bottomLeft() + QPointF(cut * 0.4, 0) << box.bottomLeft() - QPointF(0, cut * 0.4)
            << box.topLeft() + QPointF(0, cut);
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

// A sheet whose edges are worn.
QPainterPath torn(const QRectF& box, double unit, quint32 seed) {
    QPolygonF outline;
    const auto side = [&](QPointF from, QPointF to, QPointF outward, quint32 which) {
        const double length = std::hypot(to.x() - from.x(), to.y() - from.y());
        const int pieces = std::max(8, static_cast<int>(length / (7 * unit)));
        for (int i = 0; i < pieces; ++i) {
            const double t = static_cast<double>(i) / pieces;
            const double along = t * length / unit;
            const double wear = 16 * cloudNoise(along / 60, which, 3, seed) - 5 * noise(along / 9, which, seed + 3);
            outline << from + (to - from) * t - outward * std::max(0.0, wear - 4) * unit;
        }
    };
    side(box.topLeft(), box.topRight(), {0, -1}, 1);
    side(box.topRight(), box.bottomRight(), {1, 0}, 2);
    side(box.bottomRight(), box.bottomLeft(), {0, 1}, 3);
    side(box.bottomLeft(), box.topLeft(), {-1, 0}, 4);
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

} // namespace

QImage BoardPainter::table() const {
    QImage table = woodenTable(plan.size(), plan.unit(), seed + 1);
    QPainter painter(&table);
    painter.fillRect(table.rect(), QColor(8, 5, 3, plan.look() == Look::parchment ? 96 : 140));
    return table;
}

QRectF BoardPainter::ground(bool withDeck) const {
    return plan.area(groundLeft, groundTop, withDeck ? groundRight : wideGroundRight, groundFoot);
}

QRectF BoardPainter::deckColumn() const {
    return plan.area(0.378, 0.085, 0.594, 0.888);
}

QImage BoardPainter::board(bool withDeck) const {
    QImage picture = table();
    QPainter painter(&picture);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    paintFrame(painter, withDeck);
    const QRectF box = ground(withDeck);
    paintLowerHalf(painter, {plan.at(groundLeft, groundFoot), QPointF(box.right(), plan.at(0, lowerFoot).y())});
    if (plan.look() == Look::parchment) {
        paintParchment(painter, box);
    } else {
        paintFelt(painter, box);
    }
    if (withDeck) {
        paintDeckColumn(painter);
    }
    return picture;
}

void BoardPainter::paintFrame(QPainter& painter, bool withDeck) const {
    const double unit = plan.unit();
    const QColor material = plan.look() == Look::parchment ? oak : stone;
    const QRectF outer = plan.area(boxLeft, -0.03, boxRight, boxBottom);
    castShadow(painter, rectangle(outer), 46 * unit, 0.95);
    painter.drawImage(outer, mottled(outer.size().toSize(), material, 0.55, unit, seed + 2));
    // Light falls from above: the beams are bright at their upper and left edges.
    QLinearGradient sheen(outer.topLeft(), outer.topRight());
    sheen.setColorAt(0, QColor(0, 0, 0, 130));
    sheen.setColorAt(0.02, QColor(255, 240, 210, 46));
    sheen.setColorAt(0.05, QColor(0, 0, 0, 20));
    sheen.setColorAt(0.95, QColor(0, 0, 0, 20));
    sheen.setColorAt(0.98, QColor(255, 240, 210, 30));
    sheen.setColorAt(1, QColor(0, 0, 0, 150));
    painter.fillRect(outer, sheen);
    drawRim(painter, rectangle(outer.adjusted(4 * unit, -40 * unit, -4 * unit, -4 * unit)), 8 * unit,
            shade(material, 0.8));

    // The hollow that everything lies in.
    const QRectF box = ground(withDeck);
    const QRectF hollow(box.left() - 12 * unit, plan.at(0, 0.052).y(), box.width() + 24 * unit,
                        (lowerFoot + 0.012 - 0.052) * plan.height());
    painter.fillRect(hollow, QColor(0x16, 0x10, 0x0e));
    drawRim(painter, rectangle(hollow), 6 * unit, shade(material, 1.15));
    // Mounts at the corners of the frame.
    for (const QPointF& corner : {hollow.topLeft(), hollow.topRight(), hollow.bottomLeft(), hollow.bottomRight()}) {
        const QPainterPath mount =
            QTransform::fromTranslate(corner.x(), corner.y()).scale(27 * unit, 27 * unit).map(star(4, 0.64));
        castShadow(painter, mount, 7 * unit, 0.7);
        painter.fillPath(mount, metal(mount.boundingRect(), plan.look() == Look::parchment ? bronze : steel));
        painter.strokePath(mount, QPen(QColor(0x1c, 0x12, 0x0a), 1.6 * unit));
        drawJewel(painter, corner, 8.5 * unit,
                  plan.look() == Look::parchment ? QColor(0x2a, 0x6a, 0xd8) : QColor(0xb0, 0x1c, 0x1c));
    }
}

void BoardPainter::paintParchment(QPainter& painter, const QRectF& box) const {
    const double unit = plan.unit();
    const QPainterPath sheet = torn(box, unit, seed + 13);
    castShadow(painter, sheet, 14 * unit, 0.9);
    painter.save();
    painter.setClipPath(sheet);
    painter.drawImage(box, mottled(box.size().toSize(), parchment, 0.16, unit, seed + 4));
    QRadialGradient lamp(box.center(), box.width() * 0.6);
    lamp.setColorAt(0, QColor(255, 246, 214, 60));
    lamp.setColorAt(0.75, QColor(255, 240, 200, 0));
    lamp.setColorAt(1, QColor(90, 50, 16, 70));
    painter.fillRect(box, lamp);
    // The edges are brown with age.
    for (int ring = 6; ring > 0; --ring) {
        painter.strokePath(sheet, QPen(QColor(96, 54, 16, 26), ring * 8 * unit));
    }
    painter.restore();
    painter.strokePath(sheet, QPen(QColor(0x4a, 0x2c, 0x12), 1.6 * unit));
    const QRectF line = box.adjusted(34 * unit, 34 * unit, -34 * unit, -34 * unit);
    painter.strokePath(chamfered(line, 22 * unit), QPen(QColor(140, 100, 46, 150), 6 * unit));
    painter.strokePath(chamfered(line.adjusted(9 * unit, 9 * unit, -9 * unit, -9 * unit), 18 * unit),
                       QPen(QColor(140, 100, 46, 110), 1.6 * unit));
}

void BoardPainter::paintFelt(QPainter& painter, const QRectF& box) const {
    const double unit = plan.unit();
    painter.drawImage(box, mottled(box.size().toSize(), stone, 0.5, unit, seed + 6));
    painter.fillRect(box, QColor(0, 0, 0, 40));
    const QRectF inside = box.adjusted(16 * unit, 12 * unit, -16 * unit, -10 * unit);
    const QPainterPath cloth = chamfered(inside, 84 * unit);
    painter.save();
    painter.setClipPath(cloth);
    painter.drawImage(inside, mottled(inside.size().toSize(), felt, 0.3, unit * 0.7, seed + 7));
    QRadialGradient lamp(inside.center(), inside.width() * 0.62);
    lamp.setColorAt(0, QColor(190, 30, 16, 40));
    lamp.setColorAt(0.7, QColor(120, 10, 6, 0));
    lamp.setColorAt(1, QColor(0, 0, 0, 110));
    painter.fillRect(inside, lamp);
    for (int ring = 6; ring > 0; --ring) {
        painter.strokePath(cloth, QPen(QColor(10, 0, 0, 34), ring * 9 * unit));
    }
    painter.restore();
    drawRim(painter, cloth, 9 * unit, shade(stone, 1.25));
    painter.strokePath(chamfered(inside.adjusted(22 * unit, 20 * unit, -22 * unit, -20 * unit), 76 * unit),
                       QPen(QColor(150, 34, 24, 130), 2.2 * unit));
}

void BoardPainter::paintLowerHalf(QPainter& painter, const QRectF& box) const {
    const double unit = plan.unit();
    const QColor material = plan.look() == Look::parchment ? slate : shade(stone, 0.72);
    painter.drawImage(box, mottled(box.size().toSize(), material, 0.6, unit, seed + 9));
    QLinearGradient light(box.topLeft(), box.bottomLeft());
    light.setColorAt(0, QColor(0, 0, 0, 130));
    light.setColorAt(0.16, QColor(0, 0, 0, 0));
    light.setColorAt(1, QColor(0, 0, 0, 90));
    painter.fillRect(box, light);
    // Three slabs: the hero, the costs, and a sign that means nothing.
    const auto slab = [&](double left, double right) {
        const QRectF area = plan.area(left, 0.648, right, 0.892);
        painter.strokePath(chamfered(area.translated(0, 2 * unit), 16 * unit), QPen(QColor(0, 0, 0, 150), 6 * unit));
        painter.strokePath(chamfered(area, 16 * unit), QPen(shade(material, 1.5), 2.4 * unit));
        return area;
    };
    slab(-0.578, -0.334);
    slab(-0.316, 0.018);
    if (box.right() > plan.at(groundRight, 0).x() + 1) {
        slab(0.286, 0.578);
    }
    const QRectF last = slab(0.036, 0.268);
    QPainterPath disc;
    disc.addEllipse(last.center(), 92 * unit, 92 * unit);
    castShadow(painter, disc, 10 * unit, 0.7);
    painter.fillPath(disc, metal(disc.boundingRect(), shade(steel, 0.55)));
    drawRim(painter, disc, 9 * unit, shade(steel, 0.75));
    QTransform placed = QTransform::fromTranslate(last.center().x(), last.center().y()).scale(66 * unit, 66 * unit);
    for (const double turn : {0.0, 22.5}) {
        const QPainterPath sign = placed.map(QTransform().rotate(turn).map(star(8, 0.46)));
        painter.fillPath(sign, metal(sign.boundingRect(), shade(steel, turn == 0 ? 0.5 : 0.7)));
        painter.strokePath(sign, QPen(QColor(0x18, 0x18, 0x1c), 2 * unit));
        placed.scale(0.7, 0.7);
    }
}

void BoardPainter::paintDeckColumn(QPainter& painter) const {
    const double unit = plan.unit();
    const QRectF column = deckColumn().adjusted(-8 * unit, -14 * unit, 8 * unit, 10 * unit);
    const QColor cloth = plan.look() == Look::parchment ? QColor(0x36, 0x2a, 0x48) : QColor(0x3a, 0x34, 0x38);
    castShadow(painter, rectangle(column), 18 * unit, 0.85);
    painter.drawImage(column, mottled(column.size().toSize(), cloth, 0.4, unit, seed + 8));
    for (int ring = 5; ring > 0; --ring) {
        painter.save();
        painter.setClipRect(column);
        painter.strokePath(rectangle(column), QPen(QColor(0, 0, 0, 40), ring * 9 * unit));
        painter.restore();
    }
    drawRim(painter, rectangle(column), 7 * unit,
            plan.look() == Look::parchment ? shade(bronze, 0.85) : shade(steel, 0.7));
}

void BoardPainter::paintHeading(QPainter& painter, const QString& heading, double x) const {
    const double unit = plan.unit();
    const QPointF centre = plan.at(x, 0.16);
    if (plan.look() == Look::parchment) {
        drawPointedPlate(painter, QRectF(centre - QPointF(180, 24) * unit, QSizeF(360, 48) * unit),
                         QColor(0x5c, 0x52, 0x5e), QColor(0x6e, 0x64, 0x70));
    }
    lettering.draw(painter, heading, centre, 340 * unit, {.caps = 18 * unit, .outlineWidth = 0.17});
}

void BoardPainter::paintTitle(QPainter& painter, const QString& title, double x, double halfWidth, bool dim) const {
    const double unit = plan.unit();
    const QPointF centre = plan.at(x, 0.036);
    const QRectF box(centre - QPointF(halfWidth, 0.026) * plan.height(), QSizeF(2 * halfWidth, 0.052) * plan.height());
    drawPlate(painter, box, QColor(0x48, 0x44, 0x44));
    const double inset = 12 * unit;
    QPainterPath label;
    label.addRoundedRect(box.adjusted(3.5 * inset, inset, -3.5 * inset, -inset), 4 * unit, 4 * unit);
    QLinearGradient face(box.topLeft(), box.bottomLeft());
    face.setColorAt(0, QColor(0x8c, 0x74, 0x50));
    face.setColorAt(1, QColor(0xd2, 0xbe, 0x96));
    painter.fillPath(label, face);
    painter.strokePath(label, QPen(QColor(0x20, 0x18, 0x12), 2.4 * unit));
    for (const double side : {-1.0, 1.0}) {
        drawJewel(painter, centre + QPointF(side * (halfWidth * 1080 - 22), 0) * unit, 9 * unit,
                  QColor(0x60, 0x64, 0x70));
    }
    Lettering::Style style{.caps = 15 * unit};
    if (dim) {
        style = {.caps = 15 * unit, .fill = QColor(0x50, 0x3c, 0x20), .outlineWidth = 0};
    }
    lettering.draw(painter, title, centre, box.width() * 0.66, style);
}

void BoardPainter::paintFooter(QPainter& painter, Language language) const {
    const double unit = plan.unit();
    const QRectF strip(0, plan.at(0, boxBottom).y(), plan.size().width(), (1 - boxBottom) * plan.height() + 1);
    painter.fillRect(strip, QColor(0x12, 0x0d, 0x08));
    painter.fillRect(QRectF(strip.topLeft(), QSizeF(strip.width(), 2 * unit)), QColor(0x4a, 0x38, 0x22));
    const double middle = plan.at(0, 0.978).y();
    const Lettering::Style small{.caps = 13 * unit, .fill = pale};
    drawPlate(painter, {8 * unit, middle - 17 * unit, 74 * unit, 34 * unit}, QColor(0x2c, 0x28, 0x26));
    lettering.draw(painter, QStringLiteral("3"), {45 * unit, middle}, 60 * unit, small);
    lettering.drawFrom(painter, language == Language::english ? QStringLiteral("9:41 PM") : QStringLiteral("21:41"),
                       {102 * unit, middle}, 120 * unit, {.caps = 10.5 * unit, .fill = QColor(0x8a, 0x80, 0x70)});
    const double right = plan.size().width();
    drawPlate(painter, {right - 300 * unit, middle - 14 * unit, 200 * unit, 28 * unit}, QColor(0x22, 0x1e, 0x1a));
    lettering.draw(painter, QStringLiteral("1240"), {right - 160 * unit, middle}, 120 * unit, small);
    drawJewel(painter, {right - 114 * unit, middle}, 11 * unit, QColor(0xd8, 0x9c, 0x1c));
    drawPlate(painter, {right - 74 * unit, middle - 17 * unit, 62 * unit, 34 * unit}, QColor(0x2c, 0x28, 0x26));
    const QPainterPath gear =
        QTransform::fromTranslate(right - 43 * unit, middle).scale(11 * unit, 11 * unit).map(star(8, 0.7));
    painter.fillPath(gear, metal(gear.boundingRect(), steel));
}

void BoardPainter::paintButton(QPainter& painter, const QString& text, QPointF centre, QSizeF size, bool lit) const {
    const QRectF box(centre - QPointF(size.width(), size.height()) / 2, size);
    drawPlate(painter, box, QColor(0x42, 0x3c, 0x3a));
    const double inset = size.height() * 0.15;
    QPainterPath face;
    face.addRoundedRect(box.adjusted(inset * 1.6, inset, -inset * 1.6, -inset), size.height() * 0.2,
                        size.height() * 0.2);
    const QColor colour = lit ? QColor(0xc8, 0x86, 0x2c) : QColor(0xa8, 0x88, 0x54);
    QLinearGradient light(box.topLeft(), box.bottomLeft());
    light.setColorAt(0, shade(colour, 1.35));
    light.setColorAt(0.5, colour);
    light.setColorAt(1, shade(colour, 0.6));
    painter.fillPath(face, light);
    drawRim(painter, face, size.height() * 0.05, lit ? gold : bronze);
    lettering.draw(painter, text, centre, size.width() * 0.8, {.caps = size.height() * 0.3, .fill = pale});
}

} // namespace pelloran::stage
