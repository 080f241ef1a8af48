#include "app/doctor/TestLine.h"

#include "platform/TextReader.h"

#include <QStringList>

#include <array>
#include <span>
#include <string_view>

namespace pelloran::doctor {

namespace {

// Painting text takes a desktop's fonts; these letters are at hand everywhere. They are as high as those of names on
// the game's window of the size that goes with them.
constexpr std::array<std::string_view, 17> latinLetters{
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

constexpr std::array<std::string_view, 22> chineseLetters{
    "...................................###................##..........",
    ".........###.......................###.###............###.###.....",
    ".........###...........#######.....###..###...........###.####....",
    ".........###...........#######.....###...#............###..####...",
    ".........###...........#####..#############...........###...##....",
    "....##...###.....##......###..#############...........###.........",
    "...###...###.....###.....###.......###.......####################.",
    "...###...###....####.....###.......###.......####################.",
    "...###...###....###......###..###..###..###...##################..",
    "..####...####..####....#######.###.###..###.........######........",
    "..###....####..###.....#######.###.#######..........#######.......",
    "..###....####..##........###....##.######..........#########......",
    "........######...........###.......#####..........###########.....",
    "........######...........###.......#####.........####.###.####....",
    ".......###..###..........###.#...#######........####..###..####...",
    "......####..####.........################......####...###...####..",
    ".....####....####......###########.###.###...#####....###...#####.",
    "....####......####.....#####.####..###..###..####.....###....####.",
    "..#####........######..##....##....###...##...##......###.....##..",
    ".#####..........#####...........######................###.........",
    "..##..............##.............####.................###.........",
    "..................................#...................##..........",
};

constexpr int outline = 2; // pixels

constexpr QRgb ground = qRgb(196, 160, 112);

// What stands on the picture.
struct Sign {
    const char* text; // in UTF-8
    std::span<const std::string_view> letters;
    QSize window;
    std::array<double, 3> middles; // from the left, in heights of the window; 0 for none
    double middle;                 // from the top, likewise
};

Sign signIn(Script script) {
    switch (script) {
    case Script::latin:
        return {"Fireball", latinLetters, {1280, 720}, {0.711, 0, 0}, 0.5};
    case Script::chinese:
        // Chinese is read where names of cards are offered, and only as one of the names that there are.
        return {"火球术", chineseLetters, {1920, 1080}, {0.47, 0.73, 0.99}, 0.37};
    }
    Q_UNREACHABLE();
}

// Some names in the data's place, so that what is read can be mistaken.
std::shared_ptr<const Lexicon> chineseNames() {
    std::vector<KnownName> names;
    for (const char* name : {"火球术", "寒冰箭", "奥术智慧", "变形术", "烈焰风暴", "火焰冲击"}) {
        names.push_back({QString::fromUtf8(name), {}});
    }
    return std::make_shared<const Lexicon>(std::move(names), Lexicon::forCards);
}

bool isInk(const Sign& sign, int x, int y) {
    return y >= 0 && y < int(sign.letters.size()) && x >= 0 && x < int(sign.letters[0].size()) &&
           sign.letters[std::size_t(y)][std::size_t(x)] == '#';
}

bool isNearInk(const Sign& sign, int x, int y) {
    for (int dy = -outline; dy <= outline; ++dy) {
        for (int dx = -outline; dx <= outline; ++dx) {
            if (isInk(sign, x + dx, y + dy)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

QString testLineText(Script script) {
    return QString::fromUtf8(signIn(script).text);
}

QImage testLinePicture(Script script) {
    const Sign sign = signIn(script);
    QImage picture(sign.window, QImage::Format_RGB32);
    picture.fill(ground);
    const QSize size(int(sign.letters[0].size()), int(sign.letters.size()));
    for (const double middle : sign.middles) {
        if (middle == 0) {
            continue;
        }
        const QPoint origin =
            (QPointF(middle, sign.middle) * sign.window.height() - QPointF(size.width(), size.height()) / 2).toPoint();
        for (int y = -outline; y < size.height() + outline; ++y) {
            for (int x = -outline; x < size.width() + outline; ++x) {
                if (isNearInk(sign, x, y)) {
                    picture.setPixel(origin + QPoint(x, y), isInk(sign, x, y) ? qRgb(255, 255, 255) : qRgb(0, 0, 0));
                }
            }
        }
    }
    return picture;
}

QString readTestLine(TextReader& reader, Script script) {
    ReadingHints hints;
    hints.script = script;
    if (script == Script::chinese) {
        hints.names = chineseNames();
    }
    const ReadText text = reader.read(testLinePicture(script), hints);
    QStringList lines;
    for (const OCRToken& token : text.tokens) {
        // A reader may look at a line in more than one way.
        if (!lines.contains(token.text)) {
            lines.append(token.text);
        }
    }
    return lines.contains(testLineText(script)) ? testLineText(script) : lines.join(QStringLiteral(" / "));
}

} // namespace pelloran::doctor
