#include "reading/chinese/ChineseLineReader.h"

#include "base/Log.h"
#include "reading/chinese/CharacterCells.h"
#include "reading/chinese/CharacterFeature.h"
#include "reading/chinese/CharacterShape.h"
#include "reading/Components.h"

#include <QFile>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <numeric>
#include <utility>

namespace pelloran {

namespace {

// Widths of a cell in heights of the line: from printed characters set tight to the widest spacing seen, 1.5.
constexpr double narrowestPitch = 0.8;
constexpr double widestPitch = 1.7;

constexpr float ofAbsent = 1;   // cost of an empty cell as any character
constexpr float ofMark = 0.25F; // cost of a mark where little ink is
// Of the square of the line's height: marks of their own, and bits of their neighbours.
constexpr double leastInkOfMark = 0.004;
constexpr double mostInkOfMark = 0.09;
constexpr double mostForeignInk = 0.02;
constexpr double largestDot = 0.2; // of the line's height
constexpr std::ptrdiff_t fewestDots = 3;
constexpr int lowestDotted = 20;    // pixels; in lower lines strokes fall apart
constexpr double widestLatin = 0.8; // of the line's height; a character is wider
constexpr float ofLatin = 0.5F;     // cost of a letter, whichever it is

// A line that is settled by so much in the first way that it is seen need not be looked at in the others.
constexpr float clearCost = 0.50F;
constexpr float clearMargin = 0.60F;

// Many things look a little like a single character.
constexpr float greatestCostAlone = 0.45F;

constexpr std::size_t keptOfLayout = 2; // nearest names
constexpr float ofNothing = 2;          // the greatest cost that there is
constexpr float endless = std::numeric_limits<float>::max();

using Kind = ChineseNames::Kind;
using Layout = ChineseNames::Layout;

struct Candidate {
    std::uint32_t name = 0;
    float mean = endless;       // of all cells
    float meanOfTold = endless; // of those that are told from each other
    std::size_t cells = 0;
    std::size_t characters = 0; // cells that are told from each other
    float excess = 0;           // greatest of a character
    float single = 0;           // likewise
    // Where it was seen, for a closer look.
    const Layout* layout = nullptr;
    std::size_t place = 0;
    std::vector<CharacterCell> places;
    bool confirmed = false; // the excess is over all characters that there are
};

float costOfOther(Kind kind) {
    return kind == Kind::mark ? ofMark : ofLatin;
}

// One sight of a line, compared with names.
class Sight {
public:
    Sight(const Plane& trimmed, const CharacterModel& characterModel, const ChineseNames& lexicon,
          std::map<std::size_t, float>& letterCosts)
        : line(trimmed)
        , cutter(trimmed)
        , model(characterModel)
        , names(lexicon)
        , leastByCount(letterCosts) {}

    // Adds the nearest names of all layouts that are as wide as the line: of characters alone, or others too.
    void compare(bool plain, std::vector<Candidate>& candidates) {
        for (const Layout& layout : names.layouts()) {
            const double pitch = line.width / (double(layout.width) * line.height);
            if (layout.plain == plain && pitch >= narrowestPitch && pitch <= widestPitch) {
                compare(layout, candidates);
            }
        }
    }

    // With the excess of a candidate of this sight over all characters of the model: what is printed may be one that no
    // known name has.
    void confirm(Candidate& candidate, const CharacterCosts& all) {
        std::vector<float> costs(all.size());
        for (std::size_t i = 0; i < candidate.places.size(); ++i) {
            const Cell& cell = cellAt(candidate.places[i]);
            if (candidate.layout->kinds[i] == Kind::character && !cell.projected.empty()) {
                all.costs(cell.projected, costs);
                const std::size_t place = candidate.place * candidate.places.size() + i;
                const float excess =
                    costOf(cell, candidate.layout->characters[place]) - *std::ranges::min_element(costs);
                candidate.excess = std::max(candidate.excess, excess);
            }
        }
        candidate.confirmed = true;
    }

    float letterCost() const { return leastMean; }

    // What the cells look most like, in the plain layout in which they do so most.
    QString letters() const { return QString::fromStdU32String(nearest); }

private:
    struct Cell {
        std::vector<float> projected; // empty: nothing there
        std::vector<float> costs;     // as each character of the names; made at the first need
        float least = ofAbsent;
        std::size_t nearest = 0;
    };

