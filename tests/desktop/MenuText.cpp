#include "tests/desktop/MenuText.h"

#include "platform/LineReader.h"
#include "reading/chinese/CharacterFeature.h"
#include "reading/chinese/CharacterModel.h"
#include "reading/chinese/CharacterShape.h"
#include "tests/desktop/Picture.h"

#include <QFile>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <limits>
#include <numeric>
#include <optional>
#include <utility>
#include <vector>

namespace pelloran::testing {

namespace {

constexpr int marks = 22;   // pixels at the left of a menu, where check marks stand
constexpr int wideGap = 18; // pixels between the words of an entry and its key

// The words alone: from the first ink after the marks to the first wide gap.
QRect wordsOf(const QImage& picture, const QRect& line) {
    QRect words;
    const int begin = line.width() > 4 * marks ? line.left() + marks : line.left();
    for (int x = begin; x <= line.right(); ++x) {
        const QRect ink = inkOf(picture.copy(x, line.top(), 1, line.height()), backgroundOf(picture));
        if (!ink.isNull()) {
            if (!words.isNull() && x - words.right() > wideGap) {
                break;
            }
            words |= QRect(x, line.top() + ink.top(), 1, ink.height());
        }
    }
    return words;
}

// Of the middle brightness: on a shaded button no single colour is the most common one, except that of its letters.
int medianGray(const QImage& picture) {
    std::vector<int> grays;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            grays.push_back(qGray(picture.pixel(x, y)));
        }
    }
    const auto middle = grays.begin() + std::ssize(grays) / 2;
    std::ranges::nth_element(grays, middle);
    return grays.empty() ? 0 : *middle;
}

// The letters alone, and not the shading of a button around them.
QRect strongInkOf(const QImage& picture, int background) {
    const auto strength = [&](int x, int y) { return std::abs(qGray(picture.pixel(x, y)) - background); };
    int strongest = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            strongest = std::max(strongest, strength(x, y));
        }
    }
    QRect ink;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (strength(x, y) > strongest / 3) {
                ink |= QRect(x, y, 1, 1);
            }
        }
    }
    return ink;
}

// How much each pixel differs from `background`, a gray: 0 not at all, 255 as much as any. Scaled to `height`.
QImage inkOn(const QImage& picture, int background, int height) {
    QImage ink = picture.convertToFormat(QImage::Format_Grayscale8).scaledToHeight(height, Qt::SmoothTransformation);
    const auto strength = [background](std::uint8_t gray) { return std::abs(gray - background); };
    int strongest = 1;
    for (int y = 0; y < ink.height(); ++y) {
        const std::uint8_t* row = ink.constScanLine(y);
        for (int x = 0; x < ink.width(); ++x) {
            strongest = std::max(strongest, strength(row[x]));
        }
    }
    for (int y = 0; y < ink.height(); ++y) {
        std::uint8_t* row = ink.scanLine(y);
        for (int x = 0; x < ink.width(); ++x) {
            row[x] = static_cast<std::uint8_t>(strength(row[x]) * 255 / strongest);
        }
    }
    return ink;
}

QString readEnglish(const QImage& picture, int background) {
    // Loading its networks takes longer than what it reads here.
    static const auto reader = LineReader::create();
    if (!reader) {
        ADD_FAILURE() << reader.error().toStdString();
        return {};
    }
    // As its network was trained: pixels of the whole picture, and of the letters in it.
    constexpr int height = 36;
    constexpr int letterHeight = 27;
    constexpr int margin = (height - letterHeight) / 2;
    // Black on white, whatever the desktop's colours.
    const QImage ink = inkOn(picture, background, letterHeight);
    QImage line(ink.width() + 2 * margin, height, QImage::Format_Grayscale8);
    line.fill(Qt::white);
    for (int y = 0; y < ink.height(); ++y) {
        for (int x = 0; x < ink.width(); ++x) {
            line.scanLine(y + margin)[x + margin] = static_cast<std::uint8_t>(255 - ink.constScanLine(y)[x]);
        }
    }
    return (*reader)->read({line}).front().text;
}

// Tells characters one by one, all that the program's model knows.
class CharacterTeller {
public:
    struct Told {
        QString character;
        float cost; // 0 to 1, as of the model
    };

    CharacterTeller() {
        QFile file(QStringLiteral(PELLORAN_RESOURCES "/characters/chinese.model"));
        if (file.open(QIODevice::ReadOnly)) {
            if (auto parsed = CharacterModel::parse(file.readAll())) {
                model = *std::move(parsed);
                std::vector<std::size_t> all(model->characters().size());
                std::iota(all.begin(), all.end(), std::size_t(0));
                costs.emplace(*model, all);
            }
        }
        EXPECT_TRUE(model) << "the model of Chinese characters cannot be read";
    }

    // None where no character is.
    std::optional<Told> tell(const Plane& ink, const QRect& cell) {
        const auto shape = model ? shapeOf(ink, cell) : std::nullopt;
        if (!shape) {
            return std::nullopt;
        }
        found.resize(costs->size());
        costs->costs(model->project(featureOf(*shape)), found);
        const auto least = std::ranges::min_element(found);
        const char32_t character = model->characters()[std::size_t(least - found.begin())];
        return Told{QString::fromUcs4(&character, 1), *least};
    }

private:
    std::optional<CharacterModel> model;
    std::optional<CharacterCosts> costs;
    std::vector<float> found;
};

