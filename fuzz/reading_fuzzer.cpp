// Any picture, any known names, and any reading of its Latin lines; Chinese ones are read with the model that ships.
// The reader has to come to an end, and what it offers has to be names, within the picture.

#include "fuzz/AnyNames.h"
#include "reading/LineByLineReader.h"
#include "reading/NamePlaces.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>

namespace {

using namespace pelloran;
using fuzzing::Bytes;

constexpr std::size_t mostReadings = 72; // 24 at the places in either script, 24 everywhere

// Reads Latin lines as it is told.
class ToldLineReader final : public LineReader {
public:
    explicit ToldLineReader(std::function<LineReading(const QImage&)> tell)
        : answer(std::move(tell)) {}

    std::vector<LineReading> read(const std::vector<QImage>& pictures) override {
        std::vector<LineReading> readings;
        std::ranges::transform(pictures, std::back_inserter(readings), answer);
        return readings;
    }

private:
    const std::function<LineReading(const QImage&)> answer;
};

// Most pictures are too small for the search that looks everywhere; that takes ten times as long.
QSize sizeFrom(Bytes& bytes, bool isOther) {
    if (!isOther) {
        return {std::min(256, 24 + bytes.take()), std::min(256, 24 + bytes.take())};
    }
    const int kind = bytes.take();
    const QSize small(bytes.take() % 24, bytes.take() % 24);
    switch (kind % 4) {
    case 0:
        return small;
    case 1:
        return {small.width() + 1, 40 * small.height() + 1};
    case 2:
        return {40 * small.width() + 1, small.height() + 1};
    default:
        return {720 + 8 * small.width(), 540 + 6 * small.height()};
    }
}

// Rectangles in any colours on any ground: letters where names stand if the bytes say so, else anywhere.
QImage paintedFrom(Bytes& bytes, const QSize& size) {
    const int width = size.width();
    const int height = size.height();
    constexpr QImage::Format formats[] = {QImage::Format_RGB32, QImage::Format_RGB888, QImage::Format_Grayscale8,
                                          QImage::Format_RGBA64};
    const QRgb grounds[] = {qRgb(96, 68, 42), qRgb(60, 5, 3), qRgb(200, 175, 135), qRgb(0, 0, 0), qRgb(255, 255, 255)};
    const QImage::Format format = formats[bytes.take() % 4];
    QImage image(width, height, QImage::Format_RGB32);
    image.fill(grounds[bytes.take() % 5]);
    const GameFrame frame = frameOf(image.size());
    const auto fill = [&image](QRect area, QRgb color) {
        area = area.intersected(image.rect());
        for (int y = area.top(); y <= area.bottom(); ++y) {
            auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
            std::fill_n(row + area.left(), area.width(), color);
        }
    };
    for (int shapes = bytes.take(); shapes > 0; --shapes) {
        const int place = bytes.take();
        const int x = bytes.take();
        const int y = bytes.take();
        const QSize extent(1 + bytes.take() % 16, 1 + bytes.take() % 16);
        const int shade = bytes.take();
        QPoint corner(x * width / 256, y * height / 256);
        if (place >= 248) { // a page of lines: more of them than are read
            const int letter = 4 + size.height();
            for (int top = 0; top < height; top += letter + 4 + y / 4) {
                for (int left = 0; left < width; left += 6 * letter + 24 + x) {
                    fill(QRect(left, top, 6 * letter + 4, letter + 4), qRgb(0, 0, 0));
                    for (int i = 0; i < 6; ++i) {
                        fill(QRect(left + 2 + i * letter, top + 2, letter / 2, letter), qRgb(shade, shade, shade));
                        fill(QRect(left + 2 + i * letter, top + 2 + letter * (i % 3) / 3, letter * 3 / 4, letter / 4),
                             qRgb(shade, shade, shade));
                    }
                }
            }
            continue;
        }
        if (place < 192) {
            const auto slot = std::size_t(place % 3);
            const bool isHero = place >= 96;
            const double centre = isHero ? heroCentres[std::size_t(place / 3 % 2)][slot] : cardCentres[slot];
            const double base =
                isHero ? 0.53 : nameCurves[std::size_t(place / 3 % 4)].bases[std::size_t(place / 12 % 2)];
            corner =
                QPoint(int(frame.pixelX(centre + (x - 128) / 1280.0)), int(frame.pixelY(base + (y - 192) / 9600.0)));
        }
        if (shade & 1) { // an outline
            fill(QRect(corner, extent).adjusted(-1, -1, 1, 1), qRgb(0, 0, 0));
        }
        fill(QRect(corner, extent), qRgb(shade, shade, shade < 240 ? shade / 2 : shade));
    }
    return image.convertToFormat(format);
}

LineReading readingFrom(Bytes& bytes, const QStringList& names) {
    const int what = bytes.take();
    QString text = what % 8 < names.size() ? names[what % 8] : QString();
    for (int changes = what / 8 % 8; changes > 0; --changes) {
        const int place = bytes.take();
        const auto character = QChar(char16_t(bytes.take() << (place & 128 ? 7 : 0)));
        if (text.isEmpty() || place % 3 == 0) {
            text.append(character);
        } else {
            text[place % text.size()] = character;
        }
    }
    const int quarters = 1 + what / 64; // of certainty
    return {text.trimmed(), float(quarters) / 4};
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using fuzzing::require;
    Bytes bytes(data, size);
    const int how = bytes.take();
    const QStringList names = fuzzing::namesFrom(bytes);
    const QImage image = paintedFrom(bytes, sizeFrom(bytes, how & 128));
    std::size_t readings = 0;
    auto lines = std::make_unique<ToldLineReader>([&](const QImage& picture) {
        require(!picture.isNull() && picture.format() == QImage::Format_Grayscale8);
        ++readings;
        return readingFrom(bytes, names);
    });
    LineByLineReader reader(std::move(lines),
                            how & 64 ? nullptr : std::make_unique<ChineseLineReader>(*fuzzing::model()));
    ReadingHints hints;
    hints.offers = how & 1 ? ReadingHints::Offers::heroes : ReadingHints::Offers::cards;
    hints.names = how & 2 ? nullptr : fuzzing::lexiconOf(names);
    if (how & 4) {
        hints.script = how & 8 ? Script::latin : Script::chinese;
    }
    if (how & 16) {
        hints.band = QRectF(0.08, 0.28, 0.64, 0.5);
    }
    const int looks = how & 32 ? 2 : 1; // the second with what the first one taught it
    for (int look = 0; look < looks; ++look) {
        readings = 0;
        const ReadText text = reader.read(image, hints);
        require(readings <= mostReadings);
        require(!text.columns || std::ranges::is_sorted(*text.columns));
        for (const OCRToken& token : text.tokens) {
            require(!token.text.isEmpty());
            require(!hints.names || names.contains(token.text));
            require(token.width > 0 && token.width <= 1 && token.height > 0 && token.height <= 1);
            require(token.midX > 0 && token.midX < 1 && token.midY > 0 && token.midY < 1);
        }
    }
    return 0;
}
