#pragma once

#include <QHashFunctions>
#include <QString>
#include <QStringView>

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace pelloran {

// Texts as sequences of numbers, one for each character as a reader sees it (extended grapheme cluster). Canonically
// equivalent characters have the same number, so that comparing numbers compares characters. A character of one code
// point has that code point as its number, the others are numbered as they come.
class CharacterTable {
public:
    // A number that no added character has.
    static constexpr char32_t unknown = 0xFFFF'FFFF;

    // Numbers characters not met before.
    std::u32string add(QStringView text);

    // Gives `unknown` for characters that would need a new number.
    std::u32string find(QStringView text) const;

private:
    std::unordered_map<QString, char32_t> composites;
};

// Number of characters in that sense.
std::size_t characterCount(QStringView text);

// Which lines may name something, by their length after normalising.
enum class NameLengths : std::uint8_t {
    limited,            // those below NameMatching::cardQueryLimit or classQueryLimit
    limitedUnlessExact, // also a longer one that is exactly a name: what rules texts never are
};

// How alike a text read off the screen and a known name are. Pure functions, from any thread.
namespace NameMatching {

constexpr double cardThreshold = 0.78;      // least score of a card
constexpr double classThreshold = 0.88;     // least score of a class that is not exactly read
constexpr double aliasScore = 0.95;         // score of a class read by a nickname
constexpr std::size_t cardQueryLimit = 17;  // normalised lines of this many characters or more name no card
constexpr std::size_t classQueryLimit = 11; // nor, of this many, a class

// Composed, in lower case, and without white space, the punctuation that reading gets wrong, and ASCII digits. The rest
// is not composed anew after that.
QString normalize(const QString& text);

// False for what cannot be a card's name: numbers, symbols, or fewer than three lower-case letters after normalising,
// unless there is a Chinese character.
bool isPlausibleName(const QString& text);

// Length of the longest common subsequence, in characters.
std::size_t lcsLength(const QString& a, const QString& b);

// From 0 to 1. `targetNorm` is a normalised text, `query` is not.
double scoreName(const QString& query, const QString& targetNorm);

// The same for a normalised query, both as numbered by one table. The first rule that applies decides, also where a
// later one would give more: equal 1; one within the other `containmentScore`; enough of the target in order
// `subsequenceScore`; else the share of the target's characters that occur in the query.
double score(std::u32string_view query, std::u32string_view target);

double containmentScore(std::size_t shorterLength, std::size_t longerLength);

// False where too little of the target occurs in order for the subsequence to count.
bool subsequenceCounts(std::size_t commonLength, std::size_t targetLength);
double subsequenceScore(std::size_t commonLength, std::size_t targetLength);

bool contains(std::u32string_view text, std::u32string_view part);

} // namespace NameMatching

} // namespace pelloran
