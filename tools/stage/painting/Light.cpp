#include "tools/stage/painting/Light.h"

#include "tools/stage/painting/Materials.h"

#include <QRadialGradient>

#include <cmath>
#include <numbers>

namespace pelloran::stage {

namespace {

constexpr double reach = 24; // of a glow beyond the outline, in units

QImage blank(QSizeF size) {
    QImage image(size.toSize().expandedTo({2, 2}), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

QRect haloBox(const QPainterPath& outline, double unit) {
    const double margin = reach * unit;
    return outline.boundingRect().adjusted(-margin, -margin, margin, margin).toAlignedRect();
}

double fractionOf(double value) {
    return value - std::floor(value);
}

} // namespace

Light::Light(QSize windowSize, double lengthUnit, quint32 seed)
    : size(windowSize)
    , unit(lengthUnit)
    , spark(blank({48, 48})) {
    QPainter sparkPainter(&spark);
    QRadialGradient glow(24, 24, 24);
    glow.setColorAt(0, QColor(255, 250, 225, 230));
    glow.setColorAt(0.22, QColor(255, 225, 160, 110));
    glow.setColorAt(1, QColor(255, 200, 110, 0));
    sparkPainter.fillRect(spark.rect(), glow);

    Random random(seed + 41);
    for (int i = 0; i < 20; ++i) {
        motes.push_back({.start = {between(random, 0, size.width()), between(random, 0, size.height())},
                         .drift = {between(random, -14, 14) * unit, between(random, -34, -8) * unit},
                         .phase = between(random, 0, 2 * std::numbers::pi),
                         .size = between(random, 4, 11) * unit});
    }
}

void Light::setGlow(const std::vector<QPainterPath>& offers, int glowing, const QColor& colour) {
    halo = {};
    if (glowing < 0) {
        return;
    }
    const QPainterPath& outline = offers[static_cast<std::size_t>(glowing)];
    const QRect box = haloBox(outline, unit);
    haloPlace = box.topLeft();
    halo = blank(box.size());
    QPainter painter(&halo);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-box.topLeft());
    constexpr int rings = 12;
    for (int ring = rings; ring > 0; --ring) {
        const double width = 2 * reach * unit * ring / rings;
        painter.strokePath(outline, QPen(withAlpha(colour, 0.16), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    // It falls on the board only, not on the offer itself nor on its neighbours.
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    for (const QPainterPath& shape : offers) {
        painter.fillPath(shape, Qt::black);
    }
}

void Light::paint(QPainter& painter, double seconds) const {
    if (!halo.isNull()) {
        painter.setOpacity(0.85 + 0.15 * std::sin(seconds * 2.1));
        painter.drawImage(haloPlace, halo);
    }
    for (const Mote& mote : motes) {
        const double x = mote.start.x() + mote.drift.x() * seconds + 18 * unit * std::sin(seconds * 0.7 + mote.phase);
        const double y = mote.start.y() + mote.drift.y() * seconds;
        const QPointF place(fractionOf(x / size.width()) * size.width(), fractionOf(y / size.height()) * size.height());
        painter.setOpacity(0.25 + 0.65 * std::pow(0.5 + 0.5 * std::sin(seconds * 1.6 + mote.phase * 3), 2));
        painter.drawImage(QRectF(place - QPointF(mote.size, mote.size) / 2, QSizeF(mote.size, mote.size)), spark);
    }
    painter.setOpacity(1);
}

} // namespace pelloran::stage
