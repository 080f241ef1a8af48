#include "names/Lexicon.h"

#include "names/NameMatching.h"
#include "names/ReadingDistance.h"

#include <QHash>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace pelloran {

using ReadingDistance::Halves;

namespace {

constexpr double greatestDistance = 4.0;
// Of Chinese names, for each character: one in three misread, whatever the lexicon's own tolerance. Characters say more
// than letters, and few names share most of theirs.
constexpr double chineseTolerance = 0.34;
constexpr Halves ofMisfit = 2; // what a name of kinds that do not fit is taken to be farther away
constexpr Halves endless = std::numeric_limits<Halves>::max() / 2;
constexpr double enough = 1 << 20; // characters: more than any distance that is looked for

constexpr NameKinds allKinds =
    NameKind::minion | NameKind::spell | NameKind::weapon | NameKind::hero | NameKind::location;

bool isIdeograph(QChar character) {
    return character.unicode() >= 0x4E00 && character.unicode() <= 0x9FFF;
}

bool hasIdeographs(const QString& text) {
    return std::ranges::any_of(text, isIdeograph);
}

// The most halves that are not more; distances are whole numbers of them.
Halves inHalves(double characters) {
    return static_cast<Halves>(std::floor(std::clamp(characters, -1.0, enough) * 2));
}

double inCharacters(Halves halves) {
    return halves / 2.0;
}

std::u16string_view view(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

constexpr unsigned latinLetters = 26;
constexpr unsigned mostRepeats = 2; // third occurrences and later ones are one bit

// The bit of a sketch for the first, second, ... (`repeat` 0, 1, ...) occurrence of a character. No two letters share
// the bit of a first or of a second occurrence.
std::uint64_t occurrenceBit(char16_t character, unsigned repeat) {
    const unsigned number = character >= u'a' && character <= u'z' ? character - u'a' : character;
    return std::uint64_t{1} << ((number + latinLetters * repeat) % 64);
}

std::uint64_t sketchOf(std::u16string_view text) {
    std::uint64_t sketch = 0;
    // Looking back is quickest for texts as short as names are; a file may have them of any length.
    if (constexpr std::size_t longest = 64; text.size() <= longest) {
        for (std::size_t i = 0; i < text.size(); ++i) {
            const auto repeat = static_cast<unsigned>(std::ranges::count(text.substr(0, i), text[i]));
            sketch |= occurrenceBit(text[i], std::min(repeat, mostRepeats));
        }
        return sketch;
    }
    std::unordered_map<char16_t, unsigned> counts;
    for (const char16_t character : text) {
        unsigned& count = counts[character];
        sketch |= occurrenceBit(character, count);
        count = std::min(count + 1, mostRepeats);
    }
    return sketch;
}

// The bits of all characters that something in `reading` may have been read for at less than the full cost.
std::uint64_t sketchOfConfused(std::u16string_view reading) {
    std::uint64_t sketch = 0;
    for (const char16_t meant : std::u16string_view(u"abcdefghijklmnopqrstuvwxyz0123456789")) {
        bool confused = false;
        for (std::size_t i = 0; i < reading.size() && !confused; ++i) {
            confused = ReadingDistance::betweenCharacters(reading[i], meant) == ReadingDistance::ofConfused ||
                       (i > 0 && ReadingDistance::isReadAsTwo(reading[i - 1], reading[i], meant));
        }
        for (unsigned repeat = 0; confused && repeat <= mostRepeats; ++repeat) {
            sketch |= occurrenceBit(meant, repeat);
        }
    }
    return sketch;
}

// Names of one length.
struct FoldedNames {
    std::size_t length = 0;
    std::vector<std::uint64_t> sketches;
    std::u16string characters; // those of the first name, of the second, ...
    std::vector<std::size_t> entries;
};

// Places of the characters of a line, for the length of its longest common subsequence with many names: all rows of the
// table side by side in the bits of as many words as it takes (Hyyrö's form of Allison and Dix). A bit is cleared at
// each place where the length grows by one.
class CommonLength {
public:
    // Of a line as numbers below `alphabet`, or not below it where no name has the character.
    CommonLength(const std::vector<std::uint32_t>& line, std::size_t alphabet)
        : lineLength(line.size())
        , words((line.size() + 63) / 64)
        , places(alphabet * words)
        , rows(words) {
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] < alphabet) {
                places[line[i] * words + i / 64] |= std::uint64_t{1} << (i % 64);
            }
        }
    }

    template <typename Characters>
    std::size_t with(const Characters& name) {
        std::ranges::fill(rows, ~std::uint64_t{0});
        for (const std::uint32_t character : name) {
            std::uint64_t carry = 0;
            for (std::size_t word = 0; word < words; ++word) {
                const std::uint64_t row = rows[word];
                const std::uint64_t matches = row & places[character * words + word];
                const std::uint64_t sum = row + matches;
                const std::uint64_t carried = sum + carry;
                carry = static_cast<std::uint64_t>(sum < row) | static_cast<std::uint64_t>(carried < sum);
                rows[word] = carried | (row - matches);
            }
        }
        std::size_t unchanged = 0;
        for (std::size_t word = 0; word < words; ++word) {
            const std::size_t used = std::min<std::size_t>(lineLength - 64 * word, 64);
            const std::uint64_t mask = used == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << used) - 1;
            unchanged += static_cast<std::size_t>(std::popcount(rows[word] & mask));
        }
        return lineLength - unchanged;
    }

