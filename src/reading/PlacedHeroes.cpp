#include "reading/PlacedHeroes.h"

#include "reading/chinese/ChineseLines.h"
#include "reading/HeroLines.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace pelloran {

namespace {

constexpr std::ptrdiff_t fewestOffers = 2;

constexpr std::array latinAttempts{
    HeroRecipe{},
    HeroRecipe{.margin = 0.25},
    HeroRecipe{.margin = 0.2, .height = 48},
    HeroRecipe{.paper = 0.3, .ink = 0.7},
    HeroRecipe{.margin = 0.1, .paper = 0, .ink = 0.9},
};

// What has to look the same for a class to be the same: as much beside it as the longest takes up.
constexpr double halfBand = 0.1;    // heights of the game's picture, from the middle of the hero
constexpr double bandMargin = 0.25; // above and below, of the height of the letters
// Where no class was found: all that names and classes can take up.
constexpr double emptyTop = 0.490;
constexpr double emptyHeight = 0.065;

std::array<double, 3> middlesOf(const std::array<double, 3>& centres, const QSize& window) {
    std::array<double, 3> middles{};
    std::ranges::transform(centres, middles.begin(), [frame = frameOf(window)](double x) { return frame.pixelX(x); });
    return middles;
}

// The lines below the three heroes of one of the screens.
class Heroes {
public:
    Heroes(const QImage& window, const std::array<double, 3>& centres, Script lettersScript, PlacedSlots known = {})
        : frame(frameOf(window.size()))
        , script(lettersScript)
        , slots(std::move(known))
        , middles(middlesOf(centres, window.size())) {
        for (std::size_t slot = 0; slot < lines.size(); ++slot) {
            if (!slots[slot].isSettled()) {
                lines[slot] = findHeroLines(window, frame, centres[slot]);
                if (script == Script::chinese) {
                    std::ranges::move(findHeroLines(window, frame, centres[slot], thinStroke),
                                      std::back_inserter(lines[slot]));
                }
                isRow = isRow && !lines[slot].empty();
            }
        }
    }

    PlacedRow read(ReadingTools& tools, const Lexicon& names) {
        if (script == Script::latin) {
            readLatin(tools, names);
        } else if (tools.chinese) {
            readChinese(*tools.chinese, names);
        }
        return {slots, middles, emptyBands(), isRow && countSettled(slots) >= fewestOffers};
    }

private:
    void readLatin(ReadingTools& tools, const Lexicon& names) {
        for (std::size_t index = 0; index < mostHeroLines; ++index) {
            readLines(index, latinAttempts.front(), tools, names);
        }
        for (std::size_t attempt = 1; attempt < latinAttempts.size() && countSettled(slots) > 0; ++attempt) {
            readLines(0, latinAttempts[attempt], tools, names);
        }
    }

    void readChinese(ChineseLineReader& reader, const Lexicon& names) {
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            for (std::size_t index = 0; index < lines[slot].size() && !slots[slot].isSettled(); ++index) {
                const HeroLine& line = lines[slot][index];
                if (const auto reading = readHeroLine(line, reader, names)) {
                    slots[slot].take(*reading, {line.area, {}, true, bandOf(line, slot)});
                }
            }
        }
    }

    void readLines(std::size_t index, const HeroRecipe& recipe, ReadingTools& tools, const Lexicon& names) {
        std::vector<PlacedWork> work;
        for (std::size_t slot = 0; slot < slots.size(); ++slot) {
            if (!slots[slot].isSettled() && index < lines[slot].size()) {
                const HeroLine& line = lines[slot][index];
                work.push_back({slot, {line.area, {}, true, bandOf(line, slot)}, imageOf(pictureOf(line, recipe))});
            }
        }
        readInto(slots, std::move(work), tools, names);
    }

    std::array<LinePlace, 3> emptyBands() const {
        std::array<LinePlace, 3> bands{};
        for (std::size_t slot = 0; slot < bands.size(); ++slot) {
            const double half = halfBand * frame.height;
            bands[slot] = LinePlace::along(middles[slot] - half, middles[slot] + half, emptyHeight * frame.height,
                                           [this](double) { return frame.pixelY(emptyTop); });
        }
        return bands;
    }

    LinePlace bandOf(const HeroLine& line, std::size_t slot) const {
        const double half = halfBand * frame.height;
        const double margin = bandMargin * line.area.height();
        return LinePlace::along(middles[slot] - half, middles[slot] + half, line.area.height() + 2 * margin,
                                [&](double) { return line.area.top() - margin; });
    }

    const GameFrame frame;
    const Script script;
    PlacedSlots slots;
    const std::array<double, 3> middles;
    std::array<std::vector<HeroLine>, 3> lines; // of what is not settled
    bool isRow = true;                          // there is a line below each hero
};

} // namespace

PlacedRow readHeroesAtPlaces(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names) {
    PlacedRow best;
    for (const auto& centres : heroCentres) {
        PlacedRow row = Heroes(window, centres, script).read(tools, names);
        if (row.countOffers() > best.countOffers() || best.countOffers() == 0) {
            best = std::move(row);
        }
        if (best.countOffers() == std::ssize(centres)) {
            break;
        }
    }
    return best;
}

PlacedRow readHeroesAgain(const QImage& window, Script script, ReadingTools& tools, const Lexicon& names,
                          const PlacedRow& earlier) {
    for (const auto& centres : heroCentres) {
        if (middlesOf(centres, window.size()) == earlier.middles) {
            return Heroes(window, centres, script, earlier.slots).read(tools, names);
        }
    }
    return {};
}

} // namespace pelloran
