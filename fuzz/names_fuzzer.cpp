// Any names, any classes and any lines read: what the fast searches find has to be what the plain ones find that look
// at everything.

#include "fuzz/Bytes.h"
#include "fuzz/Require.h"
#include "names/CardNameIndex.h"
#include "names/ClassNameIndex.h"
#include "names/Lexicon.h"
#include "names/ReadingDistance.h"
#include "tests/names/LexiconReference.h"
#include "tests/names/NameMatchingReference.h"
#include "tests/names/ReadingDistanceReference.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace {

using namespace pelloran;
using fuzzing::Bytes;
using fuzzing::require;
using namespace std::literals;

// Few letters make for near misses, parts of each other, and ties; the odd ones are characters of several code points,
// of other cases, of other widths, and what normalising takes away.
constexpr std::array<std::u32string_view, 6> alphabets{
    U"abcd"sv,
    U"rnmiucldvwhtfae1l-"sv,
    U"abcdefghijklmnopqrstuvwxyz '!|."sv,
    U"火球术冰霜之王者法师大小·！Ⅳ"sv,
    U"ae\u0301\u00E9火球\u0327\u200D\U0001F469\u1100\u1161\uAC00\u0130\u00DF\u0345\u212A\uFF21\u01C5\uFB01"sv,
    U"\0\r\n\u0000\u2028\uFEFF\u05D0\u0661\u24B6\U0001F130\u0958\u2126\U0002F800\u1E9E\u03A3\u03C3\u03C2"sv};

QString textFrom(Bytes& bytes, int longest) {
    const std::u32string_view alphabet = alphabets[std::size_t(bytes.take()) % alphabets.size()];
    QString text;
    for (int length = bytes.take() % longest; length > 0; --length) {
        const int which = bytes.take();
        const char32_t letter = which < 240 ? alphabet[std::size_t(which) % alphabet.size()]
                                : which < 252
                                    ? alphabets[std::size_t(which) % alphabets.size()][std::size_t(bytes.take()) % 4]
                                    : char32_t(bytes.takeNumber(2) & 0xD7FF);
        text += QString::fromUcs4(&letter, 1);
    }
    return text;
}

// One of the texts with some of its letters changed, moved or gone; or another one.
QString lineFrom(Bytes& bytes, const QStringList& texts) {
    const int which = bytes.take();
    if (which % 8 == 7 || texts.isEmpty()) {
        return textFrom(bytes, 24);
    }
    QString text = texts[which / 8 % texts.size()];
    for (int changes = bytes.take() % 8; changes > 0; --changes) {
        const int how = bytes.take();
        const qsizetype at = text.isEmpty() ? 0 : bytes.take() % text.size();
        switch (how % 6) {
        case 0:
            text.remove(at, 1);
            break;
        case 1:
            text.insert(at, textFrom(bytes, 3));
            break;
        case 2:
            text = text.left(at);
            break;
        case 3:
            text = text.mid(at);
            break;
        case 4:
            text = how & 64 ? text.toUpper() : text + texts[how / 8 % texts.size()];
            break;
        default:
            text.replace(QStringLiteral("m"), QStringLiteral("rn")).replace(u'l', how & 64 ? u'!' : u'i');
        }
    }
    // Halves of characters would stop the reference's regular expressions.
    return QString::fromUtf8(text.toUtf8());
}

void checkTexts(const QString& a, const QString& b) {
    require(NameMatching::normalize(a) == reference::normalize(a));
    require(NameMatching::isPlausibleName(a) == reference::isPlausibleName(a));
    require(NameMatching::lcsLength(a, b) == reference::lcsLength(a, b));
    const QString norm = NameMatching::normalize(b);
    require(NameMatching::scoreName(a, norm) == reference::scoreName(a, norm));
    const QString reading = ReadingDistance::folded(a);
    const QString name = ReadingDistance::folded(b);
    const auto view = [](const QString& text) {
        return std::u16string_view(reinterpret_cast<const char16_t*>(text.utf16()), std::size_t(text.size()));
    };
    const double plain = 2 * reference::readingDistance(reading, name);
    for (const int limit : {-1, 0, 3, 8, 1000}) {
        const auto found = ReadingDistance::between(view(reading), view(name), limit);
        require(found.has_value() == (plain <= limit) && (!found || *found == plain));
    }
    // Mistakes that count less are all that a likely reading has.
    require(a != b || ReadingDistance::isLikely(a, b));
}

