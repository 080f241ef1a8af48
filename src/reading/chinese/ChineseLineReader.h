#pragma once

#include "platform/ApplicationFiles.h"
#include "reading/chinese/ChineseNames.h"
#include "reading/Plane.h"

#include <QString>

#include <array>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <set>

namespace pelloran {

// What a line of Chinese characters was read as.
struct ChineseReading {
    QString text;         // the name, or what the characters look like one by one
    bool isName = false;  // the line can be this name only
    float nameCost = 1;   // of the nearest name, mean of a character: 0 (as the model has it) to 2 (the opposite)
    float letterCost = 1; // of whatever characters the line looks most like, likewise

    bool operator==(const ChineseReading&) const = default;
};

// True where characters that cost so little say that a name that costs so much is not what is printed.
constexpr bool contradicts(float letterCost, float nameCost) {
    constexpr float most = 0.15F; // as much as a single character may
    return nameCost > letterCost + most;
}

// What a line has to be like to be taken for a name, between two limits by its margin: that to the next name, in the
// sum of costs. From `amplyMargin` on the line may be less like the name.
struct ChineseAcceptance {
    float leastMargin;
    float amplyMargin;
    float greatestCost; // mean of a character
    float greatestCostAmply;
    float greatestExcess; // of a character over the one that its cell looks most like
    float greatestExcessAmply;
    float greatestSingle; // cost of a character
};

// Found on 890 real and painted lines, with the true name among the known ones and without it: the nearest name that
// was not the true one and had a margin of 0.6 had an excess of 0.33.
inline constexpr ChineseAcceptance ofChineseCards{0.25F, 0.70F, 0.65F, 0.70F, 0.15F, 0.27F, 0.95F};
// Few names, none missing.
inline constexpr ChineseAcceptance ofChineseClasses{0.25F, 0.40F, 0.65F, 0.75F, 0.15F, 0.27F, 0.95F};

// Reads lines of Chinese characters as one of the known names: a sum over a name's characters forgives what a single
// one looks like, so that typefaces that the model has never seen are read. Used on one thread.
class ChineseLineReader {
public:
    // With the model that came with the program. The error says why it cannot be had, for the log.
    static std::expected<std::unique_ptr<ChineseLineReader>, QString> create(const ApplicationFiles& files);

    // That model, for whoever wants to know what it knows.
    static std::expected<CharacterModel, QString> loadModel(const ApplicationFiles& files);

    explicit ChineseLineReader(CharacterModel characterModel);

    // One and the same line, seen in up to `count` ways (see trimmedLine); the way in which it looks most like a name
    // counts. `sight` gives them by number and is asked for no more of them than are needed. None where nothing looks
    // like a line of characters. The first question after a change of the names takes some milliseconds more.
    std::optional<ChineseReading> read(std::size_t count, const std::function<std::optional<Plane>(std::size_t)>& sight,
                                       const Lexicon& lexicon, const ChineseAcceptance& acceptance);

private:
    const ChineseNames& namesOf(const Lexicon& lexicon);

    const CharacterModel model;
    const CharacterCosts everyCharacter;
    std::set<char32_t> told;                                   // characters that the log has named as missing
    std::array<std::unique_ptr<const ChineseNames>, 2> recent; // of the lexicons last asked about: cards' and classes'
};

} // namespace pelloran
