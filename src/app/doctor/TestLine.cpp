#include "app/doctor/TestLine.h"

#include "platform/TextReader.h"

#include <QStringList>

#include <array>
#include <string_view>

namespace pelloran::doctor {

namespace {

// Painting text takes a desktop's fonts; these letters are at hand everywhere. They are as high as those of names on
// the game's window of this size.
constexpr std::array<std::string_view, 17> letters{
    "...............###..............................####...........................###....####",
    "###########....####.............................####...........................###....####",
    "###########....####.............................####...........................###....####",
    "###########.....................................####...........................###....####",
    "####............................................####...........................###....####",
    "####...........####...####..###....#######......####.######.....#########......###....####",
    "####...........####...#########...#########.....############....##########.....###....####",
    "###########....####...#########..#####..####....############....##....#####....###....####",
    "###########....####...#####......####....####...#####...#####..........####....###....####",
    "###########....####...#####.....####.....####...####.....####......########....###....####",
    "####...........####...####......#############...####.....####...###########....###....####",
    "####...........####...####......#############...####.....####..############....###....####",
    "####...........####...####......####............####.....####..####....####....###....####",
    "####...........####...####.......####...........#####...#####..####....####....###....####",
    "####...........####...####.......#####...####...############...#####..#####....###....####",
    "####...........####...####........###########...############....###########....###....####",
    "####...........####...####.........#########....####.######.....######.####....###....####",
};

constexpr QSize window{1280, 720};
constexpr int outline = 2; // pixels

constexpr QRgb ground = qRgb(196, 160, 112);

bool isInk(int x, int y) {
    return y >= 0 && y < int(letters.size()) && x >= 0 && x < int(letters[0].size()) &&
           letters[std::size_t(y)][std::size_t(x)] == '#';
}

bool isNearInk(int x, int y) {
    for (int dy = -outline; dy <= outline; ++dy) {
        for (int dx = -outline; dx <= outline; ++dx) {
            if (isInk(x + dx, y + dy)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

QString testLineText() {
    return QStringLiteral("Fireball");
}

QImage testLinePicture() {
    QImage picture(window, QImage::Format_RGB32);
    picture.fill(ground);
    const QSize size(int(letters[0].size()), int(letters.size()));
    // The middle of the places where names stand.
    const QPoint origin(window.width() * 2 / 5 - size.width() / 2, window.height() / 2 - size.height() / 2);
    for (int y = -outline; y < size.height() + outline; ++y) {
        for (int x = -outline; x < size.width() + outline; ++x) {
            if (isNearInk(x, y)) {
                picture.setPixel(origin + QPoint(x, y), isInk(x, y) ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
            }
        }
    }
    return picture;
}

QString readTestLine(TextReader& reader) {
    ReadingHints hints;
    hints.script = Script::latin;
    const ReadText text = reader.read(testLinePicture(), hints);
    QStringList lines;
    for (const OCRToken& token : text.tokens) {
        // A reader may look at a line in more than one way.
        if (!lines.contains(token.text)) {
            lines.append(token.text);
        }
    }
    return lines.contains(testLineText()) ? testLineText() : lines.join(QStringLiteral(" / "));
}

} // namespace pelloran::doctor
