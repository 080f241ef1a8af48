#include "PlacedHeroes.h"

#include "HeroLines.h"

#include <algorithm>
#include <array>
#include <span>

namespace pelloran {

namespace {

constexpr std::ptrdiff_t fewestOffers = 2;
constexpr std::size_t mostLines = 3; // below one hero

constexpr std::array latinAttempts{
    HeroRecipe{},
    HeroRecipe{.margin = 0.25},
    HeroRecipe{.margin = 0.2, .height = 48},
    HeroRecipe{.paper = 0.3, .ink = 0.7},
    HeroRecipe{.margin = 0.1, .paper = 0, .ink = 0.9},
};

constexpr std::array chineseAttempts{
    HeroRecipe{.margin = 0.22, .height = 48},
    HeroRecipe{.margin = 0.35, .height = 48},
    HeroRecipe{.margin = 0.22, .paper = 0.3, .ink = 0.7, .height = 48},
};

// The lines below the three heroes of one of the screens.
class Heroes {
public:
    Heroes(const QImage& picture, const GameFrame& frame, const std::array<double, 3>& centres)
        : window(picture) {
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            lines[slot] = findHeroLines(window, frame, centres[slot]);
            middles[slot] = frame.pixelX(centres[slot]);
        }
    }

    ReadText read(Script script, ReadingTools& tools, const Lexicon& names) {
        const std::span<const HeroRecipe> attempts = script == Script::latin
                                                         ? std::span<const HeroRecipe>(latinAttempts)
                                                         : std::span<const HeroRecipe>(chineseAttempts);
        PlacedSlots slots;
        for (std::size_t index = 0; index < mostLines; ++index) {
            readLines(slots, index, attempts.front(), script, tools, names);
        }
        for (std::size_t attempt = 1; attempt < attempts.size() && countSettled(slots) > 0; ++attempt) {
            readLines(slots, 0, attempts[attempt], script, tools, names);
        }
        return textOf(slots, countSettled(slots) >= fewestOffers, middles, window.size());
    }

private:
    void readLines(PlacedSlots& slots, std::size_t index, const HeroRecipe& recipe, Script script, ReadingTools& tools,
                   const Lexicon& names) const {
        std::vector<PlacedWork> work;
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            if (!slots[slot].isSettled() && index < lines[slot].size()) {
                const HeroLine& line = lines[slot][index];
                work.push_back({slot, {line.area, {}}, imageOf(pictureOf(line, recipe))});
            }
        }
        readInto(slots, std::move(work), script, tools, names);
    }

    const QImage& window;
    std::array<std::vector<HeroLine>, 3> lines;
    std::array<double, 3> middles{};
};

} // namespace

ReadText readHeroesAtPlaces(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names) {
    ReadText best;
    for (const auto& centres : heroCentres) {
        const ReadText text = Heroes(window, frameOf(window.size()), centres).read(script, tools, names);
        if (text.tokens.size() > best.tokens.size() || best.tokens.empty()) {
            best = text;
        }
        if (best.tokens.size() == centres.size()) {
            break;
        }
    }
    return best;
}

} // namespace pelloran
