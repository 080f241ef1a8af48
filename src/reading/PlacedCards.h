#pragma once

#include "NamePlaces.h"
#include "PlacedSlots.h"
#include "Plane.h"

#include <memory>

namespace pelloran {

// The names of cards on a picture of the window: where this game's screens have them, or where three lines of letters
// stand as theirs do. One known name on its own is no offer: it is a keyword, a button or a row of a deck list. A
// second one has to stand beside it, known too or at least printed there: new cards are missing from the names for a
// while.
class PlacedCards {
public:
    // `picture` must outlive this.
    explicit PlacedCards(const QImage& picture);
    ~PlacedCards();

    ReadText read(Script script, ReadingTools& tools, const Lexicon& names);

private:
    class Row;

    const std::vector<Row>& movedRows();

    const QImage& window;
    QRect area; // of the window that can hold names
    Plane plane;
    GameFrame frame; // in `plane`
    std::unique_ptr<Row> usual;
    std::optional<std::vector<Row>> moved; // looked for at the first need
};

} // namespace pelloran
