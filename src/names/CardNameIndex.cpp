#include "names/CardNameIndex.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <span>

namespace pelloran {

using namespace NameMatching;

namespace {

constexpr std::uint32_t letters = 26;

// The bit of a sketch for the second, third, ... (`repeat` 1, 2, ...) or only occurrence of a character. Letters have
// the first numbers, so that no two of them share the bit of a first or of a second occurrence.
std::uint64_t sketchBit(std::uint32_t character, int repeat) {
    return std::uint64_t{1} << ((character + letters * static_cast<std::uint32_t>(repeat)) % 64);
}

bool hasMoreBitsThan(std::uint64_t bits, std::size_t limit) {
    // The limit is five at most and mostly zero to two: cheaper than counting all bits without an instruction for it.
    for (; bits != 0 && limit != 0; --limit) {
        bits &= bits - 1;
    }
    return bits != 0;
}

} // namespace

// A line as the search wants it.
struct CardNameIndex::Query {
    qsizetype line = 0;
    std::vector<Character> characters; // those of no name at all get a number of their own, past all others
    std::vector<std::uint16_t> places; // by character: one bit for each place in the line
    std::uint64_t sketch = 0;

    std::size_t length() const { return characters.size(); }

    bool containsAll(std::span<const Character> name) const { return !std::ranges::search(characters, name).empty(); }

    bool isWithin(std::span<const Character> name) const { return !std::ranges::search(name, characters).empty(); }

    // Length of the longest common subsequence, all rows of its table side by side in the bits of one word (Hyyrö's
    // form of Allison and Dix): a bit is cleared at each place where the length grows by one.
    std::size_t commonLength(std::span<const Character> name) const {
        std::uint32_t rows = ~std::uint32_t{0};
        for (const Character character : name) {
            const std::uint32_t matches = rows & places[character];
            rows = (rows + matches) | (rows - matches);
        }
        const std::uint32_t used = (std::uint32_t{1} << length()) - 1;
        return static_cast<std::size_t>(std::popcount(~rows & used));
    }
};

// Who leads, and what it takes to lead.
struct CardNameIndex::Contest {
    std::optional<Hit> best;

    // An equal score wins only from an earlier entry of the same line, because groups are not gone through in the order
    // of entries.
    double leastScore(qsizetype line) const {
        if (!best) {
            return cardThreshold;
        }
        return best->line == line ? best->score : std::nextafter(best->score, 2.0);
    }

    void enter(const Hit& hit) {
        if (hit.score < leastScore(hit.line) || (best && hit.score == best->score && hit.entry > best->entry)) {
            return;
        }
        best = hit;
    }

    // The least common subsequence with which a name may win; more than the shorter length where none can.
    std::size_t leastCommon(std::size_t queryLength, std::size_t nameLength, double least) const {
        const std::size_t shorter = std::min(queryLength, nameLength);
        const auto mayWin = [&](std::size_t common) {
            return (subsequenceCounts(common, nameLength) && subsequenceScore(common, nameLength) >= least) ||
                   (common == shorter && containmentScore(shorter, std::max(queryLength, nameLength)) >= least);
        };
        std::size_t common = shorter + 1;
        while (common > 1 && mayWin(common - 1)) {
            --common;
        }
        return common;
    }
};

CardNameIndex::CardNameIndex(const std::vector<QString>& normalizedNames) {
    for (char32_t letter = U'a'; letter <= U'z'; ++letter) {
        denseCharacters.emplace(letter, static_cast<Character>(denseCharacters.size()));
    }
    for (std::size_t entry = 0; entry < normalizedNames.size(); ++entry) {
        const std::u32string name = table.add(normalizedNames[entry]);
        if (name.size() >= cardQueryLimit) {
            longNames.try_emplace(name, entry);
        }
        if (name.empty() || name.size() > longestName) {
            continue;
        }
        Group& group = groups[name.size()];
        std::uint64_t sketch = 0;
        for (std::size_t i = 0; i < name.size(); ++i) {
            const auto next = static_cast<Character>(denseCharacters.size());
            const Character character = denseCharacters.try_emplace(name[i], next).first->second;
            const auto repeat = std::count(name.begin(), name.begin() + static_cast<std::ptrdiff_t>(i), name[i]);
            sketch |= sketchBit(character, static_cast<int>(repeat));
            group.characters.push_back(character);
        }
        group.sketches.push_back(sketch);
        group.entries.push_back(entry);
    }
}

CardNameIndex::Query CardNameIndex::query(std::u32string_view line) const {
    Query query;
    const auto strange = static_cast<Character>(denseCharacters.size());
    query.places.assign(denseCharacters.size(), 0);
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto known = denseCharacters.find(line[i]);
        if (known == denseCharacters.end()) {
            query.characters.push_back(strange);
            continue;
        }
        std::uint16_t& places = query.places[known->second];
        query.sketch |= sketchBit(known->second, std::popcount(places));
        places |= static_cast<std::uint16_t>(1U << i);
        query.characters.push_back(known->second);
    }
    return query;
}

