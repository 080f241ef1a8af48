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
constexpr Halves ofMisfit = 2; // what a name of kinds that do not fit is taken to be farther away
constexpr Halves endless = std::numeric_limits<Halves>::max() / 2;

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
    constexpr double enough = 1 << 20; // more than any distance that is looked for
    return static_cast<Halves>(std::floor(std::clamp(characters, -1.0, enough) * 2));
}

double inCharacters(Halves halves) {
    return halves / 2.0;
}

std::u16string_view view(const QString& text) {
    return {reinterpret_cast<const char16_t*>(text.utf16()), static_cast<std::size_t>(text.size())};
}

constexpr unsigned letters = 26;
constexpr unsigned mostRepeats = 2; // third occurrences and later ones are one bit

// The bit of a sketch for the first, second, ... (`repeat` 0, 1, ...) occurrence of a character. No two letters share
// the bit of a first or of a second occurrence.
std::uint64_t sketchBit(char16_t character, unsigned repeat) {
    const unsigned number = character >= u'a' && character <= u'z' ? character - u'a' : character;
    return std::uint64_t{1} << ((number + letters * repeat) % 64);
}

std::uint64_t sketchOf(std::u16string_view text) {
    std::uint64_t sketch = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto repeat = static_cast<unsigned>(std::ranges::count(text.substr(0, i), text[i]));
        sketch |= sketchBit(text[i], std::min(repeat, mostRepeats));
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
            sketch |= sketchBit(meant, repeat);
        }
    }
    return sketch;
}

// Names of one length.
struct FoldedNames {
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
    };

    static constexpr std::size_t several = std::numeric_limits<std::size_t>::max();

    std::vector<Entry> entries;
    QHash<QString, std::size_t> byNormalized;
    QHash<QString, std::size_t> byFolded;        // or `several`
    std::map<std::size_t, FoldedNames> byLength; // of the folded form; those without ideographs

    // The normalised forms, as numbers dense from 0 so that tables by character are small, by their length.
    std::unordered_map<char16_t, std::uint32_t> numbers;
    std::map<std::size_t, std::vector<std::uint32_t>> normalizedByLength;

    explicit Index(const std::vector<KnownName>& names);

    std::optional<Settled> nearest(const QString& folded, NameKinds fitting, const Tolerance& tolerance) const;
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
            continue;
        }
        const std::size_t entry = entries.size();
        entries.push_back({&name, kinds});
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
        if (!hasIdeographs(folded)) {
            FoldedNames& group = byLength[static_cast<std::size_t>(folded.size())];
            group.sketches.push_back(sketchOf(view(folded)));
            group.characters += view(folded);
            group.entries.push_back(entry);
        }
    }
}

std::optional<Lexicon::Settled> Lexicon::Index::nearest(const QString& folded, NameKinds fitting,
                                                        const Tolerance& tolerance) const {
    const std::u16string_view reading = view(folded);
    const auto greatest = [&](std::size_t nameLength) {
        return inHalves(std::min(tolerance.perCharacter * static_cast<double>(nameLength), greatestDistance));
    };
    const Halves margin = std::max(inHalves(tolerance.margin), 0);

    // Lengths near the reading's first: they set the mark that the others have to reach.
    struct Length {
        Halves least;
        std::size_t length;
        const FoldedNames* names;
    };

    std::vector<Length> lengths;
    Halves best = -1; // the most that may do at all, then the least found
    for (const auto& [length, names] : byLength) {
        const Halves least = ReadingDistance::leastOfLengths(reading.size(), length);
        lengths.push_back({least, length, &names});
        if (least <= greatest(length)) {
            best = std::max(best, greatest(length));
        }
    }
    if (best < 0) {
        return std::nullopt; // also for a line much longer than all names, whatever its length
    }
    std::ranges::sort(lengths, {}, &Length::least);

    const std::uint64_t sketch = sketchOf(reading);
    const std::uint64_t sketchWithConfused = sketch | sketchOfConfused(reading);
    std::size_t bestEntry = several;
    std::size_t bestLength = 0;
    Halves second = endless;
    for (const auto& [least, length, names] : lengths) {
        if (least > best + margin) {
            break;
        }
        for (std::size_t i = 0; i < names->entries.size(); ++i) {
            const std::size_t entry = names->entries[i];
            const Halves misfit = fitting && !(entries[entry].kinds & fitting) ? ofMisfit : 0;
            // Who is farther away neither wins nor takes the winner's margin.
            const Halves limit = best + margin - misfit;
            // Each bit that the reading lacks is at least one character of the name that was not read as itself: a half
            // where it may have been confused, else a whole.
            const std::uint64_t lacking = names->sketches[i] & ~sketch;
            if (std::popcount(lacking) + std::popcount(lacking & ~sketchWithConfused) > limit) {
                continue;
            }
            const auto name = std::u16string_view(names->characters).substr(i * length, length);
            const auto distance = ReadingDistance::between(reading, name, limit);
            if (!distance) {
                continue;
            }
            const Halves total = *distance + misfit;
            if (bestEntry == several ? total > best : total >= best) {
                second = std::min(second, total);
            } else {
                second = bestEntry == several ? second : best;
                best = total;
                bestEntry = entry;
                bestLength = length;
            }
        }
    }
    if (bestEntry == several || inCharacters(best) > tolerance.perCharacter * static_cast<double>(bestLength) ||
        inCharacters(best) > greatestDistance || inCharacters(second - best) < tolerance.margin) {
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

bool Lexicon::contains(const QString& line) const {
    return contents && contents->index().byNormalized.contains(NameMatching::normalize(line));
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
    if (folded.isEmpty() || hasIdeographs(folded)) {
        return std::nullopt;
    }
    return index.nearest(folded, fitting, tolerance);
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
