#pragma once

#include "names/Lexicon.h"
#include "reading/chinese/CharacterModel.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace pelloran {

// The known names that a line of Chinese characters can be, in the form that lines are compared with: by how they are
// laid out, characters as numbers. Immutable.
class ChineseNames {
public:
    // What a cell holds.
    enum class Kind : std::uint8_t {
        character, // one that the model knows
        mark,      // punctuation: little ink
        latin,     // a Latin letter or a digit: narrow; not told from others
    };

    // Names whose cells are as wide as each other's, one after the other.
    struct Layout {
        std::vector<float> widths; // in widths of a character
        std::vector<Kind> kinds;
        std::vector<std::uint32_t> characters; // of the first name, of the second, ...: places in `costs`; 0 for others
        std::vector<std::uint32_t> names;      // places in the lexicon's list
        float width = 0;                       // sum
        bool plain = true;                     // characters alone
    };

    ChineseNames(const CharacterModel& model, const Lexicon& lexicon);

    bool isOf(const Lexicon& other) const { return lexicon.isSame(other); }

    const std::vector<Layout>& layouts() const { return groups; }

    const CharacterCosts& costs() const { return *characterCosts; }

    const QString& text(std::uint32_t name) const { return lexicon.names()[name].text; }

    // Those at the places that `costs` has.
    char32_t character(std::size_t place) const { return used[place]; }

    // Characters of names that the model does not know: such names are never read.
    const std::u32string& missing() const { return unknown; }

private:
    Lexicon lexicon;
    std::u32string used;
    std::u32string unknown;
    std::vector<Layout> groups;
    std::optional<CharacterCosts> characterCosts;
};

} // namespace pelloran
