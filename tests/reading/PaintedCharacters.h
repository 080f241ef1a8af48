#pragma once

#include "reading/chinese/CharacterModel.h"
#include "reading/chinese/CharacterShape.h"
#include "reading/Plane.h"
#include "tests/reading/PaintedScreen.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <string>
#include <vector>

// Chinese characters painted of a few strokes each, without fonts, and a model that knows them. Some look much alike,
// as they do in print.
namespace pelloran::testing {

// Strokes as lines through points of a square of side 1, y downwards.
using Strokes = std::vector<QPolygonF>;

inline const std::map<char32_t, Strokes>& strokesOfCharacters() {
    const auto box = [](double left, double top, double right, double bottom) {
        return QPolygonF{{left, top}, {right, top}, {right, bottom}, {left, bottom}, {left, top}};
    };
    const auto across = [](double y, double left = 0.06, double right = 0.94) {
        return QPolygonF{{left, y}, {right, y}};
    };
    const auto down = [](double x, double top = 0.05, double bottom = 0.95) {
        return QPolygonF{{x, top}, {x, bottom}};
    };
    const QPolygonF leftLeg{{0.5, 0.05}, {0.45, 0.4}, {0.06, 0.95}};
    static const std::map<char32_t, Strokes> strokes{
        {U'一', {across(0.5)}},
        {U'二', {across(0.2, 0.18, 0.82), across(0.85)}},
        {U'三', {across(0.12), across(0.5, 0.15, 0.85), across(0.9)}},
        {U'十', {across(0.45), down(0.5)}},
        {U'土', {across(0.42, 0.24, 0.76), across(0.93), down(0.5)}},
        {U'士', {across(0.38), across(0.93, 0.24, 0.76), down(0.5)}},
        {U'工', {across(0.1, 0.12, 0.88), across(0.9), down(0.5, 0.1, 0.9)}},
        {U'王', {across(0.07), across(0.5, 0.14, 0.86), across(0.93), down(0.5)}},
        {U'口', {box(0.1, 0.12, 0.9, 0.9)}},
        {U'日', {box(0.2, 0.05, 0.8, 0.95), across(0.5, 0.2, 0.8)}},
        {U'目', {box(0.2, 0.05, 0.8, 0.95), across(0.35, 0.2, 0.8), across(0.65, 0.2, 0.8)}},
        {U'曰', {box(0.2, 0.05, 0.8, 0.95), across(0.5, 0.2, 0.8)}}, // as the sun, in many typefaces
        {U'田', {box(0.08, 0.08, 0.92, 0.92), across(0.5), down(0.5)}},
        {U'中', {box(0.08, 0.25, 0.92, 0.66), down(0.5)}},
        {U'山', {down(0.5), down(0.08, 0.42, 0.92), down(0.92, 0.42, 0.92), across(0.92)}},
        {U'川', {QPolygonF{{0.2, 0.05}, {0.18, 0.6}, {0.06, 0.95}}, down(0.5, 0.1, 0.85), down(0.9)}},
        {U'人', {leftLeg, QPolygonF{{0.47, 0.3}, {0.6, 0.62}, {0.95, 0.95}}}},
        {U'入', {QPolygonF{{0.26, 0.06}, {0.44, 0.06}, {0.6, 0.6}, {0.95, 0.95}}, QPolygonF{{0.5, 0.3}, {0.06, 0.95}}}},
        {U'大', {leftLeg, across(0.34), QPolygonF{{0.5, 0.36}, {0.95, 0.95}}}},
        {U'天', {leftLeg, across(0.06, 0.15, 0.85), across(0.42), QPolygonF{{0.5, 0.44}, {0.95, 0.95}}}},
        {U'木', {across(0.3), down(0.5), QPolygonF{{0.48, 0.32}, {0.06, 0.8}}, QPolygonF{{0.52, 0.32}, {0.94, 0.8}}}},
        {U'本',
         {across(0.3), down(0.5), QPolygonF{{0.48, 0.32}, {0.06, 0.8}}, QPolygonF{{0.52, 0.32}, {0.94, 0.8}},
          across(0.75, 0.28, 0.72)}},
        {U'石', {across(0.07), QPolygonF{{0.45, 0.08}, {0.06, 0.66}}, box(0.3, 0.48, 0.9, 0.94)}},
        {U'上', {down(0.45, 0.05, 0.93), across(0.42, 0.45, 0.88), across(0.93)}},
        {U'下', {across(0.07), down(0.5, 0.07), QPolygonF{{0.52, 0.3}, {0.9, 0.55}}}},
        {U'月',
         {QPolygonF{{0.26, 0.05}, {0.24, 0.6}, {0.1, 0.95}}, down(0.85), across(0.05, 0.26, 0.85),
          across(0.33, 0.26, 0.85), across(0.6, 0.26, 0.85)}},
        {U'火',
         {QPolygonF{{0.5, 0.05}, {0.48, 0.5}, {0.08, 0.95}}, QPolygonF{{0.5, 0.45}, {0.92, 0.95}},
          QPolygonF{{0.12, 0.3}, {0.26, 0.52}}, QPolygonF{{0.9, 0.28}, {0.74, 0.5}}}},
    };
    return strokes;
}

// Marks, digits and letters, which no model knows. In a square too, of which they take a part.
inline const std::map<char32_t, Strokes>& strokesOfOthers() {
    static const std::map<char32_t, Strokes> strokes{
        {U'·', {{{0.47, 0.5}, {0.53, 0.5}}}},
        {U'，', {{{0.16, 0.82}, {0.18, 0.9}, {0.1, 0.97}}}},
        {U'！', {{{0.3, 0.1}, {0.3, 0.66}}, {{0.3, 0.88}, {0.3, 0.94}}}},
        {U'…', {{{0.15, 0.5}, {0.2, 0.5}}, {{0.48, 0.5}, {0.53, 0.5}}, {{0.8, 0.5}, {0.85, 0.5}}}},
        {U'H', {{{0.3, 0.12}, {0.3, 0.92}}, {{0.7, 0.12}, {0.7, 0.92}}, {{0.3, 0.5}, {0.7, 0.5}}}},
        {U'T', {{{0.3, 0.14}, {0.7, 0.14}}, {{0.5, 0.14}, {0.5, 0.92}}}},
        {U'L', {{{0.33, 0.12}, {0.33, 0.9}, {0.7, 0.9}}}},
        {U'4', {{{0.6, 0.92}, {0.6, 0.12}, {0.3, 0.65}, {0.72, 0.65}}}},
        {U'7', {{{0.3, 0.14}, {0.7, 0.14}, {0.45, 0.92}}}},
    };
    return strokes;
}

// Lengths in sides of a character's square.
struct CharacterStyle {
    double stroke = 0.085;
    double pitch = 1.1; // from one character to the next
    double mark = 1;    // the same of a mark, in pitches
    double latin = 0.6; // and of a letter

