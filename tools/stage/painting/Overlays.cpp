#include "tools/stage/painting/Overlays.h"

#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Emblems.h"
#include "tools/stage/painting/Materials.h"

#include <QLinearGradient>

#include <algorithm>
#include <cmath>

namespace pelloran::stage {

void paintTooltip(QPainter& painter, const Lettering& lettering, const ScreenPlan& plan, const Words& words,
                  std::size_t keyword, const QRectF& card) {
    const double unit = plan.unit();
    const auto& [title, text] = words.keywords[keyword % words.keywords.size()];
    const QRectF box(card.right() + 8 * unit, card.top() + 26 * unit, 208 * unit, 84 * unit);
    QPainterPath shape;
    shape.addRoundedRect(box, 7 * unit, 7 * unit);
    castShadow(painter, shape, 12 * unit, 0.7);
    QLinearGradient face(box.topLeft(), box.bottomLeft());
    face.setColorAt(0, QColor(0x52, 0x50, 0x50));
    face.setColorAt(1, QColor(0x3a, 0x38, 0x3a));
    painter.fillPath(shape, face);
    drawRim(painter, shape, 4 * unit, QColor(0x90, 0x8e, 0x8c));
    lettering.drawFrom(painter, title, box.topLeft() + QPointF(14, 20) * unit, 180 * unit, {.caps = 12 * unit});
    lettering.drawParagraph(painter, text, box.adjusted(12 * unit, 32 * unit, -12 * unit, -8 * unit), 17 * unit,
                            QColor(0xf2, 0xf0, 0xec));
}

void paintGlove(QPainter& painter, QPointF tip, double unit) {
    QPainterPath hand;
    hand.moveTo(0, 0);
    hand.cubicTo(3, -3, 7, -2, 8, 3);
    hand.lineTo(12, 17);
    hand.cubicTo(17, 14, 21, 16, 22, 18);
    hand.cubicTo(27, 16, 30, 18, 31, 21);
    hand.cubicTo(36, 20, 38, 23, 38, 27);
    hand.cubicTo(38, 36, 36, 40, 34, 44);
    hand.lineTo(14, 46);
    hand.cubicTo(10, 38, 4, 34, 0, 30);
    hand.cubicTo(-1, 26, 3, 24, 8, 28);
    hand.lineTo(0, 0);
    QPainterPath cuff;
    cuff.addRoundedRect(QRectF(12, 44, 24, 11), 3, 3);
    painter.save();
    painter.translate(tip);
    painter.scale(unit, unit);
    painter.rotate(-8);
    castShadow(painter, hand.united(cuff), 5, 0.6);
    for (const QPainterPath& part : {cuff, hand}) {
        painter.strokePath(part, QPen(QColor(0x16, 0x16, 0x18), 2.4, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        QLinearGradient light(0, 0, 38, 50);
        light.setColorAt(0, QColor(0xf4, 0xf4, 0xf2));
        light.setColorAt(1, QColor(0x90, 0x92, 0x98));
        painter.fillPath(part, light);
    }
    painter.restore();
}

void paintZoomedHero(QPainter& painter, const Lettering& lettering, const ScreenPlan& plan, const HeroPainter& heroes,
                     const BoardPainter& board, const HeroClass& hero, Language language) {
    const double unit = plan.unit();
    painter.fillRect(QRectF({0, 0}, plan.size()), QColor(4, 2, 2, 150));
    const QPointF centre = plan.at(-0.1, 0.4);
    const QRectF box(centre - QPointF(210, 300) * unit, QSizeF(420, 478) * unit);
    heroes.paintPortrait(painter, hero, box, 1);
    painter.save();
    painter.translate(box.center().x(), box.bottom() + 26 * unit);
    painter.scale(1.6 * unit, 1.6 * unit);
    const Curve arch(1080, 0, 0.008, 0);
    drawRibbon(painter, arch, 150, QColor(155, 133, 105), QColor(0x3c, 0x2c, 0x1c));
    lettering.drawAlong(painter, hero.heroName.in(language), {0, 0}, 250, arch, {.caps = 15});
    painter.restore();
    board.paintButton(painter, Words::in(language).choose, plan.at(-0.1, 0.745), {230 * unit, 78 * unit}, true);
    // What the hero can do, beside the portrait.
    const QPointF power = plan.at(0.24, 0.42);
    QPainterPath disc;
    disc.addEllipse(power, 74 * unit, 74 * unit);
    castShadow(painter, disc, 14 * unit, 0.8);
    painter.fillPath(disc, metal(disc.boundingRect(), shade(steel, 0.5)));
    drawRim(painter, disc, 11 * unit, bronze);
    drawEmblem(painter, hero.key, power, 44 * unit);
    drawCrystal(painter, power - QPointF(0, 70) * unit, 26 * unit, QColor(0x1f, 0x5c, 0xc8));
    lettering.draw(painter, QStringLiteral("2"), power - QPointF(0, 70) * unit, 40 * unit,
                   {.caps = 24 * unit, .outlineWidth = 0.1});
}

void paintMenuOver(QImage& scene, const Lettering& lettering, const ScreenPlan& plan, const BoardPainter& board,
                   const Words& words) {
    const double unit = plan.unit();
    for (const double grain : {7.0, 11.0}) { // two different ones, so that neither shows
        const QSize coarse = (QSizeF(scene.size()) / (grain * unit)).toSize().expandedTo({4, 4});
        scene = scene.scaled(coarse, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                    .scaled(scene.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    }
    QPainter painter(&scene);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    painter.fillRect(scene.rect(), QColor(0, 0, 0, 110));
    const QRectF box = plan.area(-0.17, 0.24, 0.17, 0.74);
    QPainterPath frame;
    frame.addRoundedRect(box, 14 * unit, 14 * unit);
    castShadow(painter, frame, 40 * unit, 0.9);
    painter.drawImage(box, mottled(box.size().toSize(), QColor(0x44, 0x32, 0x28), 0.6, unit, 77));
    drawRim(painter, frame, 13 * unit, bronze);
    drawPointedPlate(painter, QRectF(plan.at(0, 0.24) - QPointF(140, 26) * unit, QSizeF(280, 52) * unit),
                     QColor(0x5a, 0x20, 0x20), gold);
    lettering.draw(painter, words.options, plan.at(0, 0.24), 250 * unit, {.caps = 19 * unit});
    double y = 0.34;
    for (const QString& entry : {words.options, words.mainMenu, words.quit, words.resume}) {
        board.paintButton(painter, entry, plan.at(0, y), {260 * unit, 68 * unit}, entry == words.resume);
        y += 0.1;
    }
}

void burn(QImage& offer, const QRect& box, double progress, double unit, quint32 seed) {
    const QRect within = box.intersected(offer.rect());
    // Cloud noise keeps to the middle of its range.
    const double level = std::lerp(0.24, 0.8, progress);
    for (int y = within.top(); y <= within.bottom(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(offer.scanLine(y));
        for (int x = within.left(); x <= within.right(); ++x) {
            if (qAlpha(line[x]) == 0) {
                continue;
            }
            const double rough = cloudNoise(x / (46 * unit), y / (46 * unit), 4, seed);
            const double left = rough - level;
            if (left < 0) {
                line[x] = 0;
            } else if (left < 0.022) {
                line[x] = qRgb(255, static_cast<int>(150 + 90 * (1 - left / 0.022)), 60);
            } else if (left < 0.1) { // charred
                const double light = (left - 0.022) / 0.078;
                line[x] = qRgba(static_cast<int>(qRed(line[x]) * light), static_cast<int>(qGreen(line[x]) * light),
                                static_cast<int>(qBlue(line[x]) * light), qAlpha(line[x]));
            }
        }
    }
}

} // namespace pelloran::stage
