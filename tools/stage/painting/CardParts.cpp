#include "tools/stage/painting/CardParts.h"

#include "tools/stage/painting/Materials.h"

#include <QHash>
#include <QImage>
#include <QLinearGradient>
#include <QRadialGradient>

#include <array>
#include <cmath>
#include <numbers>

namespace pelloran::stage {

namespace {

// How far a ribbon reaches above and below the line that its letters stand on.
constexpr double ribbonAbove = 22;
constexpr double ribbonBelow = 9;

QColor rarityColour(const QString& rarity) {
    static const QHash<QString, QColor> all{
        {QStringLiteral("COMMON"), QColor(0xd4, 0xd8, 0xde)},
        {QStringLiteral("RARE"), QColor(0x2c, 0x7c, 0xe8)},
        {QStringLiteral("EPIC"), QColor(0xa0, 0x3c, 0xd8)},
        {QStringLiteral("LEGENDARY"), QColor(0xf4, 0x92, 0x18)},
    };
    return all.value(rarity, QColor());
}

// Creases and stains, the same on all ribbons.
void weather(QPainter& painter, const QPainterPath& cloth) {
    static const QImage creases = mottled({300, 120}, QColor(128, 128, 128), 0.9, 0.55, 5);
    painter.save();
    painter.setClipPath(cloth, Qt::IntersectClip);
    painter.setCompositionMode(QPainter::CompositionMode_SoftLight);
    painter.setOpacity(0.5);
    painter.drawImage(QRectF(-150, -60, 300, 120), creases);
    painter.restore();
}

} // namespace

void drawRibbon(QPainter& painter, const Curve& curve, double halfWidth, const QColor& colour, const QColor& edge) {
    const QPen line(edge, 2.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    // The ends, folded back: darker, a little lower, with a notch.
    for (const double side : {-1.0, 1.0}) {
        const double x = side * (halfWidth - 15);
        const double tip = side * (halfWidth + 7);
        const double top = curve.y(x) - ribbonAbove + 12;
        const double bottom = curve.y(x) + ribbonBelow + 9;
        QPainterPath tail;
        tail.moveTo(x, top);
        tail.lineTo(tip, top + 2);
        tail.lineTo(tip - side * 8, (top + bottom) / 2 + 1);
        tail.lineTo(tip, bottom + 1);
        tail.lineTo(x, bottom - 2);
        tail.closeSubpath();
        castShadow(painter, tail, 4, 0.5);
        painter.strokePath(tail, line);
        QLinearGradient fold(x, 0, tip, 0);
        fold.setColorAt(0, shade(colour, 0.42));
        fold.setColorAt(1, shade(colour, 0.82));
        painter.fillPath(tail, fold);
    }
    const QPainterPath band = curve.band(-halfWidth, halfWidth, ribbonAbove, ribbonBelow);
    castShadow(painter, band, 5, 0.55);
    painter.strokePath(band, line);
    // Light and dark follow the bend: narrow strips across the ribbon, from edge to edge.
    constexpr std::array<double, 8> tones{1.16, 1.06, 1.0, 1.0, 1.0, 0.98, 0.93, 0.84};
    const double strip = (ribbonAbove + ribbonBelow) / static_cast<double>(tones.size());
    painter.fillPath(band, colour);
    for (std::size_t i = 0; i < tones.size(); ++i) {
        const double above = ribbonAbove - strip * static_cast<double>(i);
        painter.fillPath(curve.band(-halfWidth, halfWidth, above, strip - above), shade(colour, tones[i]));
    }
    weather(painter, band);
    QLinearGradient folds(-halfWidth, 0, halfWidth, 0);
    folds.setColorAt(0, QColor(0, 0, 0, 70));
    folds.setColorAt(0.07, QColor(255, 255, 255, 34));
    folds.setColorAt(0.2, QColor(0, 0, 0, 0));
    folds.setColorAt(0.8, QColor(0, 0, 0, 0));
    folds.setColorAt(0.93, QColor(255, 255, 255, 34));
    folds.setColorAt(1, QColor(0, 0, 0, 70));
    painter.fillPath(band, folds);
    // Thin lines along both edges, close to the letters: the game's ribbons have them and readers stumble over them.
    painter.fillPath(curve.band(-halfWidth, halfWidth, ribbonAbove - 2.2, -ribbonAbove + 3.8), shade(colour, 1.32));
    painter.fillPath(curve.band(-halfWidth, halfWidth, -ribbonBelow + 4.2, ribbonBelow - 2.6), shade(colour, 0.66));
    painter.fillPath(curve.band(-halfWidth, halfWidth, -ribbonBelow + 2.2, ribbonBelow - 1), shade(colour, 1.2));
}

void drawPlate(QPainter& painter, const QRectF& box, const QColor& colour) {
    QPainterPath shape;
    shape.addRoundedRect(box, box.height() * 0.16, box.height() * 0.16);
    castShadow(painter, shape, box.height() * 0.16, 0.6);
    painter.strokePath(shape, QPen(shade(colour, 0.25), box.height() * 0.09));
    painter.fillPath(shape, colour);
    const double bevel = box.height() * 0.07;
    QPainterPath inner;
    inner.addRoundedRect(box.adjusted(bevel, bevel, -bevel, -bevel), box.height() * 0.12, box.height() * 0.12);
    painter.strokePath(inner.translated(0, bevel * 0.4), QPen(shade(colour, 1.45), bevel * 0.8));
    painter.strokePath(inner, QPen(shade(colour, 0.6), bevel * 0.6));
}

void drawPointedPlate(QPainter& painter, const QRectF& box, const QColor& colour, const QColor& edge) {
    const double point = box.height() * 0.5;
    QPainterPath shape;
    shape.moveTo(box.left() + point, box.top());
    shape.lineTo(box.right() - point, box.top());
    shape.quadTo(box.right() - point * 0.5, box.top() + box.height() * 0.2, box.right() + point, box.center().y());
    shape.quadTo(box.right() - point * 0.5, box.bottom() - box.height() * 0.2, box.right() - point, box.bottom());
    shape.lineTo(box.left() + point, box.bottom());
    shape.quadTo(box.left() + point * 0.5, box.bottom() - box.height() * 0.2, box.left() - point, box.center().y());
    shape.quadTo(box.left() + point * 0.5, box.top() + box.height() * 0.2, box.left() + point, box.top());
    castShadow(painter, shape, box.height() * 0.25, 0.6);
    QLinearGradient face(box.topLeft(), box.bottomLeft());
    face.setColorAt(0, shade(colour, 1.2));
    face.setColorAt(1, shade(colour, 0.78));
    painter.fillPath(shape, face);
    drawRim(painter, shape, box.height() * 0.07, edge);
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

void drawCrystal(QPainter& painter, QPointF centre, double radius, const QColor& colour) {
    const auto corner = [&](int i, double r) {
        const double angle = (60.0 * i - 90) * std::numbers::pi / 180;
        return centre + QPointF(std::cos(angle) * r * 0.94, std::sin(angle) * r);
    };
    QPainterPath whole;
    whole.moveTo(corner(0, radius));
    for (int i = 1; i < 6; ++i) {
        whole.lineTo(corner(i, radius));
    }
    whole.closeSubpath();
    castShadow(painter, whole, radius * 0.22, 0.8);
    painter.strokePath(whole, QPen(shade(colour, 0.18), radius * 0.2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    constexpr std::array<double, 6> facets{1.35, 0.85, 0.5, 0.42, 0.78, 1.6};
    for (int i = 0; i < 6; ++i) {
        QPainterPath facet;
        facet.moveTo(corner(i, radius));
        facet.lineTo(corner(i + 1, radius));
        facet.lineTo(corner(i + 1, radius * 0.66));
        facet.lineTo(corner(i, radius * 0.66));
        facet.closeSubpath();
        painter.fillPath(facet, shade(colour, facets[static_cast<std::size_t>(i)]));
    }
    QPainterPath table;
    table.moveTo(corner(0, radius * 0.66));
    for (int i = 1; i < 6; ++i) {
        table.lineTo(corner(i, radius * 0.66));
    }
    table.closeSubpath();
    QLinearGradient depth(corner(5, radius), corner(2, radius));
    depth.setColorAt(0, shade(colour, 1.25));
    depth.setColorAt(0.5, shade(colour, 0.9));
    depth.setColorAt(1, shade(colour, 0.6));
    painter.fillPath(table, depth);
    painter.strokePath(table, QPen(withAlpha(shade(colour, 1.9), 0.5), radius * 0.04));
}

void drawDrop(QPainter& painter, QPointF centre, double radius, const QColor& colour) {
    QPainterPath drop;
    drop.moveTo(centre - QPointF(0, radius * 1.45));
    drop.cubicTo(centre + QPointF(radius * 0.3, -radius * 0.9), centre + QPointF(radius, -radius * 0.45),
                 centre + QPointF(radius, radius * 0.15));
    drop.cubicTo(centre + QPointF(radius, radius * 1.3), centre + QPointF(-radius, radius * 1.3),
                 centre + QPointF(-radius, radius * 0.15));
    drop.cubicTo(centre + QPointF(-radius, -radius * 0.45), centre + QPointF(-radius * 0.3, -radius * 0.9),
                 centre - QPointF(0, radius * 1.45));
    castShadow(painter, drop, radius * 0.25, 0.8);
    QRadialGradient depth(centre - QPointF(radius * 0.25, radius * 0.2), radius * 1.5);
    depth.setColorAt(0, shade(colour, 1.5));
    depth.setColorAt(0.45, colour);
    depth.setColorAt(1, shade(colour, 0.3));
    painter.fillPath(drop, depth);
    drawRim(painter, drop, radius * 0.12, steel);
}

void drawRarityGem(QPainter& painter, QPointF centre, const QString& rarity) {
    const QColor colour = rarityColour(rarity);
    if (!colour.isValid()) {
        return;
    }
    QPainterPath gem;
    gem.moveTo(centre - QPointF(0, 12));
    gem.cubicTo(centre + QPointF(6, -10), centre + QPointF(9, -4), centre + QPointF(8, 0));
    gem.cubicTo(centre + QPointF(7, 6), centre + QPointF(3, 11), centre + QPointF(0, 13));
    gem.cubicTo(centre + QPointF(-3, 11), centre + QPointF(-7, 6), centre + QPointF(-8, 0));
    gem.cubicTo(centre + QPointF(-9, -4), centre + QPointF(-6, -10), centre - QPointF(0, 12));
    drawRim(painter, gem, 3.6, mix(bronze, steel, 0.4));
    painter.fillPath(gem, metal(gem.boundingRect(), colour));
    QPainterPath shine;
    shine.addEllipse(centre - QPointF(2.4, 4.5), 2.2, 3.4);
    painter.fillPath(shine, QColor(255, 255, 255, 150));
}

QPainterPath archway(const QRectF& box) {
    const double shoulder = box.top() + box.width() * 0.52;
    QPainterPath path;
    path.moveTo(box.bottomLeft());
    path.lineTo(box.left(), shoulder);
    path.cubicTo(box.left(), shoulder - box.width() * 0.3, box.center().x() - box.width() * 0.18,
                 box.top() + box.width() * 0.05, box.center().x(), box.top());
    path.cubicTo(box.center().x() + box.width() * 0.18, box.top() + box.width() * 0.05, box.right(),
                 shoulder - box.width() * 0.3, box.right(), shoulder);
    path.lineTo(box.bottomRight());
    path.closeSubpath();
    return path;
}

} // namespace pelloran::stage