    double advanceOf(char32_t character) const {
        const bool isLatin = character < 0x80;
        const bool isCharacter = strokesOfCharacters().contains(character);
        return pitch * (isCharacter ? 1 : isLatin ? latin : mark);
    }

    // A letter or a narrow dot stands in the middle of its advance, other marks at its left anyway.
    double shiftOf(char32_t character) const {
        return character == U'，' || character == U'！' ? 0 : (advanceOf(character) - pitch) / 2;
    }

    double widthOf(const QString& text) const {
        double width = 0;
        for (const char32_t character : text.toStdU32String()) {
            width += advanceOf(character);
        }
        return width - pitch + 1;
    }
};

// In a square of side 1; empty for what has no strokes, such as a space.
inline QPainterPath pathOf(char32_t character, double stroke = CharacterStyle().stroke) {
    QPainterPath path;
    for (const auto* strokes : {&strokesOfCharacters(), &strokesOfOthers()}) {
        if (const auto found = strokes->find(character); found != strokes->end()) {
            QPainterPath lines;
            for (const QPolygonF& line : found->second) {
                lines.addPolygon(line);
            }
            // Marks and letters are lighter.
            const double width = strokes == &strokesOfOthers() ? 0.8 * stroke : stroke;
            QPainterPathStroker pen(QPen(Qt::black, width, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin));
            path = pen.createStroke(lines);
            path.setFillRule(Qt::WindingFill);
        }
    }
    return path;
}

// Squares of side 1 beside each other, the first from 0 on.
inline QPainterPath pathOf(const QString& text, const CharacterStyle& style) {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    double x = 0;
    for (const char32_t character : text.toStdU32String()) {
        const double advance = style.advanceOf(character);
        path.addPath(pathOf(character, style.stroke).translated(x + style.shiftOf(character), 0));
        x += advance;
    }
    return path;
}

inline Plane grey(const QImage& image) {
    const QImage bytes = image.convertToFormat(QImage::Format_Grayscale8);
    Plane plane(bytes.width(), bytes.height());
    for (int y = 0; y < plane.height; ++y) {
        std::copy_n(bytes.constScanLine(y), plane.width, plane.row(y));
    }
    return plane;
}

// The line's ink, with a margin all around.
inline Plane inkWithMargin(const QString& text, double size, const CharacterStyle& style = {}, double margin = 0.5) {
    QImage image(int(std::ceil((style.widthOf(text) + 2 * margin) * size)), int(std::ceil((1 + 2 * margin) * size)),
                 QImage::Format_Grayscale8);
    image.fill(0);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(size, size);
    painter.translate(margin, margin);
    painter.fillPath(pathOf(text, style), Qt::white);
    painter.end();
    return grey(image);
}

// What the pixels from `level` on take up.
inline QRect inkBox(const Plane& ink, int level = 128) {
    QRect box;
    for (int y = 0; y < ink.height; ++y) {
        for (int x = 0; x < ink.width; ++x) {
            if (ink.at(x, y) >= level) {
                box |= QRect(x, y, 1, 1);
            }
        }
    }
    return box;
}

// The line's ink and nothing around it.
inline Plane inkOfLine(const QString& text, double size, const CharacterStyle& style = {}) {
    const Plane ink = inkWithMargin(text, size, style);
    return cropped(ink, inkBox(ink, 1));
}

// Learned from these characters as they are painted in some sizes and weights: each is a direction of its own, and so
// at right angles to all others, however alike they look (ridge regression on the features).
inline std::shared_ptr<const CharacterModel> modelOf(std::u32string characters) {
    std::ranges::sort(characters);
    const std::size_t count = characters.size();

    struct Sample {
        CharacterFeature feature;
        std::size_t character;
    };

    std::vector<Sample> samples;
    CharacterFeature centre{};
    for (std::size_t i = 0; i < count; ++i) {
        for (const double size : {13.7, 17.0, 22.4, 31.0, 45.0}) {
            for (const double stroke : {0.062, 0.085, 0.115}) {
                const Plane ink = inkWithMargin(QString::fromUcs4(&characters[i], 1), size, {.stroke = stroke});
                if (const auto shape = shapeOf(ink, QRect(0, 0, ink.width, ink.height))) {
                    samples.push_back({featureOf(*shape), i});
                    std::ranges::transform(centre, samples.back().feature, centre.begin(), std::plus());
                }
            }
        }
    }
    for (float& value : centre) {
        value /= float(samples.size());
    }
    for (Sample& sample : samples) {
        std::ranges::transform(sample.feature, centre, sample.feature.begin(), std::minus());
    }
    // (Products of samples + penalty) * weights = targets, by elimination.
    const std::size_t width = samples.size() + count;
    std::vector<double> rows(samples.size() * width);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        double* row = rows.data() + i * width;
        for (std::size_t k = 0; k < samples.size(); ++k) {
            row[k] = std::inner_product(samples[i].feature.begin(), samples[i].feature.end(),
                                        samples[k].feature.begin(), i == k ? 0.2 : 0.0);
        }
        row[samples.size() + samples[i].character] = 1;
    }
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double* pivot = rows.data() + i * width;
        for (std::size_t k = 0; k < samples.size(); ++k) {
            double* row = rows.data() + k * width;
            if (const double factor = row[i] / pivot[i]; k != i && factor != 0) {
                for (std::size_t column = i; column < width; ++column) {
                    row[column] -= factor * pivot[column];
                }
            }
        }
    }
    CharacterModel::Parts parts;
    parts.origin = QStringLiteral("strokes of a test");
    parts.characters = characters;
    parts.centre = centre;
    parts.dimensions = int(count);
    parts.projection.resize(featureSize * count);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        for (std::size_t k = 0; k < count; ++k) {
            const double weight = rows[i * width + samples.size() + k] / rows[i * width + i];
            for (std::size_t value = 0; value < featureSize; ++value) {
                parts.projection[value * count + k] += float(weight * double(samples[i].feature[value]));
            }
        }
    }
    parts.means.resize(count * count);
    for (const Sample& sample : samples) {
        for (std::size_t value = 0; value < featureSize; ++value) {
            for (std::size_t k = 0; k < count; ++k) {
                parts.means[sample.character * count + k] +=
                    sample.feature[value] * parts.projection[value * count + k];
            }
        }
    }
    return std::make_shared<const CharacterModel>(CharacterModel::of(std::move(parts)));
}

