#include "reading/chinese/ChineseNames.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>

namespace pelloran {

namespace {

constexpr std::size_t longest = 20; // characters of a name

// Widths in widths of a Chinese character. Marks between characters are as wide as these in some typefaces and half as
// wide in others; at the ends only the ink counts.
constexpr float markWidth = 1;
constexpr float narrowMarkWidth = 0.5F;
constexpr float latinWidth = 0.6F;

bool isHan(char32_t character) {
    return QChar::script(character) == QChar::Script_Han;
}

std::optional<ChineseNames::Kind> kindOf(char32_t character) {
    if (isHan(character)) {
        return ChineseNames::Kind::character;
    }
    if (QChar::isPunct(character) || QChar::isSymbol(character)) {
        return ChineseNames::Kind::mark;
    }
    if (QChar::isLetterOrNumber(character) && character < 0x250) {
        return ChineseNames::Kind::latin;
    }
    return std::nullopt;
}

} // namespace

ChineseNames::ChineseNames(const CharacterModel& model, const Lexicon& known)
    : lexicon(known) {
    struct Spelled {
        std::u32string text;
        std::uint32_t name;
    };

    std::vector<Spelled> spelled;
    std::set<char32_t> characters;
    std::set<char32_t> lacking;
    std::set<std::u32string> texts; // several cards bear the same name
    for (std::uint32_t i = 0; i < lexicon.names().size(); ++i) {
        const std::u32string text = lexicon.names()[i].text.simplified().remove(QLatin1Char(' ')).toStdU32String();
        const auto count = std::size_t(std::ranges::count_if(text, isHan));
        if (count == 0 || (count == 1 && text.size() > 1) || text.size() > longest || text.size() > 2 * count ||
            !texts.insert(text).second) {
            continue;
        }
        bool complete = true;
        for (const char32_t character : text) {
            complete &= kindOf(character).has_value();
            if (isHan(character) && !model.indexOf(character)) {
                lacking.insert(character);
                complete = false;
            }
        }
        if (!complete) {
            continue;
        }
        for (const char32_t character : text) {
            if (isHan(character)) {
                characters.insert(character);
            }
        }
        spelled.push_back({text, i});
    }
    used.assign(characters.begin(), characters.end());
    unknown.assign(lacking.begin(), lacking.end());
    std::vector<std::size_t> indexes;
    indexes.reserve(used.size());
    for (const char32_t character : used) {
        indexes.push_back(*model.indexOf(character));
    }
    characterCosts.emplace(model, indexes);

    std::map<std::vector<float>, std::map<std::vector<Kind>, Layout>> byWidths;
    for (const Spelled& each : spelled) {
        const bool plain = std::ranges::all_of(each.text, isHan);
        for (const float mark : plain ? std::vector{markWidth} : std::vector{markWidth, narrowMarkWidth}) {
            std::vector<float> widths;
            std::vector<Kind> kinds;
            std::vector<std::uint32_t> places;
            for (std::size_t i = 0; i < each.text.size(); ++i) {
                const Kind kind = *kindOf(each.text[i]);
                const bool atEnd = i == 0 || i + 1 == each.text.size();
                kinds.push_back(kind);
                widths.push_back(kind == Kind::character ? 1
                                 : kind == Kind::latin   ? latinWidth
                                 : atEnd                 ? narrowMarkWidth
                                                         : mark);
                places.push_back(kind == Kind::character
                                     ? std::uint32_t(std::ranges::lower_bound(used, each.text[i]) - used.begin())
                                     : 0);
            }
            Layout& layout = byWidths[widths][kinds];
            if (layout.names.empty()) {
                layout.widths = widths;
                layout.kinds = kinds;
                layout.plain = plain;
                for (const float width : widths) {
                    layout.width += width;
                }
            }
            if (layout.names.empty() ||
                layout.names.back() != each.name) { // both widths are one where no mark is within
                layout.names.push_back(each.name);
                layout.characters.insert(layout.characters.end(), places.begin(), places.end());
            }
        }
    }
    for (auto& [widths, byKinds] : byWidths) {
        for (auto& [kinds, layout] : byKinds) {
            groups.push_back(std::move(layout));
        }
    }
}

} // namespace pelloran
