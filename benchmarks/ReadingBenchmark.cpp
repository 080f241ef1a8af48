#include "benchmarks/ReadingBenchmark.h"

#include "reading/NamePlaces.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPainter>

#include <utility>
#include <vector>

namespace pelloran::benchmarks {

QString sharedFile(const char* file, const char* name) {
    return QStringLiteral(PELLORAN_TEST_DATA "/") +
           QString::fromUtf8(file).replace(QStringLiteral("%1"), QString::fromUtf8(name));
}

std::shared_ptr<const Lexicon> cardNames() {
    static const auto names = [] {
        std::vector<KnownName> list;
        QFile cards(sharedFile("cards.json"));
        if (cards.open(QIODevice::ReadOnly)) {
            for (const auto& card : QJsonDocument::fromJson(cards.readAll()).array()) {
                list.push_back({card[QStringLiteral("name_en")].toString(), {}});
                list.push_back({card[QStringLiteral("name_zh")].toString(), {}});
            }
        }
        // They are of another mode of the game.
        for (const ChineseFace& face : chineseFaces) {
            list.push_back({QString::fromUtf8(face.name), {}});
        }
        return std::make_shared<const Lexicon>(std::move(list), Lexicon::forCards);
    }();
    return names;
}

QImage screen(benchmark::State& state, const char* name) {
    QImage image(sharedFile("screens/%1.png", name));
    if (image.isNull()) {
        state.SkipWithError("needs the shared screens, which are not beside this checkout");
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QImage realScreen(benchmark::State& state, const char* name, int height) {
    const QImage image(sharedFile("real/screens/%1.png", name));
    if (image.isNull()) {
        state.SkipWithError("needs the shared real screens, which are not beside this checkout");
        return {};
    }
    const QImage scaled = height == image.height() ? image : image.scaledToHeight(height, Qt::SmoothTransformation);
    return scaled.convertToFormat(QImage::Format_RGB32);
}

QRect partWithNames(const QSize& window) {
    const GameFrame frame = frameOf(window);
    return QRectF(QPointF(frame.pixelX(-0.60), frame.pixelY(0.30)), QPointF(frame.pixelX(0.26), frame.pixelY(0.48)))
        .toAlignedRect()
        .intersected(QRect(QPoint(), window));
}

bool setFace(QImage& screen, std::size_t slot, const ChineseFace& face) {
    const QImage image(sharedFile("real/faces/%1.png", face.file));
    // Measured on the faces: the middle of their names' baselines, and how tall a window with such cards is.
    constexpr QPointF middle(122, 198);
    constexpr double windowHeight = 810;
    constexpr double base = 0.3913; // of a minion's name
    const GameFrame frame = frameOf(screen.size());
    const double scale = frame.height / windowHeight;
    QPainter painter(&screen);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.translate(frame.pixelX(cardCentres[slot]), frame.pixelY(base));
    painter.scale(scale, scale);
    painter.drawImage(-middle, image);
    return !image.isNull();
}

QImage chineseScreen(benchmark::State& state, int height) {
    QImage image = realScreen(state, "card-16x9-a", height);
    for (std::size_t slot = 0; slot < chineseFaces.size() && !image.isNull(); ++slot) {
        if (!setFace(image, slot, chineseFaces[slot])) {
            state.SkipWithError("needs the shared card faces, which are not beside this checkout");
            image = {};
        }
    }
    return image;
}

} // namespace pelloran::benchmarks