void searchCards(const QStringList& texts, const QStringList& lines) {
    std::vector<QString> names;
    for (const QString& text : texts) {
        names.push_back(NameMatching::normalize(text));
    }
    const CardNameIndex index(names);
    for (const NameLengths lengths : {NameLengths::limited, NameLengths::limitedUnlessExact}) {
        require(index.bestMatch(lines, lengths) == reference::matchName(names, lines, lengths));
    }
}

// The class one of whose heroes is called so, where it is the only one.
std::optional<ClassMatch> plainHero(const std::vector<NamedClass>& classes, const QString& line) {
    const QString norm = NameMatching::normalize(line);
    QStringList keys;
    for (const NamedClass& each : classes) {
        if (std::ranges::any_of(each.heroNames,
                                [&](const QString& name) { return NameMatching::normalize(name) == norm; })) {
            keys.push_back(each.key);
        }
    }
    return keys.size() == 1 && !norm.isEmpty() ? std::optional(ClassMatch{keys[0], 1.0, line}) : std::nullopt;
}

void searchClasses(const QStringList& texts, const QStringList& lines) {
    constexpr std::array<const char16_t*, 4> keys{u"MAGE", u"SHAMAN", u"DEATHKNIGHT", u"DEMONHUNTER"};
    std::vector<NamedClass> classes;
    for (qsizetype i = 0; i < texts.size(); ++i) {
        if (i % 3 == 0 && classes.size() < keys.size()) {
            classes.push_back({QString::fromUtf16(keys[classes.size()]), {}, {}});
        }
        (i % 5 == 4 ? classes.back().heroNames : classes.back().names).push_back(texts[i]);
    }
    const ClassNameIndex index(classes);
    QStringList asked = lines;
    asked.push_back(QStringLiteral("萨满"));
    for (const NameLengths lengths : {NameLengths::limited, NameLengths::limitedUnlessExact}) {
        require(index.bestMatch(asked, lengths) == reference::matchClass(classes, asked, lengths));
        require(index.bestMatch(lines, lengths) == reference::matchClass(classes, lines, lengths));
    }
    for (const QString& line : lines) {
        require(index.heroNamed(line, NameLengths::limitedUnlessExact) == plainHero(classes, line));
    }
}

void settle(const QStringList& texts, const QStringList& lines, int how) {
    std::vector<KnownName> names;
    std::vector<QString> norms;
    for (const QString& text : texts) {
        norms.push_back(reference::normalize(text));
        const int kinds = (how + int(names.size()) * 7) % 40;
        names.push_back({text, kinds < 32 ? NameKinds(kinds) : NameKinds(), kinds % 9 == 0});
    }
    const Lexicon::Tolerance tolerance = how & 1 ? Lexicon::forClasses : Lexicon::forCards;
    const Lexicon lexicon(names, tolerance);
    const reference::PlainLexicon plain(names, tolerance);
    const NameKinds fitting = how & 2 ? NameKinds(how / 8 % 32) : NameKinds();
    for (const QString& line : lines) {
        const auto settled = lexicon.settle(line, fitting);
        require(settled == plain.settle(line, fitting));
        require(!lexicon.contains(line) || (settled && settled->distance == 0));
        require(lexicon.resemblance(line) == reference::resemblance(line, texts));
        const QString norm = reference::normalize(line);
        bool isKnown = false;
        bool isStrict = true;
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (!norm.isEmpty() && norms[i] == norm) {
                isKnown = true;
                isStrict = isStrict && names[i].isStrict;
            }
        }
        require(lexicon.contains(line) == isKnown);
        require(lexicon.isStrict(line) == (isKnown && isStrict));
    }
}

} // namespace

// NOLINTNEXTLINE(readability-identifier-naming): the name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Bytes bytes(data, size);
    const int how = bytes.take();
    QStringList texts;
    for (int count = bytes.take() % 12; count > 0; --count) {
        texts.push_back(textFrom(bytes, count % 5 == 0 ? 40 : 20));
    }
    QStringList lines;
    for (int count = 1 + bytes.take() % 4; count > 0; --count) {
        lines.push_back(lineFrom(bytes, texts));
    }
    checkTexts(lines.front(), lineFrom(bytes, texts));
    searchCards(texts, lines);
    searchClasses(texts, lines);
    settle(texts, lines, how);
    return 0;
}