// Knows all painted characters.
inline const std::shared_ptr<const CharacterModel>& paintedModel() {
    static const auto model = [] {
        std::u32string characters;
        for (const auto& [character, strokes] : strokesOfCharacters()) {
            characters.push_back(character);
        }
        return modelOf(std::move(characters));
    }();
    return model;
}

// On ribbons characters are grey.
inline const Ink& inkOnRibbons() {
    static const Ink ink{QColor(200, 195, 190), QColor(20, 14, 10), 0.0016};
    return ink;
}

// Height of a character, in heights of the game's picture.
inline constexpr double characterHeight = 0.0150;

// The text centred on `centre`, each character turned with the curve, its foot on it.
inline void paintCharactersAlong(QPainter& painter, const GameFrame& frame, const NameCurve& curve, double centre,
                                 double base, const QString& text, const Ink& ink = inkOnRibbons(),
                                 const CharacterStyle& style = {}, double height = characterHeight) {
    QPainterPath path;
    path.setFillRule(Qt::WindingFill);
    double left = -style.widthOf(text) / 2;
    for (const char32_t character : text.toStdU32String()) {
        const double advance = style.advanceOf(character);
        const double x = (left + style.shiftOf(character) + 0.5) * height; // of the character's middle
        left += advance;
        QTransform place;
        place.translate(frame.pixelX(centre + x), frame.pixelY(base + curve.at(x)));
        place.rotateRadians(std::atan(curve.slopeAt(x)));
        place.scale(frame.height * height, frame.height * height);
        place.translate(-0.5, -1);
        path.addPath(place.map(pathOf(character, style.stroke)));
    }
    painter.setRenderHint(QPainter::Antialiasing);
    if (ink.outline.alpha() > 0) {
        painter.strokePath(
            path, QPen(ink.outline, 2 * ink.outlineWidth * frame.height, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    }
    painter.fillPath(path, ink.fill);
}

// Names of painted characters on the ribbons of three minions of a pick.
inline QImage paintedChineseCards(const QSize& size, const std::array<QString, 3>& names, const GameFrame& frame,
                                  double base = nameCurves[0].bases[0], const CharacterStyle& style = {}) {
    QImage image = emptyScreen(size);
    QPainter painter(&image);
    for (std::size_t i = 0; i < names.size(); ++i) {
        paintRibbon(painter, frame, nameCurves[0], cardCentres[i], base);
        paintCharactersAlong(painter, frame, nameCurves[0], cardCentres[i], base, names[i], inkOnRibbons(), style);
    }
    return image;
}

inline QImage paintedChineseCards(const QSize& size, const std::array<QString, 3>& names) {
    return paintedChineseCards(size, names, frameOf(size));
}

// As paintedHeroes().
inline QImage paintedChineseHeroes(const QSize& size, HeroGround ground, const std::array<double, 3>& centres,
                                   const std::array<QString, 3>& classes, const QString& heroName) {
    const GameFrame frame = frameOf(size);
    QImage image = paintedHeroes(size, ground, centres, {}, QString());
    QPainter painter(&image);
    const QColor fills[] = {QColor(40, 28, 16), QColor(250, 160, 140), QColor(240, 235, 225)};
    const Ink ink{fills[int(ground)], Qt::transparent, 0};
    for (std::size_t i = 0; i < centres.size(); ++i) {
        // Without an outline they are heavier.
        const CharacterStyle style{.stroke = 0.11};
        paintCharactersAlong(painter, frame, straight(), centres[i], HeroText::nameBase, heroName, ink, style, 0.019);
        paintCharactersAlong(painter, frame, straight(), centres[i], HeroText::classBase, classes[i], ink, style);
    }
    return image;
}

} // namespace pelloran::testing
