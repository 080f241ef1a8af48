#include "stage/painting/Light.h"

#include "stage/painting/Materials.h"

#include <QLinearGradient>
#include <QRadialGradient>

#include <cmath>
#include <numbers>
#include <utility>

namespace pelloran::stage {

namespace {

constexpr double reach = 34; // of a glow beyond the outline, in units

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
    , beam(blank({300 * lengthUnit, static_cast<double>(windowSize.height())}))
    , spark(blank({48, 48})) {
    // A slanted beam: the gradient runs across it, so its sides are parallel.
    QPainter beamPainter(&beam);
    QLinearGradient across(0, 0, beam.width() * 0.42, beam.width() * 0.16);
    across.setSpread(QGradient::PadSpread);
    across.setColorAt(0, QColor(255, 240, 210, 0));
    across.setColorAt(0.5, QColor(255, 240, 210, 26));
    across.setColorAt(1, QColor(255, 240, 210, 0));
    const double lean = beam.width() * 0.58;
    for (int y = 0; y < beam.height(); ++y) {
        beamPainter.save();
        beamPainter.translate(lean * (1 - static_cast<double>(y) / beam.height()), 0);
        beamPainter.fillRect(QRectF(0, y, beam.width() * 0.42, 1), across);
        beamPainter.restore();
    }
    QPainter sparkPainter(&spark);
    QRadialGradient glow(24, 24, 24);
    glow.setColorAt(0, QColor(255, 250, 225, 230));
    glow.setColorAt(0.22, QColor(255, 225, 160, 110));
    glow.setColorAt(1, QColor(255, 200, 110, 0));
    sparkPainter.fillRect(spark.rect(), glow);

    Random random(seed + 41);
    for (int i = 0; i < 46; ++i) {
        motes.push_back({.start = {between(random, 0, size.width()), between(random, 0, size.height())},
                         .drift = {between(random, -14, 14) * unit, between(random, -34, -8) * unit},
                         .phase = between(random, 0, 2 * std::numbers::pi),
                         .size = between(random, 5, 17) * unit});
    }
}

void Light::setGlows(std::vector<QPainterPath> outlines, int newChosen) {
    glowing = std::move(outlines);
    chosen = newChosen;
    halos.clear();
    for (std::size_t i = 0; i < glowing.size(); ++i) {
        const bool golden = static_cast<int>(i) == chosen;
        halos.push_back(halo(glowing[i], golden ? QColor(255, 196, 80) : QColor(130, 190, 255)));
    }
}

// The glow falls on the board only, not on the offer itself nor on its neighbours.
QImage Light::halo(const QPainterPath& outline, const QColor& colour) const {
    const QRect box = haloBox(outline, unit);
    QImage image = blank(box.size());
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.translate(-box.topLeft());
    constexpr int rings = 14;
    for (int ring = rings; ring > 0; --ring) {
        const double width = 2 * reach * unit * ring / rings;
        painter.strokePath(outline, QPen(withAlpha(colour, 0.095), width, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    for (const QPainterPath& shape : glowing) {
        painter.fillPath(shape, Qt::black);
    }
    return image;
}

void Light::paint(QPainter& painter, double seconds) const {
    for (std::size_t i = 0; i < glowing.size(); ++i) {
        const bool isChosen = static_cast<int>(i) == chosen;
        if (chosen >= 0 && !isChosen) {
            continue;
        }
        const double pulse = 0.5 + 0.5 * std::sin(seconds * 2.1 + static_cast<double>(i) * 1.3);
        painter.setOpacity(isChosen ? 1 : 0.4 + 0.5 * pulse);
        painter.drawImage(haloBox(glowing[i], unit).topLeft(), halos[i]);
        // A light that runs along the edge.
        const QPointF runner = glowing[i].pointAtPercent(fractionOf(seconds / 5 + static_cast<double>(i) / 3));
        const double radius = 26 * unit;
        painter.setOpacity(0.8);
        painter.drawImage(QRectF(runner - QPointF(radius, radius), QSizeF(2 * radius, 2 * radius)), spark);
    }
    painter.setOpacity(1);
    const double travel = fractionOf(seconds / 7) * 1.5;
    if (travel < 1) {
        painter.drawImage(QPointF(travel * (size.width() + beam.width()) - beam.width(), 0).toPoint(), beam);
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
