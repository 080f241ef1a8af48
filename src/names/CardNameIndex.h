#pragma once

#include "names/NameMatching.h"

#include <QStringList>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace pelloran {

// Finds what scoring every line against every name, in order, would find, without doing so. Immutable once made; from
// any thread.
//
// A name can only reach the threshold when most of its characters occur in the line in the same order. So names lie in
// groups by length, each with a 64-bit sketch of its characters; for a group it is known how many characters a name may
// miss and still beat the best so far, and the sketch rules most names out in a few instructions. The rest have their
// common subsequence with the line computed, one addition per character.
class CardNameIndex {
public:
    struct Hit {
        std::size_t entry = 0; // place in the names given
        double score = 0;      // as NameMatching::scoreName gives it; never below NameMatching::cardThreshold
        qsizetype line = 0;

        bool operator==(const Hit&) const = default;
    };

    CardNameIndex() = default;

    // Normalised names; empty ones are never found.
    explicit CardNameIndex(const std::vector<QString>& normalizedNames);

    // The highest score of all; of equal ones the earliest line, then the earliest entry. Lines are as read; those that
    // are no plausible names or too long are passed over.
    std::optional<Hit> bestMatch(const QStringList& lines, NameLengths lengths = NameLengths::limited) const;

private:
    // Numbers of characters, dense from 0, so that tables by character are small.
    using Character = std::uint32_t;

    // The longest name of which enough can occur in the longest line.
    static constexpr std::size_t longestName = (NameMatching::cardQueryLimit - 1) * 4 / 3;

    // Names of one length in the order given.
    struct Group {
        std::vector<std::uint64_t> sketches;
        std::vector<Character> characters; // those of the first name, of the second, ...
        std::vector<std::size_t> entries;
    };

    struct Query;
    struct Contest;

    Query query(std::u32string_view line) const;
    std::optional<std::size_t> findEqual(const Query& query) const;
    void searchGroup(const Query& query, std::size_t nameLength, Contest& contest) const;

    CharacterTable table;
    std::unordered_map<char32_t, Character> denseCharacters;
    std::array<Group, longestName + 1> groups;                 // by length
    std::unordered_map<std::u32string, std::size_t> longNames; // of the limit or more; to the first such entry
};

} // namespace pelloran
