#pragma once

#include "reading/LetterRows.h"
#include "reading/NamePlaces.h"
#include "reading/PlacedSlots.h"

#include <array>
#include <memory>
#include <optional>
#include <vector>

namespace pelloran {

// The names of cards on a picture of the window: where this game's screens have them, or where three lines of letters
// stand as theirs do. One known name on its own is no offer: it is a keyword, a button or a row of a deck list. A
// second one has to stand beside it, known too or at least printed there: new cards are missing from the names for a
// while.
class PlacedCards {
public:
    // `picture` must outlive this. Names that are settled in `known` are neither looked for nor read again.
    explicit PlacedCards(const QImage& picture, PlacedSlots known = {});
    ~PlacedCards();

    // What the lines at the usual places look like, before any is read: characters have more strokes one above the
    // other.
    Script likelyScript();

    // Reads each line at the usual places once. True if one of them is a known name: they are of this script.
    bool glance(Script script, ReadingTools& tools, const Lexicon& names);

    // Where this game's screens have them, and nowhere else.
    PlacedRow readUsual(Script script, ReadingTools& tools, const Lexicon& names);

    // Wherever they stand. Of pictures of which no name was known.
    PlacedRow read(Script script, ReadingTools& tools, const Lexicon& names);

private:
    class Row;
    struct Sheet;

    Sheet& sheetOf(Script script);
    std::vector<Row>& movedRows(Sheet& sheet);

    const QImage& window;
    const PlacedSlots settledBefore;
    QRect area;                                       // of the window that can hold names
    GameFrame frame;                                  // in that area
    std::array<std::unique_ptr<Sheet>, 2> sheets;     // one for each script, made at the first need
    std::optional<std::vector<LetterRow>> letterRows; // where names stand that are off their places, likewise
};

} // namespace pelloran