private:
    std::size_t lineLength;
    std::size_t words;
    std::vector<std::uint64_t> places; // those of the first character, of the second, ...
    std::vector<std::uint64_t> rows;
};

} // namespace

struct Lexicon::Index {
    // All names of one normalised form: one cannot be told from the other.
    struct Entry {
        const KnownName* name; // the first of them
        NameKinds kinds;       // of any; all where they are not known
        bool isStrict;         // of all
    };

    static constexpr std::size_t several = std::numeric_limits<std::size_t>::max();

    std::vector<Entry> entries;
    QHash<QString, std::size_t> byNormalized;
    QHash<QString, std::size_t> byFolded; // or `several`
    // Of the folded form: those without ideographs, those with.
    std::map<std::size_t, FoldedNames> byLength;
    std::map<std::size_t, FoldedNames> chineseByLength;

    // The normalised forms, as numbers dense from 0 so that tables by character are small, by their length.
    std::unordered_map<char16_t, std::uint32_t> numbers;
    std::map<std::size_t, std::vector<std::uint32_t>> normalizedByLength;

    explicit Index(const std::vector<KnownName>& names);

    struct Query;

    // Of the name at that place, a misfit's with what it is taken to be farther away.
    std::optional<Halves> distance(const Query& query, const FoldedNames& names, std::size_t place, Halves limit) const;

    // Whether a longer name begins with the reading.
    static bool beginsOne(std::u16string_view reading, const std::map<std::size_t, FoldedNames>& among);

    // For a folded reading that is no name's, among one of the groups.
    std::optional<Settled> nearest(const QString& folded, const std::map<std::size_t, FoldedNames>& among,
                                   NameKinds fitting, const Tolerance& nearEnough) const;
};

Lexicon::Index::Index(const std::vector<KnownName>& names) {
    entries.reserve(names.size());
    byNormalized.reserve(static_cast<qsizetype>(names.size()));
    byFolded.reserve(static_cast<qsizetype>(names.size()));
    for (const KnownName& name : names) {
        const QString normalized = NameMatching::normalize(name.text);
        if (normalized.isEmpty()) {
            continue; // or every number on the screen would be this name
        }
        const NameKinds kinds = name.kinds ? name.kinds : allKinds;
        if (const auto same = byNormalized.constFind(normalized); same != byNormalized.cend()) {
            entries[*same].kinds |= kinds;
            entries[*same].isStrict = entries[*same].isStrict && name.isStrict;
            continue;
        }
        const std::size_t entry = entries.size();
        entries.push_back({&name, kinds, name.isStrict});
        byNormalized.insert(normalized, entry);
        std::vector<std::uint32_t>& sameLength = normalizedByLength[static_cast<std::size_t>(normalized.size())];
        for (const QChar character : normalized) {
            const auto next = static_cast<std::uint32_t>(numbers.size());
            sameLength.push_back(numbers.try_emplace(character.unicode(), next).first->second);
        }

        const QString folded = ReadingDistance::folded(name.text);
        if (folded.isEmpty()) {
            continue;
        }
        if (const auto same = byFolded.find(folded); same != byFolded.end()) {
            *same = several;
        } else {
            byFolded.insert(folded, entry);
        }
        auto& groups = hasIdeographs(folded) ? chineseByLength : byLength;
        FoldedNames& group = groups[static_cast<std::size_t>(folded.size())];
        group.length = static_cast<std::size_t>(folded.size());
        group.sketches.push_back(sketchOf(view(folded)));
        group.characters += view(folded);
        group.entries.push_back(entry);
    }
}