    void compare(const Layout& layout, std::vector<Candidate>& candidates) {
        if (!cutWidths || *cutWidths != layout.widths) { // layouts of equal widths follow each other
            cut = cutter.cells(layout.widths);
            cutWidths = &layout.widths;
        }
        const std::vector<CharacterCell>& places = cut;
        for (std::size_t i = 0; i < places.size(); ++i) {
            if ((layout.kinds[i] == Kind::mark && !mayBeMark(places[i], i == 0 || i + 1 == places.size())) ||
                (layout.kinds[i] == Kind::latin && !mayBeLatin(places[i]))) {
                return;
            }
        }
        std::vector<Cell*> cells;
        for (std::size_t i = 0; i < places.size(); ++i) {
            cells.push_back(layout.kinds[i] == Kind::character ? &cellAt(places[i]) : nullptr);
        }
        if (layout.plain) {
            noteLetters(cells);
        }
        std::vector<std::pair<float, std::size_t>> best; // sums of costs, places in the layout
        for (std::size_t i = 0; i < layout.names.size(); ++i) {
            if (endsInDots() && !names.text(layout.names[i]).endsWith(u'…')) {
                continue; // more is meant than is printed
            }
            const std::uint32_t* characters = layout.characters.data() + i * cells.size();
            float sum = 0;
            for (std::size_t j = 0; j < cells.size(); ++j) {
                sum += cells[j] ? costOf(*cells[j], characters[j]) : costOfOther(layout.kinds[j]);
            }
            if (best.size() < keptOfLayout || sum < best.back().first) {
                best.insert(std::ranges::upper_bound(best, std::pair(sum, i)), {sum, i});
                best.resize(std::min(best.size(), keptOfLayout));
            }
        }
        for (const auto& [sum, i] : best) {
            if (sum >= ofAbsent * float(cells.size())) {
                continue; // nothing like it
            }
            Candidate candidate{layout.names[i], sum / float(cells.size()), 0, cells.size(), 0, 0, 0, &layout, i,
                                places};
            for (std::size_t j = 0; j < cells.size(); ++j) {
                if (cells[j]) {
                    ++candidate.characters;
                    const float cost = costOf(*cells[j], layout.characters[i * cells.size() + j]);
                    compareWithAll(*cells[j]);
                    candidate.excess = std::max(candidate.excess, cost - cells[j]->least);
                    candidate.single = std::max(candidate.single, cost);
                    candidate.meanOfTold += cost;
                }
            }
            candidate.meanOfTold /= float(std::max<std::size_t>(candidate.characters, 1));
            candidates.push_back(candidate);
        }
    }

    void noteLetters(const std::vector<Cell*>& cells) {
        float sum = 0;
        for (Cell* cell : cells) {
            compareWithAll(*cell);
            sum += cell->least;
        }
        const float mean = sum / float(cells.size());
        float& least = leastByCount.try_emplace(cells.size(), endless).first->second;
        least = std::min(least, mean);
        if (mean < leastMean) {
            leastMean = mean;
            nearest.clear();
            for (const Cell* cell : cells) {
                nearest += names.character(cell->nearest);
            }
        }
    }

    Cell& cellAt(const CharacterCell& place) {
        const auto [entry, isNew] = known.try_emplace(std::pair(place.left, place.right));
        if (isNew) {
            if (const auto shape = shapeOf(line, QRect(place.left, 0, place.right - place.left, line.height))) {
                entry->second.projected = model.project(featureOf(*shape));
            }
        }
        return entry->second;
    }

    float costOf(const Cell& cell, std::uint32_t character) const {
        return cell.projected.empty() ? ofAbsent
               : !cell.costs.empty()  ? cell.costs[character]
                                      : names.costs().cost(cell.projected, character);
    }

    void compareWithAll(Cell& cell) const {
        if (cell.projected.empty() || !cell.costs.empty()) {
            return;
        }
        cell.costs.resize(names.costs().size());
        names.costs().costs(cell.projected, cell.costs);
        const auto least = std::ranges::min_element(cell.costs);
        cell.least = *least;
        cell.nearest = std::size_t(least - cell.costs.begin());
    }

