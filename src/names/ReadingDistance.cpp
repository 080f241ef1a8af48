#include "names/ReadingDistance.h"

#include <QChar>
#include <QVarLengthArray>

#include <algorithm>
#include <array>
#include <cstdint>

namespace pelloran::ReadingDistance {

namespace {

// Measured on real screens: pairs that the recogniser often confuses in the game's lettering, either way.
constexpr std::u16string_view confusedPairs = u"il tf tl it ec oc oe hb hn nu mn rt gq gy vy uv bd as ae kh kr k1 i1 "
                                              u"l1 o0 s5 b8 g9 z2 fr ij lj jt pf da oa pn sg "
                                              u"es wv uo xz xk ce mw wm rf be eo ";

constexpr std::size_t tableSize = 128; // what is confused is ASCII

constexpr auto costs = [] {
    std::array<std::array<std::uint8_t, tableSize>, tableSize> table{};
    for (auto& row : table) {
        row.fill(ofOther);
    }
    for (std::size_t i = 0; i < tableSize; ++i) {
        table[i][i] = none;
    }
    for (std::size_t i = 0; i + 1 < confusedPairs.size(); i += 3) {
        table[confusedPairs[i]][confusedPairs[i + 1]] = ofConfused;
        table[confusedPairs[i + 1]][confusedPairs[i]] = ofConfused;
    }
    return table;
}();

// Beyond any limit, and far from overflow when costs are added.
constexpr Halves unreachable = 1 << 20;

} // namespace

QString folded(const QString& text) {
    QString result;
    const auto isSimple = [](QChar character) {
        return character.unicode() < 0x80 || (character.unicode() >= 0x4E00 && character.unicode() <= 0x9FFF);
    };
    if (std::ranges::all_of(text, isSimple)) { // nearly all, and no need of Unicode's tables
        result.reserve(text.size());
        for (const QChar character : text) {
            const char16_t unit = character.unicode();
            if (unit >= u'A' && unit <= u'Z') {
                result += QChar(static_cast<char16_t>(unit + 0x20));
            } else if ((unit >= u'a' && unit <= u'z') || (unit >= u'0' && unit <= u'9') || unit >= 0x80) {
                result += character;
            }
        }
        return result;
    }
    const QString decomposed = text.toLower().normalized(QString::NormalizationForm_D);
    result.reserve(decomposed.size());
    for (qsizetype i = 0; i < decomposed.size(); ++i) {
        const QChar character = decomposed[i];
        if (character.isHighSurrogate() && i + 1 < decomposed.size() && decomposed[i + 1].isLowSurrogate()) {
            const char32_t codePoint = QChar::surrogateToUcs4(character, decomposed[i + 1]);
            if (QChar::isLetter(codePoint) || QChar::isDigit(codePoint)) {
                result += character;
                result += decomposed[i + 1];
            }
            ++i;
        } else if (character.isLetter() || character.isDigit()) {
            result += character;
        }
    }
    return result;
}

Halves betweenCharacters(char16_t read, char16_t meant) {
    if (read < tableSize && meant < tableSize) {
        return costs[read][meant];
    }
    return read == meant ? none : ofOther;
}

bool isReadAsTwo(char16_t first, char16_t second, char16_t meant) {
    // Measured as the pairs above.
    switch (meant) {
    case u'm':
        return (first == u'r' && second == u'n') || (first == u'i' && second == u'n') ||
               (first == u'n' && second == u'i');
    case u'u':
        return first == u'i' && second == u'i';
    case u'd':
        return first == u'c' && second == u'l';
    case u'w':
        return first == u'v' && second == u'v';
    case u'h':
        return first == u'l' && second == u'i';
    default:
        return false;
    }
}

std::optional<Halves> between(std::u16string_view reading, std::u16string_view name, Halves limit) {
    if (leastOfLengths(reading.size(), name.size()) > limit || limit < 0) {
        return std::nullopt;
    }
    // The usual table, of which the rows for the last characters read are kept: rowOf(i)[j] is the distance of the
    // first i characters of the reading from the first j of the name. Within the limit only a band around the diagonal
    // can be: a character too many costs a half at least, one not read a whole.
    const std::size_t before = static_cast<std::size_t>(limit) / ofJunk; // places that j may lag behind i
    const std::size_t after = static_cast<std::size_t>(limit) / ofOther; // and be ahead
    const std::size_t last = name.size();
    QVarLengthArray<Halves, 128> cells(static_cast<qsizetype>(3 * (last + 1)));
    std::ranges::fill(cells, unreachable);
    const auto rowOf = [&](std::size_t i) { return cells.data() + i % 3 * (last + 1); };
    for (std::size_t j = 0; j <= std::min(last, after); ++j) {
        rowOf(0)[j] = static_cast<Halves>(j) * ofOther;
    }
    Halves leastAbove = 0;
    for (std::size_t i = 1; i <= reading.size(); ++i) {
        const Halves* const above = rowOf(i - 1);
        const Halves* const twoAbove = rowOf(i + 1);
        Halves* const row = rowOf(i);
        const std::size_t first = i > before ? i - before : 0;
        const std::size_t end = std::min(last, i + after) + 1;
        // Whoever looks from the next two rows beyond this one's band must not see what was here three rows ago.
        if (first > 0) {
            row[first - 1] = unreachable;
        }
        for (std::size_t j = end; j <= std::min(last, end + 1); ++j) {
            row[j] = unreachable;
        }
        Halves least = unreachable;
        for (std::size_t j = first; j < end; ++j) {
            Halves value = above[j] + (j == 0 || j == last ? ofJunk : ofOther);
            if (j > 0) {
                value = std::min(
                    {value, row[j - 1] + ofOther, above[j - 1] + betweenCharacters(reading[i - 1], name[j - 1])});
                if (i > 1 && isReadAsTwo(reading[i - 2], reading[i - 1], name[j - 1])) {
                    value = std::min(value, twoAbove[j - 1] + ofConfused);
                }
            }
            row[j] = value;
            least = std::min(least, value);
        }
        // Every way to the end passes through this row, or jumps over it from the one above.
        if (least > limit && leastAbove + ofConfused > limit) {
            return std::nullopt;
        }
        leastAbove = least;
    }
    const Halves distance = rowOf(reading.size())[last];
    return distance <= limit ? std::optional(distance) : std::nullopt;
}

bool isLikely(QStringView reading, QStringView name) {
    // reachable(i, j): the first i characters of the reading can be the first j of the name, after some junk.
    const qsizetype width = name.size() + 1;
    QVarLengthArray<bool, 1024> reachable((reading.size() + 1) * width);
    std::ranges::fill(reachable, false);
    const auto at = [&](qsizetype i, qsizetype j) -> bool& { return reachable[i * width + j]; };
    const auto read = [&](qsizetype i) { return reading[i].unicode(); };
    at(0, 0) = true;
    for (qsizetype i = 1; i <= reading.size(); ++i) {
        at(i, 0) = true;
        for (qsizetype j = 1; j <= name.size(); ++j) {
            const char16_t meant = name[j - 1].unicode();
            at(i, j) = (at(i - 1, j - 1) && betweenCharacters(read(i - 1), meant) <= ofConfused) ||
                       (i > 1 && at(i - 2, j - 1) && isReadAsTwo(read(i - 2), read(i - 1), meant)) ||
                       (j == name.size() && at(i - 1, j));
        }
    }
    return at(reading.size(), name.size());
}

} // namespace pelloran::ReadingDistance