// A reading as the search wants it.
struct Lexicon::Index::Query {
    std::u16string_view reading;
    NameKinds fitting;
    std::uint64_t sketch = 0;
    std::uint64_t sketchWithConfused = 0; // with all that what was read may have been

    Query(std::u16string_view folded, NameKinds fittingKinds)
        : reading(folded)
        , fitting(fittingKinds)
        , sketch(sketchOf(folded))
        , sketchWithConfused(sketch | sketchOfConfused(folded)) {}

    Halves leastFrom(std::size_t nameLength) const {
        return ReadingDistance::leastOfLengths(reading.size(), nameLength);
    }
};

std::optional<Halves> Lexicon::Index::distance(const Query& query, const FoldedNames& names, std::size_t place,
                                               Halves limit) const {
    const Halves misfit = query.fitting && !(entries[names.entries[place]].kinds & query.fitting) ? ofMisfit : 0;
    // Each bit that the reading lacks is at least one character of the name that was not read as itself: a half where
    // it may have been confused, else a whole.
    const std::uint64_t lacking = names.sketches[place] & ~query.sketch;
    if (std::popcount(lacking) + std::popcount(lacking & ~query.sketchWithConfused) > limit - misfit) {
        return std::nullopt;
    }
    const auto name = std::u16string_view(names.characters).substr(place * names.length, names.length);
    const auto found = ReadingDistance::between(query.reading, name, limit - misfit);
    return found ? std::optional(*found + misfit) : std::nullopt;
}

bool Lexicon::Index::beginsOne(std::u16string_view reading, const std::map<std::size_t, FoldedNames>& among) {
    for (auto group = among.upper_bound(reading.size()); group != among.end(); ++group) {
        const auto& [length, names] = *group;
        for (std::size_t at = 0; at < names.characters.size(); at += length) {
            if (std::u16string_view(names.characters).substr(at, reading.size()) == reading) {
                return true;
            }
        }
    }
    return false;
}

std::optional<Lexicon::Settled> Lexicon::Index::nearest(const QString& folded,
                                                        const std::map<std::size_t, FoldedNames>& among,
                                                        NameKinds fitting, const Tolerance& nearEnough) const {
    // Names near enough for their own length. Those about as long as the reading first: they set the mark that the
    // others have to reach. A line much longer than all names ends here, whatever its length.
    const bool isChinese = &among == &chineseByLength;
    const auto greatest = [&](std::size_t nameLength) {
        return inHalves(std::min(nearEnough.perCharacter * static_cast<double>(nameLength), greatestDistance));
    };
    const auto greatestStrict = [&](std::size_t nameLength) {
        const double strict = isChinese ? chineseTolerance : forCards.perCharacter;
        const double perCharacter = std::min(nearEnough.perCharacter, strict);
        return inHalves(std::min(perCharacter * static_cast<double>(nameLength), greatestDistance));
    };
    const std::u16string_view reading = view(folded);
    std::vector<std::pair<Halves, const FoldedNames*>> groups;
    for (const auto& [length, names] : among) {
        const Halves least = ReadingDistance::leastOfLengths(reading.size(), length);
        if (least <= greatest(length)) {
            groups.emplace_back(least, &names);
        }
    }
    if (groups.empty()) {
        return std::nullopt;
    }
    std::ranges::sort(groups);
    const Query query(reading, fitting);
    Halves best = endless;
    std::size_t bestEntry = 0;
    for (const auto& [least, names] : groups) {
        for (std::size_t i = 0; i < names->entries.size() && least < best; ++i) {
            // Of two as near neither wins, as the second search will find.
            const bool isStrict = entries[names->entries[i]].isStrict;
            const Halves mine = isStrict ? greatestStrict(names->length) : greatest(names->length);
            if (const auto found = distance(query, *names, i, std::min(mine, best - 1))) {
                best = *found;
                bestEntry = names->entries[i];
            }
        }
    }
    if (best == endless) {
        return std::nullopt;
    }

    // Any name at all that is nearer, or too little farther: also one that itself would be too far away for its length.
    const Halves tooNear = best + static_cast<Halves>(std::ceil(std::clamp(nearEnough.margin, 0.0, enough) * 2)) - 1;
    for (const auto& [length, names] : among) {
        for (std::size_t i = 0; i < names.entries.size() && query.leastFrom(length) <= tooNear; ++i) {
            if (names.entries[i] != bestEntry && distance(query, names, i, tooNear)) {
                return std::nullopt;
            }
        }
    }
    // What goes beyond the nearest name, and is how another one begins, may be that other one with its end hidden.
    if (!ReadingDistance::folded(entries[bestEntry].name->text).startsWith(folded) && beginsOne(reading, among)) {
        return std::nullopt;
    }
    return Settled{entries[bestEntry].name->text, inCharacters(best)};
}

