#pragma once

#include <QString>

#include <optional>
#include <string_view>

namespace pelloran {

// How far apart a reading of the screen and a name are, where mistakes that the recogniser is prone to count less. Pure
// functions, from any thread.
namespace ReadingDistance {

// In halves of a character, so that sums and comparisons are exact.
using Halves = int;

constexpr Halves ofOther = 2;    // another character, a character not read, one too many
constexpr Halves ofConfused = 1; // a character read for one it is easily taken for, also two for one
constexpr Halves ofJunk = 1;     // a character read before the name's first or after its last: bits of the ribbon
constexpr Halves none = 0;

// What is compared: in lower case, without accents, letters and decimal digits only.
QString folded(const QString& text);

// The cost of the character `read` where `meant` is the name's. Of folded texts.
Halves betweenCharacters(char16_t read, char16_t meant);

// True where the two characters, in this order, are easily read for the one.
bool isReadAsTwo(char16_t first, char16_t second, char16_t meant);

// The least sum of costs that makes the name of the reading; none if it is more than `limit`. Of folded texts. Takes
// time by the name's length times the limit, as far as lengths allow for a distance within the limit at all.
std::optional<Halves> between(std::u16string_view reading, std::u16string_view name, Halves limit);

// The line with an l for each exclamation mark and upright stroke that follows a letter within it: they are often read
// so.
QString withLettersForMarks(const QString& line);

// True where every difference is one that counts less: the line can be this name without anything unusual having
// happened. Where it cannot, and the line is read the same again, another name is printed there. Of texts as they are.
bool isLikely(const QString& line, const QString& name);

// What a name that much longer or shorter than the reading is away at least.
constexpr Halves leastOfLengths(std::size_t readingLength, std::size_t nameLength) {
    return readingLength > nameLength ? static_cast<Halves>(readingLength - nameLength) * ofJunk
                                      : static_cast<Halves>(nameLength - readingLength) * ofOther;
}

} // namespace ReadingDistance

} // namespace pelloran