    // Little ink, in parts that are nobody else's. Between characters a gap will do: small windows lose dots.
    bool mayBeMark(const CharacterCell& cell, bool atEnd) {
        const double square = double(line.height) * line.height;
        double own = 0;
        for (const Components::Group& part : parts()) {
            if (part.box.left() >= cell.left - 1 && part.box.right() <= cell.right) {
                own += part.area;
            }
        }
        const double foreign = inkOf(cell) - own;
        return own >= (atEnd ? leastInkOfMark * square : 0) && own < mostInkOfMark * square &&
               foreign <= mostForeignInk * square;
    }

    // Narrower than a character.
    bool mayBeLatin(const CharacterCell& cell) const {
        int left = cell.right;
        int right = cell.left;
        for (int y = 0; y < line.height; ++y) {
            for (int x = cell.left; x < cell.right; ++x) {
                if (line.at(x, y) > inked) {
                    left = std::min(left, x);
                    right = std::max(right, x + 1);
                }
            }
        }
        return right > left && right - left <= widestLatin * line.height;
    }

    // Three dots or more behind the last character: the name is cut off.
    bool endsInDots() {
        if (!dotted) {
            int last = 0; // end of the last part that is no dot
            for (const Components::Group& part : parts()) {
                if (std::max(part.box.width(), part.box.height()) > largestDot * line.height) {
                    last = std::max(last, part.box.right());
                }
            }
            const auto dots =
                std::ranges::count_if(parts(), [&](const Components::Group& part) { return part.box.left() > last; });
            dotted = line.height >= lowestDotted && last > 0 && dots >= fewestDots;
        }
        return *dotted;
    }

    const std::vector<Components::Group>& parts() {
        if (!found) {
            Plane mask(line.width, line.height);
            for (std::size_t i = 0; i < mask.pixels.size(); ++i) {
                mask.pixels[i] = line.pixels[i] > inked;
            }
            found = componentsOf(mask).groups;
        }
        return *found;
    }

    // Pixels of the cell.
    double inkOf(const CharacterCell& cell) const {
        double ink = 0;
        for (int y = 0; y < line.height; ++y) {
            for (int x = cell.left; x < cell.right; ++x) {
                ink += line.at(x, y) > inked;
            }
        }
        return ink;
    }

    static constexpr int inked = 127;

    const Plane& line;
    const CharacterCutter cutter;
    const CharacterModel& model;
    const ChineseNames& names;
    std::map<std::pair<int, int>, Cell> known;
    std::optional<std::vector<Components::Group>> found; // parts of the line that hang together
    std::optional<bool> dotted;
    const std::vector<float>* cutWidths = nullptr; // of the layout compared last
    std::vector<CharacterCell> cut;
    std::map<std::size_t, float>& leastByCount; // of all sights: costs of letters in plain layouts, by their number
    float leastMean = endless;
    std::u32string nearest;
};

// The nearest name of several sights, and by how much it is.
struct Verdict {
    Candidate first;
    float margin = 0;

    bool satisfies(const ChineseAcceptance& by) const {
        if (first.mean == endless || (first.characters == 1 && first.meanOfTold > greatestCostAlone)) {
            return false;
        }
        const float amply = std::clamp((margin - by.leastMargin) / (by.amplyMargin - by.leastMargin), 0.0F, 1.0F);
        return margin >= by.leastMargin &&
               first.meanOfTold <= std::lerp(by.greatestCost, by.greatestCostAmply, amply) &&
               first.excess <= std::lerp(by.greatestExcess, by.greatestExcessAmply, amply) &&
               first.single <= by.greatestSingle;
    }

