#pragma once

#include "tools/stage/Scenario.h"

#include <optional>

namespace pelloran::stage {

// What may be going on around a situation.
enum class Moment {
    steady,     // nothing: what the step shows
    burning,    // the offers of the step are on their way out
    arriving,   // and on their way in
    menu,       // the game's own menu lies over it
    collection, // the player has left for the collection
    decks,      // or for the choice of a deck
};

// The light around the offer under the mouse.
enum class Glow { white, yellow, green };

// One picture of the game.
struct Screen {
    Situation situation;
    Moment moment = Moment::steady;
    double progress = 0;        // of burning and arriving, 0 to 1
    std::optional<int> hovered; // the offer under the mouse
    Glow glow = Glow::white;
    bool tooltip = false; // and what its keyword means

    // With the mouse where a player might have it.
    static Screen onStage(const Situation& situation);
};

} // namespace pelloran::stage
