#include "recording/Bands.h"

#include "reading/NamePlaces.h"

#include <QPainter>

#include <algorithm>

namespace pelloran::recording {

namespace {

// In heights of the game's picture, from its top and from its middle.
struct Part {
    double left, right, top, bottom;
};

// All that is sampled of the ribbons with names at their usual places: with the bends of every kind of ribbon, and with
// what stands beside a name.
constexpr Part cardNames{.left = -0.560, .right = 0.240, .top = 0.328, .bottom = 0.452};
// Where names are looked for at all that do not stand at their places.
constexpr Part aroundCardNames{.left = -0.600, .right = 0.260, .top = 0.300, .bottom = 0.480};
// Below the heroes of both screens.
constexpr Part heroNames{.left = -0.550, .right = 0.470, .top = 0.480, .bottom = 0.570};

QRect inWindow(const Part& part, const QSize& window) {
    const GameFrame frame = frameOf(window);
    return QRectF(QPointF(frame.pixelX(part.left), frame.pixelY(part.top)),
                  QPointF(frame.pixelX(part.right), frame.pixelY(part.bottom)))
        .toAlignedRect()
        .intersected(QRect(QPoint(), window));
}

bool holdsAll(const QRect& part, const QSize& window, const ReadText& text) {
    return std::ranges::all_of(text.tokens, [&](const OCRToken& token) {
        const QRectF box((token.midX - token.width / 2) * window.width(),
                         (token.midY - token.height / 2) * window.height(), token.width * window.width(),
                         token.height * window.height());
        return QRectF(part).contains(box);
    });
}

} // namespace

Kept partsToKeep(const QSize& window, ReadingHints::Offers offers, const ReadText& text) {
    const bool cards = offers == ReadingHints::Offers::cards;
    const QRect usual = inWindow(cards ? cardNames : heroNames, window);
    if (usual.isEmpty()) {
        return {};
    }
    if (holdsAll(usual, window, text)) {
        return {{usual}, true};
    }
    if (const QRect wide = inWindow(aroundCardNames, window); cards && holdsAll(wide, window, text)) {
        return {{wide}, true};
    }
    return {{usual}, false};
}

QImage stacked(const std::vector<QImage>& pieces) {
    QSize size(0, 0);
    for (const QImage& piece : pieces) {
        size = {std::max(size.width(), piece.width()), size.height() + piece.height()};
    }
    QImage picture(size, QImage::Format_RGB32);
    if (picture.isNull()) {
        return picture;
    }
    picture.fill(Qt::black);
    QPainter painter(&picture);
    int top = 0;
    for (const QImage& piece : pieces) {
        painter.drawImage(0, top, piece);
        top += piece.height();
    }
    return picture;
}

QImage unstacked(const QImage& picture, const std::vector<QRect>& bands, const QSize& window) {
    QImage whole(window, QImage::Format_RGB32);
    if (whole.isNull()) {
        return whole;
    }
    whole.fill(Qt::black);
    QPainter painter(&whole);
    int top = 0;
    for (const QRect& band : bands) {
        painter.drawImage(band.topLeft(), picture, QRect(0, top, band.width(), band.height()));
        top += band.height();
    }
    return whole;
}

} // namespace pelloran::recording
