#pragma once

#include "reading/NamePlaces.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <cmath>
#include <numbers>
#include <random>
#include <vector>

// Screens with names where the game has them, painted without fonts, so that they are the same everywhere. Lengths in
// heights of the game's picture.
namespace pelloran::testing {

// Letters that bars can make: E F H I L T as capitals, c e i l n o r u as small ones. Others are gaps.
struct BarLetters {
    double capital = 0.0122; // height
    double small = 0.0086;
    double stroke = 0.0023;
    double width = 0.0080;
    double advance = 0.0112;

    // From the foot of the letter's left side, y downwards.
    std::vector<QRectF> bars(QChar letter) const {
        const QString capitals = QStringLiteral("EFHILTl");
        const double top = capitals.contains(letter) ? -capital : -small;
        const QRectF left(0, top, stroke, -top);
        const QRectF right = left.translated(width - stroke, 0);
        const QRectF centre = left.translated((width - stroke) / 2, 0);
        const QRectF head(0, top, width, stroke);
        const QRectF waist(0, (top - stroke) / 2, width, stroke);
        const QRectF foot(0, -stroke, width, stroke);
        switch (letter.unicode()) {
        case 'E':
        case 'e':
            return {left, head, waist, foot};
        case 'F':
            return {left, head, waist};
        case 'H':
            return {left, right, waist};
        case 'I':
        case 'i':
        case 'l':
            return {centre};
        case 'L':
            return {left, foot};
        case 'T':
            return {centre, head};
        case 'c':
            return {left, head, foot};
        case 'n':
            return {left, right, head};
        case 'o':
            return {left, right, head, foot};
        case 'r':
            return {left, head};
        case 'u':
            return {left, right, foot};
        default:
            return {};
        }
    }

    // From the first letter's left side to the last one's right side.
    double widthOf(const QString& word) const { return advance * double(word.size() - 1) + width; }
};

struct Ink {
    QColor fill = Qt::white;
    QColor outline = QColor(20, 14, 10); // transparent for none
    double outlineWidth = 0.0022;
};

// The word centred on `centre`, each letter turned with the curve, its foot on it.
inline void paintAlong(QPainter& painter, const GameFrame& frame, const NameCurve& curve, double centre, double base,
                       const QString& word, const Ink& ink = {}, const BarLetters& letters = {}) {
    painter.setRenderHint(QPainter::Antialiasing);
    QPainterPath path;
    for (int i = 0; i < word.size(); ++i) {
        const double x = letters.advance * i - letters.widthOf(word) / 2 + letters.width / 2; // of the letter's middle
        QTransform place;
        place.translate(frame.pixelX(centre + x), frame.pixelY(base + curve.at(x)));
        place.rotateRadians(std::atan(curve.slopeAt(x)));
        place.scale(frame.height, frame.height);
        place.translate(-letters.width / 2, 0);
        QPainterPath letter;
        letter.setFillRule(Qt::WindingFill);
        for (const QRectF& bar : letters.bars(word[i])) {
            letter.addRect(bar);
        }
        path.addPath(place.map(letter.simplified()));
    }
    if (ink.outline.alpha() > 0) {
        painter.strokePath(
            path, QPen(ink.outline, 2 * ink.outlineWidth * frame.height, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.fillPath(path, ink.fill);
}

inline const NameCurve& straight() {
    return nameCurves[2];
}

// The ribbon of a card, along its curve.
inline void paintRibbon(QPainter& painter, const GameFrame& frame, const NameCurve& curve, double centre, double base) {
    constexpr double halfLength = 0.103;
    constexpr double above = 0.021;
    constexpr double below = 0.011;
    QPolygonF outline;
    for (double x = -halfLength; x <= halfLength; x += 0.002) {
        outline << QPointF(frame.pixelX(centre + x), frame.pixelY(base + curve.at(x) - above));
    }
    for (double x = halfLength; x >= -halfLength; x -= 0.002) {
        outline << QPointF(frame.pixelX(centre + x), frame.pixelY(base + curve.at(x) + below));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(150, 122, 86));
    painter.drawPolygon(outline);
}

inline QImage emptyScreen(const QSize& size) {
    QImage image(size, QImage::Format_RGB32);
    image.fill(QColor(96, 68, 42));
    return image;
}

// Words of bars on the ribbons of three minions of a pick.
inline QImage paintedCards(const QSize& size, const std::array<QString, 3>& words, const GameFrame& frame,
                           double base = nameCurves[0].bases[0]) {
    QImage image = emptyScreen(size);
    QPainter painter(&image);
    for (std::size_t i = 0; i < words.size(); ++i) {
        paintRibbon(painter, frame, nameCurves[0], cardCentres[i], base);
        paintAlong(painter, frame, nameCurves[0], cardCentres[i], base, words[i]);
    }
    return image;
}

inline QImage paintedCards(const QSize& size, const std::array<QString, 3>& words) {
    return paintedCards(size, words, frameOf(size));
}

// Heroes have two lines without outlines below them: their own name and their class.
enum class HeroGround { parchment, felt, wood };

struct HeroText {
    static constexpr double nameBase = 0.515;
    static constexpr double classBase = 0.538;
};

inline QImage paintedHeroes(const QSize& size, HeroGround ground, const std::array<double, 3>& centres,
                            const std::array<QString, 3>& classes, const QString& heroName) {
    const GameFrame frame = frameOf(size);
    const QColor grounds[] = {QColor(200, 175, 135), QColor(60, 5, 3), QColor(96, 68, 42)};
    const QColor fills[] = {QColor(40, 28, 16), QColor(250, 160, 140), QColor(240, 235, 225)};
    QImage image = emptyScreen(size);
    QPainter painter(&image);
    const Ink ink{fills[int(ground)], Qt::transparent, 0};
    const BarLetters letters{.stroke = 0.0029}; // without an outline they are heavier
    for (std::size_t i = 0; i < centres.size(); ++i) {
        painter.fillRect(QRectF(QPointF(frame.pixelX(centres[i] - 0.125), frame.pixelY(0.47)),
                                QPointF(frame.pixelX(centres[i] + 0.125), frame.pixelY(0.58))),
                         grounds[int(ground)]);
        paintAlong(painter, frame, straight(), centres[i], HeroText::nameBase, heroName, ink, letters);
        paintAlong(painter, frame, straight(), centres[i], HeroText::classBase, classes[i], ink, letters);
    }
    return image;
}

// Every pixel on its own.
inline QImage noise(const QSize& size, unsigned seed) {
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            row[x] = random() | 0xFF000000U;
        }
    }
    return image;
}

} // namespace pelloran::testing
