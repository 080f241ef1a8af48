#include "desktop/MenuText.h"

#include "desktop/Picture.h"
#include "platform/LineReader.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// `background` is the gray that the letters differ from.
QString read(const QImage& picture, const QRect& words, int background, Letters letters) {
    if (words.isNull()) {
        return {};
    }
    // Loading its networks takes longer than what it reads here.
    static const auto reader = LineReader::create();
    if (!reader) {
        ADD_FAILURE() << reader.error().toStdString();
        return {};
    }
    const Script script = letters == Letters::english ? Script::latin : Script::chinese;
    // As its network was trained: pixels of the whole picture, and of the letters in it.
    const int height = letters == Letters::english ? 36 : 48;
    const int letterHeight = letters == Letters::english ? 27 : 33;
    const int margin = (height - letterHeight) / 2;
    const QImage scaled = picture.copy(words)
                              .convertToFormat(QImage::Format_Grayscale8)
                              .scaledToHeight(letterHeight, Qt::SmoothTransformation);
    // Black on white, whatever the desktop's colours.
    int strongest = 1;
    for (int y = 0; y < scaled.height(); ++y) {
        for (int x = 0; x < scaled.width(); ++x) {
            strongest = std::max(strongest, std::abs(qGray(scaled.pixel(x, y)) - background));
        }
    }
    QImage line(scaled.width() + 2 * margin, height, QImage::Format_Grayscale8);
    line.fill(Qt::white);
    for (int y = 0; y < scaled.height(); ++y) {
        for (int x = 0; x < scaled.width(); ++x) {
            const int ink = std::abs(qGray(scaled.pixel(x, y)) - background) * 255 / strongest;
            line.scanLine(y + margin)[x + margin] = static_cast<std::uint8_t>(255 - ink);
        }
    }
    return (*reader)->read({{line, script}}).front().text;
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
