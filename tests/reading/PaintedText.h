#pragma once

#include "reading/Plane.h"

#include <QColor>
#include <QImage>
#include <QPoint>
#include <QString>

#include <algorithm>
#include <vector>

// Pictures for the tests of the text reader, painted without fonts, so that they are the same everywhere.
namespace pelloran::testing {

// A row of strokes like those of letters: light uprights with feet, each within a dark outline, on `background`.
// `shift` moves the letter at a distance from the row's middle down, in pixels.
inline void paintLetters(QImage& image, const QRect& area, QColor letters = Qt::white,
                         double (*shift)(double) = nullptr) {
    const int step = 18;
    const auto fill = [&image](QRect rectangle, QColor color) {
        rectangle = rectangle.intersected(image.rect());
        for (int y = rectangle.top(); y <= rectangle.bottom(); ++y) {
            for (int x = rectangle.left(); x <= rectangle.right(); ++x) {
                image.setPixelColor(x, y, color);
            }
        }
    };
    for (const bool outline : {true, false}) {
        for (int x = area.left(); x + 12 <= area.right(); x += step) {
            const int down = shift ? int(shift(x + 6 - area.center().x())) : 0;
            const int grow = outline ? 3 : 0;
            const QColor color = outline ? QColor(Qt::black) : letters;
            fill(QRect(x + 4, area.top() + down, 4, area.height()).adjusted(-grow, -grow, grow, grow), color);
            fill(QRect(x, area.bottom() - 3 + down, 12, 4).adjusted(-grow, -grow, grow, grow), color);
        }
    }
}

// A word of letters that can be made of bars (E, F, H, I, L, T, 日, 王, 田), in black outlines, `height` pixels tall
// and centred on `middle`.
inline void paintWord(QImage& image, QPoint middle, const QString& word, int height, QColor letters = Qt::white) {
    const bool isLatin = word.front().unicode() < 0x80;
    const int stroke = height / (isLatin ? 6 : 9);
    const int width = isLatin ? height * 5 / 8 : height * 9 / 10;
    const int advance = width + stroke * 3 / 2;
    const auto barsOf = [&](QChar letter) -> std::vector<QRect> {
        const QRect left(0, 0, stroke, height);
        const QRect right(width - stroke, 0, stroke, height);
        const QRect centre((width - stroke) / 2, 0, stroke, height);
        const QRect top(0, 0, width, stroke);
        const QRect waist(0, (height - stroke) / 2, width, stroke);
        const QRect bottom(0, height - stroke, width, stroke);
        switch (letter.unicode()) {
        case 'E':
            return {left, top, waist, bottom};
        case 'F':
            return {left, top, waist};
        case 'H':
            return {left, right, waist};
        case 'I':
            return {centre};
        case 'L':
            return {left, bottom};
        case 'T':
            return {centre, top};
        case u'日':
            return {left, right, top, waist, bottom};
        case u'王':
            return {centre, top, waist, bottom};
        case u'田':
            return {left, right, centre, top, waist, bottom};
        default:
            return {};
        }
    };
    const QPoint origin = middle - QPoint(int(word.size()) * advance / 2, height / 2);
    for (const bool outline : {true, false}) {
        for (int i = 0; i < word.size(); ++i) {
            for (const QRect& bar : barsOf(word[i])) {
                const int grow = outline ? std::max(1, stroke * 2 / 3) : 0;
                const QRect part = bar.translated(origin + QPoint(i * advance, 0))
                                       .adjusted(-grow, -grow, grow, grow)
                                       .intersected(image.rect());
                for (int y = part.top(); y <= part.bottom(); ++y) {
                    for (int x = part.left(); x <= part.right(); ++x) {
                        image.setPixelColor(x, y, outline ? QColor(Qt::black) : letters);
                    }
                }
            }
        }
    }
}

inline QImage wood(int width, int height) {
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(QColor(110, 80, 50));
    return image;
}

inline Plane planeOf(const QImage& image) {
    return lightness(image, image.rect(), Lettering::white);
}

} // namespace pelloran::testing