// Made at the first question: whoever loads the names need not wait, nor whoever never asks.
struct Lexicon::Contents {
    std::vector<KnownName> names;
    std::once_flag indexed;
    std::unique_ptr<const Index> made;

    const Index& index() {
        std::call_once(indexed, [this] { made = std::make_unique<const Index>(names); });
        return *made;
    }
};

Lexicon::Lexicon(std::vector<KnownName> names, Tolerance nearEnough)
    : tolerance(nearEnough)
    , contents(std::make_shared<Contents>()) {
    contents->names = std::move(names);
}

bool Lexicon::isEmpty() const {
    return !contents || std::ranges::all_of(contents->names, [](const KnownName& name) {
        return NameMatching::normalize(name.text).isEmpty();
    });
}

const std::vector<KnownName>& Lexicon::names() const {
    static const std::vector<KnownName> none;
    return contents ? contents->names : none;
}

bool Lexicon::contains(const QString& line) const {
    return contents && contents->index().byNormalized.contains(NameMatching::normalize(line));
}

bool Lexicon::isStrict(const QString& line) const {
    if (!contents) {
        return false;
    }
    const Index& index = contents->index();
    const auto same = index.byNormalized.constFind(NameMatching::normalize(line));
    return same != index.byNormalized.cend() && index.entries[*same].isStrict;
}

std::optional<Lexicon::Settled> Lexicon::settle(const QString& line, NameKinds fitting) const {
    const QString normalized = NameMatching::normalize(line);
    if (!contents || normalized.isEmpty()) {
        return std::nullopt;
    }
    const Index& index = contents->index();
    if (const auto same = index.byNormalized.constFind(normalized); same != index.byNormalized.cend()) {
        return Settled{index.entries[*same].name->text, 0};
    }
    const QString folded = ReadingDistance::folded(line);
    if (const auto same = index.byFolded.constFind(folded); same != index.byFolded.cend()) {
        return *same == Index::several ? std::nullopt : std::optional(Settled{index.entries[*same].name->text, 0});
    }
    if (folded.isEmpty()) {
        return std::nullopt;
    }
    if (hasIdeographs(folded)) {
        const Tolerance forgiving{std::max(tolerance.perCharacter, chineseTolerance), tolerance.margin};
        return index.nearest(folded, index.chineseByLength, fitting, forgiving);
    }
    if (const QString corrected = ReadingDistance::withLettersForMarks(line); corrected != line) {
        const auto same = index.byFolded.constFind(ReadingDistance::folded(corrected));
        if (same != index.byFolded.cend() && *same != Index::several) {
            return Settled{index.entries[*same].name->text, inCharacters(ReadingDistance::ofConfused)};
        }
    }
    return index.nearest(folded, index.byLength, fitting, tolerance);
}

double Lexicon::resemblance(const QString& line) const {
    const QString normalized = NameMatching::normalize(line);
    if (!contents || normalized.isEmpty()) {
        return 0;
    }
    const Index& index = contents->index();
    const auto lineLength = static_cast<std::size_t>(normalized.size());
    std::vector<std::uint32_t> numbers;
    numbers.reserve(lineLength);
    for (const QChar character : normalized) {
        const auto known = index.numbers.find(character.unicode());
        numbers.push_back(known == index.numbers.end() ? std::numeric_limits<std::uint32_t>::max() : known->second);
    }

    // Lengths that allow for the most first; the rest can often be left out.
    std::vector<std::pair<double, std::size_t>> lengths;
    lengths.reserve(index.normalizedByLength.size());
    for (const auto& [length, names] : index.normalizedByLength) {
        lengths.emplace_back(
            2 * static_cast<double>(std::min(length, lineLength)) / static_cast<double>(length + lineLength), length);
    }
    std::ranges::sort(lengths, std::ranges::greater());
    CommonLength common(numbers, index.numbers.size());
    double best = 0;
    for (const auto& [most, length] : lengths) {
        if (most <= best) {
            break;
        }
        const std::vector<std::uint32_t>& names = index.normalizedByLength.at(length);
        for (auto name = names.begin(); name != names.end(); name += static_cast<std::ptrdiff_t>(length)) {
            const auto shared = common.with(std::ranges::subrange(name, name + static_cast<std::ptrdiff_t>(length)));
            best = std::max(best, 2 * static_cast<double>(shared) / static_cast<double>(length + lineLength));
        }
    }
    return best;
}

} // namespace pelloran