std::optional<std::size_t> CardNameIndex::findEqual(const Query& query) const {
    const std::size_t length = query.length();
    const Group& group = groups[length];
    for (std::size_t i = 0; i < group.sketches.size(); ++i) {
        if (group.sketches[i] == query.sketch &&
            std::ranges::equal(std::span(group.characters).subspan(i * length, length), query.characters)) {
            return group.entries[i];
        }
    }
    return std::nullopt;
}

void CardNameIndex::searchGroup(const Query& query, std::size_t nameLength, Contest& contest) const {
    const Group& group = groups[nameLength];
    std::size_t least = 0;
    std::size_t mayMiss = 0;
    const auto adaptToBest = [&] {
        least = contest.leastCommon(query.length(), nameLength, contest.leastScore(query.line));
        mayMiss = nameLength - std::min(least, nameLength);
        return least <= std::min(query.length(), nameLength);
    };
    if (!adaptToBest()) {
        return;
    }
    for (std::size_t i = 0; i < group.sketches.size(); ++i) {
        // Each bit that the line lacks is at least one character of the name that it lacks.
        if (hasMoreBitsThan(group.sketches[i] & ~query.sketch, mayMiss)) {
            continue;
        }
        const auto name = std::span(group.characters).subspan(i * nameLength, nameLength);
        const std::size_t common = query.commonLength(name);
        if (common < least) {
            continue;
        }
        const std::size_t shorter = std::min(query.length(), nameLength);
        const std::size_t longer = std::max(query.length(), nameLength);
        if (common == shorter && (query.containsAll(name) || query.isWithin(name))) {
            contest.enter({group.entries[i], containmentScore(shorter, longer), query.line});
        } else if (subsequenceCounts(common, nameLength)) {
            contest.enter({group.entries[i], subsequenceScore(common, nameLength), query.line});
        }
        if (!adaptToBest()) {
            return;
        }
    }
}

std::optional<CardNameIndex::Hit> CardNameIndex::bestMatch(const QStringList& lines, NameLengths lengths) const {
    std::vector<Query> queries;
    for (qsizetype line = 0; line < lines.size(); ++line) {
        if (!isPlausibleName(lines[line])) {
            continue;
        }
        const std::u32string characters = table.find(normalize(lines[line]));
        if (characters.size() >= cardQueryLimit) {
            const auto exact = longNames.find(characters);
            if (lengths == NameLengths::limitedUnlessExact && exact != longNames.end()) {
                return Hit{exact->second, 1.0, line};
            }
            continue;
        }
        Query& added = queries.emplace_back(query(characters));
        added.line = line;
        // Nothing scores more, and what came before was not equal.
        if (const auto equal = findEqual(added)) {
            return Hit{*equal, 1.0, line};
        }
    }

    Contest contest;
    for (const Query& each : queries) {
        // Names of about the line's length first: they set the highest mark.
        for (std::size_t distance = 0; distance <= longestName; ++distance) {
            if (each.length() > distance) {
                searchGroup(each, each.length() - distance, contest);
            }
            if (distance != 0 && each.length() + distance <= longestName) {
                searchGroup(each, each.length() + distance, contest);
            }
        }
    }
    return contest.best;
}

} // namespace pelloran
