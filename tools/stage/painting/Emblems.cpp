#include "tools/stage/painting/Emblems.h"

#include "tools/stage/painting/Materials.h"

#include <QHash>
#include <QTransform>

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace pelloran::stage {

namespace {

// Uniting and cutting paths flattens their curves with an error of about a quarter of a unit, so signs are cut at this
// many units and made small afterwards.
constexpr double cuttingScale = 200;

QTransform enlarged() {
    return QTransform::fromScale(cuttingScale, cuttingScale);
}

QPainterPath polygon(std::initializer_list<QPointF> corners) {
    QPainterPath path;
    path.addPolygon(QPolygonF(QList<QPointF>(corners)));
    path.closeSubpath();
    return enlarged().map(path);
}

QPainterPath turned(const QPainterPath& path, double degrees, QPointF shift = {}) {
    QTransform transform;
    transform.translate(shift.x() * cuttingScale, shift.y() * cuttingScale);
    transform.rotate(degrees);
    return transform.map(path);
}

QPainterPath circle(QPointF centre, double radius) {
    QPainterPath path;
    path.addEllipse(centre * cuttingScale, radius * cuttingScale, radius * cuttingScale);
    return path;
}

QPainterPath reduced(const QPainterPath& path) {
    return enlarged().inverted().map(path);
}

QPainterPath ring(double outer, double inner) {
    return circle({}, outer) - circle({}, inner);
}

QPainterPath bolt() {
    return polygon({{0.15, -1}, {-0.55, 0.12}, {-0.08, 0.12}, {-0.28, 1}, {0.55, -0.28}, {0.06, -0.28}, {0.45, -1}});
}

QPainterPath hammer() {
    QPainterPath path =
        polygon({{-0.72, -0.85}, {0.72, -0.85}, {0.82, -0.58}, {0.72, -0.22}, {-0.72, -0.22}, {-0.82, -0.58}});
    path |= polygon({{-0.13, -0.3}, {0.13, -0.3}, {0.13, 0.88}, {-0.13, 0.88}});
    return path | circle({0, 0.88}, 0.2);
}

QPainterPath shield() {
    QPainterPath path;
    path.moveTo(0, -0.95);
    path.cubicTo(0.3, -0.75, 0.6, -0.72, 0.8, -0.74);
    path.cubicTo(0.86, 0.1, 0.6, 0.65, 0, 1);
    path.cubicTo(-0.6, 0.65, -0.86, 0.1, -0.8, -0.74);
    path.cubicTo(-0.6, -0.72, -0.3, -0.75, 0, -0.95);
    return enlarged().map(path) - polygon({{-0.09, -0.6}, {0.09, -0.6}, {0.09, 0.62}, {-0.09, 0.62}}) -
           polygon({{-0.55, -0.24}, {0.55, -0.24}, {0.5, -0.06}, {-0.5, -0.06}});
}

QPainterPath paw() {
    QPainterPath path;
    path.addEllipse(QPointF(0, 0.42), 0.52, 0.44);
    path.addEllipse(QPointF(-0.68, -0.08), 0.2, 0.3);
    path.addEllipse(QPointF(-0.26, -0.5), 0.21, 0.33);
    path.addEllipse(QPointF(0.26, -0.5), 0.21, 0.33);
    path.addEllipse(QPointF(0.68, -0.08), 0.2, 0.3);
    return enlarged().map(path);
}

QPainterPath flame() {
    QPainterPath path;
    path.moveTo(0.05, -1);
    path.cubicTo(0.15, -0.5, 0.75, -0.25, 0.68, 0.38);
    path.cubicTo(0.62, 0.85, 0.25, 1, 0, 1);
    path.cubicTo(-0.3, 1, -0.7, 0.8, -0.68, 0.32);
    path.cubicTo(-0.66, -0.05, -0.4, -0.2, -0.36, -0.55);
    path.cubicTo(-0.2, -0.42, -0.12, -0.3, -0.1, -0.12);
    path.cubicTo(0.1, -0.35, 0.12, -0.7, 0.05, -1);
    QPainterPath heart;
    heart.moveTo(0.02, 0.1);
    heart.cubicTo(0.1, 0.35, 0.34, 0.42, 0.3, 0.66);
    heart.cubicTo(0.26, 0.86, -0.24, 0.88, -0.28, 0.62);
    heart.cubicTo(-0.28, 0.42, -0.04, 0.36, 0.02, 0.1);
    return enlarged().map(path) - enlarged().map(heart);
}

QPainterPath bow() {
    QPainterPath path = circle({-0.35, 0}, 0.98) - circle({-0.62, 0}, 1.02);
    path |=
        polygon({{-0.92, -0.06}, {0.62, -0.06}, {0.62, -0.24}, {0.98, 0}, {0.62, 0.24}, {0.62, 0.06}, {-0.92, 0.06}});
    path |= polygon({{-0.38, -0.95}, {-0.32, -0.95}, {-0.32, 0.95}, {-0.38, 0.95}}); // the string
    return turned(path, -45);
}

QPainterPath glaives() {
    const QPainterPath blade = circle({0, 0}, 0.95) - circle({0.34, 0}, 0.92);
    return turned(blade, 195, {-0.86, 0}) | turned(blade, 15, {0.86, 0});
}

QPainterPath sun() {
    QPainterPath path = ring(0.62, 0.44);
    for (int i = 0; i < 8; ++i) {
        path |= turned(polygon({{-0.11, -0.7}, {0, i % 2 == 0 ? -1.05 : -0.9}, {0.11, -0.7}}), i * 45.0);
    }
    return path | polygon({{-0.07, -0.5}, {0.07, -0.5}, {0.07, 0.5}, {-0.07, 0.5}}) |
           polygon({{-0.5, -0.16}, {0.5, -0.16}, {0.5, -0.02}, {-0.5, -0.02}});
}

QPainterPath guidingStar() {
    const QPainterPath small = QTransform::fromScale(0.62, 0.62).map(star(4, 0.34));
    return enlarged().map(star(4, 0.22)) | turned(enlarged().map(small), 45);
}

QPainterPath longBlade() {
    return enlarged().map(sword(0.11));
}

} // namespace

QPainterPath star(int points, double innerRadius) {
    QPolygonF corners;
    for (int i = 0; i < 2 * points; ++i) {
        const double angle = std::numbers::pi * i / points - std::numbers::pi / 2;
        const double radius = i % 2 == 0 ? 1 : innerRadius;
        corners << QPointF(radius * std::cos(angle), radius * std::sin(angle));
    }
    QPainterPath path;
    path.addPolygon(corners);
    path.closeSubpath();
    return path;
}

QPainterPath sword(double w) {
    QPainterPath path = polygon({{0, -1}, {w, -0.78}, {w * 0.9, 0.42}, {-w * 0.9, 0.42}, {-w, -0.78}});
    path |= polygon({{-0.4, 0.36}, {0, 0.44}, {0.4, 0.36}, {0.36, 0.54}, {-0.36, 0.54}});
    path |= polygon({{-0.06, 0.5}, {0.06, 0.5}, {0.06, 0.88}, {-0.06, 0.88}});
    return reduced(path | circle({0, 0.9}, 0.1));
}

QPainterPath emblem(const QString& classKey) {
    static const QHash<QString, QPainterPath> all{
        {QStringLiteral("MAGE"), reduced(guidingStar())},
        {QStringLiteral("PALADIN"), reduced(hammer())},
        {QStringLiteral("PRIEST"), reduced(sun())},
        {QStringLiteral("ROGUE"), reduced(turned(longBlade(), 38) | turned(longBlade(), -38))},
        {QStringLiteral("SHAMAN"), reduced(bolt())},
        {QStringLiteral("WARLOCK"), reduced(flame())},
        {QStringLiteral("WARRIOR"), reduced(shield())},
        {QStringLiteral("HUNTER"), reduced(bow())},
        {QStringLiteral("DRUID"), reduced(paw())},
        {QStringLiteral("DEATHKNIGHT"), sword(0.17)},
        {QStringLiteral("DEMONHUNTER"), reduced(glaives())},
    };
    return all.value(classKey, star(6, 0.55));
}

QColor classColour(const QString& classKey) {
    static const QHash<QString, QColor> all{
        {QStringLiteral("MAGE"), QColor(0x3f, 0x66, 0xa8)},
        {QStringLiteral("PALADIN"), QColor(0xb5, 0x8c, 0x35)},
        {QStringLiteral("PRIEST"), QColor(0xa9, 0xa8, 0xa6)},
        {QStringLiteral("ROGUE"), QColor(0x4c, 0x4d, 0x58)},
        {QStringLiteral("SHAMAN"), QColor(0x2c, 0x48, 0x8e)},
        {QStringLiteral("WARLOCK"), QColor(0x63, 0x39, 0x7a)},
        {QStringLiteral("WARRIOR"), QColor(0x8f, 0x34, 0x29)},
        {QStringLiteral("HUNTER"), QColor(0x3b, 0x7a, 0x3a)},
        {QStringLiteral("DRUID"), QColor(0x7d, 0x55, 0x2c)},
        {QStringLiteral("DEATHKNIGHT"), QColor(0x3a, 0x62, 0x72)},
        {QStringLiteral("DEMONHUNTER"), QColor(0x2f, 0x6b, 0x52)},
    };
    return all.value(classKey, QColor(0x7c, 0x74, 0x6a));
}

void drawEmblem(QPainter& painter, const QString& classKey, QPointF centre, double radius) {
    QTransform placed;
    placed.translate(centre.x(), centre.y());
    placed.scale(radius, radius);
    const QPainterPath sign = placed.map(emblem(classKey));
    castShadow(painter, sign, radius * 0.18, 0.8);
    painter.strokePath(sign,
                       QPen(QColor(0x3a, 0x20, 0x08), radius * 0.09, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
    painter.fillPath(sign.translated(0, radius * 0.035), shade(gold, 0.45));
    painter.fillPath(sign, metal(sign.boundingRect(), shade(gold, 1.12)));
    painter.strokePath(sign, QPen(withAlpha(QColor(0xff, 0xf0, 0xc0), 0.75), radius * 0.022));
}

} // namespace pelloran::stage
