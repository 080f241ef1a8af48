#include "tools/stage/painting/DeckPainter.h"

#include "tools/stage/painting/Art.h"
#include "tools/stage/painting/CardParts.h"
#include "tools/stage/painting/Materials.h"

#include <QLinearGradient>

#include <algorithm>
#include <array>
#include <map>
#include <utility>

namespace pelloran::stage {

namespace {

struct Row {
    const Card* card;
    int copies;
};

std::vector<Row> rowsOf(const std::vector<Card>& deck) {
    std::map<std::pair<int, QString>, Row> rows;
    for (const Card& card : deck) {
        ++rows.try_emplace({card.cost, card.id}, Row{&card, 0}).first->second.copies;
    }
    std::vector<Row> sorted;
    sorted.reserve(rows.size());
    for (const auto& [key, row] : rows) {
        sorted.push_back(row);
    }
    return sorted;
}

} // namespace

void DeckPainter::paintRows(QPainter& painter, const std::vector<Card>& deck, const QRectF& column) {
    const double unit = plan.unit();
    // Rows that have no room are below the lower edge, as if the list were not scrolled.
    const double pitch = 40.5 * unit;
    double top = column.top() + 8 * unit;
    for (const Row& row : rowsOf(deck)) {
        if (top + pitch > column.bottom()) {
            break;
        }
        paintRow(painter, *row.card, row.copies, {column.left(), top, column.width(), pitch - 6 * unit});
        top += pitch;
    }
}

void DeckPainter::paintRow(QPainter& painter, const Card& card, int copies, const QRectF& row) {
    const double unit = plan.unit();
    const QColor dark(0x2a, 0x30, 0x3a);
    QPainterPath shape;
    shape.addRoundedRect(row, 5 * unit, 5 * unit);
    castShadow(painter, shape, 4 * unit, 0.7);
    painter.fillPath(shape, dark);
    const QRectF art(row.right() - 132 * unit, row.top(), copies > 1 ? 104 * unit : 132 * unit, row.height());
    const QRectF whole(art.left(), art.center().y() - 40 * unit, art.width(), 80 * unit);
    QImage& strip = strips[card.id];
    if (strip.isNull()) {
        strip = paintCardArt(card, whole.size().toSize().expandedTo({8, 8}), seed);
    }
    painter.save();
    painter.setClipRect(art, Qt::IntersectClip);
    painter.drawImage(whole, strip);
    painter.restore();
    QLinearGradient fade(art.topLeft(), art.topRight());
    fade.setColorAt(0, dark);
    fade.setColorAt(0.7, withAlpha(dark, 0));
    painter.fillRect(art.adjusted(-1, 0, 0, 0), fade);
    painter.strokePath(shape, QPen(card.golden ? gold : QColor(0x10, 0x10, 0x14), 2.2 * unit));

    const double middle = row.center().y();
    drawCrystal(painter, {row.left() + 12 * unit, middle}, 17 * unit, QColor(0x1f, 0x5c, 0xc8));
    lettering.draw(painter, QString::number(card.cost), {row.left() + 12 * unit, middle}, 30 * unit,
                   {.caps = 15 * unit, .outlineWidth = 0.12});
    lettering.drawFrom(painter, card.name.in(language), {row.left() + 36 * unit, middle},
                       (copies > 1 ? 172 : 192) * unit, {.caps = 11 * unit});
    if (copies > 1) {
        lettering.draw(painter, QString::number(copies), {row.right() - 14 * unit, middle}, 24 * unit,
                       {.caps = 13 * unit, .fill = QColor(0xff, 0xd2, 0x4a)});
    }
}

void DeckPainter::paintCosts(QPainter& painter, const std::vector<Card>& deck) const {
    const double unit = plan.unit();
    std::array<int, 8> byCost{};
    for (const Card& card : deck) {
        ++byCost[static_cast<std::size_t>(std::clamp(card.cost, 0, 7))];
    }
    const double tallest = std::max(6, *std::ranges::max_element(byCost));
    for (std::size_t cost = 0; cost < byCost.size(); ++cost) {
        const QPointF foot = plan.at(-0.277 + 0.0368 * static_cast<double>(cost), 0.848);
        QPainterPath tube;
        const QRectF slot(foot.x() - 14 * unit, foot.y() - 192 * unit, 28 * unit, 192 * unit);
        tube.addRoundedRect(slot, 12 * unit, 12 * unit);
        painter.fillPath(tube, QColor(0x12, 0x0c, 0x10));
        const double height = slot.height() * byCost[cost] / tallest;
        const QRectF filled(slot.left(), slot.bottom() - height, slot.width(), height);
        QLinearGradient glow(filled.topLeft(), filled.bottomLeft());
        glow.setColorAt(0, QColor(0x9a, 0xe0, 0xff));
        glow.setColorAt(0.2, QColor(0x3e, 0x8e, 0xea));
        glow.setColorAt(1, QColor(0x16, 0x34, 0x8c));
        painter.save();
        painter.setClipPath(tube);
        painter.fillRect(filled, glow);
        painter.fillRect(QRectF(slot.left() + 5 * unit, slot.top(), 4 * unit, slot.height()),
                         QColor(255, 255, 255, 40));
        painter.restore();
        painter.strokePath(tube, QPen(QColor(0x0a, 0x08, 0x0a), 4 * unit));
        painter.strokePath(tube, QPen(shade(steel, 0.6), 1.6 * unit));
        drawCrystal(painter, foot + QPointF(0, 19) * unit, 14 * unit, QColor(0x1f, 0x5c, 0xc8));
        lettering.draw(painter, cost == 7 ? QStringLiteral("7+") : QString::number(cost), foot + QPointF(0, 19) * unit,
                       34 * unit, {.caps = 13 * unit, .outlineWidth = 0.13});
    }
}

} // namespace pelloran::stage