    bool isClear() const { return first.mean <= clearCost && margin >= clearMargin; }
};

Verdict verdictOn(const std::vector<Candidate>& candidates, const ChineseNames& names) {
    Verdict verdict;
    if (candidates.empty()) {
        return verdict;
    }
    verdict.first = *std::ranges::min_element(candidates, {}, &Candidate::mean);
    float next = endless;
    for (const Candidate& candidate : candidates) {
        if (candidate.mean < next && names.text(candidate.name) != names.text(verdict.first.name)) {
            next = candidate.mean;
        }
    }
    verdict.margin = (next - verdict.first.mean) * float(verdict.first.cells);
    return verdict;
}

std::vector<std::size_t> indexesOf(const CharacterModel& model) {
    std::vector<std::size_t> indexes(model.characters().size());
    std::iota(indexes.begin(), indexes.end(), std::size_t{0});
    return indexes;
}

} // namespace

std::expected<CharacterModel, QString> ChineseLineReader::loadModel(const ApplicationFiles& files) {
    const auto path = files.resource(QStringLiteral("chinese"), QStringLiteral("model"), QStringLiteral("characters"));
    QFile file(path.value_or(QString()));
    if (!path || !file.open(QIODevice::ReadOnly)) {
        return std::unexpected(QStringLiteral("characters/chinese.model is missing from the program's files"));
    }
    auto model = CharacterModel::parse(file.readAll());
    if (!model) {
        return std::unexpected(*path + QStringLiteral(": ") + model.error());
    }
    return *std::move(model);
}

std::expected<std::unique_ptr<ChineseLineReader>, QString> ChineseLineReader::create(const ApplicationFiles& files) {
    auto model = loadModel(files);
    if (!model) {
        return std::unexpected(model.error());
    }
    return std::make_unique<ChineseLineReader>(*std::move(model));
}

ChineseLineReader::ChineseLineReader(CharacterModel characterModel)
    : model(std::move(characterModel))
    , everyCharacter(model, indexesOf(model)) {}

const ChineseNames& ChineseLineReader::namesOf(const Lexicon& lexicon) {
    if (recent[1] && recent[1]->isOf(lexicon)) {
        std::swap(recent[0], recent[1]);
    } else if (!recent[0] || !recent[0]->isOf(lexicon)) {
        recent[1] = std::move(recent[0]);
        recent[0] = std::make_unique<const ChineseNames>(model, lexicon);
        std::u32string news;
        std::ranges::copy_if(recent[0]->missing(), std::back_inserter(news),
                             [this](char32_t character) { return told.insert(character).second; });
        if (!news.empty()) {
            log(QStringLiteral(
                    "names with these characters are never read, because the model of Chinese characters does "
                    "not know them: ") +
                QString::fromStdU32String(news));
        }
    }
    return *recent[0];
}

std::optional<ChineseReading> ChineseLineReader::read(std::size_t count,
                                                      const std::function<std::optional<Plane>(std::size_t)>& sightOf,
                                                      const Lexicon& lexicon, const ChineseAcceptance& acceptance) {
    const ChineseNames& names = namesOf(lexicon);
    std::vector<Candidate> candidates;
    ChineseReading reading;
    reading.letterCost = endless;
    Verdict verdict;
    std::map<std::size_t, float> letterCosts;
    for (std::size_t i = 0; i < count && !(verdict.satisfies(acceptance) && verdict.isClear()); ++i) {
        const std::optional<Plane> line = sightOf(i);
        if (!line) {
            continue;
        }
        Sight sight(*line, model, names, letterCosts);
        sight.compare(true, candidates);
        const auto judge = [&] {
            verdict = verdictOn(candidates, names);
            if (verdict.satisfies(acceptance) && !verdict.first.confirmed) {
                sight.confirm(*std::ranges::min_element(candidates, {}, &Candidate::mean), everyCharacter);
                verdict = verdictOn(candidates, names);
            }
        };
        judge();
        if (!verdict.satisfies(acceptance)) {
            sight.compare(false, candidates);
            judge();
        }
        if (sight.letterCost() < reading.letterCost) {
            reading.letterCost = sight.letterCost();
            reading.text = sight.letters();
        }
    }
    reading.nameCost = std::min(verdict.first.mean, ofNothing);
    reading.letterCost = std::min(reading.letterCost, ofNothing);
    // Seen another way, the same number of cells may look more like other characters: a stroke was lost here.
    const auto printed = letterCosts.find(verdict.first.cells);
    const bool another = printed != letterCosts.end() && contradicts(printed->second, verdict.first.meanOfTold);
    if (verdict.satisfies(acceptance) && !another) {
        reading.text = names.text(verdict.first.name);
        reading.isName = true;
    }
    return reading.text.isEmpty() ? std::nullopt : std::optional(reading);
}

} // namespace pelloran