// Characters are as wide as each other and told one by one, where the line as a whole comes out most like some. What is
// between them are Latin letters.
QString readChinese(const QImage& picture, int background) {
    static CharacterTeller teller;
    constexpr int height = 32; // of a character
    constexpr int inkLevel = 96;
    constexpr int narrowest = 20;         // its ink
    constexpr int widest = 33;            // likewise
    constexpr float costOfOthers = 0.45F; // of as much ink as a character is wide, that is none
    constexpr float costOfChange = 0.15F; // from characters to others
    constexpr double lowest = 0.3;        // of Latin letters, in heights of a character
    constexpr double smallest = 0.55;     // of a character's height: marks are smaller, a single stroke is as wide
    const QImage image = inkOn(picture, background, height);
    Plane ink(image.width(), image.height());
    std::vector<bool> hasInk(std::size_t(ink.width));
    for (int y = 0; y < ink.height; ++y) {
        for (int x = 0; x < ink.width; ++x) {
            ink.row(y)[x] = image.constScanLine(y)[x];
            hasInk[std::size_t(x)] = hasInk[std::size_t(x)] || ink.at(x, y) > inkLevel;
        }
    }
    const auto isLarge = [&](int left, int right) {
        QRect letters;
        for (int y = 0; y < ink.height; ++y) {
            for (int x = left; x < right; ++x) {
                letters |= ink.at(x, y) > inkLevel ? QRect(x, y, 1, 1) : QRect();
            }
        }
        return std::max(letters.width(), letters.height()) > smallest * height;
    };

    // The cheapest way to the columns before one, with a character or a gap at last, or with others.
    struct Step {
        float cost = std::numeric_limits<float>::max();
        int from = 0;
        bool fromOthers = false;
        QString character;
    };

    using Steps = std::array<Step, 2>; // the second: with others
    std::vector<Steps> ways(std::size_t(ink.width) + 1);
    ways[0][0].cost = 0;
    for (int x = 0; x < ink.width; ++x) {
        const Steps& here = ways[std::size_t(x)];
        const bool fromOthers = here[1].cost < here[0].cost;
        const auto reach = [&](int to, bool others, bool from, float by, const QString& character = {}) {
            const float cost = here[std::size_t(from)].cost + by;
            Step& step = ways[std::size_t(to)][std::size_t(others)];
            if (cost < step.cost) {
                step = {cost, x, from, character};
            }
        };
        if (!hasInk[std::size_t(x)]) {
            reach(x + 1, false, false, 0);
            reach(x + 1, true, true, 0);
            continue;
        }
        reach(x + 1, true, true, costOfOthers / height);
        reach(x + 1, true, false, costOfOthers / height + costOfChange);
        for (int to = x + narrowest; to <= std::min(x + widest, ink.width); ++to) {
            if (hasInk[std::size_t(to) - 1] && isLarge(x, to)) {
                if (const auto told = teller.tell(ink, QRect(x, 0, to - x, ink.height))) {
                    reach(to, false, fromOthers, told->cost, told->character);
                }
            }
        }
    }
    QString text;
    const auto addOthers = [&](int left, int right) {
        QRect area;
        for (int y = 0; y < ink.height; ++y) {
            for (int x = left; x < right; ++x) {
                area |= ink.at(x, y) > inkLevel ? QRect(x, y, 1, 1) : QRect();
            }
        }
        // A row of points is no word.
        if (area.height() > lowest * height || area.height() > area.width()) {
            const double scale = double(picture.width()) / ink.width;
            const QImage others = picture.copy(QRectF(area.left() * scale, 0, area.width() * scale, picture.height())
                                                   .toAlignedRect()
                                                   .intersected(picture.rect()));
            text.prepend(readEnglish(others.copy(strongInkOf(others, background)), background));
        }
    };
    int end = ink.width;
    bool others = ways.back()[1].cost < ways.back()[0].cost;
    for (int x = ink.width; x > 0;) {
        const Step& step = ways[std::size_t(x)][std::size_t(others)];
        if (!step.character.isEmpty()) {
            addOthers(x, end);
            text.prepend(step.character);
            end = step.from;
        }
        x = step.from;
        others = step.fromOthers;
    }
    addOthers(0, end);
    return text;
}

// `background` is the gray that the letters differ from.
QString read(const QImage& picture, const QRect& words, int background, Letters letters) {
    if (words.isNull()) {
        return {};
    }
    return letters == Letters::english ? readEnglish(picture.copy(words), background)
                                       : readChinese(picture.copy(words), background);
}

} // namespace

QString wordsIn(const QImage& picture, const QRect& line, Letters letters) {
    return read(picture, wordsOf(picture, line), qGray(backgroundOf(picture)), letters);
}

QString lettersIn(const QImage& picture, const QRect& area, Letters letters) {
    const QImage part = picture.copy(area);
    const int background = medianGray(part);
    return read(part, strongInkOf(part, background), background, letters);
}

double likeness(const QString& read, const QString& expected) {
    // Longest common subsequence: `best` at the first so many characters of `expected`.
    std::vector<int> best(static_cast<std::size_t>(expected.size()) + 1);
    for (const QChar character : read) {
        int diagonal = 0;
        for (std::size_t i = 1; i < best.size(); ++i) {
            const int above = best[i];
            best[i] =
                expected[static_cast<qsizetype>(i) - 1] == character ? diagonal + 1 : std::max(above, best[i - 1]);
            diagonal = above;
        }
    }
    return static_cast<double>(best.back()) / static_cast<double>(expected.size());
}

} // namespace pelloran::testing
