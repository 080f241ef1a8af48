#include "names/NameMatching.h"

#include <QChar>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <vector>

namespace pelloran {

namespace {

constexpr char32_t firstComposite = 0x11'0000; // just above Unicode

bool between(char32_t codePoint, char32_t first, char32_t last) {
    return first <= codePoint && codePoint <= last;
}

// Characters that stand for themselves: each is a grapheme cluster of its own whatever plain character is beside it,
// and stays as it is under canonical composition. Most text is made of nothing else, and needs no look at Unicode's
// tables.
bool isPlain(char16_t unit) {
    return (unit < 0x0300 && unit != u'\r')  // Latin; a carriage return would join a line feed
           || between(unit, 0x4E00, 0x9FFF)  // unified ideographs
           || between(unit, 0x2010, 0x2027)  // dashes, quotes, ellipsis
           || between(unit, 0x3001, 0x3029)  // CJK punctuation
           || between(unit, 0xFF01, 0xFF60); // full-width forms
}

bool isPlain(QStringView text) {
    return std::ranges::all_of(text, [](QChar character) { return isPlain(character.unicode()); });
}

// What is on no text that counts: punctuation that reading confuses or drops, and the numbers of cost, attack and
// health. The circled four is how a cost's crystal is read; no other circled digit has been seen.
bool isIgnored(char16_t unit) {
    switch (unit) {
    case u'·':
    case u'・':
    case u'\'':
    case u'"':
    case u'“':
    case u'”':
    case u'‘':
    case u'’':
    case u'!':
    case u'?':
    case u'？':
    case u'，':
    case u'。':
    case u'、':
    case u'：':
    case u':':
    case u'（':
    case u'）':
    case u'(':
    case u')':
    case u'[':
    case u']':
    case u'{':
    case u'}':
    case u'！':
    case u'．':
    case u'.':
    case u'④':
        return true;
    default:
        return between(unit, u'0', u'9') || QChar::isSpace(unit);
    }
}

// For a plain character up to U+00FF or above U+02FF.
char16_t plainLower(char16_t unit) {
    const bool upper =
        between(unit, u'A', u'Z') || (between(unit, 0xC0, 0xDE) && unit != 0xD7) || between(unit, 0xFF21, 0xFF3A);
    return upper ? static_cast<char16_t>(unit + 0x20) : unit;
}

// As \w in regular expressions with Unicode: letters (circled ones too), marks, decimal digits, connectors, joiners.
bool isWordCharacter(char32_t codePoint) {
    switch (QChar::category(codePoint)) {
    case QChar::Letter_Uppercase:
    case QChar::Letter_Lowercase:
    case QChar::Letter_Titlecase:
    case QChar::Letter_Modifier:
    case QChar::Letter_Other:
    case QChar::Number_Letter:
    case QChar::Mark_NonSpacing:
    case QChar::Mark_SpacingCombining:
    case QChar::Mark_Enclosing:
    case QChar::Number_DecimalDigit:
    case QChar::Punctuation_Connector:
        return true;
    default:
        return codePoint == 0x200C || codePoint == 0x200D || between(codePoint, 0x24B6, 0x24E9) ||
               between(codePoint, 0x1F130, 0x1F149) || between(codePoint, 0x1F150, 0x1F169) ||
               between(codePoint, 0x1F170, 0x1F189);
    }
}

// Calls `visit` with each code point until it answers false.
template <typename Visit>
void forEachCodePoint(QStringView text, Visit visit) {
    for (qsizetype at = 0; at < text.size(); ++at) {
        char32_t codePoint = text[at].unicode();
        if (QChar::isHighSurrogate(codePoint) && at + 1 < text.size() && text[at + 1].isLowSurrogate()) {
            codePoint = QChar::surrogateToUcs4(text[at], text[at + 1]);
            ++at;
        }
        if (!visit(codePoint)) {
            return;
        }
    }
}

template <typename Predicate>
bool anyCodePoint(QStringView text, Predicate predicate) {
    bool found = false;
    forEachCodePoint(text, [&](char32_t codePoint) {
        found = predicate(codePoint);
        return !found;
    });
    return found;
}

// Numbers the characters of `text`; `numberOfComposite` is asked for those of several code points.
template <typename NumberOfComposite>
std::u32string numbered(QStringView text, NumberOfComposite numberOfComposite) {
    std::u32string numbers;
    numbers.reserve(static_cast<std::size_t>(text.size()));
    if (isPlain(text)) {
        for (const QChar character : text) {
            numbers.push_back(character.unicode());
        }
        return numbers;
    }
    QTextBoundaryFinder clusters(QTextBoundaryFinder::Grapheme, text.data(), text.size());
    for (qsizetype start = 0, end = clusters.toNextBoundary(); end != -1; end = clusters.toNextBoundary()) {
        const QString cluster = text.sliced(start, end - start).toString().normalized(QString::NormalizationForm_C);
        if (cluster.size() == 1) {
            numbers.push_back(cluster.front().unicode());
        } else if (cluster.size() == 2 && cluster[0].isHighSurrogate() && cluster[1].isLowSurrogate()) {
            numbers.push_back(QChar::surrogateToUcs4(cluster[0], cluster[1]));
        } else {
            numbers.push_back(numberOfComposite(cluster));
        }
        start = end;
    }
    return numbers;
}

std::size_t commonLength(std::u32string_view a, std::u32string_view b) {
    // One row of the usual table: row[i] is the result for what has been seen of `a` and the first i characters of `b`.
    std::vector<std::size_t> row(b.size() + 1, 0);
    for (const char32_t character : a) {
        std::size_t diagonal = 0;
        for (std::size_t i = 1; i <= b.size(); ++i) {
            const std::size_t above = row[i];
            row[i] = character == b[i - 1] ? diagonal + 1 : std::max(row[i - 1], above);
            diagonal = above;
        }
    }
    return row.back();
}

double overlapScore(std::u32string_view query, std::u32string_view target) {
    std::u32string distinct(target);
    std::ranges::sort(distinct);
    const auto repeated = std::ranges::unique(distinct);
    distinct.erase(repeated.begin(), repeated.end());
    const auto common =
        std::ranges::count_if(distinct, [&](char32_t character) { return query.find(character) != query.npos; });
    return 0.65 * static_cast<double>(common) / static_cast<double>(std::max<std::size_t>(distinct.size(), 1));
}

} // namespace

std::u32string CharacterTable::add(QStringView text) {
    return numbered(text, [this](const QString& cluster) {
        const auto next = static_cast<char32_t>(firstComposite + composites.size());
        return composites.try_emplace(cluster, next).first->second;
    });
}

std::u32string CharacterTable::find(QStringView text) const {
    return numbered(text, [this](const QString& cluster) {
        const auto known = composites.find(cluster);
        return known == composites.end() ? unknown : known->second;
    });
}

std::size_t characterCount(QStringView text) {
    return CharacterTable().add(text).size();
}

namespace NameMatching {

QString normalize(const QString& text) {
    QString result(text.size(), Qt::Uninitialized);
    qsizetype length = 0;
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (isIgnored(unit)) {
            continue;
        }
        // Beyond Latin-1 case is not simple any more.
        if (!isPlain(unit) || between(unit, 0x0100, 0x02FF)) {
            result = text.normalized(QString::NormalizationForm_C).toLower();
            result.removeIf([](QChar each) { return isIgnored(each.unicode()); });
            return result;
        }
        result[length++] = QChar(plainLower(unit));
    }
    result.truncate(length);
    return result;
}

bool isPlausibleName(const QString& text) {
    const QString trimmed = text.trimmed();
    const auto tells = [](char32_t each) {
        return isWordCharacter(each) && QChar::category(each) != QChar::Number_DecimalDigit;
    };
    if (!anyCodePoint(trimmed, tells)) {
        return false;
    }
    const QString norm = normalize(trimmed);
    if (anyCodePoint(norm, [](char32_t each) { return between(each, 0x4E00, 0x9FFF); })) {
        return true;
    }
    int lowercaseLetters = 0;
    return anyCodePoint(norm, [&](char32_t each) {
        lowercaseLetters += QChar::category(each) == QChar::Letter_Lowercase;
        return lowercaseLetters > 2;
    });
}

std::size_t lcsLength(const QString& a, const QString& b) {
    CharacterTable characters;
    const std::u32string numbersOfA = characters.add(a);
    return commonLength(numbersOfA, characters.add(b));
}

double scoreName(const QString& query, const QString& targetNorm) {
    CharacterTable characters;
    const std::u32string numbersOfQuery = characters.add(normalize(query));
    return score(numbersOfQuery, characters.add(targetNorm));
}

double score(std::u32string_view query, std::u32string_view target) {
    if (query.empty() || target.empty()) {
        return 0;
    }
    if (query == target) {
        return 1;
    }
    if (contains(target, query) || contains(query, target)) {
        return containmentScore(std::min(query.size(), target.size()), std::max(query.size(), target.size()));
    }
    const std::size_t common = commonLength(query, target);
    return subsequenceCounts(common, target.size()) ? subsequenceScore(common, target.size())
                                                    : overlapScore(query, target);
}

double containmentScore(std::size_t shorterLength, std::size_t longerLength) {
    return 0.95 * static_cast<double>(shorterLength) / static_cast<double>(longerLength);
}

bool subsequenceCounts(std::size_t commonLength, std::size_t targetLength) {
    const double ratio =
        static_cast<double>(commonLength) / static_cast<double>(std::max<std::size_t>(targetLength, 1));
    return ratio >= 0.75 && commonLength >= 2;
}

double subsequenceScore(std::size_t commonLength, std::size_t targetLength) {
    const double ratio =
        static_cast<double>(commonLength) / static_cast<double>(std::max<std::size_t>(targetLength, 1));
    return 0.8 + 0.15 * ratio;
}

bool contains(std::u32string_view text, std::u32string_view part) {
    return text.find(part) != text.npos;
}

} // namespace NameMatching

} // namespace pelloran
